#include "support/geometry/polygon_cutter.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace SUPPORT {

namespace {

using POINTS = std::vector<VECTOR2>;

POLYLINE line_of(POINTS const &points)
{
    POLYLINE polyline;
    for (VECTOR2 const &point : points)
        polyline.append(point);
    return polyline;
}

// Positive for counter-clockwise outlines.
double area(POINTS const &points)
{
    double sum = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        VECTOR2 const &a = points[i], &b = points[(i + 1) % points.size()];
        sum += double(a.x) * b.y - double(a.y) * b.x;
    }
    return sum / 2;
}
double area(CUT_SHAPE const &shape) { return area(POINTS(shape.polyline.begin(), shape.polyline.end())); }

// What of the outline is on the left of the line from a to b (Sutherland and Hodgman's clipping; its area is right also
// where the outline falls into several parts).
POINTS left_of(POINTS const &outline, VECTOR2 const &a, VECTOR2 const &b)
{
    auto const side = [&](VECTOR2 const &p) {
        return (double(b.x) - a.x) * (double(p.y) - a.y) - (double(b.y) - a.y) * (double(p.x) - a.x);
    };
    POINTS kept;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        VECTOR2 const &p = outline[i], &q = outline[(i + 1) % outline.size()];
        double const at_p = side(p), at_q = side(q);
        if (at_p >= 0)
            kept.push_back(p);
        if ((at_p > 0 && at_q < 0) || (at_p < 0 && at_q > 0))
            kept.push_back(p + (q - p) * float(at_p / (at_p - at_q)));
    }
    return kept;
}

std::mt19937 generator(1);
float random_between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(generator); }

// A star around (x, y), simple and mostly far from convex; convex if all radii are the same.
POINTS star(float x, float y, float least_radius, float most_radius, unsigned count)
{
    POINTS points;
    for (unsigned i = 0; i < count; ++i) {
        float const angle = 6.2831853f * (float(i) + random_between(0, 0.8f)) / float(count);
        float const radius = random_between(least_radius, most_radius);
        points.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle)});
    }
    return points;
}

double sum_of_areas(POLYGON_CUTTER const &cutter)
{
    double sum = 0;
    for (CUT_SHAPE const &shape : cutter.output_shapes)
        sum += area(shape);
    return sum;
}

// Links and counts fit together.
void check_structure(POLYGON_CUTTER const &cutter)
{
    unsigned nodes = 0, starts = 0, vertices = 0;
    CUT_NODE const *node = cutter.ring;
    do {
        ++nodes;
        ASSERT_EQ(node->ring_next->ring_prev, node);
        ASSERT_EQ(node->shape_id >= 0, node->forward_chain != nullptr || node->backward_chain != nullptr);
        if (node->forward_chain != nullptr) {
            ++starts;
            CHAIN_LINK const *link = node->forward_chain;
            ASSERT_EQ(link->twin, &node->arrival);
            for (; link->next != nullptr; link = link->next) {
                ++vertices;
                ASSERT_EQ(link->twin->twin, link);
                ASSERT_EQ(link->next->twin, &link->chain_node->backward);
            }
            ASSERT_EQ(link->cut_node->backward_chain, link->twin);
        }
        node = node->ring_next;
    } while (node != cutter.ring);
    EXPECT_EQ(nodes, cutter.node_count);
    EXPECT_EQ(vertices, cutter.chain_count);
    EXPECT_EQ(starts > 0, cutter.has_cuts);
}

POINTS const box = {{0, 0}, {0, 10}, {10, 10}, {10, 0}};

}  // namespace

