#include "support/geometry/polygon_cutter.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
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
    return std::accumulate(cutter.output_shapes.begin(), cutter.output_shapes.end(), 0.0,
                           [](double sum, CUT_SHAPE const &shape) { return sum + area(shape); });
}

// Each chain leads from its start to its end, and back over the twins of its links.
void check_chains(POLYGON_CUTTER const &cutter)
{
    unsigned vertices = 0;
    for (CUT_NODE const *node = cutter.node_list; node != nullptr; node = node->node_list_prev) {
        ASSERT_EQ(node->ring_next->ring_prev, node);
        for (CHAIN_LINK const *link = node->forward_chain; link != nullptr; link = link->next) {
            ASSERT_EQ(link->twin->twin, link);
            vertices += link->chain_node != nullptr;
            ASSERT_EQ(link->cut_node != nullptr, link->next == nullptr);
            ASSERT_TRUE(link->cut_node == nullptr || link->cut_node->backward_chain == link->twin);
        }
    }
    EXPECT_EQ(vertices, cutter.chain_count);
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
        {"closed, only one edge is met", box, {{-5, 5}, {15, 5}, {5, 30}}, true, CLOSED_CUT, 2},
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
        {"a vertex just outside is passed over", box, {{2, 5}, {4, -0.05f}, {8, 0.5f}, {8, 11}}, false, OPEN_CUT, 3},
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
        check_chains(cutter);
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

TEST(PolygonCutter, PiecesCarryTheNumberOfTheirCut)
{
    POINTS const big = {{0, 0}, {0, 100}, {100, 100}, {100, 0}};  // clockwise
    using PIECES = std::vector<std::pair<int, int>>;              // numbers and areas
    struct {
        char const *what;
        POINTS outline;
        std::vector<POINTS> cuts;
        bool closed;
        PIECES pieces;
    } const cases[] = {
        {"the U, what is between its legs and the rest",
         {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {2.5f, 0}},
         {{{2, -5}, {2, 5}, {8, 5}, {8, -5}, {6, -5}, {6, 2.5f}, {4, 2.5f}, {4, -5}}},
         true,
         {{-1, 5}, {-1, 70}, {0, 25}}},
        {"two bites, and a call that cuts nothing",
         big,
         {{{-10, 20}, {-10, 60}, {30, 40}}, {{200, 0}, {200, 1}, {201, 0}}, {{110, 60}, {110, 20}, {70, 40}}},
         true,
         {{-1, 9100}, {0, 450}, {2, 450}}},
        {"the first node of the strip is the end of a cut",
         big,
         {{{30, -9}, {35, 50}, {30, 109}}, {{70, -9}, {65, 50}, {70, 109}}},
         false,
         {{-1, 3288}, {-1, 3424}, {1, 3288}}},
        {"the first node of the strip is the start of a cut",
         big,
         {{{30, 109}, {35, 50}, {30, -9}}, {{70, 109}, {65, 50}, {70, -9}}},
         false,
         {{-1, 3288}, {0, 3288}, {1, 3424}}},
        {"the strip has both, so it is nobody's",
         big,
         {{{30, -9}, {35, 50}, {30, 109}}, {{70, 109}, {65, 50}, {70, -9}}},
         false,
         {}},
        {"points that agree come out once",
         {{0, 0}, {0.05f, 0.09f}, {0, 10}, {10, 10}, {10, 0}, {0.09f, 0}},
         {},
         true,
         {{-1, 100}}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        POLYGON_CUTTER cutter;
        ASSERT_TRUE(cutter.set_outline(line_of(c.outline)));
        for (POINTS const &cut : c.cuts)
            cutter.cut(line_of(cut), c.closed);
        EXPECT_EQ(cutter.build_shapes(), !c.pieces.empty());
        PIECES pieces;
        for (CUT_SHAPE const &shape : cutter.output_shapes)
            pieces.emplace_back(shape.shape_id, int(std::lround(-area(shape))));
        std::sort(pieces.begin(), pieces.end());
        EXPECT_EQ(pieces, c.pieces);
    }
    CUT_SHAPE shape;
    for (VECTOR2 const &point : POINTS{{0, 0}, {0.05f, 0.09f}, {5, 0}, {5.09f, 0}, {5, 5}, {5, 0}, {-0.1f, 0.1f}})
        shape.add(point.x, point.y);
    EXPECT_EQ(shape.polyline.size(), 4u);  // only the last and the first point are asked
}

// Each walk ends where it comes upon its start, here at the end of the other cut's chain or of its own.
TEST(PolygonCutter, PiecesOfCutsThatCrossGoRoundOnce)
{
    POLYGON_CUTTER cutter;
    ASSERT_TRUE(cutter.set_outline(line_of(box)));
    cutter.cut(line_of({{-5, 5}, {15, 5}}), false);
    cutter.cut(line_of({{5, -5}, {5, 15}}), false);
    ASSERT_TRUE(cutter.build_shapes());
    ASSERT_EQ(cutter.output_shapes.size(), 4u);
    POLYLINE const &first = cutter.output_shapes[0].polyline;
    EXPECT_EQ(POINTS(first.begin(), first.end()),
              (POINTS{{0, 5}, {10, 5}, {10, 0}, {5, 0}, {5, 10}, {10, 10}, {10, 5}}));
    for (CUT_SHAPE const &shape : cutter.output_shapes)
        EXPECT_EQ(shape.polyline.size(), 7u);
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
        check_chains(cutter);
        double marked = 0;
        for (CUT_SHAPE const &piece : cutter.output_shapes)
            if (piece.shape_id == 0)
                marked += area(piece);
        EXPECT_NEAR(marked, sign * area(inside), 2e-5 * std::abs(area(outline)) + 3e3);
    }
    EXPECT_GT(cuts, 1500);
}

TEST(PolygonCutter, RandomLinesPartTheOutline)
{
    for (unsigned n = 0; n < 3000; ++n) {
        SCOPED_TRACE(n);
        POINTS const outline = star(0, 0, 3000, 10000, 4 + n % 30);
        POLYGON_CUTTER cutter;
        if (!cutter.set_outline(line_of(outline)))
            continue;
        float const angle = random_between(0, 6.28f);
        VECTOR2 const along = {std::cos(angle), std::sin(angle)}, across = {-along.y, along.x};
        for (unsigned cut = 0; cut <= n % 6; ++cut) {
            VECTOR2 const middle = across * random_between(-9e3f, 9e3f);
            float const length = generator() % 2 == 0 ? 3e4f : -3e4f;  // the way the line runs does not matter
            cutter.cut(line_of({middle - along * length, middle + along * length}), false);
        }
        ASSERT_TRUE(cutter.build_shapes());
        EXPECT_EQ(cutter.output_shapes.size(), 1 + (cutter.node_count - outline.size()) / 2);
        EXPECT_NEAR(sum_of_areas(cutter), area(outline), 2e-5 * area(outline) + 3e3);
    }
}

}  // namespace SUPPORT
