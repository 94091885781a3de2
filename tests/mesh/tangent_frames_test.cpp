#include "mesh/tangent_frames.h"

#include "foundation/messages.h"
#include "tests/mesh/make_mesh.h"

#include <cmath>
#include <gmock/gmock.h>

namespace VEX2_LOADER {

namespace {

using CORNERS = std::vector<std::uint32_t>;  // three a triangle

CORNERS corners_of(KN::DynamicArray<VEX2_POLYGON_SET> const &sections)
{
    CORNERS corners;
    for (VEX2_POLYGON_SET const &section : sections)
        for (VEX2_TRIANGLE const &triangle : section.triangles)
            corners.insert(corners.end(), triangle.vertices, triangle.vertices + 3);
    return corners;
}

struct SIX {
    double values[6];  // binormal, tangent
};

SIX plain_triangle_frame(VEX2_VERTEX_INTERFACE const *const (&corner)[3], unsigned set)
{
    VEX2_VECTOR p[3], uvw[3];
    for (int i = 0; i < 3; ++i) {
        corner[i]->get_position(p[i]);
        corner[i]->get_uvw(set, uvw[i]);
    }
    double const e1[3] = {double(p[1].x - p[0].x), double(p[1].y - p[0].y), double(p[1].z - p[0].z)};
    double const e2[3] = {double(p[2].x - p[0].x), double(p[2].y - p[0].y), double(p[2].z - p[0].z)};
    double const s1 = double(uvw[1].x) - uvw[0].x, t1 = double(uvw[1].y) - uvw[0].y;
    double const s2 = double(uvw[2].x) - uvw[0].x, t2 = double(uvw[2].y) - uvw[0].y;
    double const det = t2 * s1 - s2 * t1;
    double inverse = 1.0;
    if (det > 0.000001 || det < -0.000001)
        inverse = 1.0 / det;
    SIX six;
    for (int i = 0; i < 3; ++i) {
        six.values[i] = (e2[i] * s1 - e1[i] * s2) * inverse;
        six.values[3 + i] = (e1[i] * t2 - e2[i] * t1) * inverse;
    }
    return six;
}

// The frame of set `set` of vertex `index`, by asking every triangle whether it touches the vertex.
VEX2_TANGENT_FRAME plain_frame(VEX2_MESH const &mesh, CORNERS const &corners, unsigned index, unsigned set)
{
    float sum[6] = {};
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        VEX2_VERTEX_INTERFACE const *const corner[3] = {&mesh.vertex(corners[i]), &mesh.vertex(corners[i + 1]),
                                                        &mesh.vertex(corners[i + 2])};
        SIX const six = plain_triangle_frame(corner, set);
        for (int k = 0; k < 3; ++k)
            if (corners[i + k] == index)
                for (int axis = 0; axis < 6; ++axis)
                    sum[axis] += float(six.values[axis]);
    }
    for (float *vector : {sum, sum + 3}) {
        float const squared = vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2];
        if (squared > 0.01f) {
            float const factor = 1.0f / std::sqrt(squared);
            for (int axis = 0; axis < 3; ++axis)
                vector[axis] *= factor;
        }
    }
    return {{sum[0], sum[1], sum[2]}, {sum[3], sum[4], sum[5]}};
}

bool plain_degenerate(VEX2_MESH const &mesh, std::uint32_t const *corner)
{
    for (int i = 0; i < 3; ++i)
        if (corner[i] >= mesh.vertex_count())
            return true;
    for (int i = 0; i < 3; ++i) {
        VEX2_VECTOR a, b;
        mesh.vertex(corner[i]).get_position(a);
        mesh.vertex(corner[(i + 1) % 3]).get_position(b);
        if (corner[i] == corner[(i + 1) % 3] || (a.x == b.x && a.y == b.y && a.z == b.z))
            return true;
    }
    return false;
}

// Each vertex carries its index in the z of its normal.
VEX2_MORPH_MESH random_morph_mesh(RANDOM &random)
{
    std::vector<float> const values = {0, 0.25f, 1, -1, 3.3f, 0.001f};
    VEX2_MORPH_MESH mesh;
    for (unsigned i = 0, count = 3 + random.below(40); i < count; ++i) {
        VEX2_MORPH_VERTEX vertex;
        vertex.normal.z = float(i);
        vertex.position = random.vector(values);
        vertex.morph_offset = random.vector(values);
        for (unsigned set = i == 0 ? 2 : random.below(4); set != 0; --set)
            vertex.uvws.append(random.vector(values));
        vertex.frames.resize(random.below(3));
        mesh.vertices.append(std::move(vertex));
    }
    add_random_triangles(mesh, random, random.below(60), mesh.vertices.count);
    return mesh;
}

