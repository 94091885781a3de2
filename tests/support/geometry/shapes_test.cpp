#include "support/geometry/plane_shapes.h"
#include "support/geometry/space_shapes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace SUPPORT {

TEST(Segments, CrossWhereTheExactTestSaysSo)
{
    std::mt19937 random(1);
    std::uniform_int_distribution<int> grid(-4, 4);
    for (int n = 0; n < 50000; ++n) {
        int c[8];
        for (int &number : c)
            number = grid(random);
        SEGMENT2 const a = {{float(c[0]), float(c[1])}, {float(c[2]), float(c[3])}};
        SEGMENT2 const b = {{float(c[4]), float(c[5])}, {float(c[6]), float(c[7])}};
        auto const side = [&](int p, int q, int r) {  // of point r from the line through points p and q
            return (c[2 * q] - c[2 * p]) * (c[2 * r + 1] - c[2 * p + 1]) -
                   (c[2 * q + 1] - c[2 * p + 1]) * (c[2 * r] - c[2 * p]);
        };
        bool const parallel = side(0, 1, 2) == side(0, 1, 3);
        bool const parts_a = side(0, 1, 2) * side(0, 1, 3) <= 0, parts_b = side(2, 3, 0) * side(2, 3, 1) <= 0;
        ASSERT_EQ(segments_cross_2d(a, b, closed_segment, closed_segment, 0), !parallel && parts_a && parts_b) << n;
        ASSERT_EQ(segments_cross_2d(a, b, infinite_line, closed_segment, 0), !parallel && parts_a) << n;
        ASSERT_EQ(segments_cross_2d(a, b, closed_segment, infinite_line, 0), !parallel && parts_b) << n;

        float t;
        ASSERT_EQ(line_parameter_2d(a, b, t), !parallel);
        VECTOR2 point;
        if (segments_intersection_point_2d(a, b, infinite_line, infinite_line, point, 0)) {
            VECTOR2 const on_a = a.start + (a.end - a.start) * t;
            ASSERT_NEAR(point.x, on_a.x, 1e-3);
            ASSERT_NEAR(point.y, on_a.y, 1e-3);
        }
    }
}

TEST(Segments, EndsAndParametersFollowTheFlags)
{
    // b crosses the line of a at t = -1, 0.5, 1 and 2, at u = 0.25.
    SEGMENT2 const a = {{0, 0}, {4, 0}};
    struct {
        float x;
        bool closed, before, past;
    } const cases[] = {{-4, false, true, false}, {2, true, true, true}, {4, true, true, true}, {8, false, false, true}};
    for (auto const &c : cases) {
        SEGMENT2 const b = {{c.x, -1}, {c.x, 3}};
        EXPECT_EQ(segments_cross_2d(a, b, closed_segment, closed_segment, 0), c.closed) << c.x;
        EXPECT_EQ(segments_cross_2d(a, b, open_before_start, closed_segment, 0), c.before) << c.x;
        EXPECT_EQ(segments_cross_2d(a, b, open_past_end, closed_segment, 0), c.past) << c.x;
        float t = 9, u = 9;
        EXPECT_EQ(segments_intersect_2d(a, b, closed_segment, closed_segment, t, u, 0), c.closed) << c.x;
        EXPECT_EQ(t, c.x / 4);
        EXPECT_EQ(u, c.closed ? 0.25f : 0) << c.x;  // not reached where t rejects
        EXPECT_FALSE(segments_intersect_2d(a, b, infinite_line, infinite_line, t, u, 16));  // they span 16
        EXPECT_EQ(t, 0);
    }
    EXPECT_FALSE(within_ends(NAN, closed_segment) || within_ends(NAN, open_past_end));
    EXPECT_TRUE(within_ends(NAN, open_before_start));
}

