// The few operations on points and directions that the shape kit and the scenes need.
#pragma once

#include "scene/values.h"

#include <cmath>

namespace EXAMPLES {

using VEX2_LOADER::VEX2_MATRIX;
using VEX2_LOADER::VEX2_QUATERNION;
using VEX2_LOADER::VEX2_VECTOR;
using VEX2_LOADER::operator+;

inline constexpr float pi = 3.14159265f;

inline VEX2_VECTOR operator-(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline VEX2_VECTOR operator*(VEX2_VECTOR const &a, float s) { return {a.x * s, a.y * s, a.z * s}; }

inline float dot(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline VEX2_VECTOR cross(VEX2_VECTOR const &a, VEX2_VECTOR const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline float length(VEX2_VECTOR const &a) { return std::sqrt(dot(a, a)); }

inline VEX2_VECTOR unit(VEX2_VECTOR const &a) { return a * (1 / length(a)); }

inline VEX2_QUATERNION rotation_about(VEX2_VECTOR const &axis, float degrees)
{
    float const half = degrees * pi / 360;
    VEX2_VECTOR const part = unit(axis) * std::sin(half);
    return {part.x, part.y, part.z, std::cos(half)};
}

// 0 up to `from`, 1 from `to` on, an even transition between.
inline float smooth_step(float from, float to, float x)
{
    float const t = std::fmin(std::fmax((x - from) / (to - from), 0), 1);
    return t * t * (3 - 2 * t);
}

}  // namespace EXAMPLES
