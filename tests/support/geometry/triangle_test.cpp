#include "support/geometry/triangle_triangle.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace SUPPORT {

namespace {

// Corners have whole coordinates of at most 20, some of 60: 32-bit sums and products of their differences are exact.
bool holds_origin(VECTOR3 const &a, VECTOR3 const &b) { return cross(a, b) == VECTOR3{} && dot(a, b) <= 0; }
bool holds_origin(VECTOR3 const &a, VECTOR3 const &b, VECTOR3 const &c)
{
    VECTOR3 const bc = cross(b, c), ca = cross(c, a), ab = cross(a, b), n = bc + ca + ab;
    return n != VECTOR3{} && dot(a, n) == 0 && dot(bc, n) >= 0 && dot(ca, n) >= 0 && dot(ab, n) >= 0;
}
bool holds_origin(VECTOR3 const &a, VECTOR3 const &b, VECTOR3 const &c, VECTOR3 const &d)
{
    float const parts[4] = {dot(b, cross(c, d)), -dot(a, cross(c, d)), dot(a, cross(b, d)), -dot(a, cross(b, c))};
    auto const [least, most] = std::minmax_element(parts, parts + 4);
    return parts[0] + parts[1] + parts[2] + parts[3] != 0 && (*least >= 0 || *most <= 0);
}

// Triangles meet if the origin is among the differences of their points: in the hull of the nine differences of their
// corners, hence in that of at most four of them (Carathéodory).
bool meet_exactly(TRIANGLE3 const &a, TRIANGLE3 const &b)
{
    VECTOR3 d[9];
    for (int i = 0; i < 9; ++i)
        d[i] = a.corners[i / 3] - b.corners[i % 3];
    for (int i = 0; i < 9; ++i)
        for (int j = i; j < 9; ++j) {
            if (holds_origin(d[i], d[j]))
                return true;
            for (int k = j + 1; k < 9; ++k) {
                if (holds_origin(d[i], d[j], d[k]))
                    return true;
                for (int l = k + 1; l < 9; ++l)
                    if (holds_origin(d[i], d[j], d[k], d[l]))
                        return true;
            }
        }
    return false;
}

struct PAIR {
    TRIANGLE3 a, b;
};

// Half of the pairs have something in common that random ones would not have.
PAIR random_pair(std::mt19937 &random, int grid)
{
    std::uniform_int_distribution<int> coordinate(-grid, grid);
    PAIR pair;
    VECTOR3(&a)[3] = pair.a.corners, (&b)[3] = pair.b.corners;
    for (VECTOR3 *point : {&a[0], &a[1], &a[2], &b[0], &b[1], &b[2]})
        *point = {float(coordinate(random)), float(coordinate(random)), float(coordinate(random))};
    switch (random() % 12) {
    case 0:
        b[0] = a[1];
        break;  // a corner
    case 1:
        b[0] = a[1], b[1] = a[2];
        break;  // an edge
    case 2:
        a[2] = a[0] * 2 - a[1];
        break;  // a is a segment
    case 3:
        a[2] = a[1] = a[0];
        break;  // a is a point
    case 4:
        b[2] = b[1], a[1] = a[0];
        break;  // both are segments
    case 5:     // one plane
        for (VECTOR3 *point : {&a[0], &a[1], &a[2], &b[0], &b[1], &b[2]})
            point->z = point->x;
        break;
    default:
        break;
    }
    return pair;
}

VECTOR3 normal(TRIANGLE3 const &t) { return cross(t.corners[1] - t.corners[0], t.corners[2] - t.corners[0]); }

}  // namespace

TEST(TriangleTriangle, AgreesWithAnExactTest)
{
    std::mt19937 random(1);
    for (int grid : {1, 3, 9, 20}) {
        int meetings = 0;
        for (int n = 0; n < 20000; ++n) {
            auto const [a, b] = random_pair(random, grid);
            bool const expected = meet_exactly(a, b);
            meetings += expected;
            ASSERT_EQ(triangle_triangle(a, b), expected) << "pair " << n << ", grid " << grid;
            ASSERT_EQ(triangle_triangle(b, a), expected) << "pair " << n << ", grid " << grid;
        }
        EXPECT_TRUE(meetings > 2000 && meetings < 19000) << meetings << ", grid " << grid;
    }
}

TEST(TriangleTriangle, NothingMeetsATriangleWithANumberMissing)
{
    TRIANGLE3 const plain = {{{-9, -9, 1}, {9, -9, 1}, {0, 9, 1}}};
    for (TRIANGLE3 const &other : {plain, TRIANGLE3{{{0, 0, 0}, {1, 0, 2}, {0, 1, 2}}},
                                   TRIANGLE3{{{0, 0, 0}, {0, 0, 1}, {0, 0, 2}}}, TRIANGLE3{}})
        for (int number = 0; number < 9; ++number) {
            TRIANGLE3 broken = other;
            (&broken.corners[number / 3].x)[number % 3] = NAN;
            bool coplanar = true;
            SEGMENT3 overlap;
            EXPECT_FALSE(triangle_triangle(plain, broken)) << number;
            EXPECT_FALSE(triangle_triangle(broken, plain)) << number;
            EXPECT_FALSE(triangle_triangle_with_segment(broken, broken, coplanar, overlap)) << number;
            EXPECT_FALSE(coplanar);
        }
}

TEST(TriangleTriangle, TheOverlapIsWhatBothHave)
{
    std::mt19937 random(2);
    int seen = 0;
    for (int n = 0; n < 5000; ++n) {
        auto const [a, b] = random_pair(random, 12);
        VECTOR3 const normal_a = normal(a), normal_b = normal(b);
        if (normal_a == VECTOR3{} || normal_b == VECTOR3{} || !meet_exactly(a, b))
            continue;
        bool coplanar;
        SEGMENT3 overlap;
        ASSERT_TRUE(triangle_triangle_with_segment(a, b, coplanar, overlap));
        ASSERT_EQ(coplanar, cross(normal_a, normal_b) == VECTOR3{}) << n;  // they meet, so parallel is enough
        if (coplanar)
            continue;
        ++seen;
        // Each end is in both triangles, and on an edge of one of them: it cannot be pushed further out.
        for (VECTOR3 const &end : {overlap.start, overlap.end}) {
            float least = 1;
            for (TRIANGLE3 const &t : {a, b}) {
                EXPECT_NEAR(dot(normalised(normal(t)), end - t.corners[0]), 0, 1e-4) << n;
                for (int i = 0; i < 3; ++i) {
                    VECTOR3 const inward = normalised(cross(normal(t), t.corners[(i + 1) % 3] - t.corners[i]));
                    least = std::min(least, dot(inward, end - t.corners[i]));
                }
            }
            EXPECT_NEAR(least, 0, 1e-4) << n;
        }
    }
    EXPECT_GT(seen, 300);
}

}  // namespace SUPPORT
