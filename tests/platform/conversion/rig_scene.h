// A small rig that moves, its skeleton, and animations as the game loads them.
#pragma once

#include "Plugins/Vx2/host/animation_processor.h"
#include "Plugins/Vx2/host/bone_name_table.h"
#include "foundation/file.h"
#include "support/animation/clip.h"
#include "support/animation/skeleton.h"
#include "tests/platform/conversion/model_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace TEST_RIG {

using namespace TEST_MODEL;
using TOOLDATABUILDER::ANIMATION_PROCESSOR;

inline VEX2_QUATERNION about(VEX2_VECTOR const &axis, float angle)
{
    float const s = std::sin(angle / 2);
    return {axis.x * s, axis.y * s, axis.z * s, std::cos(angle / 2)};
}
inline VEX2_QUATERNION negative(VEX2_QUATERNION const &q) { return {-q.x, -q.y, -q.z, -q.w}; }

// armature (twice as large, turned) > Hips (walks and turns) > helper (bent) > Leg (swings), sword. Hips and Leg are
// the bones. A second long; keys that are neighbours in time hold rotations of different signs.
inline void make_rig(VEX2 &scene, float start, float end)
{
    scene.info.start_time = start;
    scene.info.end_time = end;
    VEX2_MATRIX_HIERARCHY &nodes = scene.hierarchy;
    VEX2_VECTOR const twice = {2, 2, 2};
    nodes.add_node(u"armature", -1, {0, 0, 3}, about({0, 1, 0}, 0.3f), &twice);
    nodes.add_node(u"Hips", 0, {0, 1, 0});
    nodes.add_node(u"helper", 1, {0, -0.1f, 0}, about({0, 0, 1}, 0.5f));
    nodes.add_node(u"Leg", 2, {0.2f, -0.4f, 0});
    nodes.add_node(u"sword", 3, {0, 0, 0.5f});
    auto *const place = new VEX2_VECTOR_CHANNEL;
    auto *const turn = new VEX2_SLERP_ROTATION_CHANNEL, *const swing = new VEX2_SLERP_ROTATION_CHANNEL;
    for (int i = 0; i <= 4; ++i) {
        float const time = float(i) / 4;
        append_key(*place, time, VEX2_VECTOR{0, 1, 2 * time});
        VEX2_QUATERNION const q = about({0, 1, 0}, 6 * time);
        append_key(*turn, time, i == 2 ? negative(q) : q);
        append_key(*swing, time, about({1, 0, 0}, std::sin(3 * time)));
    }
    nodes.nodes[1].translation = place;
    nodes.nodes[1].rotation = turn;
    nodes.nodes[3].rotation = swing;
}

inline char const *const rig_table = "root = 'Hips'\nbones = [['Hips', ''], ['leg', 'hips']]\n";

// A tree with the rig as <raw>/props/rig.vx2, and with its skeleton "rig".
class RIG_TREE : public TREE {
public:
    explicit RIG_TREE(float start = 0, float end = 1)
    {
        std::filesystem::create_directories(folder / "raw_data/animations/skeletons");
        put("raw_data/animations/skeletons/rig.bone_table", rig_table);
        make_rig(scene, start, end);
        put_scene();
    }
    // Once more, after it was changed.
    void put_scene() const { put("raw_data/props/rig.vx2", TEST_SCENE::file_of(scene)); }

    VEX2 scene;
};

struct REQUEST {
    std::string skeleton = "rig", strip_translations = "", strip_rotations = "";
    float rate = 0;
    bool reference_pose = false, rigid_reference = false;
};

// To working_data/rig.anim, and rig.bone_inv_trans_mats for a reference pose.
inline bool convert(RIG_TREE const &tree, REQUEST const &request = {})
{
    auto const wide = [&](std::string const &path) { return KN::from_utf8(tree.at(path)); };
    return ANIMATION_PROCESSOR::convert_vex2(
        true, wide("raw_data/props/rig.vx2"), wide("working_data/rig.anim"),
        wide("working_data/rig.bone_inv_trans_mats"), KN::from_utf8(request.skeleton), request.strip_translations,
        request.strip_rotations, request.rate, request.reference_pose, request.rigid_reference, false);
}

inline std::unique_ptr<SUPPORT::SKELETON> load_skeleton(RIG_TREE const &tree)
{
    KN::FileIn file, matrices;
    EXPECT_TRUE(file.open(tree.at("working_data/rig.anim"), true));
    EXPECT_TRUE(matrices.open(tree.at("working_data/rig.bone_inv_trans_mats"), true));
    return std::make_unique<SUPPORT::SKELETON>(file, matrices, 0, "HIPS", "leg", SUPPORT::animation_heap());
}

inline std::unique_ptr<SUPPORT::ANIMATION_CLIP> load_clip(RIG_TREE const &tree,
                                                          SUPPORT::SKELETON const *skeleton = nullptr)
{
    KN::FileIn file;
    EXPECT_TRUE(file.open(tree.at("working_data/rig.anim"), true));
    return std::make_unique<SUPPORT::ANIMATION_CLIP>(file, skeleton, 0, SUPPORT::CLIP_SOURCE{"rig.anim", false},
                                                     SUPPORT::animation_heap());
}

// Expects that the bones stand where the nodes stand at the scene's current time, turned as these are.
inline void expect_at_nodes(std::span<SUPPORT::MATRIX34 const> bones, VEX2 const &scene, std::vector<unsigned> nodes)
{
    ASSERT_EQ(bones.size(), nodes.size());
    for (std::size_t i = 0; i < bones.size(); ++i) {
        VEX2_MATRIX const &m = scene.hierarchy.nodes[nodes[i]].matrix;
        for (unsigned column = 0; column < 4; ++column) {
            float const size = column == 3 ? 1 : std::hypot(m[0][column], m[1][column], m[2][column]);
            for (unsigned row = 0; row < 3; ++row)
                EXPECT_NEAR(bones[i][row][column], m[row][column] / size, 2e-4)
                    << "bone " << i << ", column " << column;
        }
    }
}

}  // namespace TEST_RIG
