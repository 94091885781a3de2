#include "model_scene.h"

#include <gmock/gmock.h>

using namespace TEST_MODEL;

// Seen from above the sheet's front faces run counter-clockwise; a node that mirrors must not turn them over.
TEST(Model, GeometryStandsWhereItsNodePutsItWithFrontFacesOutward)
{
    TREE const tree;
    LINES lines;
    VEX2 scene;
    VEX2_VECTOR const scales[] = {{2, 3, 4}, {-2, 3, 4}, {2e-6f, 3e-6f, 4e-6f}};
    for (VEX2_VECTOR const &scale : scales) {
        VEX2_STATIC_MESH *const mesh = sheet<VEX2_STATIC_MESH>(u"sheet", 4);
        VEX2_VECTOR const place{scale.x, 2 * scale.y, 3 * scale.z};
        mesh->matrix_index = scene.hierarchy.add_node(u"node", -1, place, {}, &scale);
        scene.static_meshes.append(mesh);
    }
    ASSERT_TRUE(convert(scene, tree, "models/placed"));
    MODEL const model(tree, "models/placed");
    EXPECT_TRUE(lines.of_level[1].empty());
    for (std::size_t m = 0; m < 3; ++m) {
        SCOPED_TRACE(m);
        auto const positions = model.attribute(m, "POSITION"), normals = model.attribute(m, "NORMAL");
        auto const uvs = model.attribute(m, "TEXCOORD_0"), tangents = model.attribute(m, "TANGENT");
        auto const indices = model.array(model.json["meshes"][m]["primitives"][0]["indices"]);
        auto const corner = [&](std::size_t i) { return &positions[std::size_t(indices[i]) * 3]; };
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            double const *const a = corner(i), *const b = corner(i + 1), *const c = corner(i + 2);
            double const up = (b[2] - a[2]) * (c[0] - a[0]) - (b[0] - a[0]) * (c[2] - a[2]);
            EXPECT_GT(up, 0);
        }
        for (std::size_t i = 0; i < positions.size() / 3; ++i) {
            // In the scene u = x and v = 1 - z; glTF's v runs the other way.
            double const u = uvs[i * 2], v = uvs[i * 2 + 1];
            VEX2_VECTOR const local = wave(float(u), float(v));
            EXPECT_NEAR(positions[i * 3], double(scales[m].x) * (1 + u), 1e-5);
            EXPECT_NEAR(positions[i * 3 + 1], double(scales[m].y) * (2 + double(local.y)), 1e-5);
            EXPECT_NEAR(positions[i * 3 + 2], double(scales[m].z) * (3 + v), 1e-5);
            EXPECT_NEAR(normals[i * 3 + 1], 1, 1e-6);
            EXPECT_NEAR(tangents[i * 4], m == 1 ? -1 : 1, 1e-6);
            // cross(normal, tangent) = (0,1,0) x (+-1,0,0) = (0,0,-+1), the binormal is (0,0,-1).
            EXPECT_EQ(tangents[i * 4 + 3], m == 1 ? -1 : 1);
        }
    }
}

TEST(Model, EverySortOfMeshIsTakenInItsCurrentShape)
{
    TREE const tree;
    VEX2 scene;
    VEX2_MORPH_MESH *const morph = sheet<VEX2_MORPH_MESH>(u"morph", 2);
    VEX2_FLOAT_ATTRIBUTE &target = morph->targets.append();
    target.name = u"bend";
    target.value = constant_channel<VEX2_FLOAT_CHANNEL>(0.25f);
    VEX2_MORPH_DELTA &delta = morph->vertices[0].deltas.append();
    delta.offset = {0, 5, 0};
    scene.morph_meshes.append(morph);
    VEX2_ANIMATED_MESH *const animated = TEST_SCENE::animated_triangle();  // rises 1 m a second along z
    scene.animated_meshes.append(animated);
    ASSERT_TRUE(convert(scene, tree, "models/shapes"));
    MODEL const model(tree, "models/shapes");

    auto const &mesh = model.json["meshes"][0];
    EXPECT_EQ(mesh["extras"]["targetNames"][0], "bend");
    EXPECT_FLOAT_EQ(mesh["weights"][0].get<float>(), 0.25f);
    auto const offsets = model.array(mesh["primitives"][0]["targets"][0]["POSITION"]);
    EXPECT_EQ(std::count(offsets.begin(), offsets.end(), 5.0), 1);
    EXPECT_EQ(std::count(offsets.begin(), offsets.end(), 0.0), std::ptrdiff_t(offsets.size()) - 1);
    EXPECT_THAT(model.attribute(1, "POSITION"), testing::UnorderedElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0));
}

