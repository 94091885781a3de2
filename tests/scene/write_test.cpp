#include "tests/scene/bytes.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>

namespace {

using namespace TEST_SCENE;
using testing::ElementsAre;

struct CHUNK_HEAD {
    std::size_t offset;
    std::uint32_t size;
    std::uint32_t type;
};

std::vector<CHUNK_HEAD> chunks_of(std::string const &file)
{
    std::vector<CHUNK_HEAD> heads;
    for (std::size_t offset = 4; offset + 8 <= file.size();) {
        CHUNK_HEAD head{offset, 0, 0};
        std::memcpy(&head.size, &file[offset], 4);
        std::memcpy(&head.type, &file[offset + 4], 4);
        heads.push_back(head);
        offset += head.size;
    }
    return heads;
}

std::vector<std::uint32_t> types_of(std::string const &file)
{
    std::vector<std::uint32_t> types;
    for (CHUNK_HEAD const &head : chunks_of(file))
        types.push_back(head.type);
    return types;
}

TEST(SceneWrite, AnEmptySceneIsTheseBytes)
{
    BYTES const expected =
        magic + chunk(0, f32(1.16f) + text(u"NATIVE WIN32") + text(u"")) + chunk(1, u32(23) + times(23, u32(0))) +
        chunk(2, f32s(0, 0) + absent + absent + u32(0) + u32(0)) + chunk(22, absent) + chunk(12, none);
    EXPECT_EQ(file_of(VEX2()), expected);
    EXPECT_EQ(chunks_of(expected)[0].size, 40u);
    EXPECT_EQ(chunks_of(expected)[1].size, 104u);
}

TEST(SceneWrite, WriteReadWriteIsByteIdentical)
{
    std::string const first = file_of(*make_full_scene());
    VEX2 scene;
    KN::String fault;
    ASSERT_TRUE(load_bytes(scene, first, &fault)) << fault;
    EXPECT_EQ(file_of(scene), first);
}

TEST(SceneWrite, ChunksAndCountsStandInTheirOrders)
{
    auto scene = make_full_scene();
    // A number of its own for every list, so that two that changed places would show.
    scene->lights.append(nullptr);
    auto const pad = [](auto &list, unsigned count) {
        while (list.count < count)
            list.append(nullptr);
    };
    pad(scene->lights, 30), pad(scene->cameras, 31), pad(scene->static_meshes, 32), pad(scene->animated_meshes, 33);
    pad(scene->morph_meshes, 34), pad(scene->weighted_meshes, 35), pad(scene->shapes, 36), pad(scene->helpers, 37);
    pad(scene->materials, 38), pad(scene->attachments_3, 39), pad(scene->attachments_2, 40);
    pad(scene->attachments_5, 41), pad(scene->attachments_0, 42), pad(scene->attachments_4, 43);
    pad(scene->attachments_6, 44), pad(scene->attachments_1, 45), pad(scene->attachments_7, 46);
    pad(scene->references_a, 47), pad(scene->references_b, 48), pad(scene->links, 49);
    pad(scene->attachments_8, 50), pad(scene->name_links, 51), pad(scene->attachments_9, 52);
    std::string const file = file_of(*scene);
    EXPECT_THAT(types_of(file), ElementsAre(0, 1, 2, 3, 4, 22, 5, 5, 5, 6, 7, 8, 9, 10, 11, 17, 23, 12, 13, 13, 14, 14,
                                            14, 19, 14, 14, 14, 14, 14, 16, 15, 20, 21, 14, 18, 14));
    CHUNK_HEAD const counts = chunks_of(file)[1];
    for (std::uint32_t i = 0; i < 23; ++i)
        EXPECT_EQ(file.substr(counts.offset + 12 + 4 * i, 4), u32(30 + i)) << i;
    // The ids of the attachments' lists.
    std::string ids;
    for (CHUNK_HEAD const &head : chunks_of(file))
        if (head.type == 14)
            ids += char('0' + file[head.offset + 8]);
    EXPECT_EQ(ids, "3250461789");
}

TEST(SceneWrite, WhatCannotBeStoredFailsTheWrite)
{
    SCRATCH_FOLDER scratch;
    VEX2 scene;
    scene.header.source_text.assign(65535, u'x');
    {
        VEX2_CHUNK_WRITER writer(scratch.path("longest.vx2"), false, true);
        EXPECT_TRUE(scene.write(writer));
    }
    scene.header.source_text += u'x';
    VEX2_CHUNK_WRITER too_long(scratch.path("too_long.vx2"), false, true);
    EXPECT_FALSE(scene.write(too_long));
    VEX2_CHUNK_WRITER nowhere(scratch.path("no_folder/scene.vx2"), false, true);
    EXPECT_FALSE(VEX2().write(nowhere));
    EXPECT_FALSE(nowhere.close());
}

TEST(SceneWrite, OnlyAnOpenChunkTakesBytes)
{
    SCRATCH_FOLDER scratch;
    VEX2_CHUNK_WRITER writer(scratch.path("chunks"), false, true);
    EXPECT_FALSE(writer.write("lost", 4));
    EXPECT_FALSE(writer.end_chunk());
    EXPECT_TRUE(writer.begin_chunk());
    EXPECT_FALSE(writer.begin_chunk());
    EXPECT_TRUE(writer.write("kept", 4));
    EXPECT_TRUE(writer.end_chunk());
    // A chunk larger than what the writer holds back, so that its size is put in behind bytes that are in the file.
    std::string const large(1 << 20, 'x');
    writer.begin_chunk();
    EXPECT_TRUE(writer.write(large.data(), large.size() - 8));
    EXPECT_TRUE(writer.write("tail", 4));
    writer.end_chunk();
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(scratch.get("chunks"), u32(8) + "kept" + u32(1 << 20) + large.substr(8) + "tail");
}

// ---- References. ----

BYTES scene_with_reference(std::u16string_view path) { return magic + header(1.16f) + chunk(15, text(path)); }

bool load_file(VEX2 &scene, KN::UniString const &path, KN::String *fault = nullptr)
{
    VEX2_READ_BUFFER buffer(path);
    bool const good = scene.load(buffer, true);
    if (fault)
        *fault = buffer.fault;
    return good;
}

TEST(SceneReference, PathsResolveAgainstTheLastBackslash)
{
    const struct {
        char16_t const *base, *path, *resolved;
    } cases[] = {
        {u"c:\\art\\a.vx2", u"b.vx2", u"c:\\art\\b.vx2"},
        {u"c:\\art\\a.vx2", u"sub/b.vx2", u"c:\\art\\sub/b.vx2"},
        {u"c:\\art\\a.vx2", u"\\b.vx2", u"\\b.vx2"},
        {u"c:\\art\\a.vx2", u"/b.vx2", u"/b.vx2"},
        {u"c:\\art\\a.vx2", u"b:c.vx2", u"b:c.vx2"},
        {u"c:\\art\\a.vx2", u"", u"c:\\art\\"},
        {u"c:/art/a.vx2", u"b.vx2", u"b.vx2"},
        {u"a.vx2", u"b.vx2", u"b.vx2"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(resolve_reference_path(c.base, c.path), c.resolved);
    EXPECT_EQ(reference_path_from(u"/art/a.vx2", u"b.vx2"), u"\\art\\b.vx2");
}

TEST(SceneReference, ScenesLoadBesideTheFileAndAMissingOneIsEmpty)
{
    SCRATCH_FOLDER scratch;
    scratch.put("outer.vx2", scene_with_reference(u"inner.vx2") + chunk(20, text(u"missing.vx2")));
    scratch.put("inner.vx2", file_of(*make_full_scene()));
    VEX2 scene;
    KN::String fault;
    ASSERT_TRUE(load_file(scene, scratch.path("outer.vx2"), &fault)) << fault;
    EXPECT_EQ(scene.references_a[0]->scene->static_meshes.count, 1u);
    ASSERT_EQ(scene.references_b.count, 1u);
    ASSERT_TRUE(scene.references_b[0]->scene);
    EXPECT_TRUE(scene.references_b[0]->scene->static_meshes.empty());
    // A seek reaches the referenced scene.
    scene.seek(5);
    EXPECT_EQ(scene.references_a[0]->scene->tint->level->value(), 0.5f);
}

TEST(SceneReference, FilesThatCannotBeFollowedFailTheOuterLoad)
{
    SCRATCH_FOLDER scratch;
    scratch.put("self.vx2", scene_with_reference(u"self.vx2"));
    scratch.put("a.vx2", scene_with_reference(u"b.vx2"));
    scratch.put("b.vx2", scene_with_reference(u".\\a.vx2"));
    scratch.put("damaged.vx2", "none");
    scratch.put("outer.vx2", scene_with_reference(u"damaged.vx2"));
    scratch.put("folder.vx2", scene_with_reference(u""));
    for (int i = 0; i < 18; ++i) {
        std::string const next = "deep" + std::to_string(i + 1) + ".vx2";
        scratch.put("deep" + std::to_string(i) + ".vx2", scene_with_reference(KN::from_utf8(next)));
    }
    const struct {
        char const *file, *fault;
    } cases[] = {
        {"self.vx2", "the references lead back to where they came from"},
        {"a.vx2", "the references lead back to where they came from"},
        {"outer.vx2", "damaged.vx2: is not a scene file"},
        {"folder.vx2", "cannot be read, or is empty"},
        {"deep0.vx2", "references lie deeper than 16 files"},
    };
    for (auto const &c : cases) {
        VEX2 scene;
        KN::String fault;
        EXPECT_FALSE(load_file(scene, scratch.path(c.file), &fault)) << c.file;
        EXPECT_THAT(fault, testing::HasSubstr(c.fault));
        EXPECT_THAT(fault, testing::StartsWith(scratch.path(c.file).empty() ? "" : (scratch.folder / c.file).string()));
    }
    VEX2 scene;
    EXPECT_TRUE(load_file(scene, scratch.path("deep2.vx2"))) << "16 files below the first";
}

TEST(SceneReference, WritingASceneWritesItsReferences)
{
    SCRATCH_FOLDER scratch;
    VEX2 scene;
    VEX2_SCENE_REFERENCE *const reference = scene.references_b.append(new VEX2_SCENE_REFERENCE(20));
    reference->path = u"sub\\folder\\inner.vx2";
    reference->scene = make_full_scene().release();
    VEX2_CHUNK_WRITER writer(scratch.path("outer.vx2"), false, true);
    EXPECT_TRUE(scene.write(writer));
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(scratch.get("sub/folder/inner.vx2"), file_of(*reference->scene));
    VEX2 loaded;
    ASSERT_TRUE(load_file(loaded, scratch.path("outer.vx2")));
    EXPECT_EQ(loaded.references_b[0]->scene->lights.count, 3u);

    writer.~VEX2_CHUNK_WRITER();
    new (&writer) VEX2_CHUNK_WRITER(scratch.path("alone.vx2"), false, true);
    writer.write_references = false;
    reference->path = u"left_alone.vx2";
    EXPECT_TRUE(scene.write(writer));
    EXPECT_FALSE(scratch.holds("left_alone.vx2"));
}

}  // namespace
