// Points in outlines by counting crossings: a point is inside if an odd number of the outline's edges pass on its
// right. A point on the outline itself may come out either way.
#pragma once

#include "support/maths/vector.h"

namespace SUPPORT {

// Whether the edge from a to b passes on the right of the point, its lower end included, its upper end not.
inline bool edge_counts(VECTOR2 const &a, VECTOR2 const &b, float x, float y)
{
    if (a.y > b.y)
        return b.y <= y && y < a.y && (x - b.x) * (a.y - b.y) < (y - b.y) * (a.x - b.x);
    return a.y <= y && y < b.y && (x - a.x) * (b.y - a.y) < (y - a.y) * (b.x - a.x);
}

}  // namespace SUPPORT
