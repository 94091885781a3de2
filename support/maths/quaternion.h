// Quaternions of 32-bit floats in the order x, y, z, w; a rotation has the length 1. a * b is the Hamilton product: as
// rotations of column vectors, b is done first. Nothing here normalises unless it says so.
#pragma once

#include "support/maths/angle.h"
#include "support/maths/api.h"
#include "support/maths/vector.h"

namespace SUPPORT {

struct QUATERNION {
    float x = 0, y = 0, z = 0, w = 1;

    bool operator==(QUATERNION const &) const = default;
};

inline QUATERNION operator*(QUATERNION const &a, QUATERNION const &b)
{
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y, a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x, a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}
inline QUATERNION operator*(QUATERNION const &a, float b) { return {a.x * b, a.y * b, a.z * b, a.w * b}; }
inline QUATERNION operator+(QUATERNION const &a, QUATERNION const &b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}
inline QUATERNION operator-(QUATERNION const &a) { return {-a.x, -a.y, -a.z, -a.w}; }
inline QUATERNION conjugate(QUATERNION const &a) { return {-a.x, -a.y, -a.z, a.w}; }
inline float dot(QUATERNION const &a, QUATERNION const &b) { return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w; }

// `a` or its negative, which is the same rotation, whichever lies on the side of `b`.
inline QUATERNION on_side_of(QUATERNION const &a, QUATERNION const &b) { return dot(a, b) < 0 ? -a : a; }

// `a` with the length 1; a quaternion without length stays as it is.
inline QUATERNION normalised(QUATERNION const &a)
{
    float const squared = dot(a, a);
    return squared > 0 ? a * (1 / std::sqrt(squared)) : a;
}

// In place, as stored quaternions are read: one whose squared length is not at least 1e-6 becomes the identity.
inline void normalise_quaternion(QUATERNION &a)
{
    float const squared = dot(a, a);
    a = squared >= 1e-6f ? a * (1 / std::sqrt(squared)) : QUATERNION{};
}

// `v` turned by the rotation `q`: q * (v, 0) * conjugate(q).
MATHS_API VECTOR3 rotated(VECTOR3 const &v, QUATERNION const &q);

// Rotation about the y axis by `angle`, read as a signed 16-bit number.
MATHS_API QUATERNION quaternion_from_angle_y(ANGLE16 angle);

// Spherical interpolation, on the shorter way, from `a` at t = 0 to `b` at t = 1. Where the two are so close that
// 1 - dot(a, b) stays below `threshold`, and where the dot product is no number, componentwise linear. The result is
// not normalised, and may be -b at t = 1. t outside 0 to 1 goes on along the arc. Sine and arc cosine are those of
// quaternion_kernel.h, which says how exact they are.
inline constexpr float usual_slerp_threshold = 0.007f;
MATHS_API QUATERNION slerp(QUATERNION const &a, QUATERNION const &b, float t, float threshold = usual_slerp_threshold);
// With the result in `a`: for t at or below 0 nothing happens, for t at or above 1 `a` becomes `b` itself.
MATHS_API void slerp_in_place(QUATERNION &a, QUATERNION const &b, float t, float threshold = usual_slerp_threshold);

}  // namespace SUPPORT
