// Tests of shapes in space against each other; the conventions are those of plane_shapes.h. Outputs stay as they are
// where a test rejects, unless said otherwise.
#pragma once

#include "support/geometry/shapes.h"

namespace SUPPORT {

// Where the line through the segment meets the plane; t is set unless the line is parallel to it. With a normal whose
// length is not 1, t is scaled by the square of that length.
bool segment_plane(SEGMENT3 const &segment, PLANE const &plane, END_FLAGS flags, float &t);

// The two points in which the line through the segment pierces the sphere, the one nearer to the start's side first, if
// at least one of them belongs to the segment. A line that only touches the sphere misses it.
bool segment_sphere(SEGMENT3 const &segment, SPHERE const &sphere, END_FLAGS flags, float &t0, float &t1);
bool segment_sphere(SEGMENT3 const &segment, SPHERE const &sphere, END_FLAGS flags, VECTOR3 (&points)[2]);

// Whether the point is within `radius` of the axis. The ends are flat: a point beyond a closed end is outside, however
// near. An axis of length 0 is a sphere.
bool point_capsule(SEGMENT3 const &axis, VECTOR3 const &point, float radius, END_FLAGS flags);
bool point_capsule(CAPSULE const &capsule, VECTOR3 const &point, END_FLAGS flags);

// The point that the planes have in common. False, with the point at zero, if there is not exactly one. With a number
// missing it is NaN.
bool three_planes(PLANE const &a, PLANE const &b, PLANE const &c, VECTOR3 &point);

// The interval of parameters in which origin + t * direction is within w of the plane, where x, y, z of
// `origin_and_half_thickness` are the origin and w is half the slab's thickness. A direction nearly parallel to the
// plane gives 0 to 1e32, also on the far negative side; it is rejected only above the slab. Nothing is rejected
// because a number is missing.
bool slab_interval(PLANE const &plane, VECTOR4 const &origin_and_half_thickness, VECTOR3 const &direction, float &t0,
                   float &t1);

}  // namespace SUPPORT
