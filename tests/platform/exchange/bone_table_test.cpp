#include "platform/exchange/bone_table.h"

#include "platform/exchange/scene_file.h"
#include "scene/scene.h"
#include "tests/platform/exchange/scratch_folder.h"

#include <gmock/gmock.h>

using namespace VEX2_LOADER;
using testing::HasSubstr;

namespace {

// world > rig > (hips > (leg, "a\"b"), shield): a skin hangs on leg and on hips; shield carries a mesh.
void make_figure(VEX2 &scene)
{
    scene.hierarchy.add_node(u"world", -1, {});
    scene.hierarchy.add_node(u"rig", 0, {});
    scene.hierarchy.add_node(u"hips", 1, {});
    scene.hierarchy.add_node(u"leg", 2, {});
    scene.hierarchy.add_node(u"a\"b", 2, {});
    scene.hierarchy.add_node(u"shield", 2, {});
    VEX2_STATIC_MESH *const shield = new VEX2_STATIC_MESH;
    shield->matrix_index = 5;
    scene.static_meshes.append(shield);
    VEX2_WEIGHTED_MESH *const skin = new VEX2_WEIGHTED_MESH;
    skin->matrix_index = 1;
    for (unsigned const node : {3u, 2u})
        skin->vertices.append().influences.append().matrix_index = node;
    scene.weighted_meshes.append(skin);
}

}  // namespace

TEST(BoneTable, HoldsTheSkeletonBelowTheLowestCommonNode)
{
    SCRATCH scratch;
    VEX2 scene;
    make_figure(scene);
    KN::String error;
    ASSERT_TRUE(write_bone_table(scene, "figure.vx2", scratch.path("t"), error)) << error;
    EXPECT_EQ(scratch.read("t"), "root = \"hips\"\npreferred = false\nbones = [\n"
                                 "    [\"hips\", \"\"],\n    [\"leg\", \"hips\"],\n    [\"a\\\"b\", \"hips\"],\n]\n");
}

TEST(BoneTable, RefusesWhatIsNoSkeleton)
{
    VEX2 empty, doubled, roots;
    make_figure(doubled);
    doubled.hierarchy.nodes[4].name = u"LEG";
    roots.hierarchy.add_node(u"a", -1, {});
    roots.hierarchy.add_node(u"b", -1, {});
    struct {
        VEX2 &scene;
        char const *said;
    } const cases[] = {{empty, "no nodes"}, {doubled, "two bones are called \"LEG\""}, {roots, "several root nodes"}};
    for (auto const &c : cases) {
        SCOPED_TRACE(c.said);
        SCRATCH scratch;
        KN::String error;
        EXPECT_FALSE(write_bone_table(c.scene, "figure.vx2", scratch.path("t"), error));
        EXPECT_THAT(error, HasSubstr(c.said));
        EXPECT_EQ(scratch.file_count(), 0u);
    }
}

TEST(SceneFile, ReferencedScenesAreWrittenOnlyWhenAsked)
{
    SCRATCH scratch;
    KN::String error;
    VEX2 part, whole, loaded;
    part.header.source_text = u"old";
    ASSERT_TRUE(write_scene(scratch.path("part.vx2"), part, error)) << error;
    for (char16_t const *path : {u"part.vx2", u"missing.vx2"}) {
        VEX2_SCENE_REFERENCE *const reference = new VEX2_SCENE_REFERENCE;
        reference->path = path;
        whole.references_a.append(reference);
    }
    ASSERT_TRUE(write_scene(scratch.path("whole.vx2"), whole, error)) << error;
    ASSERT_TRUE(load_scene(scratch.path("whole.vx2"), loaded, error)) << error;
    loaded.references_a[0]->scene->header.source_text = u"new";
    std::string const before = scratch.read("part.vx2");

    ASSERT_TRUE(write_scene(scratch.path("whole.vx2"), loaded, error)) << error;
    EXPECT_EQ(scratch.read("part.vx2"), before);
    EXPECT_NE(loaded.references_a[0]->scene, nullptr);
    ASSERT_TRUE(write_scene_with_references(scratch.path("whole.vx2"), scratch.path("whole.vx2"), loaded, error));
    EXPECT_NE(scratch.read("part.vx2"), before);
    EXPECT_EQ(scratch.file_count(), 2u);  // no file for the missing one, nothing unfinished
}

TEST(SceneFile, AWriteThatFailsLeavesTheOldFile)
{
    SCRATCH scratch;
    scratch.write("a.vx2", "what stood before");
    VEX2 scene;
    scene.header.source_text = KN::UniString(std::u16string(70000, u'x'));  // longer than a file can hold
    KN::String error;
    EXPECT_FALSE(write_scene(scratch.path("a.vx2"), scene, error));
    EXPECT_THAT(error, HasSubstr("a.vx2: the scene cannot be written; check"));
    EXPECT_EQ(scratch.read("a.vx2"), "what stood before");
    EXPECT_EQ(scratch.file_count(), 1u);
}