TEST(PlaneShapes, SegmentAgainstCircle)
{
    struct {
        SEGMENT2 segment;
        END_FLAGS flags;
        bool hit;
    } const cases[] = {
        {{{-10, 3}, {10, 3}}, closed_segment, true}, {{{-10, 5}, {10, 5}}, closed_segment, true},  // touches
        {{{-10, 6}, {10, 6}}, infinite_line, false}, {{{-1, 0}, {1, 0}}, closed_segment, false},   // within
        {{{-1, 0}, {1, 0}}, open_past_end, true},    {{{6, 0}, {9, 0}}, closed_segment, false},
        {{{6, 0}, {9, 0}}, open_before_start, true}, {{{6, 0}, {9, 0}}, open_past_end, false},
        {{{5, 0}, {5, 0}}, infinite_line, false},  // without length
    };
    for (auto const &c : cases)
        EXPECT_EQ(segment_circle(c.segment, {{0, 0}, 5}, c.flags), c.hit) << &c - cases;
    float t0, t1;
    EXPECT_TRUE(segment_circle_parameters({{-10, 3}, {10, 3}}, {{0, 0}, 5}, closed_segment, t0, t1));
    EXPECT_FLOAT_EQ(t0, 0.3f);  // x = -4
    EXPECT_FLOAT_EQ(t1, 0.7f);
}

TEST(PlaneShapes, RectsAndQuads)
{
    QUAD2 const quad = {{{0, 0}, {4, 0}, {4, 2}, {0, 2}}}, clockwise = {{{0, 0}, {0, 2}, {4, 2}, {4, 0}}};
    EXPECT_TRUE(point_in_quad(quad, {4, 2}) && point_in_quad(quad, {1, 1}));
    EXPECT_FALSE(point_in_quad(quad, {4.1f, 1}) || point_in_quad(clockwise, {1, 1}));

    float const s = std::sqrt(0.5f);
    ORIENTED_RECT const turned = {{5, 5}, 4, 2, {s, s}, {-s, s}};  // by 45 degrees
    EXPECT_TRUE(point_in_oriented_rect(turned, {6.4f, 6.4f}));
    EXPECT_FALSE(point_in_oriented_rect(turned, {6.5f, 6.5f}) || point_in_oriented_rect(turned, {5.8f, 4.1f}));

    auto const square = [](float x, float y, float half) {
        return QUAD2{{{x - half, y - half}, {x + half, y - half}, {x + half, y + half}, {x - half, y + half}}};
    };
    EXPECT_TRUE(quad_oriented_rect(square(5, 5, 0.1f), turned));                        // inside
    EXPECT_TRUE(quad_oriented_rect(square(5, 5, 50), turned));                          // around
    EXPECT_TRUE(quad_oriented_rect({{{0, 4.9f}, {9, 4.9f}, {9, 5}, {0, 5}}}, turned));  // across, no corner inside
    EXPECT_FALSE(quad_oriented_rect(square(7, 3, 1), turned));  // only the boxes around them overlap

    RECT2 const rect = {{1, 1}, {2, 3}}, high = {{1.9f, 2.9f}, {2.1f, 9}}, higher = {{1.9f, 3.1f}, {2.1f, 9}};
    EXPECT_TRUE(segment_rect({{0, 0}, {3, 3}}, rect) && segment_rect({{1.5f, 2}, {1.6f, 2}}, rect));
    EXPECT_FALSE(segment_rect({{0, 2.1f}, {0.9f, 2.9f}}, rect));
    VECTOR2 const arc[4] = {{0, 0}, {0, 4}, {4, 4}, {4, 0}};  // highest at (2, 3)
    EXPECT_TRUE(bezier_rect(arc, high, 8));
    EXPECT_FALSE(bezier_rect(arc, higher, 8) || bezier_rect(arc, high, 1));  // one chord lies low
}

