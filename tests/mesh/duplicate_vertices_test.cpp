#include "mesh/duplicate_vertices.h"

#include "tests/mesh/duplicate_reference.h"
#include "tests/mesh/make_mesh.h"

#include <cmath>
#include <gmock/gmock.h>
#include <limits>

namespace VEX2_LOADER {

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// Frames in the plane of the normal, `degrees` from where the vertex of 0 degrees has them.
VEX2_TANGENT_FRAME frame_at(float degrees)
{
    float const c = std::cos(degrees * 0.017453293f), s = std::sin(degrees * 0.017453293f);
    return {{c, s, 0}, {-s, c, 0}};
}

// Each vertex carries its index in morph_offset.x, which nothing compares.
VEX2_MORPH_MESH random_mesh(RANDOM &random)
{
    std::vector<float> const common = {0, 1, -1, 0.5f, -0.0f, 0.00004f, 0.00006f, -0.00001f};
    std::vector<float> const odd = {nan, infinity, -infinity, 3e9f, -3e9f, 214748.36f, 1e-40f, 1048.5761f};
    std::vector<float> values(3, random.pick(common));
    for (float &value : values)
        value = random.pick(random.chance(3) ? odd : common);
    std::vector<float> const few = {values[0], values[1]};

    VEX2_MORPH_MESH mesh;
    bool const frames = random.chance(2);
    bool const several_sets = random.chance(2);
    for (unsigned i = 0, count = random.below(150); i < count; ++i) {
        VEX2_MORPH_VERTEX vertex;
        vertex.morph_offset.x = float(i);
        vertex.position = random.vector(values);
        vertex.normal = random.vector(few);
        vertex.colour = {random.pick(few), few[0], few[0], random.pick(few)};
        for (unsigned set = several_sets ? random.below(4) : 1; set != 0; --set)
            vertex.uvws.append(VEX2_VECTOR{random.pick(few), few[0], few[0]});
        for (unsigned k = frames ? random.below(8) : 0; k > 5; --k)
            vertex.frames.append(random.chance(20) ? VEX2_TANGENT_FRAME{{nan, 0, 0}, {0, 1, 0}}
                                                   : frame_at(float(random.below(36)) * 10));
        mesh.vertices.append(std::move(vertex));
    }
    add_random_triangles(mesh, random, 60, mesh.vertices.count + 1);
    return mesh;
}

DUPLICATE_OPTIONS random_options(RANDOM &random)
{
    int const digits[] = {4, 4, 2, 0, -1};
    DUPLICATE_OPTIONS options;
    for (bool *flag : {&options.compare_positions, &options.compare_normals, &options.compare_colours,
                       &options.compare_uvws, &options.split_by_frames})
        *flag = !random.chance(4);
    for (int *count : {&options.position_digits, &options.normal_digits, &options.colour_digits, &options.uvw_digits})
        *count = digits[random.below(5)];
    return options;
}

// A static mesh of `vertices`, in a scene of its own.
struct SCENE_OF_ONE {
    VEX2 scene;
    VEX2_STATIC_MESH &mesh = *new VEX2_STATIC_MESH;

    explicit SCENE_OF_ONE(std::vector<VEX2_VERTEX> const &vertices)
    {
        for (VEX2_VERTEX const &vertex : vertices)
            mesh.vertices.append(vertex);
        scene.static_meshes.append(&mesh);
    }
};

unsigned merged_count(VEX2_VERTEX const &a, VEX2_VERTEX const &b, DUPLICATE_OPTIONS const &options = {})
{
    SCENE_OF_ONE one({a, b});
    remove_duplicates(one.scene, options);
    return one.mesh.vertices.count;
}

}  // namespace

TEST(RemoveDuplicates, GivesWhatThePlainestFormGives)
{
    for (unsigned seed = 0; seed < 600; ++seed) {
        SCOPED_TRACE(seed);
        RANDOM random(seed);
        VEX2_MORPH_MESH mesh = random_mesh(random);
        DUPLICATE_OPTIONS const options = random_options(random);
        MERGED const expected = merge_by_the_letter(mesh, options);
        std::vector<VEX2_MORPH_VERTEX> const before(mesh.vertices.begin(), mesh.vertices.end());

        remove_duplicates_from_mesh(mesh, options);

        std::vector<unsigned> kept, corners;
        for (VEX2_MORPH_VERTEX const &vertex : mesh.vertices) {
            kept.push_back(unsigned(vertex.morph_offset.x));
            VEX2_MORPH_VERTEX const &old = before[kept.back()];
            EXPECT_EQ(std::memcmp(&vertex.position, &old.position, 10 * sizeof(float)), 0);
            EXPECT_EQ(vertex.uvws.count, old.uvws.count);
            EXPECT_EQ(vertex.frames.count, old.frames.count);
        }
        for (VEX2_POLYGON_SET const &section : mesh.sections)
            for (VEX2_TRIANGLE const &triangle : section.triangles)
                corners.insert(corners.end(), triangle.vertices, triangle.vertices + 3);
        ASSERT_EQ(kept, expected.kept);
        ASSERT_EQ(corners, expected.corners);
    }
}

