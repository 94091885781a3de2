#include "platform/exchange/bone_table.h"
#include "tests/platform/conversion/rig_scene.h"

#include <gmock/gmock.h>

using namespace TEST_RIG;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<int> values(SUPPORT::ALLOCATED_ARRAY<std::int32_t> const &map) { return {map.begin(), map.end()}; }

}  // namespace

TEST(Animation, PlayedBonesStandWhereTheNodesStood)
{
    RIG_TREE tree;
    ASSERT_TRUE(convert(tree, {.rate = 30}));

    auto const clip = load_clip(tree);
    ASSERT_TRUE(clip->valid);
    EXPECT_EQ(clip->name, "rig");
    EXPECT_EQ(clip->frames.size(), 31u);
    EXPECT_EQ(clip->bones[1].name, "leg");
    EXPECT_EQ(clip->bones[1].parent, 0);
    EXPECT_NEAR(clip->move_length, 4, 1e-3);  // 2 m a second, twice as large
    EXPECT_NEAR(clip->speed, 4, 1e-3);
    EXPECT_NEAR(clip->turn, 6 - 2 * 3.14159265, 1e-3);
    SUPPORT::SCRATCH_ALLOCATOR scratch;
    for (int frame = 0; frame <= 30; ++frame) {
        SCOPED_TRACE(frame);
        float const time = float(frame) / 30;
        tree.scene.seek(time);
        expect_at_nodes(world_matrices_at(*clip, time, SUPPORT::BLEND_NEAREST, 0, {}, scratch), tree.scene, {1, 3});
    }
    // Between frames even the plainest blend stays near, as neighbouring rotations lie on one side.
    for (std::size_t i = 1; i < clip->frames.size(); ++i)
        EXPECT_GT(
            dot(unpack_quaternion(clip->frames[i]->rotations[0]), unpack_quaternion(clip->frames[i - 1]->rotations[0])),
            0.9f);
}

TEST(Animation, TheRangeOfTheSceneIsAWholeNumberOfFrames)
{
    const struct {
        float start, end, rate;
        std::size_t frames;
        float fps, duration;
        float last;  // the time in the scene that the last frame shows
    } cases[] = {
        {0, 1, 0, 21, 20, 1, 1},
        {0.5f, 1, 10, 6, 10, 0.5f, 1},
        {-1 / 30.0f, 1, 30, 31, 30, 1, 1},
        {0, 0.71f, 20, 15, 20, 0.7f, 0.71f},
        {0, 0.01f, 20, 2, 20, 0.05f, 0.01f},
        {0, 0, 20, 1, 20, 0, 0},
        {0.25f, 0, 20, 1, 20, 0, 0.25f},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << " to " << c.end << " at " << c.rate);
        RIG_TREE tree(c.start, c.end);
        ASSERT_TRUE(convert(tree, {.rate = c.rate}));
        auto const clip = load_clip(tree);
        EXPECT_EQ(clip->frames.size(), c.frames);
        EXPECT_EQ(clip->fps, c.fps);
        EXPECT_FLOAT_EQ(clip->duration, c.duration);
        SUPPORT::SCRATCH_ALLOCATOR scratch;
        tree.scene.seek(c.last);
        expect_at_nodes(world_matrices_at(*clip, clip->duration, SUPPORT::BLEND_NEAREST, 0, {}, scratch), tree.scene,
                        {1, 3});
    }
}