TEST(SpaceShapes, SegmentsAgainstPlaneAndSphere)
{
    SEGMENT3 const up = {{1, 2, -1}, {1, 2, 3}};
    struct {
        PLANE plane;
        END_FLAGS flags;
        bool hit;
        float t;
    } const cases[] = {
        {{{0, 0, 1}, -1}, closed_segment, true, 0.5f}, {{{0, 0, 1}, -5}, closed_segment, false, 1.5f},
        {{{0, 0, 1}, -5}, open_past_end, true, 1.5f},  {{{1, 0, 0}, 0}, infinite_line, false, 9},  // parallel
        {{{0, 0, 2}, -2}, infinite_line, true, 2},  // z = 1, the normal is 2 long: times 4
    };
    for (auto const &c : cases) {
        float t = 9;
        EXPECT_EQ(segment_plane(up, c.plane, c.flags, t), c.hit) << &c - cases;
        EXPECT_EQ(t, c.t) << &c - cases;
    }

    SPHERE const ball = {{0, 0, 10}, 5};
    float t0, t1;
    VECTOR3 points[2];
    EXPECT_TRUE(segment_sphere({{3, 0, 0}, {3, 0, 20}}, ball, closed_segment, t0, t1));
    EXPECT_FLOAT_EQ(t0, 0.3f);
    EXPECT_FLOAT_EQ(t1, 0.7f);
    // The end lies on the sphere: what is told is what was accepted.
    EXPECT_TRUE(segment_sphere({{-11, 12, -13}, {-18, -9, 6}}, {{0, 0, 0}, 21}, closed_segment, t0, t1));
    EXPECT_TRUE(t1 <= 1) << t1;
    EXPECT_TRUE(segment_sphere({{3, 0, 20}, {3, 0, 12}}, ball, closed_segment, points));
    EXPECT_TRUE(points[0] == (VECTOR3{3, 0, 14}) && points[1] == (VECTOR3{3, 0, 6}));     // the second past the end
    EXPECT_FALSE(segment_sphere({{5, 0, 0}, {5, 0, 20}}, ball, infinite_line, points));   // touches
    EXPECT_FALSE(segment_sphere({{0, 0, 8}, {0, 0, 12}}, ball, closed_segment, points));  // within
    EXPECT_FALSE(segment_sphere({{0, 0, 10}, {0, 0, 10}}, ball, infinite_line, points));
}

TEST(SpaceShapes, CapsulesPlanesAndSlabs)
{
    CAPSULE const capsule = {{{0, 0, 0}, {0, 10, 0}}, 2};
    EXPECT_TRUE(point_capsule(capsule, {2, 5, 0}, closed_segment));
    EXPECT_FALSE(point_capsule(capsule, {2.1f, 5, 0}, closed_segment));
    EXPECT_FALSE(point_capsule(capsule, {0, 10.5f, 0}, closed_segment));  // flat ends
    EXPECT_TRUE(point_capsule(capsule, {0, 10.5f, 0}, open_past_end));
    EXPECT_TRUE(point_capsule({{1, 1, 1}, {1, 1, 1}}, {1, 1, 3}, 2, closed_segment));

    VECTOR3 point = {7, 7, 7};
    EXPECT_TRUE(three_planes({{1, 0, 0}, -2}, {{0, 2, 0}, 6}, {{1, 1, 1}, -4}, point));  // x = 2, y = -3, sum 4
    EXPECT_EQ(point, (VECTOR3{2, -3, 5}));
    EXPECT_FALSE(three_planes({{1, 0, 0}, 0}, {{0, 1, 0}, 0}, {{1, 1, 0}, 5}, point));
    EXPECT_EQ(point, VECTOR3{});

    struct {
        float height, slope;
        bool hit;
        float t0, t1;
    } const cases[] = {{5, -1, true, 4, 6},       {5, 2, true, -3, -2},    {5, 0, false, 8, 8},
                       {0.5f, 0, true, 0, 1e32f}, {-5, 0, true, 0, 1e32f}, {-5, 0.0009f, true, 0, 1e32f}};
    for (auto const &c : cases) {
        float t0 = 8, t1 = 8;
        EXPECT_EQ(slab_interval({{0, 0, 1}, 0}, {3, 4, c.height, 1}, {1, 0, c.slope}, t0, t1), c.hit) << c.height;
        EXPECT_TRUE(t0 == c.t0 && t1 == c.t1) << c.height << ": " << t0 << " to " << t1;
    }
}

}  // namespace SUPPORT
