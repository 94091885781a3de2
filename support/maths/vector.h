// Small vectors of 32-bit floats: plain runs of numbers that lie in arrays and files as they stand. Each operation is
// done component by component in the order written; sums of products run x, y, z, w.
#pragma once

#include <cmath>

namespace SUPPORT {

struct VECTOR2 {
    float x = 0, y = 0;

    bool operator==(VECTOR2 const &) const = default;
};

struct VECTOR3 {
    float x = 0, y = 0, z = 0;

    bool operator==(VECTOR3 const &) const = default;
};

struct VECTOR4 {
    float x = 0, y = 0, z = 0, w = 0;

    bool operator==(VECTOR4 const &) const = default;
};

inline VECTOR2 operator+(VECTOR2 const &a, VECTOR2 const &b) { return {a.x + b.x, a.y + b.y}; }
inline VECTOR2 operator-(VECTOR2 const &a, VECTOR2 const &b) { return {a.x - b.x, a.y - b.y}; }
inline VECTOR2 operator*(VECTOR2 const &a, float b) { return {a.x * b, a.y * b}; }
inline float dot(VECTOR2 const &a, VECTOR2 const &b) { return a.x * b.x + a.y * b.y; }

inline VECTOR3 operator+(VECTOR3 const &a, VECTOR3 const &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline VECTOR3 operator-(VECTOR3 const &a, VECTOR3 const &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline VECTOR3 operator-(VECTOR3 const &a) { return {-a.x, -a.y, -a.z}; }
inline VECTOR3 operator*(VECTOR3 const &a, float b) { return {a.x * b, a.y * b, a.z * b}; }
inline VECTOR3 operator*(float a, VECTOR3 const &b) { return b * a; }
inline VECTOR3 operator/(VECTOR3 const &a, float b) { return {a.x / b, a.y / b, a.z / b}; }
inline VECTOR3 &operator+=(VECTOR3 &a, VECTOR3 const &b) { return a = a + b; }
inline VECTOR3 &operator-=(VECTOR3 &a, VECTOR3 const &b) { return a = a - b; }
inline VECTOR3 &operator*=(VECTOR3 &a, float b) { return a = a * b; }
inline float dot(VECTOR3 const &a, VECTOR3 const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline VECTOR3 cross(VECTOR3 const &a, VECTOR3 const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(VECTOR3 const &a) { return std::sqrt(dot(a, a)); }

// `a` with the length 1; a vector without length stays as it is.
inline VECTOR3 normalised(VECTOR3 const &a)
{
    float const squared = dot(a, a);
    return squared > 0 ? a * (1 / std::sqrt(squared)) : a;
}

inline VECTOR3 interpolated(VECTOR3 const &a, VECTOR3 const &b, float t)
{
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
}

}  // namespace SUPPORT
