#include "support/geometry/space_shapes.h"

#include <algorithm>
#include <cmath>

namespace SUPPORT {

bool segment_plane(SEGMENT3 const &segment, PLANE const &plane, END_FLAGS flags, float &t)
{
    VECTOR3 const &n = plane.normal;
    float const denominator = dot(n, segment.end - segment.start);
    if (!(std::abs(denominator) > 0))
        return false;

    float const distance = dot(n, segment.start) + plane.d;
    t = -dot(n, n * distance) / denominator;
    return within_ends(t, flags);
}

// A line as start + t * direction, with the direction of length 1, and where it pierces the sphere.
struct PIERCING {
    VECTOR3 direction;
    float per_length;  // from t to the segment's parameter
    float first, second;
};

static bool pierce(SEGMENT3 const &segment, SPHERE const &sphere, END_FLAGS flags, PIERCING &result)
{
    VECTOR3 const along = segment.end - segment.start, m = segment.start - sphere.centre;
    float const segment_length = length(along);
    if (!(segment_length > 0))
        return false;

    result.per_length = 1 / segment_length;
    result.direction = along * result.per_length;
    float const a = dot(result.direction, result.direction);
    float const b = 2 * dot(result.direction, m);
    float const c = dot(m, m) - sphere.radius * sphere.radius;
    float const discriminant = b * b - 4 * a * c;
    if (!(discriminant > 0))
        return false;

    float const root = std::sqrt(discriminant), reciprocal = 1 / (2 * a);
    result.first = (-b - root) * reciprocal;
    result.second = (root - b) * reciprocal;
    return within_ends(result.first * result.per_length, flags) ||
           within_ends(result.second * result.per_length, flags);
}

bool segment_sphere(SEGMENT3 const &segment, SPHERE const &sphere, END_FLAGS flags, float &t0, float &t1)
{
    PIERCING hit;
    if (!pierce(segment, sphere, flags, hit))
        return false;
    t0 = hit.first * hit.per_length;
    t1 = hit.second * hit.per_length;
    return true;
}

bool segment_sphere(SEGMENT3 const &segment, SPHERE const &sphere, END_FLAGS flags, VECTOR3 (&points)[2])
{
    PIERCING hit;
    if (!pierce(segment, sphere, flags, hit))
        return false;
    points[0] = segment.start + hit.direction * hit.first;
    points[1] = segment.start + hit.direction * hit.second;
    return true;
}

bool point_capsule(SEGMENT3 const &axis, VECTOR3 const &point, float radius, END_FLAGS flags)
{
    VECTOR3 const along = axis.end - axis.start;
    float const axis_length = length(along);
    float t = 0;
    if (axis_length != 0) {
        float const per_length = 1 / axis_length;
        t = dot((point - axis.start) * per_length, along * per_length);
    }
    return within_ends(t, flags) && length(point - (axis.start + along * t)) <= radius;
}

bool point_capsule(CAPSULE const &capsule, VECTOR3 const &point, END_FLAGS flags)
{
    return point_capsule(capsule.axis, point, capsule.radius, flags);
}

bool three_planes(PLANE const &a, PLANE const &b, PLANE const &c, VECTOR3 &point)
{
    VECTOR3 const b_c = cross(b.normal, c.normal);
    float const determinant = dot(a.normal, b_c);
    point = {};
    if (determinant == 0)
        return false;

    VECTOR3 const c_a = cross(c.normal, a.normal), a_b = cross(a.normal, b.normal);
    point = (b_c * a.d + c_a * b.d + a_b * c.d) * (-1 / determinant);
    return true;
}

bool slab_interval(PLANE const &plane, VECTOR4 const &origin_and_half_thickness, VECTOR3 const &direction, float &t0,
                   float &t1)
{
    auto const &[x, y, z, half] = origin_and_half_thickness;
    float const denominator = dot(plane.normal, direction);
    float const distance = dot(plane.normal, VECTOR3{x, y, z}) + plane.d;
    if (std::abs(denominator) >= 0.001f) {
        float const reciprocal = 1 / denominator;
        float const upper = (half - distance) * reciprocal, lower = (-half - distance) * reciprocal;
        t0 = std::min(upper, lower);
        t1 = std::max(upper, lower);
        return true;
    }
    if (distance > half)
        return false;
    t0 = 0;
    t1 = 1e32f;
    return true;
}

}  // namespace SUPPORT
