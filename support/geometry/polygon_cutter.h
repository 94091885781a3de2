// POLYGON_CUTTER: takes one closed outline, lets polylines cut it, and hands back the pieces. It goes through three
// stages: `set_outline`, any number of `cut`, `build_shapes` once. Outlines and polylines may run either way round; all
// coordinates are 32-bit floats, and points within 0.1 of each other in x and in y count as one.
//
// Cuts do not see each other: one that crosses an earlier one gives pieces that overlap, or none. One thread works on a
// cutter; different cutters share nothing. The members may be read at any time, to draw what is going on.
#pragma once

#include "foundation/arena.h"
#include "support/geometry/flat_box.h"
#include "support/geometry/polyline.h"

#include <cstdint>

namespace SUPPORT {

struct CHAIN_NODE;
struct CUT_NODE;

// One step of a chain, on to the next vertex of a cut or to the ring node where the chain ends.
struct CHAIN_LINK {
    CHAIN_LINK *twin = nullptr;  // the same step in the other direction
    CHAIN_LINK *next = nullptr;  // none where the chain ends
    CHAIN_NODE *chain_node = nullptr;
    CUT_NODE *cut_node = nullptr;  // one of the two is set
};

// A vertex of the outline's ring, old or made by a cut.
struct CUT_NODE {
    CUT_NODE *node_list_prev = nullptr, *node_list_next = nullptr;  // all ring nodes, in the order they were made
    CUT_NODE *ring_prev = nullptr, *ring_next = nullptr;            // in the outline's order
    CHAIN_LINK *forward_chain = nullptr;                            // set where a cut starts
    CHAIN_LINK *backward_chain = nullptr;                           // set where a cut ends
    float x = 0, y = 0;
    std::int32_t shape_id = -1;  // of the cut that made it; -1 for a vertex of the outline
    CHAIN_LINK arrival;          // the last step of the chain that ends here
};

// A vertex of a cut inside the outline.
struct CHAIN_NODE {
    CHAIN_NODE *node_list_prev = nullptr, *node_list_next = nullptr;
    CHAIN_LINK forward, backward;  // the steps to here, from the start and from the end of the cut
    float x = 0, y = 0;
    std::int32_t shape_id = -1;
};

// One piece.
struct CUT_SHAPE {
    // Going along the ring from `ring` on, the first node of the piece that belongs to a cut decides: the number of the
    // cut if it starts there, -1 if it ends there. So for an outline and closed polylines that run the same way round,
    // the pieces inside a polyline carry its number and those outside -1.
    std::int32_t shape_id = -1;
    POLYLINE polyline;

    // Leaves out a point that agrees with the last or the first one.
    void add(float x, float y);
};

enum CUT_RESULT {
    CLOSED_CUT = 1,
    CLOSED_INSIDE,    // no cut: the polyline lies inside the outline
    CLOSED_OUTSIDE,   // no cut: the polyline lies outside
    CLOSED_SWALLOWS,  // no cut: the outline lies inside the polyline
    OPEN_CUT,
    OPEN_INSIDE,
    OPEN_OUTSIDE,
};

class POLYGON_CUTTER {
public:
    POLYGON_CUTTER() = default;
    POLYGON_CUTTER(POLYGON_CUTTER const &) = delete;
    POLYGON_CUTTER &operator=(POLYGON_CUTTER const &) = delete;

    // False, without a ring, if the outline is not simple or there is an outline already.
    bool set_outline(POLYLINE const &polyline);

    // Cuts along the polyline wherever it runs through the outline from edge to edge. A run that only touches the
    // outline or ends inside it cuts nothing. Each call takes a number, 0 for the first, which marks what it makes.
    CUT_RESULT cut(POLYLINE const &polyline, bool closed);

    // Fills `output_shapes`, each piece in the outline's sense; an outline without cuts is one piece. False, with no
    // shapes, if there is no outline, if shapes are there already, or if cuts that cross each other leave a piece
    // without a clear border or number.
    bool build_shapes();

    // By the number of crossings; a point on the outline may come out either way. Nothing is inside of no outline.
    bool point_inside(float x, float y) const;
    bool ring_inside_polygon(POLYLINE const &polyline) const;
    bool polyline_inside_ring(POLYLINE const &polyline) const;

    unsigned node_count = 0;
    CUT_NODE *node_list = nullptr;  // the newest; older ones by node_list_prev
    CUT_NODE *ring = nullptr;       // any node of the ring
    unsigned chain_count = 0;
    CHAIN_NODE *chain_list = nullptr;  // the newest
    KN::DynamicArray<CUT_SHAPE> output_shapes;
    unsigned shape_counter = 0;
    bool has_cuts = false;
    bool outline_swallowed = false;  // by a closed polyline

private:
    // Some edges of the ring in a row, from `first` to where the next run begins, and the box around them. Nodes that
    // cuts add come into the runs.
    struct RUN {
        CUT_NODE *first;
        FLAT_BOX box;
    };
    // Where an edge of a polyline meets the ring.
    struct INTERSECTION {
        CUT_NODE *edge, *edge_end;  // of the ring, as it was when this was found
        VECTOR2 point;
        float t;         // along the polyline's edge
        unsigned run;    // that the ring's edge is in
        unsigned order;  // in which it was found
    };
    // Some vertices of a closed polyline: first, first + 1, ... up to but without stop, modulo the count.
    struct VERTEX_RUN {
        POLYLINE const &polyline;
        unsigned first, stop;
    };

    void find_hits(POLYLINE const &polyline, unsigned edge);
    bool cut_along(POLYLINE const &polyline, bool closed);
    bool add_cut(INTERSECTION const &start, INTERSECTION const &end, VERTEX_RUN const &between);
    bool runs_inside(INTERSECTION const &start, INTERSECTION const &end, VERTEX_RUN const &between) const;
    CUT_NODE *make_node(VECTOR2 const &point, std::int32_t shape_id);
    CUT_NODE *insert_node(INTERSECTION const &hit);
    void make_chain(CUT_NODE *start, CUT_NODE *end, VERTEX_RUN const &between);
    bool walk(CUT_NODE *start, CUT_SHAPE &shape) const;
    bool add_shape(CUT_NODE *start, KN::DynamicArray<FLAT_BOX> &boxes, CUT_SHAPE &walked);

    CUT_NODE *end_of_run(unsigned run) const { return run + 1 < runs.size() ? runs[run + 1].first : ring; }

    KN::Arena memory;  // all nodes
    KN::DynamicArray<RUN> runs;
    KN::DynamicArray<INTERSECTION> hits;  // of the edge looked at last
};

}  // namespace SUPPORT