TEST(Animation, AReferencePoseIsTheStartWithItsInverseMatrices)
{
    RIG_TREE tree(-0.5f);
    VEX2 &scene = tree.scene;
    scene.hierarchy.nodes[3].translation =
        TEST_SCENE::ramp<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{0.2f, -0.4f, 0}, {9, 9, 9});
    scene.hierarchy.nodes[3].translation->times[0] = -0.5f;
    tree.put_scene();
    ASSERT_TRUE(convert(tree, {.rate = 30, .reference_pose = true}));

    auto const skeleton = load_skeleton(tree);
    EXPECT_EQ(skeleton->second_bone, 1);
    SUPPORT::SCRATCH_ALLOCATOR scratch;
    auto const bones = world_matrices(skeleton->bind_pose, 0, {}, scratch);
    scene.seek(-0.5f);
    expect_at_nodes(bones, scene, {1, 3});
    ASSERT_EQ(skeleton->inverse_bind_matrices.size(), 2u);
    for (std::size_t i = 0; i < bones.size(); ++i) {
        SUPPORT::MATRIX44 bone;
        std::copy_n(&bones[i].m[0][0], 12, &bone.m[0][0]);
        SUPPORT::MATRIX44 const both = bone * skeleton->inverse_bind_matrices[i];
        for (unsigned row = 0; row < 4; ++row)
            for (unsigned column = 0; column < 4; ++column)
                EXPECT_NEAR(both[row][column], row == column, 4e-4) << "bone " << i;
    }
    // Of a rigid model: whatever nodes there are, and no table.
    ASSERT_TRUE(convert(tree, {.skeleton = "no_table", .reference_pose = true, .rigid_reference = true}));
    auto const whole = load_skeleton(tree);
    EXPECT_EQ(whole->name, "no_table");
    expect_at_nodes(world_matrices(whole->bind_pose, 0, {}, scratch), scene, {0, 1, 2, 3, 4});
    // The animation file says of itself that it has no matrices, and so can be loaded alone.
    EXPECT_EQ(tree.get("working_data/rig.anim").substr(tree.get("working_data/rig.anim").size() - 4),
              std::string(4, '\0'));
}

TEST(Animation, WhatIsStrippedIsTheSkeletons)
{
    RIG_TREE tree;
    ASSERT_TRUE(convert(tree, {.reference_pose = true}));
    auto const skeleton = load_skeleton(tree);
    const struct {
        char const *translations, *rotations;
        std::vector<int> translation_map, rotation_map;
    } cases[] = {
        {"", "", {0, 1}, {0, 1}},
        {"LEG", "head;hips", {0, -1}, {-1, 0}},
        {" arm*, l*;", "hi", {0, -1}, {0, 1}},
        {"*", "leg hips", {-1, -1}, {-1, -1}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.translations);
        ASSERT_TRUE(convert(tree, {.strip_translations = c.translations, .strip_rotations = c.rotations}));
        auto const clip = load_clip(tree, skeleton.get());
        EXPECT_EQ(values(clip->translation_map), c.translation_map);
        EXPECT_EQ(values(clip->rotation_map), c.rotation_map);
        SUPPORT::POSE const pose = pose_at(*clip, 0.6f, SUPPORT::BLEND_NEAREST, nullptr, nullptr);
        for (unsigned bone = 0; bone < 2; ++bone)
            EXPECT_EQ(pose.rotations[bone] == skeleton->bind_pose.rotations[bone], c.rotation_map[bone] < 0) << bone;
    }
}

TEST(Animation, WhatCannotBeSampledIsOneLineAndNoFile)
{
    const struct {
        char const *said;
        void (*spoil)(VEX2 &);
        REQUEST request = {};
    } cases[] = {
        {"Unrecognised skeleton type: man", [](VEX2 &) {}, {.skeleton = "man"}},
        {"Unrecognised skeleton type: ../rig", [](VEX2 &) {}, {.skeleton = "../rig"}},
        {"rig.vx2: skeleton 'rig' does not fit: no node is called 'hips', 'leg'",
         [](VEX2 &scene) { scene.hierarchy.nodes[1].name = scene.hierarchy.nodes[3].name = u"other"; }},
        {"rig.vx2: node 1 'Hips' stands before its parent",
         [](VEX2 &scene) { scene.hierarchy.nodes[1].parent_index = 4; }},
        {"rig.vx2: node 2 'helper' stands before its parent",
         [](VEX2 &scene) { scene.hierarchy.nodes[2].parent_index = 2; }},
        {"rig.vx2: node 'Leg' has no finite place at 0.",
         [](VEX2 &scene) { scene.hierarchy.nodes[3].translation->values[0].y = NAN; }},
        {"rig.vx2: the scene's start or end time is no number", [](VEX2 &scene) { scene.info.end_time = INFINITY; }},
        {"rig.vx2: 1e+30", [](VEX2 &scene) { scene.info.end_time = 1e30f; }},
        {"rig.vx2: -20 frames a second", [](VEX2 &) {}, {.rate = -20}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.said);
        RIG_TREE tree;
        c.spoil(tree.scene);
        tree.put_scene();
        LINES lines;
        EXPECT_FALSE(convert(tree, c.request));
        EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], ElementsAre(HasSubstr(c.said)));
        EXPECT_FALSE(tree.holds("working_data/rig.anim"));
    }
}