TEST(RemoveDuplicates, VerticesThatAgreeInFourDecimalDigitsMerge)
{
    const struct {
        float a, b;
        bool merge;
    } cases[] = {
        {0.00004f, 0.00006f, false},  // nearer than a digit, but on both sides of a half
        {0.00006f, 0.00014f, true},    {-0.00001f, 0.0f, true},
        {-0.00006f, 0.00006f, false},   // rounded away from zero on both sides
        {214748.3f, 214748.4f, false},  // the last one of all that do not fit into 32 bits
        {214748.4f, -3e9f, true},      {infinity, nan, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.a << " and " << c.b);
        unsigned const expected = c.merge ? 1 : 2;
        EXPECT_EQ(merged_count(vertex_at({c.a, 0, 0}), vertex_at({c.b, 0, 0})), expected);
        EXPECT_EQ(merged_count(vertex_at({}, {{0, c.a, 0}}), vertex_at({}, {{0, c.b, 0}})), expected);
        EXPECT_EQ(merged_count(vertex_at({}, {{}, {c.a, 0, 0}}), vertex_at({}, {{}, {c.b, 0, 0}})), expected);
    }
    DUPLICATE_OPTIONS blind;
    blind.compare_uvws = false;
    EXPECT_EQ(merged_count(vertex_at({}, {{1, 0, 0}}), vertex_at({}, {{0, 0, 0}}), blind), 1u);
    EXPECT_EQ(merged_count(vertex_at({}, {{0, 0, 0}}), vertex_at({}), blind), 2u);
}

// Groups form along the sorted angles, each around the first of its group; that one survives, even if it is not the
// one with the lowest index.
TEST(RemoveDuplicates, FramesFarApartKeepVerticesApart)
{
    const struct {
        std::vector<float> angles;
        std::vector<float> kept;
    } cases[] = {
        {{0, 10, 50, 60}, {0, 50}},
        {{0, 30, 60, 80}, {0, 60}},  // 80 is near enough to 60
        {{0, -10, -50, -60}, {-60, -10}},
        {{20, 20}, {20}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.angles));
        std::vector<VEX2_VERTEX> vertices;
        for (float const angle : c.angles) {
            vertices.push_back(vertex_at({}));
            vertices.back().frames.append(frame_at(angle));
        }
        SCENE_OF_ONE one(vertices);
        remove_duplicates(one.scene, {});
        std::vector<float> kept;
        for (VEX2_VERTEX const &vertex : one.mesh.vertices)
            kept.push_back(
                std::round(std::atan2(vertex.frames[0].binormal.y, vertex.frames[0].binormal.x) * 57.29578f));
        EXPECT_EQ(kept, c.kept);
    }
}

TEST(RemoveDuplicates, ColoursCountOnlyWhereTheMeshSaysSo)
{
    VEX2_VERTEX red = vertex_at({});
    red.colour.red = 1;
    SCENE_OF_ONE one({red, vertex_at({})});
    VEX2_STATIC_MESH *const flagged = new VEX2_STATIC_MESH;
    flagged->colour_flag = 2;
    flagged->vertices = one.mesh.vertices;
    one.scene.static_meshes.append(flagged);
    remove_duplicates(one.scene, {});
    EXPECT_EQ(one.mesh.vertices.count, 1u);
    EXPECT_EQ(flagged->vertices.count, 2u);
}

TEST(RemoveDuplicates, ReachesWeightedMeshesAndReferencedScenes)
{
    SCENE_OF_ONE one({vertex_at({}), vertex_at({})});
    one.scene.hierarchy.add_node(u"bone", -1, {0, 0, 0}, {0, 0, 1, 0});  // half a turn about z
    VEX2_WEIGHTED_MESH *const skin = new VEX2_WEIGHTED_MESH;
    one.scene.weighted_meshes.append(skin);
    for (float const weight : {0.25f, 1.0f}) {
        VEX2_WEIGHTED_VERTEX vertex;
        vertex.frames.append(frame_at(0));
        vertex.influences.append(VEX2_INFLUENCE{0, weight, {}, {}});
        skin->vertices.append(std::move(vertex));
    }
    VEX2_SCENE_REFERENCE *const reference = new VEX2_SCENE_REFERENCE(20);
    reference->scene = new VEX2;
    VEX2_STATIC_MESH *const inner = new VEX2_STATIC_MESH;
    inner->vertices = one.mesh.vertices;
    reference->scene->static_meshes.append(inner);
    one.scene.references_b.append(reference);

    remove_duplicates(one.scene, {});

    EXPECT_EQ(inner->vertices.count, 1u);
    ASSERT_EQ(skin->vertices.count, 1u);
    EXPECT_EQ(skin->vertices[0].influences[0].weight, 0.25f);
    ASSERT_EQ(skin->vertices[0].local_frames.count, 1u);
    EXPECT_EQ(skin->vertices[0].local_frames[0].binormal.x, -1.0f);
}

}  // namespace VEX2_LOADER
