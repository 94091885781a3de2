#include "model_scene.h"

#include <gmock/gmock.h>

using namespace TEST_MODEL;

static void add_sheets(VEX2 &scene, std::initializer_list<char16_t const *> names)
{
    unsigned side = 2;
    for (auto const *const name : names)
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(name, side++));
}

// Triangles of each level, along the nodes that stand for them.
static std::vector<std::size_t> level_triangles(MODEL const &model)
{
    auto const &nodes = model.json["nodes"];
    std::vector<std::size_t> roots = {model.json["scenes"][0]["nodes"][0]};
    if (nodes[roots[0]].contains("extensions"))
        for (auto const &id : nodes[roots[0]]["extensions"]["MSFT_lod"]["ids"])
            roots.push_back(id);
    std::vector<std::size_t> triangles;
    for (std::size_t const root : roots) {
        triangles.push_back(0);
        for (auto const &child : nodes[root]["children"])
            triangles.back() += model.triangles(nodes[child.get<std::size_t>()]["mesh"]);
    }
    return triangles;
}

// A sheet of n x n squares has 2 n n triangles; the sheets have sides of 2, 3, 4, ...
TEST(Levels, NamesOfMeshesDecide)
{
    struct {
        std::initializer_list<char16_t const *> names;
        bool single;
        std::vector<std::size_t> triangles;
    } const cases[] = {
        {{u"a", u"b"}, false, {8 + 18}},
        {{u"a_lod1", u"a_lod0"}, false, {18, 8}},
        {{u"a_LOD0", u"b_Lod0", u"a_lod2", u"a_lod10"}, false, {8 + 18, 32, 50}},
        {{u"a_lod0", u"b"}, true, {8 + 18}},
        {{u"a_lodge", u"lod1", u"a_lod", u"a_lod1x"}, false, {8 + 18 + 32 + 50}},
    };
    TREE const tree;
    for (auto const &c : cases) {
        VEX2 scene;
        add_sheets(scene, c.names);
        ASSERT_TRUE(convert(scene, tree, "models/levels", {c.single, {}, false, ""}));
        EXPECT_EQ(level_triangles(MODEL(tree, "models/levels")), c.triangles);
    }
}

TEST(Levels, AMixtureIsAnErrorThatNamesTheMesh)
{
    TREE const tree;
    LINES lines;
    VEX2 scene;
    add_sheets(scene, {u"roof_lod0", u"door", u"roof_lod1"});
    EXPECT_FALSE(convert(scene, tree, "models/mixed"));
    ASSERT_EQ(lines.of_level[2].size(), 1u);
    EXPECT_THAT(lines.of_level[2][0], testing::HasSubstr("'door'"));
}

TEST(Levels, AModelWithoutLevelsGetsThemByQuality)
{
    struct {
        char const *what;
        KN_STD::VECTOR<unsigned char> qualities;
        bool single;
        std::size_t levels;
    } const cases[] = {
        {"two", {50, 10}, false, 3},
        {"none for a single level", {50, 10}, true, 1},
        {"until they do not fall", {50, 50, 10}, false, 2},
        {"nothing left to see", {0}, false, 1},
    };
    TREE const tree;
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        VEX2 scene;
        add_sheets(scene, {u"sheet"});
        scene.static_meshes.clear();
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 40));
        ASSERT_TRUE(convert(scene, tree, "models/made", {c.single, c.qualities, false, ""}));
        auto const triangles = level_triangles(MODEL(tree, "models/made"));
        ASSERT_EQ(triangles.size(), c.levels);
        EXPECT_EQ(triangles[0], 3200u);
        for (std::size_t i = 1; i < c.levels; ++i)
            EXPECT_NEAR(double(triangles[i]), 32.0 * c.qualities[i - 1], 60) << i;
    }
}