TEST(Model, NormalsAndTangentsAreMendedOrLeftOut)
{
    TREE const tree;
    VEX2 scene;
    LINES lines;
    for (auto const *const name : {u"without normals", u"without frames", u"one frame lost"})
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(name, 2));
    for (VEX2_VERTEX &vertex : scene.static_meshes[0]->vertices) {
        vertex.normal = {};
        vertex.position.y = vertex.position.x;  // a slope of 45 degrees
    }
    for (VEX2_VERTEX &vertex : scene.static_meshes[1]->vertices)
        vertex.frames[0] = {{0, 0, 0}, {NAN, 0, 0}};
    scene.static_meshes[2]->vertices[4].frames[0] = {{0, 0, 0}, {0, 7, 0}};  // along the normal
    ASSERT_TRUE(convert(scene, tree, "models/mended"));
    MODEL const model(tree, "models/mended");

    auto const normals = model.attribute(0, "NORMAL");
    for (std::size_t i = 0; i < normals.size(); i += 3) {
        EXPECT_NEAR(normals[i], -std::sqrt(0.5), 1e-6);
        EXPECT_NEAR(normals[i + 1], std::sqrt(0.5), 1e-6);
    }
    EXPECT_EQ(lines.of_level[1].size(), 1u);  // one warning for the whole mesh
    EXPECT_FALSE(model.json["meshes"][1]["primitives"][0]["attributes"].contains("TANGENT"));
    auto const tangents = model.attribute(2, "TANGENT");
    for (std::size_t i = 0; i < tangents.size(); i += 4) {
        EXPECT_NEAR(std::hypot(tangents[i], tangents[i + 2]), 1, 1e-6);
        EXPECT_NEAR(tangents[i + 1], 0, 1e-6);
    }
}

TEST(Model, BrokenScenesGiveOneErrorLineAndNoFile)
{
    struct {
        char const *fault;
        void (*spoil)(VEX2_STATIC_MESH &);
        char const *line_has;
    } const cases[] = {
        {"index", [](VEX2_STATIC_MESH &m) { m.sections[0].triangles[1].vertices[2] = 0xfffffff0; },
         "vertex 4294967280"},
        {"position", [](VEX2_STATIC_MESH &m) { m.vertices[3].position.y = NAN; }, "position of vertex 3"},
        {"normal", [](VEX2_STATIC_MESH &m) { m.vertices[3].normal.y = INFINITY; }, "normal of vertex 3"},
        {"coordinate", [](VEX2_STATIC_MESH &m) { m.vertices[2].uvws[0].x = NAN; }, "coordinate of vertex 2"},
        {"colour", [](VEX2_STATIC_MESH &m) { m.colour_flag = 1, m.vertices[1].colour.red = NAN; },
         "colour of vertex 1"},
        {"nothing to show", [](VEX2_STATIC_MESH &m) { m.sections.clear(); }, "no mesh"},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.fault);
        TREE const tree;
        LINES lines;
        VEX2 scene;
        scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 2));
        c.spoil(*scene.static_meshes[0]);
        EXPECT_FALSE(convert(scene, tree, "models/broken"));
        ASSERT_EQ(lines.of_level[2].size(), 1u);
        EXPECT_THAT(lines.of_level[2][0], testing::HasSubstr(c.line_has));
        EXPECT_TRUE(std::filesystem::is_empty(tree.folder / "working_data/models"));
    }
}