VEX2_POLYGON_ATTACHMENT *polygons_on(unsigned index, std::vector<VEX2_TRIANGLE> const &triangles)
{
    VEX2_POLYGON_ATTACHMENT *const attachment = new VEX2_POLYGON_ATTACHMENT;
    attachment->index = index;
    attachment->sections.append(section_of(triangles));
    return attachment;
}

VEX2_VECTOR_CHANNEL *keys(std::vector<float> const &times, std::vector<VEX2_VECTOR> const &values)
{
    VEX2_VECTOR_CHANNEL *const channel = new VEX2_VECTOR_CHANNEL;
    for (std::size_t i = 0; i < times.size(); ++i)
        append_key(*channel, times[i], values[i]);
    return channel;
}

// One triangle whose third corner's u moves from 0 to `shift` between the two times.
VEX2_ANIMATED_MESH *animated_triangle(float start, float end, float shift)
{
    VEX2_ANIMATED_MESH *const mesh = new VEX2_ANIMATED_MESH;
    VEX2_VECTOR const places[3] = {{0, 0, 0}, {2, 0, 0}, {0, 3, 0}};
    VEX2_VECTOR const uvws[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (int i = 0; i < 3; ++i) {
        VEX2_ANIMATED_VERTEX vertex;
        vertex.position = constant_channel<VEX2_VECTOR_CHANNEL>(places[i]);
        VEX2_VECTOR const moved{uvws[i].x + (i == 2 ? shift : 0), uvws[i].y, 0};
        vertex.uvws.append(start == end ? keys({start}, {uvws[i]}) : keys({start, end}, {uvws[i], moved}));
        mesh->vertices.append(std::move(vertex));
    }
    mesh->sections.append(section_of({{{0, 1, 2}}}));
    return mesh;
}

class LINES final : public KN::MessageSink {
public:
    std::vector<KN::String> lines;
    LINES() : before(KN::set_thread_message_sink(this)) {}
    ~LINES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int) override { lines.push_back(line); }

private:
    KN::MessageSink *before;
};

}  // namespace

TEST(GenerateFrames, GivesWhatThePlainestFormGives)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        RANDOM random(seed);
        VEX2 scene;
        VEX2_MORPH_MESH &mesh = *new VEX2_MORPH_MESH(random_morph_mesh(random));
        scene.morph_meshes.append(nullptr);
        scene.morph_meshes.append(&mesh);
        std::uint32_t const last = mesh.vertices.count - 1;
        scene.attachments_4.append(polygons_on(0, {{{0, 1, 2}}}));
        scene.attachments_4.append(polygons_on(1, {{{last, last, last + 1}}}));

        CORNERS expected;  // as old indices
        CORNERS const before = corners_of(mesh.sections);
        for (std::size_t i = 0; i < before.size(); i += 3)
            if (!plain_degenerate(mesh, before.data() + i))
                expected.insert(expected.end(), before.begin() + long(i), before.begin() + long(i) + 3);
        bool const untouched = before.empty();

        FRAME_OPTIONS options;
        options.max_uvw_sets = 1 + random.below(3);
        unsigned const file_frames = mesh.vertices[0].frames.count;
        generate_frames(scene, options);

        if (untouched) {
            EXPECT_EQ(mesh.vertices.count, last + 1);
            EXPECT_EQ(mesh.vertices[0].frames.count, file_frames);
            continue;
        }
        CORNERS const after = corners_of(mesh.sections);
        CORNERS used(expected);
        used.push_back(last);
        std::sort(used.begin(), used.end());
        used.erase(std::unique(used.begin(), used.end()), used.end());
        ASSERT_EQ(mesh.vertices.count, used.size());
        for (std::size_t i = 0; i < used.size(); ++i)
            ASSERT_EQ(mesh.vertices[i].normal.z, float(used[i]));
        ASSERT_EQ(after.size(), expected.size());
        for (std::size_t i = 0; i < after.size(); ++i)
            ASSERT_EQ(used[after[i]], expected[i]);
        CORNERS const attached[2] = {
            corners_of(static_cast<VEX2_POLYGON_ATTACHMENT *>(scene.attachments_4[0])->sections),
            corners_of(static_cast<VEX2_POLYGON_ATTACHMENT *>(scene.attachments_4[1])->sections)};
        EXPECT_EQ(attached[0], (CORNERS{0, 1, 2}));
        EXPECT_EQ(attached[1], (CORNERS{mesh.vertices.count - 1, mesh.vertices.count - 1, last + 1}));

        unsigned const sets = std::min(options.max_uvw_sets, mesh.vertices[0].uvws.count);
        for (unsigned i = 0; i < mesh.vertices.count; ++i) {
            ASSERT_EQ(mesh.vertices[i].frames.count, sets);
            for (unsigned set = 0; set < sets; ++set) {
                VEX2_TANGENT_FRAME const frame = plain_frame(mesh, after, i, set);
                ASSERT_EQ(std::memcmp(&frame, &mesh.vertices[i].frames[set], sizeof frame), 0) << i << ", " << set;
            }
        }
    }
}