// A tetrahedron above the sheet, each face with vertices of its own, as hard edges have.
static void add_pebble(VEX2_STATIC_MESH &mesh, float x, float z)
{
    constexpr float size = 0.01f;
    VEX2_VECTOR const points[] = {{x, 0.5f, z}, {x + size, 0.5f, z}, {x, 0.5f, z + size}, {x, 0.5f + size, z}};
    VEX2_VECTOR const normals[] = {{0, -1, 0}, {0, 0, -1}, {-1, 0, 0}, {0.57735f, 0.57735f, 0.57735f}};
    unsigned const faces[4][3] = {{0, 1, 2}, {0, 3, 1}, {0, 2, 3}, {1, 3, 2}};
    for (unsigned f = 0; f < 4; ++f) {
        mesh.sections[0].triangles.append(
            VEX2_TRIANGLE{{mesh.vertices.count, mesh.vertices.count + 1, mesh.vertices.count + 2}});
        for (unsigned const point : faces[f]) {
            VEX2_VERTEX &vertex = mesh.vertices.append();
            vertex.position = points[point];
            vertex.normal = normals[f];
            vertex.uvws.append(VEX2_VECTOR{points[point].x, float(f), 0});
            vertex.frames.append(VEX2_TANGENT_FRAME{{0, 0, 1}, {1, 0, 0}});
        }
    }
}

// Details with hard edges used to stay whole, so that the large surface fell apart to reach the number.
TEST(Levels, SmallPartsWithHardEdgesGoBeforeTheShapeDoes)
{
    TREE const tree;
    VEX2 scene;
    VEX2_STATIC_MESH *const mesh = sheet<VEX2_STATIC_MESH>(u"sheet", 10);
    for (unsigned i = 0; i < 100; ++i)
        add_pebble(*mesh, 0.1f * float(i % 10), 0.1f * float(i / 10));
    scene.static_meshes.append(mesh);
    ASSERT_TRUE(convert(scene, tree, "models/pebbles", {false, {25}, false, ""}));
    MODEL const model(tree, "models/pebbles");
    auto const triangles = level_triangles(model);
    ASSERT_EQ(triangles.size(), 2u);
    EXPECT_EQ(triangles[0], 200u + 400u);
    EXPECT_NEAR(double(triangles[1]), 150, 10);

    auto const positions = model.attribute(1, "POSITION"), normals = model.attribute(1, "NORMAL");
    auto const indices = model.array(model.json["meshes"][1]["primitives"][0]["indices"]);
    double area = 0;  // of the sheet, from above
    for (std::size_t i = 0; i < indices.size(); i += 3) {
        auto const corner = [&](std::size_t k) { return &positions[std::size_t(indices[i + k]) * 3]; };
        double const *const a = corner(0), *const b = corner(1), *const c = corner(2);
        if (a[1] > 0.3 || b[1] > 0.3 || c[1] > 0.3)
            continue;
        area += ((b[2] - a[2]) * (c[0] - a[0]) - (b[0] - a[0]) * (c[2] - a[2])) / 2;
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_EQ(normals[std::size_t(indices[i + k]) * 3 + 1], 1);
    }
    EXPECT_NEAR(area, 1, 0.02);
}

// Each triangle has a top of its own with its own texture coordinate, more of them than are compared with one another.
TEST(Levels, AHubOfManyVerticesIsSimplifiedToo)
{
    constexpr unsigned count = 1000;
    TREE const tree;
    VEX2 scene;
    VEX2_STATIC_MESH *const mesh = sheet<VEX2_STATIC_MESH>(u"cone", 1);
    mesh->vertices.clear();
    mesh->sections[0].triangles.clear();
    for (unsigned i = 0; i < 2 * count; ++i) {
        bool const is_top = i % 2 == 0;
        float const share = float(i) / (2 * count), angle = 6.2831853f * share;
        VEX2_VERTEX &vertex = mesh->vertices.append();
        vertex.normal = {std::cos(angle), 0, std::sin(angle)};
        vertex.position = is_top ? VEX2_VECTOR{0, 1, 0} : vertex.normal;
        vertex.uvws.append(VEX2_VECTOR{share, is_top ? 1.0f : 0.0f, 0});
        if (is_top)
            mesh->sections[0].triangles.append(VEX2_TRIANGLE{{i, (i + 3) % (2 * count), i + 1}});
    }
    scene.static_meshes.append(mesh);
    ASSERT_TRUE(convert(scene, tree, "models/cone", {false, {50, 10}, false, ""}));
    EXPECT_THAT(level_triangles(MODEL(tree, "models/cone")), testing::ElementsAre(1000, 500, 100));
}