// A scene from memory and the same scene from its file give one model, whose bytes do not change from run to run.
TEST(Model, TheFileAndTheSceneGiveTheSameBytes)
{
    TREE const tree;
    VEX2 scene;
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 5));
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"body", 3));
    scene.static_meshes[1]->attributes.strings.clear();
    scene.static_meshes[1]->attributes.add_string(u"class_TYPE", u"TECH");
    tree.put("raw_data/props/scene.vx2", TEST_SCENE::file_of(scene));
    for (char const *const name : {"first", "second"}) {
        MODEL_PROCESSOR processor("textures", true, "man", false, "", {}, {50});
        processor.target = tree.at("working_data/models/" + std::string(name));
        ASSERT_TRUE(processor.open_vex2(tree.at("raw_data/props/scene.vx2"), nullptr, false));
        ASSERT_TRUE(processor.write(processor.target, nullptr));
    }
    EXPECT_EQ(tree.get("working_data/models/first"), tree.get("working_data/models/second"));
    MODEL const model(tree, "models/first");
    EXPECT_EQ(model.json["meshes"].size(), 2u);  // the sheet in two levels, not the tech mesh
    EXPECT_EQ(model.json["scenes"][0]["extras"]["skeleton"], "man");
    EXPECT_EQ(model.triangles(0), 50u);
}

TEST(Model, StatisticsCountWhatTheModelHolds)
{
    TREE const tree;
    VEX2 scene;
    add_material(scene, u"a");
    add_material(scene, u"b & <c>");
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"one", 3, 0));
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"two", 2, 1));
    for (VEX2_STATIC_MESH *const mesh : scene.static_meshes)
        mesh->matrix_index = 0xffffffff;  // no node: where it is
    add_flag(scene, 1);
    MODEL_STATISTICS statistics;
    statistics.set_filename("<raw>/props/scene.vx2");
    ASSERT_TRUE(convert(scene, tree, "models/counted", {true, {}, false, ""}, &statistics));
    ASSERT_TRUE(statistics.save(tree.at("working_data/models/counted")));
    std::string const text = tree.get("working_data/models/counted.model_statistics");
    EXPECT_THAT(text, testing::HasSubstr("filename=\"&lt;raw&gt;/props/scene.vx2\""));
    EXPECT_THAT(text, testing::HasSubstr("meshes=\"3\" triangles=\"28\" vertices=\"29\" materials=\"2\" bones=\"2\""));
    EXPECT_THAT(text, testing::HasSubstr("least=\"0 -0.05 0\" greatest=\"1 0.1 1\""));
    EXPECT_THAT(text, testing::HasSubstr("bytes=\"" + std::to_string(tree.get("working_data/models/counted").size())));
}

TEST(Model, AnInterruptionAtAnyTimeFailsAndSaysSo)
{
    TREE const tree;
    VEX2 scene;
    add_material(scene, u"a");
    scene.static_meshes.append(sheet<VEX2_STATIC_MESH>(u"sheet", 4));
    int asked = 0;
    for (bool is_done = false; !is_done; ++asked) {
        ASSERT_LT(asked, 100);
        LINES lines;
        lines.yeses = asked;
        is_done = convert(scene, tree, "tiles/sheet", {false, {50}, false, ""});
        EXPECT_EQ(tree.holds("working_data/tiles/sheet"), is_done);
        EXPECT_EQ(lines.of_level[2].size(), is_done ? 0u : 1u);
        for (std::string const &line : lines.of_level[2])
            EXPECT_THAT(line, testing::HasSubstr("interrupted"));
    }
    EXPECT_GT(asked, 4);
}
