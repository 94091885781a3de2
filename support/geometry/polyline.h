// POLYLINE: a run of points in the plane; each use says whether it is closed, which joins its last point to the first.
#pragma once

#include "foundation/dynamic_array.h"
#include "support/maths/vector.h"

#include <cmath>

namespace SUPPORT {

using POLYLINE = KN::DynamicArray<VECTOR2>;

// Two points closer than this in x and in y count as one, here and in POLYGON_CUTTER.
inline constexpr float outline_tolerance = 0.1f;

inline bool points_agree(VECTOR2 const &a, VECTOR2 const &b, float tolerance = outline_tolerance)
{
    return std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance;
}

// Whether no two edges meet that are not neighbours, nor have the same ends within the tolerance. Parallel edges never
// meet. False with fewer than three points, or two for an open polyline.
bool is_simple(POLYLINE const &polyline, bool closed);

// Whether the point is inside the closed polyline.
bool point_in_polyline(POLYLINE const &polyline, float x, float y);

// Whether closed polylines have the same number of points, not 0, each within `tolerance` of the other's in x and in y,
// from whichever point and in whichever sense.
bool same_shape(POLYLINE const &a, POLYLINE const &b, float tolerance);

}  // namespace SUPPORT