TEST(PolygonCutter, EachResultHasItsCode)
{
    struct {
        char const *what;
        POINTS outline, polyline;
        bool closed;
        CUT_RESULT result;
        std::size_t pieces;
    } const cases[] = {
        {"a closed U",
         {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {2.5f, 0}},
         {{2, -5}, {2, 5}, {8, 5}, {8, -5}, {6, -5}, {6, 2.5f}, {4, 2.5f}, {4, -5}},
         true,
         CLOSED_CUT,
         3},
        {"closed, inside", box, {{2, 2}, {8, 2}, {5, 8}}, true, CLOSED_INSIDE, 1},
        {"closed, outside", box, {{12, 2}, {18, 2}, {15, 8}}, true, CLOSED_OUTSIDE, 1},
        {"closed, around it", box, {{-5, -5}, {15, -5}, {15, 15}, {-5, 15}}, true, CLOSED_SWALLOWS, 1},
        {"closed, only one edge is met", box, {{2, -1}, {8, -1}, {5, -9}}, true, CLOSED_OUTSIDE, 1},
        {"a line across", box, {{-5, 4}, {15, 5}}, false, OPEN_CUT, 2},
        {"open, in and out again", box, {{3, -1}, {3, 5}, {6, 5}, {6, -1}}, false, OPEN_CUT, 2},
        {"open, two bites from one edge",
         box,
         {{9, -1}, {8, 3}, {7, -1}, {3, -1}, {4, 3}, {5, -1}},
         false,
         OPEN_CUT,
         3},
        {"open, ends inside", box, {{5, -5}, {5, 5}}, false, OPEN_OUTSIDE, 1},
        {"open, inside", box, {{3, 3}, {5, 5}, {7, 3}}, false, OPEN_INSIDE, 1},
        {"open, outside", box, {{-3, 3}, {-5, 5}}, false, OPEN_OUTSIDE, 1},
        {"touches within the tolerance", box, {{-1, 9.05f}, {0.04f, 9.95f}, {1, 11}}, false, OPEN_OUTSIDE, 1},
        {"through two corners", box, {{-5, -5}, {15, 15}}, false, OPEN_CUT, 2},
        {"no polyline", box, {}, false, OPEN_INSIDE, 1},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        POLYGON_CUTTER cutter;
        EXPECT_FALSE(cutter.build_shapes());
        ASSERT_TRUE(cutter.set_outline(line_of(c.outline)));
        EXPECT_FALSE(cutter.set_outline(line_of(c.outline)));
        EXPECT_EQ(cutter.cut(line_of(c.polyline), c.closed), c.result);
        EXPECT_EQ(cutter.outline_swallowed, c.result == CLOSED_SWALLOWS);
        check_structure(cutter);
        ASSERT_TRUE(cutter.build_shapes());
        EXPECT_EQ(cutter.output_shapes.size(), c.pieces);
        EXPECT_NEAR(sum_of_areas(cutter), area(c.outline), 0.3);
        EXPECT_FALSE(cutter.build_shapes());
    }
    POLYGON_CUTTER cutter;
    EXPECT_FALSE(cutter.set_outline(line_of({{0, 0}, {5, 5}, {5, 0}, {0, 5}})));
    EXPECT_FALSE(cutter.point_inside(1, 1));
    EXPECT_EQ(cutter.cut(line_of(box), true), CLOSED_OUTSIDE);
}

TEST(PolygonCutter, PiecesOfTheULieWhereTheyShould)
{
    POLYGON_CUTTER cutter;
    cutter.set_outline(line_of({{0, 0}, {0, 10}, {10, 10}, {10, 0}, {2.5f, 0}}));
    cutter.cut(line_of({{2, -5}, {2, 5}, {8, 5}, {8, -5}, {6, -5}, {6, 2.5f}, {4, 2.5f}, {4, -5}}), true);
    ASSERT_TRUE(cutter.build_shapes());
    std::vector<std::pair<int, double>> pieces;
    for (CUT_SHAPE const &shape : cutter.output_shapes)
        pieces.emplace_back(shape.shape_id, std::round(-area(shape) * 10) / 10);
    std::sort(pieces.begin(), pieces.end());
    // The rest of the box, what is between the legs; the U itself, which runs the same way round as the box.
    EXPECT_EQ(pieces, (std::vector<std::pair<int, double>>{{-1, 5}, {-1, 70}, {0, 25}}));
}

TEST(PolygonCutter, RandomClosedCutsPartTheOutline)
{
    int cuts = 0;
    for (int n = 0; n < 3000; ++n) {
        SCOPED_TRACE(n);
        POINTS outline = star(0, 0, 2000, 10000, 3 + n % 40);
        float const radius = random_between(500, 8000);
        POINTS shape = star(random_between(-8e3f, 8e3f), random_between(-8e3f, 8e3f), radius, radius, 3 + n % 7);
        POINTS inside = outline;
        for (std::size_t i = 0; i < shape.size(); ++i)
            inside = left_of(inside, shape[i], shape[(i + 1) % shape.size()]);
        double sign = 1;
        if (n % 2 == 1) {  // all clockwise
            std::reverse(outline.begin(), outline.end());
            std::reverse(shape.begin(), shape.end());
            sign = -1;
        }
        POLYGON_CUTTER cutter;
        if (!cutter.set_outline(line_of(outline)))  // a vertex of the star may touch
            continue;
        CUT_RESULT const result = cutter.cut(line_of(shape), true);
        ASSERT_TRUE(cutter.build_shapes());
        EXPECT_NEAR(sum_of_areas(cutter), area(outline), 2e-5 * std::abs(area(outline)) + 3e3);
        if (result != CLOSED_CUT)
            continue;
        ++cuts;
        check_structure(cutter);
        double marked = 0;
        for (CUT_SHAPE const &piece : cutter.output_shapes)
            if (piece.shape_id == 0)
                marked += area(piece);
        EXPECT_NEAR(marked, sign * area(inside), 2e-5 * std::abs(area(outline)) + 3e3);
    }
    EXPECT_GT(cuts, 1500);
}