TEST(Animation, AnInterruptedOneLeavesNoFile)
{
    RIG_TREE tree;
    tree.put_scene();
    LINES lines;
    lines.yeses = 2;
    EXPECT_FALSE(convert(tree, {}));
    EXPECT_THAT(lines.of_level[KN::MESSAGE_ERROR], ElementsAre(HasSubstr("rig.vx2: interrupted")));
    EXPECT_FALSE(tree.holds("working_data/rig.anim"));
}

TEST(BoneNameTable, ReadsWhatIsWrittenOfAScene)
{
    RIG_TREE tree;
    KN::String error;
    ASSERT_TRUE(
        write_bone_table(tree.scene, "rig.vx2", tree.at("raw_data/animations/skeletons/Whole.bone_table"), error));
    TOOLDATABUILDER::BONE_NAME_TABLE const table("wholE");  // names have no case
    ASSERT_TRUE(table.valid);
    EXPECT_EQ(table.name, "wholE");
    EXPECT_EQ(table.root_bone(), "armature");
    EXPECT_FALSE(table.preferred);
    std::vector<std::string> bones;
    for (auto const &bone : table.bones)
        bones.push_back(bone.name + " " + std::to_string(bone.parent));
    EXPECT_THAT(bones, ElementsAre("armature -1", "hips 0", "helper 1", "leg 2", "sword 3"));
}

TEST(BoneNameTable, BuiltInSkeletonsGiveWayToFiles)
{
    RIG_TREE tree;
    for (char const *const name : {"generic", "All"}) {
        TOOLDATABUILDER::BONE_NAME_TABLE const table(name);
        EXPECT_TRUE(table.valid && table.any_nodes && table.root_bone() == "root") << name;
    }
    tree.put("raw_data/animations/skeletons/all.bone_table", rig_table + std::string("preferred = true\n"));
    TOOLDATABUILDER::BONE_NAME_TABLE const table("all");
    EXPECT_TRUE(table.valid && !table.any_nodes && table.preferred && table.root_bone() == "Hips");
}

TEST(BoneNameTable, AFaultyOneSaysWhy)
{
    const struct {
        char const *text, *said;
    } cases[] = {
        {"root = ", "bad.bone_table:1: "},
        {"root = 'a'\nbones = [['a', ''], ['A', '']]", "bad.bone_table:2: two bones are called 'A'"},
        {"root = 'a'\nbones = [['b', 'a'],\n ['a', '']]",
         "bad.bone_table:2: the parent 'a' of 'b' is no bone that stands"},
        {"root = 'c'\nbones = [['a', '']]", "the root 'c' is none of the bones"},
        {"bones = [['a', '']]", "the root '' is none of the bones"},
        {"root = 'a'\n", "the table has no bones"},
        {"root = 'a'\nbones = ['a']", "bad.bone_table:2: a bone is a pair"},
        {"root = 'a'\nbones = [['a', 7]]", "bad.bone_table:2: here a name is wanted, in quotes"},
        {"root = 'a'\nbones = [['', '']]", "bad.bone_table:2: a bone has no name"},
        {"root = 'a'\npreferred = 1\n", "bad.bone_table:2: preferred is true or false"},
        {"root = 'a'\nrate = 1\n", "bad.bone_table:2: there is no 'rate' in a bone table"},
    };
    RIG_TREE tree;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        tree.put("raw_data/animations/skeletons/bad.bone_table", c.text);
        LINES lines;
        TOOLDATABUILDER::BONE_NAME_TABLE const table("bad");
        EXPECT_FALSE(table.valid);
        EXPECT_TRUE(table.bones.empty() && table.root_bone().empty() && !table.preferred);
        EXPECT_THAT(lines.of_level[KN::MESSAGE_WARNING], ElementsAre(HasSubstr(c.said)));
    }
    LINES lines;
    EXPECT_FALSE(TOOLDATABUILDER::BONE_NAME_TABLE("none").valid);
    tree.put("raw_data/animations/skeletons/large.bone_table", "#" + std::string(2 << 20, ' '));
    EXPECT_FALSE(TOOLDATABUILDER::BONE_NAME_TABLE("large").valid);
    EXPECT_THAT(lines.of_level[KN::MESSAGE_WARNING],
                ElementsAre(HasSubstr("none.bone_table: the skeleton has no table here"), HasSubstr("more than the")));
}