// Right-angled triangles: u grows along x and v along y by 1 on the way that `size` tells.
TEST(GenerateFrames, FramesPointWhereUAndVGrow)
{
    const struct {
        const char *what;
        VEX2_VECTOR size, u, v;
        VEX2_VECTOR binormal, tangent;
    } cases[] = {
        {"plain", {2, 3, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {1, 0, 0}},
        {"mirrored", {-2, 3, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {-1, 0, 0}},
        {"only above a length of 0.1 is normalised",
         {0.102f, 0.098f, 0},
         {1, 0, 0},
         {0, 1, 0},
         {0, 0.098f, 0},
         {1, 0, 0}},
        {"no area in u and v: unscaled", {2, 3, 0}, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}},
        {"one point in u and v", {2, 3, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        VEX2 scene;
        VEX2_STATIC_MESH &mesh = *new VEX2_STATIC_MESH;
        scene.static_meshes.append(&mesh);
        for (VEX2_VERTEX const &vertex : {vertex_at({0, 0, 0}, {{0, 0, 0}}), vertex_at({c.size.x, 0, 0}, {c.u}),
                                          vertex_at({0, c.size.y, 0}, {c.v})})
            mesh.vertices.append(vertex);
        mesh.sections.append(section_of({{{0, 1, 2}}}));
        generate_frames(scene, {});
        for (VEX2_VERTEX const &vertex : mesh.vertices) {
            EXPECT_NEAR(vertex.frames[0].binormal.x, c.binormal.x, 1e-6f);
            EXPECT_NEAR(vertex.frames[0].binormal.y, c.binormal.y, 1e-6f);
            EXPECT_NEAR(vertex.frames[0].tangent.x, c.tangent.x, 1e-6f);
            EXPECT_NEAR(vertex.frames[0].tangent.y, c.tangent.y, 1e-6f);
        }
    }
}

TEST(GenerateFrames, OptionsChooseMeshesAndTriangles)
{
    const struct {
        bool degenerate_first, keep, shader_only, shader;
        unsigned triangles, frames;
    } cases[] = {
        {true, false, false, false, 1, 1}, {true, true, false, false, 2, 0},  // skipped
        {false, true, false, false, 2, 1},  // worked on; its second triangle is one of a kept section
        {false, false, true, false, 2, 0}, {false, false, true, true, 1, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        VEX2 scene;
        scene.materials.append(new VEX2_SHADER_MATERIAL);
        VEX2_STATIC_MESH &mesh = *new VEX2_STATIC_MESH;
        scene.static_meshes.append(&mesh);
        for (float const x : {0.0f, 1.0f, 2.0f})
            mesh.vertices.append(vertex_at({x, x * x, 0}, {{x, x * x, 0}}));
        VEX2_TRIANGLE const good{{0, 1, 2}}, bad{{0, 0, 2}};
        mesh.sections.append(section_of({c.degenerate_first ? bad : good}, c.shader ? 0 : 7));
        mesh.sections.append(section_of({c.degenerate_first ? good : bad}));
        FRAME_OPTIONS options;
        options.keep_degenerate_sections = c.keep;
        options.shader_materials_only = c.shader_only;
        generate_frames(scene, options);
        EXPECT_EQ(mesh.triangle_count(), c.triangles);
        EXPECT_EQ(mesh.vertices[0].frames.count, c.frames);
    }
}

// Nothing is left of such a mesh, so that there is no first vertex to ask for its UVW sets.
TEST(GenerateFrames, AMeshOfDegenerateTrianglesEndsEmpty)
{
    VEX2 scene;
    VEX2_STATIC_MESH &mesh = *new VEX2_STATIC_MESH;
    scene.static_meshes.append(&mesh);
    mesh.vertices.append(vertex_at({}));
    mesh.sections.append(section_of({{{0, 0, 0}}}));
    generate_frames(scene, {});
    EXPECT_EQ(mesh.vertices.count, 0u);
}

TEST(GenerateFrames, AnimatedTrianglesGetAKeyWhereTheFrameHasChanged)
{
    // The tangent (dP/du) stays at (2, 0, 0). At u = s of the third corner the binormal is (-2 s, 3, 0).
    const struct {
        float start, end, shift;
        unsigned keys;
        float last_time;
    } cases[] = {
        {2, 2, 0, 1, 2},
        {0, 5, 0, 1, 0},             // moves, but its frame does not
        {0, 0.1f, 0.5f, 8, 0.1f},    // 0/60 to 6/60, which in 32-bit floats lies below the end, and the end
        {1, 1.04f, 0.5f, 4, 1.04f},  // a shorter last step
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << " to " << c.end);
        VEX2 scene;
        VEX2_ANIMATED_MESH &mesh = *animated_triangle(c.start, c.end, c.shift);
        scene.animated_meshes.append(&mesh);
        mesh.vertices[0].frames.append(new VEX2_TANGENT_FRAME_CHANNEL);
        generate_frames(scene, {});
        for (VEX2_ANIMATED_VERTEX const &vertex : mesh.vertices) {
            ASSERT_EQ(vertex.frames.count, 1u);
            VEX2_TANGENT_FRAME_CHANNEL const &channel = *vertex.frames[0];
            ASSERT_EQ(channel.times.count, channel.values.count);
            EXPECT_EQ(channel.times.back(), c.last_time);
            EXPECT_NEAR(double(channel.times.count), double(c.keys), 1);
            for (unsigned i = 0; i < channel.times.count; ++i) {
                float const s = c.shift * (channel.times[i] - c.start) / (c.end > c.start ? c.end - c.start : 1);
                EXPECT_NEAR(channel.values[i].binormal.x, -2 * s, 1e-4f);
                EXPECT_NEAR(channel.values[i].binormal.y, 3, 1e-4f);
                EXPECT_NEAR(channel.values[i].tangent.x, 2, 1e-4f);
            }
        }
        EXPECT_EQ(mesh.vertices[2].uvws[0]->key, 0u);
        EXPECT_EQ(mesh.vertices[2].uvws[0]->fraction, 0.0f);
    }
}

// Beyond 524288 seconds a 32-bit time does not grow by a sixtieth any more; a span of years asks for a billion samples.
TEST(GenerateFrames, SamplingEndsWhateverTheTimes)
{
    for (float const start : {0.0f, 600000.0f, -INFINITY}) {
        LINES lines;
        VEX2 scene;
        scene.animated_meshes.append(animated_triangle(start, 1e8f, 0.5f));
        generate_frames(scene, {});
        VEX2_TANGENT_FRAME_CHANNEL const &channel = *scene.animated_meshes[0]->vertices[0].frames[0];
        EXPECT_EQ(channel.times.back(), 1e8f);
        EXPECT_EQ(lines.lines.size(), start == 0.0f ? 1u : 0u);
    }
}

TEST(GenerateFrames, SharedAnimatedVerticesAreUnshared)
{
    VEX2 scene;
    VEX2_ANIMATED_MESH &mesh = *animated_triangle(0, 0, 0);
    scene.animated_meshes.append(&mesh);
    mesh.vertices.append(mesh.vertices[1]);
    mesh.vertices[3].position = constant_channel<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{2, 3, 0});
    mesh.vertices[3].uvws.clear();
    mesh.vertices.append(mesh.vertices[0]);
    mesh.sections.append(section_of({{{2, 1, 3}}}));
    scene.attachments_0.append(polygons_on(0, {{{4, 3, 9}}}));
    generate_frames(scene, {});
    EXPECT_EQ(corners_of(mesh.sections), (CORNERS{0, 1, 2, 3, 4, 5}));
    ASSERT_EQ(mesh.vertices.count, 7u);
    const VEX2_VECTOR places[7] = {{0, 0, 0}, {2, 0, 0}, {0, 3, 0}, {0, 3, 0}, {2, 0, 0}, {2, 3, 0}, {0, 0, 0}};
    for (unsigned i = 0; i < 7; ++i) {
        VEX2_VECTOR place;
        mesh.vertices[i].get_position(place);
        EXPECT_TRUE(place.x == places[i].x && place.y == places[i].y) << i;
        EXPECT_EQ(mesh.vertices[i].frames[0] == nullptr, i == 6) << i;
    }
    EXPECT_EQ(corners_of(static_cast<VEX2_POLYGON_ATTACHMENT *>(scene.attachments_0[0])->sections), (CORNERS{6, 5, 9}));
}

}  // namespace VEX2_LOADER
