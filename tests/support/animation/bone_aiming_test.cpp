#include "support/animation/bone_aiming.h"

#include "tests/support/animation/made_file.h"

#include <cmath>
#include <numbers>
#include <random>

using namespace SUPPORT;

namespace {

constexpr float pi = std::numbers::pi_v<float>;

QUATERNION turn(VECTOR3 const &axis, float radians)
{
    VECTOR3 const part = axis * std::sin(radians / 2);
    return {part.x, part.y, part.z, std::cos(radians / 2)};
}

// Rotations against each other, both signs being one.
float angle_between(QUATERNION const &a, QUATERNION const &b)
{
    QUATERNION const way = normalised(conjugate(normalised(a)) * normalised(b));
    return 2 * std::atan2(std::sqrt(way.x * way.x + way.y * way.y + way.z * way.z), std::abs(way.w));
}

// hips, then Spine, then ap_hand, each turned somehow against its parent; and "prop" without a parent.
class Aiming : public testing::Test {
protected:
    Aiming() : disk(made_skeleton().bytes()), skeleton(disk.file, disk.file, 0, "", "", animation_heap())
    {
        pose.make_arrays(skeleton.bones, nullptr);
        std::mt19937 random(3);
        std::normal_distribution<float> normal;
        for (unsigned i = 0; i < pose.bone_count; ++i) {
            pose.translations[i] = {normal(random), normal(random), normal(random)};
            pose.rotations[i] = normalised(QUATERNION{normal(random), normal(random), normal(random), normal(random)});
        }
        aim.skeleton = &skeleton;
        aim.bone = hand;
        aim.aim_offset = turn({0, 0, 1}, 0.3f);
    }

    QUATERNION model_rotation(unsigned bone) const
    {
        int const parent = skeleton.bones[bone].parent;
        return parent < 0 ? pose.rotations[bone] : model_rotation(unsigned(parent)) * pose.rotations[bone];
    }

    static constexpr unsigned hips = 0, spine = 1, hand = 2;
    DISK_FILE disk;
    SKELETON skeleton;
    POSE pose;
    BONE_AIM aim;
};

}  // namespace

TEST_F(Aiming, ByItsFactorTheBoneTurnsToTheDirection)
{
    VECTOR3 const translation = pose.translations[hand];
    for (VECTOR3 const direction : {VECTOR3{3, 0, 0}, {0, 0, -2}, {-1, 5, 0.01f}, {0.2f, -0.3f, 0.4f}}) {
        QUATERNION const before = model_rotation(hand);
        ASSERT_EQ(aim_bone_along(aim, pose, direction, {}, 0), AIM_FREE);
        EXPECT_LT(angle_between(model_rotation(hand), before), 1e-3f);

        ASSERT_EQ(aim_bone_along(aim, pose, direction, {}, 1), AIM_FREE);
        QUATERNION const look = model_rotation(hand) * conjugate(aim.aim_offset);
        VECTOR3 const forward = rotated({0, 0, 1}, look), side = rotated({1, 0, 0}, look);
        EXPECT_NEAR(length(forward - normalised(direction)), 0, 1e-3f);
        EXPECT_NEAR(side.y, 0, 1e-3f);  // its y axis leans towards up
        EXPECT_GT(rotated({0, 1, 0}, look).y, 0);
        EXPECT_NEAR(dot(pose.rotations[hand], pose.rotations[hand]), 1, 1e-5f);
    }
    EXPECT_EQ(pose.translations[hand], translation);

    // Half way is half the angle.
    QUATERNION const start = model_rotation(hand);
    aim_bone_along(aim, pose, {1, 0, 1}, {}, 0.5f);
    QUATERNION const middle = model_rotation(hand);
    aim_bone_along(aim, pose, {1, 0, 1}, {}, 1);
    EXPECT_NEAR(angle_between(start, middle), angle_between(start, model_rotation(hand)) / 2, 2e-3f);
}

TEST_F(Aiming, WhatSaysNothingChangesNothing)
{
    std::vector<QUATERNION> const before(pose.rotations, pose.rotations + pose.bone_count);
    for (VECTOR3 const direction : {VECTOR3{0, 0, 0}, {0, 2, 0}, {0, -1, 0}, {NAN, 0, 1}})
        EXPECT_EQ(aim_bone_along(aim, pose, direction, {}, 1), AIM_FREE);
    aim.bone = 77;
    EXPECT_EQ(aim_bone_along(aim, pose, {1, 0, 0}, {}, 1), AIM_FREE);
    EXPECT_EQ(rotate_bone(aim, pose, turn({1, 0, 0}, 1), {}, true), AIM_FREE);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), pose.rotations));
}

