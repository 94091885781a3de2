#include "support/geometry/outline_ring.h"
#include "support/geometry/polyline.h"

#include <gtest/gtest.h>
#include <vector>

namespace SUPPORT {

namespace {

// A ring that owns its vertices.
class RING {
public:
    explicit RING(std::vector<VECTOR2> const &points) : vertices(points.size())
    {
        for (std::size_t i = 0, count = points.size(); i < count; ++i) {
            vertices[i].next = &vertices[(i + 1) % count];
            vertices[i].previous = &vertices[(i + count - 1) % count];
            vertices[i].x = points[i].x;
            vertices[i].y = points[i].y;
        }
    }
    OUTLINE_VERTEX &operator[](std::size_t i) { return vertices[i]; }

private:
    std::vector<OUTLINE_VERTEX> vertices;
};

RING square(float x, float y, float half)
{
    return RING({{x - half, y - half}, {x + half, y - half}, {x + half, y + half}, {x - half, y + half}});
}

POLYLINE line_of(std::vector<VECTOR2> const &points)
{
    POLYLINE polyline;
    for (VECTOR2 const &point : points)
        polyline.append(point);
    return polyline;
}

}  // namespace

TEST(OutlineRing, MeetsWhatOverlapsIt)
{
    RING ring = square(0, 0, 10);
    struct {
        char const *where;
        float x, y, size;
        bool hit;
    } const cases[] = {{"inside", 3, 3, 1, true},   {"across an edge", 10, 3, 1, true}, {"around", 0, 0, 40, true},
                       {"beside", 13, 3, 2, false}, {"at a corner", 11, 11, 3, true},   {"far", 0, -50, 5, false}};
    for (auto const &c : cases) {
        SCOPED_TRACE(c.where);
        EXPECT_EQ(ring_circle(ring[1], {{c.x, c.y}, c.size}), c.hit);
        EXPECT_EQ(ring_rect(ring[2], {{c.x - c.size, c.y - c.size}, {c.x + c.size, c.y + c.size}}), c.hit);
        RING other = square(c.x, c.y, c.size);
        OUTLINE_VERTEX const *vertex = nullptr;
        EXPECT_EQ(ring_ring(ring[0], other[0], vertex), c.hit);
        EXPECT_EQ(vertex != nullptr, c.hit);
    }
    RING across = square(10, 3, 1), inner = square(3, 3, 1);
    OUTLINE_VERTEX const *vertex[3] = {};
    ring_ring(ring[0], across[0], vertex[0]);
    ring_ring(ring[0], inner[2], vertex[1]);
    ring_ring(inner[3], ring[0], vertex[2]);
    EXPECT_EQ(vertex[0], &ring[1]);  // the right edge starts there
    EXPECT_TRUE(vertex[1] == &inner[2] && vertex[2] == &inner[3]);
}

TEST(OutlineRing, SegmentsAndPoints)
{
    RING ring({{0, 0}, {10, 0}, {10, 10}, {5, 5}, {0, 10}});
    SEGMENT2 const across = {{-10, 8}, {30, 8}};  // crosses x = 0, 2, 8 and 10
    EXPECT_TRUE(ring_segment(ring[3], across, closed_segment));
    EXPECT_FALSE(ring_segment(ring[0], {{2, 2}, {3, 3}}, closed_segment));
    EXPECT_TRUE(ring_segment(ring[0], {{2, 2}, {3, 2}}, open_past_end));
    float t = 7;
    for (int start = 0; start < 5; ++start) {
        EXPECT_TRUE(ring_segment_first(ring[start], across, closed_segment, t));
        EXPECT_FLOAT_EQ(t, 0.25f);
    }
    EXPECT_TRUE(ring_segment_first(ring[0], {{4, 2}, {6, 2}}, infinite_line, t));
    EXPECT_FLOAT_EQ(t, -2);
    EXPECT_FALSE(ring_segment_first(ring[0], {{4, 2}, {6, 2}}, closed_segment, t));

    EXPECT_TRUE(ring_contains_point(ring[0], {2, 7}, 0));
    EXPECT_FALSE(ring_contains_point(ring[0], {5, 7}, 0));
    ring[3].offset_direction = {0, 1};
    EXPECT_TRUE(ring_contains_point(ring[0], {5, 7}, 3));
    EXPECT_FALSE(ring_contains_point(ring[0], {5, 4}, -2));
}

TEST(OutlineVertex, SharpCornersAreNamed)
{
    KN::String const fault = "OUTLINE_VERTEX excessively sharp corner\nline";
    struct {
        char const *what;
        VECTOR2 previous, at, next;
        char const *lines;  // null: nothing is said
    } const cases[] = {
        {"a right angle", {0, 0}, {10, 0}, {10, 10}, nullptr},
        {"straight back to the same point", {0, 0}, {10, 0}, {0, 0}, nullptr},
        {"9 degrees open", {0, 0}, {-10, 0}, {0, 1.6f}, nullptr},
        {"8 degrees open", {0, 0}, {-1234.56f, 0}, {0, 174}, "(0.0,0.0)(-1234.6,0.0) to line(-1234.6,0.0)(0.0,174.0)"},
        {"back by a half", {0, 0}, {10, 0}, {9.5f, 0}, "(0.0,0.0)(10.0,0.0) to line(10.0,0.0)(9.5,0.0)"},
    };
    for (auto const &c : cases) {
        RING ring({c.previous, c.at, c.next});
        KN::String text;
        EXPECT_EQ(check_corner(ring[1], text), c.lines != nullptr) << c.what;
        EXPECT_EQ(text, c.lines != nullptr ? fault + c.lines : "") << c.what;
    }
    // Both spikes are reported; that of the vertex looked at last stands.
    RING star({{0, 0}, {50, 1}, {0, 2}, {1, 50}, {2, 2}, {60, 60}});
    KN::String text;
    EXPECT_TRUE(check_ring(star[3], text));
    EXPECT_EQ(text, fault + "(0.0,0.0)(50.0,1.0) to line(50.0,1.0)(0.0,2.0)");
}

TEST(Polyline, IsSimpleWithoutCrossings)
{
    struct {
        char const *what;
        std::vector<VECTOR2> points;
        bool open, closed;
    } const cases[] = {
        {"two points", {{0, 0}, {5, 0}}, true, false},
        {"one point", {{0, 0}}, false, false},
        {"a square", {{0, 0}, {5, 0}, {5, 5}, {0, 5}}, true, true},
        {"a bow tie", {{0, 0}, {5, 5}, {5, 0}, {0, 5}}, false, false},
        {"its closing edge crosses", {{0, 0}, {10, 0}, {10, 10}, {2, 10}, {2, 3}, {6, 3}, {6, 6}}, true, false},
        {"touches an edge with a corner", {{0, 0}, {5, 0}, {5, 5}, {2, 0}, {0, 5}}, false, false},
        {"two edges between the same points", {{0, 0}, {5, 0}, {5, 5}, {0.05f, 0.05f}, {4.95f, 0.05f}}, false, false},
    };
    for (auto const &c : cases) {
        EXPECT_EQ(is_simple(line_of(c.points), false), c.open) << c.what;
        EXPECT_EQ(is_simple(line_of(c.points), true), c.closed) << c.what;
    }
}

TEST(Polyline, SameShapeFromAnyPointInEitherSense)
{
    std::vector<VECTOR2> const points = {{0, 0}, {5, 0}, {7, 4}, {1, 9}};
    for (std::size_t turn = 0; turn < 4; ++turn)
        for (bool reverse : {false, true}) {
            std::vector<VECTOR2> turned;
            for (std::size_t i = 0; i < 4; ++i)
                turned.push_back(points[(turn + (reverse ? 4 - i : i)) % 4] + VECTOR2{0.09f, -0.09f});
            EXPECT_TRUE(same_shape(line_of(points), line_of(turned), 0.1f)) << turn << reverse;
            EXPECT_FALSE(same_shape(line_of(points), line_of(turned), 0.08f)) << turn << reverse;
            turned[2].x += 0.5f;
            EXPECT_FALSE(same_shape(line_of(points), line_of(turned), 0.1f)) << turn << reverse;
        }
    EXPECT_FALSE(same_shape(line_of({}), line_of({}), 0.1f));
    EXPECT_FALSE(same_shape(line_of(points), line_of({{0, 0}, {5, 0}, {7, 4}}), 0.1f));
}

}  // namespace SUPPORT
