#include "support/animation/bone_aiming.h"

#include <algorithm>
#include <cmath>

namespace SUPPORT {

namespace {

bool has_bone(BONE_AIM const &aim, POSE const &pose)
{
    return aim.bone < pose.bone_count && aim.bone < aim.skeleton->bones.size();
}

// -1 if there is none; a table of a damaged file may name one that does not exist.
std::int32_t parent_of(BONE_AIM const &aim, POSE const &pose, std::uint32_t bone)
{
    std::int32_t const parent = aim.skeleton->bones[bone].parent;
    return parent >= 0 && std::uint32_t(parent) < std::min<std::size_t>(pose.bone_count, aim.skeleton->bones.size())
               ? parent
               : -1;
}

QUATERNION model_rotation(BONE_AIM const &aim, POSE const &pose, std::uint32_t bone)
{
    QUATERNION rotation = pose.rotations[bone];
    std::uint32_t steps = pose.bone_count;  // a damaged table may lead in a circle
    for (std::int32_t parent = parent_of(aim, pose, bone); parent >= 0 && steps > 0; --steps) {
        rotation = pose.rotations[parent] * rotation;
        parent = parent_of(aim, pose, std::uint32_t(parent));
    }
    return rotation;
}

// `turned` with its angle from `reference` brought between the limits.
QUATERNION held(QUATERNION const &turned, QUATERNION const &reference, AIM_LIMITS const &limits, std::int32_t &status)
{
    if (turned == reference || turned == -reference)  // rounding would make a small swing of it
        return turned;
    QUATERNION swing = turned * on_side_of(conjugate(reference), turned);
    if (!(swing.w >= -1 && swing.w <= 1))
        swing = normalised(swing);
    float const half = std::acos(std::clamp(swing.w, -1.0f, 1.0f)), sine = std::sin(half);
    constexpr float no_swing = 1e-5f;
    if (std::abs(sine) > no_swing) {
        VECTOR3 const axis = {swing.x / sine, swing.y / sine, swing.z / sine};
        float angle = 2 * half;
        if (angle < limits.min_angle) {
            angle = limits.min_angle;
            status = AIM_HELD_AT_MIN;
        } else if (angle > limits.max_angle) {
            angle = limits.max_angle;
            status = AIM_HELD_AT_MAX;
        }
        VECTOR3 const part = axis * std::sin(angle / 2);
        swing = {part.x, part.y, part.z, std::cos(angle / 2)};
    }
    return swing * reference;
}

// Of a rotation matrix.
QUATERNION quaternion_of(MATRIX33 const &m)
{
    float const trace = m[0][0] + m[1][1] + m[2][2];
    if (trace >= 0) {
        float const s = 2 * std::sqrt(trace + 1);
        return {(m[2][1] - m[1][2]) / s, (m[0][2] - m[2][0]) / s, (m[1][0] - m[0][1]) / s, s / 4};
    }
    unsigned i = 0;
    for (unsigned other : {1u, 2u})
        if (m[other][other] > m[i][i])
            i = other;
    unsigned const j = (i + 1) % 3, k = (j + 1) % 3;
    float r = std::sqrt(m[i][i] - m[j][j] - m[k][k] + 1);
    if (r == 0)
        r = 0.0001f;
    float const f = 0.5f / r;
    float parts[3];
    parts[i] = r / 2;
    parts[j] = (m[i][j] + m[j][i]) * f;
    parts[k] = (m[i][k] + m[k][i]) * f;
    return {parts[0], parts[1], parts[2], (m[k][j] - m[j][k]) * f};
}

VECTOR3 direction_to(VECTOR3 const &point, VECTOR3 const &origin, MATRIX44 const &matrix)
{
    return transformed_point(inverse_or_itself(matrix), point) - origin;
}

}  // namespace

std::int32_t rotate_bone(BONE_AIM const &aim, POSE &pose, QUATERNION const &delta, AIM_LIMITS const &limits,
                         bool move_translation)
{
    if (!has_bone(aim, pose))
        return AIM_FREE;
    QUATERNION &rotation = pose.rotations[aim.bone];
    VECTOR3 &translation = pose.translations[aim.bone];
    std::int32_t const parent = parent_of(aim, pose, aim.bone);
    if (parent < 0) {
        rotation = normalised(delta * rotation);
        translation = rotated(translation, delta);
        return AIM_FREE;
    }
    std::int32_t status = AIM_FREE;
    QUATERNION const above = model_rotation(aim, pose, std::uint32_t(parent));
    QUATERNION local = normalised(conjugate(above) * delta * above);
    if (limits.limited == 1) {
        QUATERNION const turned = held(local * rotation, aim.reference_rotation, limits, status);
        local = turned * on_side_of(conjugate(rotation), turned);
    }
    rotation = normalised(local * rotation);
    if (move_translation)
        translation = rotated(translation, local);
    return status;
}

std::int32_t aim_bone_along(BONE_AIM const &aim, POSE &pose, VECTOR3 const &direction, AIM_LIMITS const &limits,
                            float factor)
{
    VECTOR3 const forward = normalised(direction), side = cross({0, 1, 0}, forward);
    if (!has_bone(aim, pose) || !(dot(direction, direction) > 0) || !(dot(side, side) > 0))
        return AIM_FREE;
    QUATERNION const model = normalised(model_rotation(aim, pose, aim.bone));
    QUATERNION const before = model * on_side_of(conjugate(aim.aim_offset), model);
    VECTOR3 const a = normalised(side), b = cross(forward, a);
    QUATERNION const look =
        quaternion_of(MATRIX33{{{a.x, b.x, forward.x}, {a.y, b.y, forward.y}, {a.z, b.z, forward.z}}});
    QUATERNION const delta = slerp(before, look, factor) * conjugate(before);
    return rotate_bone(aim, pose, delta, limits, false);
}

std::int32_t aim_bone_at(BONE_AIM const &aim, POSE &pose, VECTOR3 const &point, VECTOR3 const &origin,
                         MATRIX44 const &matrix, AIM_LIMITS const &limits, float factor)
{
    return aim_bone_along(aim, pose, direction_to(point, origin, matrix), limits, factor);
}

std::int32_t aim_bone_at_mirrored(BONE_AIM const &aim, POSE &pose, VECTOR3 const &point, VECTOR3 const &origin,
                                  VECTOR3 const &normal, MATRIX44 const &matrix, AIM_LIMITS const &limits, float factor)
{
    VECTOR3 direction = direction_to(point, origin, matrix);
    float const ahead = dot(normal, direction);
    if (ahead < 0)
        direction = direction - normal * (2 * ahead / dot(normal, normal));
    return aim_bone_along(aim, pose, direction, limits, factor);
}

}  // namespace SUPPORT