TEST_F(Aiming, LimitsHoldTheAngleFromTheReference)
{
    struct {
        float turn;
        AIM_LIMITS limits;
        std::int32_t status;
        float angle;
    } const cases[] = {
        {0.5f, {1, 0.2f, 1}, AIM_FREE, 0.5f},     {0.1f, {1, 0.2f, 1}, AIM_HELD_AT_MIN, 0.2f},
        {1.5f, {1, 0.2f, 1}, AIM_HELD_AT_MAX, 1}, {1.5f, {2, 0.2f, 1}, AIM_FREE, 1.5f},
        {1.5f, {0, 0.2f, 1}, AIM_FREE, 1.5f},     {0.5f, {1, 0.7f, 0.2f}, AIM_HELD_AT_MIN, 0.7f},
    };
    QUATERNION const rest = turn({0, 1, 0}, 0.4f);
    for (auto const &c : cases) {
        pose.rotations[hand] = aim.reference_rotation = rest;
        QUATERNION const delta = turn(normalised(VECTOR3{1, 2, 3}), c.turn);
        EXPECT_EQ(rotate_bone(aim, pose, delta, c.limits, false), c.status);
        EXPECT_NEAR(angle_between(pose.rotations[hand], rest), c.angle, 1e-3f);
    }
    // The reference itself is within any limits, whatever rounding makes of it.
    pose.rotations[hand] = aim.reference_rotation = {0, 0, 0, 1};
    pose.rotations[hips] = pose.rotations[spine] = {0, 0, 0, 1};
    EXPECT_EQ(rotate_bone(aim, pose, {0, 0, 0, 1}, {1, 0.5f, 1}, false), AIM_FREE);
    EXPECT_EQ(pose.rotations[hand], aim.reference_rotation);
}

TEST_F(Aiming, TranslationsTurnWithTheRootAndWhereAsked)
{
    QUATERNION const delta = turn({0, 1, 0}, 0.7f);
    VECTOR3 const root = pose.translations[hips], of_hand = pose.translations[hand];
    aim.bone = hips;
    EXPECT_EQ(rotate_bone(aim, pose, delta, {1, 3, 3}, false), AIM_FREE);
    EXPECT_NEAR(length(pose.translations[hips] - rotated(root, delta)), 0, 1e-5f);

    aim.bone = hand;
    QUATERNION const above = model_rotation(spine);
    rotate_bone(aim, pose, delta, {}, true);
    VECTOR3 const in_model = rotated(pose.translations[hand], above);
    EXPECT_NEAR(length(in_model - rotated(rotated(of_hand, above), delta)), 0, 1e-4f);
}

TEST_F(Aiming, PointsComeThroughTheMatrixAndTheMirror)
{
    MATRIX44 matrix;  // moves by (1, 2, 3)
    matrix[0][3] = 1;
    matrix[1][3] = 2;
    matrix[2][3] = 3;
    auto const forward = [&] { return rotated({0, 0, 1}, model_rotation(hand) * conjugate(aim.aim_offset)); };
    auto const expect_forward = [&](VECTOR3 const &direction) {
        EXPECT_NEAR(length(forward() - normalised(direction)), 0, 1e-3f);
    };
    VECTOR3 const point = {4, 6, 8}, origin = {1, 1, 1};
    aim_bone_at(aim, pose, point, origin, matrix, {}, 1);
    expect_forward({2, 3, 4});
    aim_bone_at_mirrored(aim, pose, point, origin, {0, 0, 2}, matrix, {}, 1);
    expect_forward({2, 3, 4});
    aim_bone_at_mirrored(aim, pose, point, origin, {0, 0, -2}, matrix, {}, 1);
    expect_forward({2, 3, -4});
    MATRIX44 flat;  // without inverse: taken as it is
    flat[1][1] = 0;
    aim_bone_at(aim, pose, point, origin, flat, {}, 1);
    expect_forward({3, -1, 7});
}
