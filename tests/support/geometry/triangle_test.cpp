#include "support/geometry/triangle_triangle.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace SUPPORT {

namespace {

// Whole coordinates, so that everything below is exact.
struct INT3 {
    long x, y, z;

    bool operator==(INT3 const &) const = default;
};
struct INT_TRIANGLE {
    INT3 corners[3];
};

INT3 operator-(INT3 const &a, INT3 const &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
INT3 operator+(INT3 const &a, INT3 const &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
long dot(INT3 const &a, INT3 const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
INT3 cross(INT3 const &a, INT3 const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
long volume(INT3 const &a, INT3 const &b, INT3 const &c) { return dot(a, cross(b, c)); }

// Whether the origin is in the hull of two, three or four points that are not degenerate.
bool holds_origin(INT3 const &a, INT3 const &b) { return cross(a, b) == INT3{} && dot(a, b) <= 0; }
bool holds_origin(INT3 const &a, INT3 const &b, INT3 const &c)
{
    INT3 const bc = cross(b, c), ca = cross(c, a), ab = cross(a, b), n = bc + ca + ab;
    return n != INT3{} && dot(a, n) == 0 && dot(bc, n) >= 0 && dot(ca, n) >= 0 && dot(ab, n) >= 0;
}
bool holds_origin(INT3 const &a, INT3 const &b, INT3 const &c, INT3 const &d)
{
    long const parts[4] = {volume(b, c, d), -volume(a, c, d), volume(a, b, d), -volume(a, b, c)};
    if (parts[0] + parts[1] + parts[2] + parts[3] == 0)
        return false;
    return std::all_of(parts, parts + 4, [](long part) { return part >= 0; }) ||
           std::all_of(parts, parts + 4, [](long part) { return part <= 0; });
}

// Triangles meet if the origin is among the differences of their points: in the hull of the nine differences of their
// corners, hence in that of at most four of them (Carathéodory).
bool meet_exactly(INT_TRIANGLE const &a, INT_TRIANGLE const &b)
{
    INT3 d[9];
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

INT3 normal(INT_TRIANGLE const &t) { return cross(t.corners[1] - t.corners[0], t.corners[2] - t.corners[0]); }

TRIANGLE3 in_floats(INT_TRIANGLE const &t)
{
    TRIANGLE3 result;
    for (int i = 0; i < 3; ++i)
        result.corners[i] = {float(t.corners[i].x), float(t.corners[i].y), float(t.corners[i].z)};
    return result;
}

class PAIRS {
public:
    explicit PAIRS(int grid) : coordinate(-grid, grid) {}

    INT3 point() { return {coordinate(random), coordinate(random), coordinate(random)}; }

    // Half of the pairs have something in common that random ones would not have.
    void next(INT_TRIANGLE &a, INT_TRIANGLE &b)
    {
        for (int i = 0; i < 3; ++i) {
            a.corners[i] = point();
            b.corners[i] = point();
        }
        switch (random() % 12) {
        case 0:
            b.corners[0] = a.corners[1];
            break;  // a corner
        case 1:
            b.corners[0] = a.corners[1], b.corners[1] = a.corners[2];
            break;  // an edge
        case 2:
            a.corners[2] = a.corners[0] + a.corners[0] - a.corners[1];
            break;  // a is a segment
        case 3:
            a.corners[2] = a.corners[1] = a.corners[0];
            break;  // a is a point
        case 4:
            b.corners[2] = b.corners[1], a.corners[1] = a.corners[0];
            break;  // both are segments
        case 5:     // one plane
            for (int i = 0; i < 3; ++i)
                a.corners[i].z = a.corners[i].x + 1, b.corners[i].z = b.corners[i].x + 1;
            break;
        default:
            break;
        }
    }

private:
    std::mt19937 random{1};
    std::uniform_int_distribution<int> coordinate;
};

}  // namespace

TEST(TriangleTriangle, AgreesWithAnExactTest)
{
    for (int grid : {1, 3, 12, 100}) {
        PAIRS pairs(grid);
        int meetings = 0;
        for (int n = 0; n < 20000; ++n) {
            INT_TRIANGLE a, b;
            pairs.next(a, b);
            bool const expected = meet_exactly(a, b);
            meetings += expected;
            ASSERT_EQ(triangle_triangle(in_floats(a), in_floats(b)), expected) << "pair " << n << ", grid " << grid;
            ASSERT_EQ(triangle_triangle(in_floats(b), in_floats(a)), expected) << "pair " << n << ", grid " << grid;
        }
        EXPECT_GT(meetings, 2000) << "grid " << grid;
        EXPECT_LT(meetings, 19000) << "grid " << grid;
    }
}

TEST(TriangleTriangle, TheOverlapLiesInBoth)
{
    PAIRS pairs(12);
    int seen = 0;
    for (int n = 0; n < 5000; ++n) {
        INT_TRIANGLE a, b;
        pairs.next(a, b);
        INT3 const normals[2] = {normal(a), normal(b)};
        if (normals[0] == INT3{} || normals[1] == INT3{} || !meet_exactly(a, b))
            continue;
        bool coplanar;
        SEGMENT3 overlap;
        ASSERT_TRUE(triangle_triangle_with_segment(in_floats(a), in_floats(b), coplanar, overlap));
        bool const same_plane = cross(normals[0], normals[1]) == INT3{};  // they meet, so parallel is enough
        ASSERT_EQ(coplanar, same_plane) << n;
        if (coplanar)
            continue;
        ++seen;
        // Each end is in both triangles, and on an edge of one of them: it cannot be pushed further out.
        for (VECTOR3 const &end : {overlap.start, overlap.end}) {
            double least = 1;
            for (INT_TRIANGLE const *t : {&a, &b}) {
                INT3 const whole = normal(*t);
                VECTOR3 const unit = normalised(VECTOR3{float(whole.x), float(whole.y), float(whole.z)});
                TRIANGLE3 const f = in_floats(*t);
                EXPECT_NEAR(dot(unit, end - f.corners[0]), 0, 1e-4) << n;
                for (int i = 0; i < 3; ++i) {
                    VECTOR3 const edge = normalised(f.corners[(i + 1) % 3] - f.corners[i]);
                    float const inside = dot(cross(unit, edge), end - f.corners[i]);
                    EXPECT_GT(inside, -1e-4) << n;
                    least = std::min<double>(least, inside);
                }
            }
            EXPECT_LT(least, 1e-4) << n;
        }
    }
    EXPECT_GT(seen, 300);

    bool coplanar;
    SEGMENT3 overlap;
    TRIANGLE3 const floor = {{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}}, wall = {{{1, 1, -1}, {1, 9, -1}, {1, 1, 7}}};
    EXPECT_TRUE(triangle_triangle_with_segment(floor, wall, coplanar, overlap));
    EXPECT_FLOAT_EQ(std::abs(overlap.end.y - overlap.start.y), 6);  // y from 1 to 7
    EXPECT_EQ(overlap.start.x, 1);
    EXPECT_EQ(overlap.end.z, 0);
}

}  // namespace SUPPORT
