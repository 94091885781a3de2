// Tests of outlines, given as rings of OUTLINE_VERTEX, against other shapes in the plane. Each goes round from the
// given vertex until it meets it again, and only reads, so any thread may call. An outline is an area: what lies wholly
// inside it meets it, and so it does if it lies wholly inside the other area. An edge that is parallel to what it is
// tested against is passed over.
#pragma once

#include "support/geometry/outline_vertex.h"
#include "support/geometry/shapes.h"

namespace SUPPORT {

// A ring is handed over as any one of its vertices.
using OUTLINE_RING = OUTLINE_VERTEX;

// Whether any edge meets the segment: here only the outline's line counts, not its area.
bool ring_segment(OUTLINE_RING const &ring, SEGMENT2 const &segment, END_FLAGS flags);

// The same, with the smallest parameter on the segment of all crossings; t stays as it is if there is none.
bool ring_segment_first(OUTLINE_RING const &ring, SEGMENT2 const &segment, END_FLAGS flags, float &t);

bool ring_circle(OUTLINE_RING const &ring, CIRCLE const &circle);
bool ring_rect(OUTLINE_RING const &ring, RECT2 const &rect);

// `vertex`: where the edge of `a` starts that meets `b`; if no edges meet, the given vertex of the ring that lies
// inside the other one. Stays as it is if the rings are apart.
bool ring_ring(OUTLINE_RING const &a, OUTLINE_RING const &b, OUTLINE_VERTEX const *&vertex);

// Whether the point is inside the outline after each vertex has moved by `distance` times its offset direction.
bool ring_contains_point(OUTLINE_RING const &ring, VECTOR2 const &point, float distance);

}  // namespace SUPPORT
