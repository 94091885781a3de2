#include "support/geometry/polyline.h"

#include "support/geometry/crossing_count.h"
#include "support/geometry/flat_box.h"
#include "support/geometry/plane_shapes.h"

#include <algorithm>

namespace SUPPORT {

static bool edges_clash(SEGMENT2 const &a, SEGMENT2 const &b)
{
    return segments_cross_2d(a, b, closed_segment, closed_segment, 0) ||
           (points_agree(a.start, b.start) && points_agree(a.end, b.end)) ||
           (points_agree(a.start, b.end) && points_agree(a.end, b.start));
}

// Edges are only looked at one by one where the boxes around them, and before that around runs of them, are near each
// other.
bool is_simple(POLYLINE const &polyline, bool closed)
{
    unsigned const count = polyline.size();
    if (count < (closed ? 3u : 2u))
        return false;

    auto const edge = [&](unsigned i) { return SEGMENT2{polyline[i], polyline[i + 1 < count ? i + 1 : 0]}; };
    unsigned const edges = closed ? count : count - 1;
    constexpr unsigned run_length = 16;
    KN::DynamicArray<FLAT_BOX> boxes, run_boxes;
    boxes.reserve(edges);
    run_boxes.reserve(edges / run_length + 1);
    for (unsigned i = 0; i < edges; ++i) {
        SEGMENT2 const e = edge(i);
        FLAT_BOX const box(e.start, e.end);
        boxes.append(box);
        if (i % run_length == 0)
            run_boxes.append(box);
        else
            run_boxes.back().add(box);
    }

    auto const clashes_with_run = [&](unsigned i, unsigned run) {
        unsigned const first = std::max(i + 2, run * run_length);
        unsigned last = std::min(edges, (run + 1) * run_length);
        if (closed && i == 0 && last == edges)
            --last;  // the first edge is the last one's neighbour
        for (unsigned j = first; j < last; ++j)
            if (boxes[i].within(outline_tolerance, boxes[j]) && edges_clash(edge(i), edge(j)))
                return true;
        return false;
    };
    for (unsigned a = 0; a < run_boxes.size(); ++a)
        for (unsigned b = a; b < run_boxes.size(); ++b) {
            if (!run_boxes[a].within(outline_tolerance, run_boxes[b]))
                continue;
            for (unsigned i = a * run_length; i < std::min(edges, (a + 1) * run_length); ++i)
                if (boxes[i].within(outline_tolerance, run_boxes[b]) && clashes_with_run(i, b))
                    return false;
        }
    return true;
}

bool point_in_polyline(POLYLINE const &polyline, float x, float y)
{
    bool inside = false;
    for (unsigned i = 0, count = polyline.size(); i < count; ++i)
        inside ^= edge_counts(polyline[i], polyline[i + 1 < count ? i + 1 : 0], x, y);
    return inside;
}

bool same_shape(POLYLINE const &a, POLYLINE const &b, float tolerance)
{
    unsigned const count = a.size();
    if (count == 0 || b.size() != count)
        return false;

    // The first pair of points that agree fixes how the shapes lie on each other.
    for (unsigned i = 0; i < count; ++i)
        for (unsigned j = 0; j < count; ++j) {
            if (!points_agree(a[i], b[j], tolerance))
                continue;
            bool forward = true, backward = true;
            for (unsigned step = 1; step < count && (forward || backward); ++step) {
                VECTOR2 const &point = a[(i + step) % count];
                forward = forward && points_agree(point, b[(j + step) % count], tolerance);
                backward = backward && points_agree(point, b[(j + count - step) % count], tolerance);
            }
            return forward || backward;
        }
    return false;
}

}  // namespace SUPPORT
