#include "support/geometry/outline_ring.h"

#include "support/geometry/crossing_count.h"
#include "support/geometry/plane_shapes.h"

namespace SUPPORT {

static SEGMENT2 edge_from(OUTLINE_VERTEX const &vertex)
{
    return {{vertex.x, vertex.y}, {vertex.next->x, vertex.next->y}};
}

// The first vertex whose edge `hit` answers true for; null if none.
template <class HIT>
static OUTLINE_VERTEX const *first_edge(OUTLINE_RING const &ring, HIT const &hit)
{
    OUTLINE_VERTEX const *at = &ring;
    do {
        if (hit(edge_from(*at)))
            return at;
        at = at->next;
    } while (at != &ring);
    return nullptr;
}

static OUTLINE_VERTEX const *first_crossing(OUTLINE_RING const &ring, SEGMENT2 const &segment, END_FLAGS flags)
{
    return first_edge(ring,
                      [&](SEGMENT2 const &edge) { return segments_cross_2d(segment, edge, flags, closed_segment, 0); });
}

bool ring_segment(OUTLINE_RING const &ring, SEGMENT2 const &segment, END_FLAGS flags)
{
    return first_crossing(ring, segment, flags) != nullptr;
}

bool ring_segment_first(OUTLINE_RING const &ring, SEGMENT2 const &segment, END_FLAGS flags, float &t)
{
    bool found = false;
    first_edge(ring, [&](SEGMENT2 const &edge) {
        float at, unused;
        if (segments_intersect_2d(segment, edge, flags, closed_segment, at, unused, 0) && (!found || at < t)) {
            t = at;
            found = true;
        }
        return false;
    });
    return found;
}

bool ring_circle(OUTLINE_RING const &ring, CIRCLE const &circle)
{
    VECTOR2 const from_centre = VECTOR2{ring.x, ring.y} - circle.centre;
    return dot(from_centre, from_centre) <= circle.radius * circle.radius ||
           first_edge(ring, [&](SEGMENT2 const &edge) { return segment_circle(edge, circle, closed_segment); }) ||
           ring_contains_point(ring, circle.centre, 0);
}

bool ring_rect(OUTLINE_RING const &ring, RECT2 const &rect)
{
    return first_edge(ring, [&](SEGMENT2 const &edge) { return segment_rect(edge, rect); }) ||
           ring_contains_point(ring, rect.min, 0);
}

bool ring_ring(OUTLINE_RING const &a, OUTLINE_RING const &b, OUTLINE_VERTEX const *&vertex)
{
    OUTLINE_VERTEX const *found =
        first_edge(a, [&](SEGMENT2 const &edge) { return ring_segment(b, edge, closed_segment); });
    if (found == nullptr && ring_contains_point(b, {a.x, a.y}, 0))
        found = &a;
    if (found == nullptr && ring_contains_point(a, {b.x, b.y}, 0))
        found = &b;
    if (found != nullptr)
        vertex = found;
    return found != nullptr;
}

bool ring_contains_point(OUTLINE_RING const &ring, VECTOR2 const &point, float distance)
{
    auto const moved = [distance](OUTLINE_VERTEX const &vertex) {
        return VECTOR2{vertex.x + vertex.offset_direction.x * distance,
                       vertex.y + vertex.offset_direction.y * distance};
    };
    bool inside = false;
    OUTLINE_VERTEX const *at = &ring;
    VECTOR2 from = moved(ring);
    do {
        at = at->next;
        VECTOR2 const to = moved(*at);
        inside ^= edge_counts(from, to, point.x, point.y);
        from = to;
    } while (at != &ring);
    return inside;
}

}  // namespace SUPPORT
