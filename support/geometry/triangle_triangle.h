// Triangles in space against each other, by Möller's interval test ("A Fast Triangle-Triangle Intersection Test", 1997)
// with an epsilon of 0: touching counts. The steps are done in 64-bit floats and without division, so that for whole
// coordinates of at most 50 the answer is exact. Triangles without area count as what they are, a segment or a point;
// one with a number missing (NaN) meets nothing. Pure functions, without allocation; either order of the corners.
#pragma once

#include "support/geometry/shapes.h"

namespace SUPPORT {

struct TRIANGLE3 {
    VECTOR3 corners[3];
};

bool triangle_triangle(TRIANGLE3 const &a, TRIANGLE3 const &b);

// The same. `coplanar` is set with every answer; if the triangles meet and are not coplanar, `overlap` is the part of
// the two planes' common line that belongs to both, else it stays as it is.
bool triangle_triangle_with_segment(TRIANGLE3 const &a, TRIANGLE3 const &b, bool &coplanar, SEGMENT3 &overlap);

}  // namespace SUPPORT