TEST(PolygonCutter, RandomLinesPartTheOutlineIntoBands)
{
    for (int n = 0; n < 3000; ++n) {
        SCOPED_TRACE(n);
        POINTS const outline = star(0, 0, 3000, 10000, 4 + n % 30);
        POLYGON_CUTTER cutter;
        if (!cutter.set_outline(line_of(outline)))
            continue;
        float const angle = random_between(0, 6.28f);
        VECTOR2 const along = {std::cos(angle) * 3e4f, std::sin(angle) * 3e4f},
                      across = {-along.y / 3e4f, along.x / 3e4f};
        std::vector<float> offsets(1 + n % 6);
        for (float &offset : offsets)
            offset = random_between(-9e3f, 9e3f);
        for (float offset : offsets) {
            VECTOR2 const middle = across * offset;
            POINTS line = {middle - along, middle + along};
            if (generator() % 2 == 0)
                std::swap(line[0], line[1]);
            cutter.cut(line_of(line), false);
        }
        ASSERT_TRUE(cutter.build_shapes());
        double const total = area(outline), near = 2e-5 * total + 3e3;
        EXPECT_NEAR(sum_of_areas(cutter), total, near);
        // What is above each line is a sum of whole pieces.
        for (float offset : offsets) {
            VECTOR2 const middle = across * offset;
            double above = 0;
            for (CUT_SHAPE const &piece : cutter.output_shapes) {
                double sum = 0;
                for (VECTOR2 const &point : piece.polyline)
                    sum += dot(point, across) - offset;
                above += sum > 0 ? area(piece) : 0;
            }
            double const least_piece = 0.2 * 3e4;  // a piece thinner than the tolerance may count either way
            EXPECT_NEAR(above, area(left_of(outline, middle - along, middle + along)), near + least_piece);
        }
    }
}

TEST(PolygonCutter, CutsWithVerticesGiveTheirPiecesTheirNumber)
{
    // Two bites from the sides of a box, each with a corner inside, run the way of the outline (clockwise).
    POLYGON_CUTTER cutter;
    cutter.set_outline(line_of({{0, 0}, {0, 100}, {100, 100}, {100, 0}}));
    EXPECT_EQ(cutter.cut(line_of({{-10, 20}, {-10, 60}, {30, 40}}), true), CLOSED_CUT);
    EXPECT_EQ(cutter.cut(line_of({{110, 60}, {110, 20}, {70, 40}}), true), CLOSED_CUT);
    EXPECT_EQ(cutter.cut(line_of({{200, 0}, {200, 1}, {201, 0}}), true), CLOSED_OUTSIDE);
    EXPECT_EQ(cutter.shape_counter, 3u);
    ASSERT_TRUE(cutter.build_shapes());
    double by_id[3] = {};
    for (CUT_SHAPE const &piece : cutter.output_shapes)
        by_id[piece.shape_id + 1] -= area(piece);
    EXPECT_NEAR(by_id[1], 450, 0.1);  // a triangle of 30 by 30
    EXPECT_NEAR(by_id[2], 450, 0.1);
    EXPECT_NEAR(by_id[0], 10000 - 900, 0.1);

    // A strip between two cuts that both have it on their forward side belongs to neither.
    POLYGON_CUTTER strip;
    strip.set_outline(line_of({{0, 0}, {0, 100}, {100, 100}, {100, 0}}));
    strip.cut(line_of({{30, -9}, {35, 50}, {30, 109}}), false);
    strip.cut(line_of({{70, 109}, {65, 50}, {70, -9}}), false);
    EXPECT_EQ(strip.build_shapes(), false);
    EXPECT_TRUE(strip.output_shapes.empty());
}

TEST(CutShape, LeavesOutRepeatedPoints)
{
    CUT_SHAPE shape;
    for (VECTOR2 const &point : POINTS{{0, 0}, {0.05f, 0.09f}, {5, 0}, {5.09f, 0}, {5, 5}, {5, 0}, {-0.1f, 0.1f}})
        shape.add(point.x, point.y);
    ASSERT_EQ(shape.polyline.size(), 4u);
    EXPECT_EQ(shape.polyline[3], (VECTOR2{5, 0}));  // only the last and the first point are asked
}

}  // namespace SUPPORT
