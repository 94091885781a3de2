// OUTLINE_VERTEX: one corner of a closed outline, a ring of vertices that the caller owns, linked both ways.
#pragma once

#include "foundation/string.h"
#include "support/maths/vector.h"

namespace SUPPORT {

struct OUTLINE_VERTEX {
    OUTLINE_VERTEX *previous = nullptr;
    OUTLINE_VERTEX *next = nullptr;
    float x = 0, y = 0;
    VECTOR2 offset_direction;  // where the vertex goes when the outline is widened: by a distance times this
};

// Whether the outline turns back on itself at the vertex, or comes to it or leaves it by an edge of length 0. `text`
// then says so with the two edges, else it stays as it is. A pure spike, with both neighbours at the same point, is let
// through.
bool check_corner(OUTLINE_VERTEX const &vertex, KN::String &text);

// The same for each vertex of the ring, from the given one on; `text` names the last such corner.
bool check_ring(OUTLINE_VERTEX const &vertex, KN::String &text);

}  // namespace SUPPORT
