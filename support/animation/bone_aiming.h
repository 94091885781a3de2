// Bone aiming: turns one bone of a pose towards a direction or a point, wholly or in part, and keeps the angle between
// the result and a reference rotation within limits. Poses hold rotations against the parent; what is aimed at is in
// model space, the space of bones without parent. Angles in radians. Any thread may call; the pose belongs to one.
#pragma once

#include "support/animation/pose.h"
#include "support/animation/skeleton.h"

namespace SUPPORT {

struct BONE_AIM {
    SKELETON const *skeleton = nullptr;  // gives the parents; not owned
    std::uint32_t bone = 0;
    // In the space of the bone's parent; limits count from it. For references that turn less than a quarter: beyond,
    // the angle may count the long way round.
    QUATERNION reference_rotation;
    // A fully aimed bone has the model-space rotation look * aim_offset, where look turns z to the direction and y up.
    QUATERNION aim_offset;
};

struct AIM_LIMITS {
    std::uint8_t limited = 0;  // 1: there are limits; any other value: none
    float min_angle = 0;       // of the turn away from the reference, whichever way: 0 to 2 pi
    float max_angle = 0;
};

enum AIM_STATUS : std::int32_t { AIM_FREE = 0, AIM_HELD_AT_MIN = 1, AIM_HELD_AT_MAX = 2 };

// Each returns what held the bone. A bone that the pose or the skeleton does not have is left alone, as AIM_FREE.

// Applies `delta`, a rotation in model space. A bone without parent has its translation turned with it and knows no
// limits; another's translation is turned with `move_translation` only. The reference rotation itself is within any
// limits.
std::int32_t rotate_bone(BONE_AIM const &aim, POSE &pose, QUATERNION const &delta, AIM_LIMITS const &limits,
                         bool move_translation);

// Towards `direction`, of any length. `factor` 0 leaves the bone, 1 turns it fully. A direction without length or along
// the y axis says nothing: the pose stays.
std::int32_t aim_bone_along(BONE_AIM const &aim, POSE &pose, VECTOR3 const &direction, AIM_LIMITS const &limits,
                            float factor);

// Towards `point`, seen from `origin`, which is in model space. `matrix` maps model space to that of the point; one
// that has no inverse is taken for its own.
std::int32_t aim_bone_at(BONE_AIM const &aim, POSE &pose, VECTOR3 const &point, VECTOR3 const &origin,
                         MATRIX44 const &matrix, AIM_LIMITS const &limits, float factor);

// The same towards the mirror image of a point that lies behind the plane through `origin`, away from `normal`.
std::int32_t aim_bone_at_mirrored(BONE_AIM const &aim, POSE &pose, VECTOR3 const &point, VECTOR3 const &origin,
                                  VECTOR3 const &normal, MATRIX44 const &matrix, AIM_LIMITS const &limits,
                                  float factor);

}  // namespace SUPPORT
