#include "tests/scene/bytes.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

namespace {

using namespace TEST_SCENE;
using testing::HasSubstr;

BYTES node(float version, std::u16string_view name)
{
    return text(name) + u32(0xffffffff) + constant(3, f32s(1, 2, 3)) + constant(5, f32s(0, 0, 0, 1)) +
           (version >= 1.15f ? constant(3, f32s(2, 2, 2)) : BYTES()) + (version > 1.05f ? BYTES() : times(16, f32(9))) +
           text(u"node text") + (version >= 1.04f ? attributes() : BYTES());
}

BYTES light(float version)
{
    BYTES const group_107 = version >= 1.07f ? times(7, absent) : BYTES();
    BYTES const ranges = version >= 1.05f ? constant(8, u32(1)) + times(5, absent) : BYTES();
    BYTES const shadow = version >= 1.07f ? times(14, absent) : BYTES();
    return u32(1) + object(version, u"light") + group_107 + ranges + shadow;
}

BYTES shader_material(float version)
{
    return u32(1) + text(u"material") + (version >= 1.08f ? text(u"second") : BYTES()) +
           (version >= 1.15f ? attributes() : BYTES()) + text(u"fx") + u32(5) + times(6, none) +
           (version >= 1.14f ? u32(66) : BYTES());
}

BYTES static_mesh(float version)
{
    BYTES const vertex = f32s(1, 2, 3) + f32s(0, 0, 1) + f32s(1, 1, 1, 1) + u32(1) + f32s(0.5, 0.25, 0) +
                         (version >= 1.03f ? u32(1) + f32s(0, 1, 0, 1, 0, 0) : BYTES());
    BYTES const section = u32(1) + u32(0) + u32(1) + u32(2) + u32(0xffffffff);
    return object(version, u"mesh") + none + none + u32(3) + times(3, vertex) + u32(1) + section + u32(1);
}

BYTES obsolete(float version) { return version >= 1.12f && version < 1.13f ? constant(3, f32s(9, 9, 9)) : BYTES(); }

// A file that holds each record that some version changed, as that version stores it.
BYTES file_of_version(float version)
{
    BYTES const counts = u32(99) + times(version >= 1.12f ? 23 : version >= 1.1f ? 21 : 18, u32(1));
    BYTES const info = f32s(0, 1) + absent + absent + (version >= 1.16f ? BYTES("\1\2\3\4\5\6\7\10", 8) : BYTES());
    BYTES const link = object(version) + none + obsolete(version) + text(u"link") + u32(5) + text(u"");
    BYTES const obsolete_in_name_link = version < 1.13f ? constant(3, f32s(9, 9, 9)) : BYTES();
    return magic + header(version) + chunk(1, counts) + chunk(2, info) +
           chunk(12, u32(2) + node(version, u"a") + node(version, u"b")) + chunk(5, light(version)) +
           chunk(7, static_mesh(version)) + chunk(13, shader_material(version)) +
           chunk(14, u32(9) + object(version) + obsolete(version) + u32(42)) + chunk(21, link) +
           chunk(23, object(version) + obsolete_in_name_link + none + text(u"name link"));
}

TEST(SceneRead, EveryVersionReadsWhatItHolds)
{
    float const versions[] = {1.0f,  1.01f, 1.02f, 1.03f, 1.04f, 1.05f, 1.06f, 1.07f, 1.08f,
                              1.09f, 1.1f,  1.11f, 1.12f, 1.13f, 1.14f, 1.15f, 1.16f};
    for (float const version : versions) {
        SCOPED_TRACE(version);
        VEX2 scene;
        KN::String fault;
        ASSERT_TRUE(load_bytes(scene, file_of_version(version), &fault)) << fault;
        EXPECT_EQ(scene.header.version, version);
        EXPECT_EQ(scene.info.stamp[7], version >= 1.16f ? 8 : 0);

        ASSERT_EQ(scene.hierarchy.nodes.count, 2u);
        VEX2_MATRIX_NODE const &last_node = scene.hierarchy.nodes[1];
        EXPECT_EQ(last_node.node_text, u"node text");
        EXPECT_EQ(last_node.matrix[0][0], version >= 1.15f ? 2 : 1) << "scale";
        EXPECT_EQ(last_node.matrix[2][3], 3) << "translation";

        ASSERT_EQ(scene.lights.count, 1u);
        EXPECT_EQ(scene.lights[0]->near_range.enabled != nullptr, version >= 1.05f);
        ASSERT_EQ(scene.static_meshes.count, 1u);
        VEX2_STATIC_MESH const &mesh = *scene.static_meshes[0];
        EXPECT_EQ(mesh.colour_flag, 1u);
        ASSERT_EQ(mesh.vertices.count, 3u);
        EXPECT_EQ(mesh.vertices[2].uvws[0].x, 0.5f);
        EXPECT_EQ(mesh.vertices[2].frames.count, version >= 1.03f ? 1u : 0u);
        ASSERT_EQ(scene.materials.count, 1u);
        VEX2_SHADER_MATERIAL const &material = static_cast<VEX2_SHADER_MATERIAL const &>(*scene.materials[0]);
        EXPECT_EQ(material.second_name, version >= 1.08f ? u"second" : u"");
        EXPECT_EQ(material.last_value, version >= 1.14f ? 66u : 0u);
        ASSERT_EQ(scene.attachments_9.count, 1u);
        EXPECT_EQ(scene.attachments_9[0]->index, 42u);
        ASSERT_EQ(scene.links.count, 1u);
        EXPECT_EQ(scene.links[0]->number, 5);
        ASSERT_EQ(scene.name_links.count, 1u);
        EXPECT_EQ(scene.name_links[0]->link_text, u"name link");
    }
}

TEST(SceneRead, AnOldSceneComesOutAsTheNewestVersion)
{
    VEX2 old, upgraded;
    ASSERT_TRUE(load_bytes(old, file_of_version(1.02f)));
    std::string const first = file_of(old);
    ASSERT_TRUE(load_bytes(upgraded, first));
    EXPECT_EQ(upgraded.header.version, 1.16f);
    EXPECT_EQ(file_of(upgraded), first);
}

// Group r of a stored matrix is column r, and a node without channels keeps it through every seek.
TEST(SceneRead, AStoredMatrixStaysOnANodeWithoutChannels)
{
    BYTES const groups = f32s(1, 2, 3, 99) + f32s(4, 5, 6, 99) + f32s(7, 8, 9, 99) + f32s(10, 11, 12, 99);
    BYTES const still = text(u"still") + u32(0xffffffff) + absent + absent + groups + text(u"") + attributes();
    VEX2 scene;
    ASSERT_TRUE(load_bytes(scene, magic + header(1.05f) + chunk(12, u32(1) + still)));
    scene.seek(3);
    float const expected[3][4] = {{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}};
    EXPECT_EQ(0, std::memcmp(scene.hierarchy.nodes[0].matrix.m, expected, sizeof expected));
}

TEST(SceneRead, ChunksBeforeTheHeaderAreOfVersionZero)
{
    VEX2 scene;
    EXPECT_TRUE(load_bytes(scene, magic + chunk(1, u32(23) + times(18, u32(2))) + chunk(12, u32(1) + node(0, u"old")) +
                                      header(1.16f)));
    EXPECT_EQ(scene.hierarchy.nodes.count, 1u);
}

TEST(SceneRead, ChunksAreFramedByTheirReaders)
{
    VEX2 scene;
    EXPECT_TRUE(load_bytes(scene, magic)) << "the magic alone is an empty scene";
    BYTES const helper = chunk(17, object(1.16f));
    for (std::int32_t const unknown : {24, -1, 0x7fffffff}) {
        EXPECT_TRUE(load_bytes(scene, magic + header(1.16f) + chunk(unknown, "skipped") + helper)) << unknown;
        EXPECT_EQ(scene.helpers.count, 1u);
    }
    // A known chunk ends where its reader stops: what its size pads is taken for the next chunk.
    BYTES const inner = chunk(17, object(1.16f, u"inside the padding"));
    EXPECT_TRUE(load_bytes(scene, magic + header(1.16f) + chunk(17, object(1.16f) + inner)));
    ASSERT_EQ(scene.helpers.count, 2u);
    EXPECT_EQ(scene.helpers[1]->name, u"inside the padding");
    // And an empty payload takes its fields from what follows.
    EXPECT_TRUE(load_bytes(scene, magic + header(1.16f) + chunk(17, "") + object(1.16f, u"behind")));
    ASSERT_EQ(scene.helpers.count, 1u);
    EXPECT_EQ(scene.helpers[0]->name, u"behind");
}

TEST(SceneRead, AFaultIsOneLineThatNamesThePlace)
{
    BYTES const good = magic + header(1.16f);
    BYTES const bad_tint = chunk(3, u32(1) + u32(2) + times(4, u32(0)));
    BYTES const node_with_parent = text(u"n") + u32(7) + times(3, absent) + text(u"") + attributes();
    BYTES mesh = static_mesh(1.16f);
    mesh[mesh.size() - 12] = 9;  // the last corner of its triangle
    const struct {
        BYTES file;
        char const *fault;
    } cases[] = {
        {"", "test.vx2: cannot be read, or is empty"},
        {"\1\2X", "test.vx2: is not a scene file, or one whose writing was not finished"},
        {magic + header(1.17f),
         "test.vx2: chunk 0 (header) at byte 4: version 1.170000 is not one up to 1.16 (byte 22)"},
        {magic + header(NAN), "version nan is not one up to 1.16"},
        {magic + u32(7) + u32(24), "chunk 24 at byte 4 claims 7 bytes, 8 are left"},
        {magic + u32(9) + u32(24), "chunk 24 at byte 4 claims 9 bytes, 8 are left"},
        {good + "tail", "chunk head: 4 bytes are needed, 0 are left (byte 26)"},
        {good + bad_tint, "chunk 3 (global tint) at byte 22: level: subtype 2 is not one that stands here (byte 38)"},
        {good + chunk(5, u32(3) + object(1.16f)), "chunk 5 (light) at byte 22: subtype 3 is not one"},
        {good + chunk(13, u32(2) + text(u"m")), "subtype 2 is not one"},
        {good + chunk(14, u32(10) + object(1.16f) + u32(0)), "there is no attachment list 10"},
        {good + chunk(12, u32(0x10000000)), "nodes: a count of 268435456 with 0 bytes left"},
        {good + chunk(7, object(1.16f) + u32(5) + f32(1)), "first_indices: a count of 5 with 4 bytes left"},
        {good + chunk(12, u32(1) + node_with_parent), "hierarchy: node 0 \"n\": parent is number 7, there are 1"},
        {good + chunk(7, mesh), "static mesh: mesh 0 \"mesh\": a triangle's vertex is number 9, there are 3"},
    };
    for (auto const &c : cases) {
        VEX2 scene;
        KN::String fault;
        EXPECT_FALSE(load_bytes(scene, c.file, &fault)) << c.fault;
        EXPECT_THAT(fault, HasSubstr(c.fault));
        EXPECT_EQ(fault.find('\n'), std::string::npos);
    }
}

TEST(SceneRead, IndicesOfVerticesAreCheckedAfterTheLoad)
{
    auto scene = make_full_scene();
    scene->weighted_meshes[0]->vertices[1].influences[1].matrix_index = 2;
    VEX2 loaded;
    KN::String fault;
    EXPECT_FALSE(load_bytes(loaded, file_of(*scene), &fault));
    EXPECT_THAT(fault, HasSubstr("weighted mesh: mesh 0 \"weighted\": an influence's node is number 2, there are 2"));
    scene->weighted_meshes[0]->vertices[1].influences[1].matrix_index = 1;
    scene->morph_meshes[0]->vertices[2].deltas[1].target = 2;
    EXPECT_FALSE(load_bytes(loaded, file_of(*scene), &fault));
    EXPECT_THAT(fault, HasSubstr("morph mesh: mesh 0 \"morph\": a delta's target is number 2, there are 2"));
}

TEST(SceneRead, LoadingAgainLeavesNothingOfTheFirst)
{
    VEX2 scene, empty;
    ASSERT_TRUE(load_bytes(scene, file_of(*make_full_scene())));
    ASSERT_TRUE(load_bytes(scene, magic));
    EXPECT_EQ(file_of(scene), file_of(empty));
    // A load that fails at the magic clears too.
    ASSERT_TRUE(load_bytes(scene, file_of(*make_full_scene())));
    EXPECT_FALSE(load_bytes(scene, "none"));
    EXPECT_EQ(file_of(scene), file_of(empty));
}

TEST(SceneRead, LaterGlobalRecordsReplaceEarlierOnes)
{
    VEX2 scene;
    BYTES const first = chunk(3, constant(0, f32(1)) + absent), second = chunk(3, constant(0, f32(2)) + absent);
    ASSERT_TRUE(load_bytes(scene, magic + header(1.16f) + first + second + chunk(4, constant(2, f32s(1, 2, 3, 4)))));
    EXPECT_EQ(scene.tint->level->value(), 2);
    EXPECT_EQ(scene.ambient->colour->value().alpha, 4);
}

// Bytes of a u16 count are units, not characters: a pair of surrogates counts two.
TEST(SceneRead, TextIsUnitsOf16Bits)
{
    VEX2 scene;
    ASSERT_TRUE(load_bytes(scene, magic + header(1.16f) + chunk(17, object(1.16f, u"\U0001F600x"))));
    EXPECT_EQ(scene.helpers[0]->name.length(), 3u);
    EXPECT_EQ(file_of(scene).find(BYTES("\x03\x00\x3d\xd8\x00\xde", 6)) != BYTES::npos, true);
}

}  // namespace
