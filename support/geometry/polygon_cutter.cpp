// Each cut adds two nodes to the outline's ring, joined by a chain of the cut's vertices that can be followed from both
// ends; the ring itself keeps going round the outline. Pieces are found by walking: along the ring up to a node with a
// chain, along the chain to its other end, on along the ring, until back at the start.

#include "support/geometry/polygon_cutter.h"

#include "support/geometry/crossing_count.h"

#include <algorithm>

namespace SUPPORT {

static VECTOR2 place(CUT_NODE const &node) { return {node.x, node.y}; }

static float squared_distance(CUT_NODE const &node, VECTOR2 const &point)
{
    VECTOR2 const way = point - place(node);
    return dot(way, way);
}

template <class NODE>
static void append_to_list(NODE *&newest, NODE *node)
{
    node->node_list_prev = newest;
    if (newest != nullptr)
        newest->node_list_next = node;
    newest = node;
}

void CUT_SHAPE::add(float x, float y)
{
    VECTOR2 const point = {x, y};
    if (polyline.empty() || (!points_agree(point, polyline.back()) && !points_agree(point, polyline[0])))
        polyline.append(point);
}

CUT_NODE *POLYGON_CUTTER::make_node(VECTOR2 const &point, std::int32_t shape_id)
{
    CUT_NODE *const node = new (memory.allocate<CUT_NODE>(1)) CUT_NODE;
    node->x = point.x;
    node->y = point.y;
    node->shape_id = shape_id;
    append_to_list(node_list, node);
    ++node_count;
    return node;
}

static void link_behind(CUT_NODE *before, CUT_NODE *node)
{
    node->ring_prev = before;
    node->ring_next = before->ring_next;
    node->ring_prev->ring_next = node;
    node->ring_next->ring_prev = node;
}

bool POLYGON_CUTTER::set_outline(POLYLINE const &polyline)
{
    if (ring != nullptr || !is_simple(polyline, true))
        return false;

    ring = make_node(polyline[0], -1);
    ring->ring_prev = ring->ring_next = ring;
    for (unsigned i = 1; i < polyline.size(); ++i)
        link_behind(ring->ring_prev, make_node(polyline[i], -1));

    constexpr unsigned run_length = 12;
    CUT_NODE *node = ring;
    for (unsigned i = 0; i < node_count; ++i, node = node->ring_next) {
        FLAT_BOX const box(place(*node), place(*node->ring_next));
        if (i % run_length == 0)
            runs.append(RUN{node, box});
        else
            runs.back().box.add(box);
    }
    return true;
}

bool POLYGON_CUTTER::point_inside(float x, float y) const
{
    bool inside = false;
    for (unsigned run = 0; run < runs.size(); ++run) {
        if (!runs[run].box.reaches_right_of(x, y))
            continue;
        CUT_NODE const *node = runs[run].first, *const end = end_of_run(run);
        do {
            CUT_NODE const *const next = node->ring_next;
            inside ^= edge_counts(place(*node), place(*next), x, y);
            node = next;
        } while (node != end);
    }
    return inside;
}

bool POLYGON_CUTTER::ring_inside_polygon(POLYLINE const &polyline) const
{
    CUT_NODE const *node = ring;
    if (node == nullptr)
        return false;
    do {
        if (!point_in_polyline(polyline, node->x, node->y))
            return false;
        node = node->ring_next;
    } while (node != ring);
    return true;
}

bool POLYGON_CUTTER::polyline_inside_ring(POLYLINE const &polyline) const
{
    return std::all_of(polyline.begin(), polyline.end(),
                       [this](VECTOR2 const &point) { return point_inside(point.x, point.y); });
}

// Cutting.

// Whether part / whole is from 0 to 1.
static bool is_part(float part, float whole)
{
    return whole > 0 ? part >= 0 && part <= whole : part <= 0 && part >= whole;
}

void POLYGON_CUTTER::find_hits(POLYLINE const &polyline, unsigned edge)
{
    hits.resize(0);
    VECTOR2 const p = polyline[edge], q = polyline[(edge + 1) % polyline.size()], e = q - p;
    FLAT_BOX const box(p, q);
    for (unsigned run = 0; run < runs.size(); ++run) {
        if (!runs[run].box.within(outline_tolerance, box) || !runs[run].box.meets_line(p, e))
            continue;
        CUT_NODE *node = runs[run].first, *const end = end_of_run(run);
        do {
            CUT_NODE *const next = node->ring_next;
            VECTOR2 const r = place(*node), f = place(*next) - r;
            float const d = f.y * e.x - f.x * e.y;
            VECTOR2 const w = p - r;
            float const v_times_d = e.x * w.y - e.y * w.x, u_times_d = f.x * w.y - f.y * w.x;
            if (d != 0 && is_part(v_times_d, d) && is_part(u_times_d, d)) {
                float const u = u_times_d / d;
                hits.append(INTERSECTION{node, next, p + e * u, u, run, hits.size()});
            }
            node = next;
        } while (node != end);
    }
    std::sort(hits.begin(), hits.end(),
              [](INTERSECTION const &a, INTERSECTION const &b) { return a.t != b.t ? a.t < b.t : a.order < b.order; });
}

CUT_RESULT POLYGON_CUTTER::cut(POLYLINE const &polyline, bool closed)
{
    bool const made = cut_along(polyline, closed);
    ++shape_counter;
    has_cuts |= made;
    if (!closed)
        return made ? OPEN_CUT : polyline_inside_ring(polyline) ? OPEN_INSIDE : OPEN_OUTSIDE;
    if (made)
        return CLOSED_CUT;
    if (ring_inside_polygon(polyline)) {
        outline_swallowed = true;
        return CLOSED_SWALLOWS;
    }
    return polyline_inside_ring(polyline) ? CLOSED_INSIDE : CLOSED_OUTSIDE;
}

// Whether any cut was made.
bool POLYGON_CUTTER::cut_along(POLYLINE const &polyline, bool closed)
{
    unsigned const count = polyline.size();
    unsigned const edges = closed || count == 0 ? count : count - 1;
    bool made = false;
    bool hits_at_hand = false;
    for (unsigned i = 0; i < edges;) {
        if (!hits_at_hand)
            find_hits(polyline, i);
        hits_at_hand = false;
        if (hits.empty()) {
            ++i;
            continue;
        }
        for (unsigned h = 0; h + 1 < hits.size(); ++h)
            made |= add_cut(hits[h], hits[h + 1], {polyline, 0, 0});

        // From the last hit along the following edges to the next one.
        INTERSECTION const open = hits.back();
        unsigned const stop = closed ? i + edges : edges;
        unsigned j = i + 1;
        for (; j < stop; ++j) {
            find_hits(polyline, j % count);
            if (!hits.empty())
                break;
        }
        if (j == stop)
            break;  // no other edge has hits
        made |= add_cut(open, hits[0], {polyline, (i + 1) % count, (j + 1) % count});
        hits_at_hand = true;
        i = j;  // past the last edge: gone round
    }
    return made;
}

// Whether the way from start to end is inside the outline. Vertices near either end are not asked.
bool POLYGON_CUTTER::runs_inside(INTERSECTION const &start, INTERSECTION const &end, VERTEX_RUN const &between) const
{
    if (between.first == between.stop) {
        VECTOR2 const middle = (start.point + end.point) * 0.5f;
        return point_inside(middle.x, middle.y);
    }
    for (unsigned i = between.first; i != between.stop; i = (i + 1) % between.polyline.size()) {
        VECTOR2 const &vertex = between.polyline[i];
        if (!points_agree(vertex, start.point) && !points_agree(vertex, end.point) && !point_inside(vertex.x, vertex.y))
            return false;
    }
    return true;
}

bool POLYGON_CUTTER::add_cut(INTERSECTION const &start, INTERSECTION const &end, VERTEX_RUN const &between)
{
    if (points_agree(start.point, end.point) || !runs_inside(start, end, between))
        return false;
    CUT_NODE *const first = insert_node(start);
    make_chain(first, insert_node(end), between);
    return true;
}

// Nodes of this polyline may have come onto the hit's edge since it was found: the new one takes its place among them.
CUT_NODE *POLYGON_CUTTER::insert_node(INTERSECTION const &hit)
{
    CUT_NODE *const node = make_node(hit.point, std::int32_t(shape_counter));
    float const way = squared_distance(*hit.edge, hit.point);
    CUT_NODE *before = hit.edge;
    while (before->ring_next != hit.edge_end && squared_distance(*hit.edge, place(*before->ring_next)) < way)
        before = before->ring_next;
    link_behind(before, node);
    runs[hit.run].box.add(hit.point);
    return node;
}

void POLYGON_CUTTER::make_chain(CUT_NODE *start, CUT_NODE *end, VERTEX_RUN const &between)
{
    start->arrival.cut_node = start;
    end->arrival.cut_node = end;

    CHAIN_LINK **forward = &start->forward_chain;  // where the next step of the chain is noted
    CHAIN_LINK *back = &start->arrival;
    for (unsigned i = between.first; i != between.stop; i = (i + 1) % between.polyline.size()) {
        CHAIN_NODE *const node = new (memory.allocate<CHAIN_NODE>(1)) CHAIN_NODE;
        append_to_list(chain_list, node);
        ++chain_count;
        node->x = between.polyline[i].x;
        node->y = between.polyline[i].y;
        node->shape_id = start->shape_id;
        node->forward.chain_node = node->backward.chain_node = node;

        *forward = &node->forward;
        node->forward.twin = back;
        back->twin = &node->forward;
        node->backward.next = back;
        forward = &node->forward.next;
        back = &node->backward;
    }
    *forward = &end->arrival;
    end->arrival.twin = back;
    back->twin = &end->arrival;
    end->backward_chain = back;
}

// Pieces.

// Adds the border of the piece that lies along the ring in front of `start` and along its chain. False if that does not
// come round, or if the piece lies on the forward side of several cuts.
bool POLYGON_CUTTER::walk(CUT_NODE *start, CUT_SHAPE &shape) const
{
    std::uint64_t const most_steps = 2 * (std::uint64_t(node_count) + chain_count);
    std::uint64_t steps = 0;
    bool chain_has_id = false;  // a straight cut has no vertices that could say it
    CUT_NODE const *node = start;
    do {
        shape.add(node->x, node->y);
        bool const forward = node->forward_chain != nullptr;
        CHAIN_LINK const *link = forward ? node->forward_chain : node->backward_chain;
        if (forward && shape.shape_id == -1)
            shape.shape_id = node->shape_id;
        for (; link != nullptr; link = link->next) {
            if (++steps > most_steps)
                return false;
            if (link->cut_node != nullptr) {
                node = link->cut_node;
                shape.add(node->x, node->y);
                break;
            }
            CHAIN_NODE const &vertex = *link->chain_node;
            shape.add(vertex.x, vertex.y);
            if (!forward)
                continue;
            if (chain_has_id && vertex.shape_id != shape.shape_id)
                return false;
            shape.shape_id = vertex.shape_id;
            chain_has_id = true;
        }
        if (link != nullptr && node == start)
            return true;  // by way of a chain, where cuts cross
        node = node->ring_next;
        if (++steps > most_steps)
            return false;
    } while (node != start);
    return true;
}

// Adds the piece, unless it is there. `boxes` are those around the pieces, `walked` is room for its points.
bool POLYGON_CUTTER::add_shape(CUT_NODE *start, KN::DynamicArray<FLAT_BOX> &boxes, CUT_SHAPE &walked)
{
    walked.shape_id = -1;
    walked.polyline.resize(0);
    if (!walk(start, walked))
        return false;
    if (start->forward_chain == nullptr)
        walked.shape_id = -1;
    FLAT_BOX box(walked.polyline[0], walked.polyline[0]);
    for (VECTOR2 const &point : walked.polyline)
        box.add(point);
    for (unsigned i = 0; i < output_shapes.size(); ++i)
        if (box.agrees(boxes[i], 2 * outline_tolerance) &&
            same_shape(walked.polyline, output_shapes[i].polyline, outline_tolerance))
            return true;
    output_shapes.append(walked);
    boxes.append(box);
    return true;
}

bool POLYGON_CUTTER::build_shapes()
{
    if (ring == nullptr || !output_shapes.empty())
        return false;

    KN::DynamicArray<FLAT_BOX> boxes;
    CUT_SHAPE walked;
    CUT_NODE *node = ring;
    do {
        bool const starts = node->forward_chain != nullptr, ends = node->backward_chain != nullptr;
        if ((starts && ends) || ((starts || ends) && !add_shape(node, boxes, walked))) {
            output_shapes.clear();
            return false;
        }
        node = node->ring_next;
    } while (node != ring);
    return !output_shapes.empty() || add_shape(ring, boxes, walked);
}

}  // namespace SUPPORT
