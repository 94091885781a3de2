// Each triangle is cut by the other's plane. If both are, the cuts lie on the line that the planes have in common, and
// the triangles meet if the two intervals on it do. A position on the line is one coordinate, along the axis nearest to
// the line's direction, kept as a fraction.

#include "support/geometry/triangle_triangle.h"

#include <algorithm>
#include <cmath>
#include <emmintrin.h>

namespace SUPPORT {

namespace {

struct DOUBLE3 {
    double axis[3];

    DOUBLE3(double x, double y, double z) : axis{x, y, z} {}
    DOUBLE3(VECTOR3 const &v) : axis{v.x, v.y, v.z} {}

    bool is_zero() const { return axis[0] == 0 && axis[1] == 0 && axis[2] == 0; }
};

DOUBLE3 operator-(DOUBLE3 const &a, DOUBLE3 const &b)
{
    return {a.axis[0] - b.axis[0], a.axis[1] - b.axis[1], a.axis[2] - b.axis[2]};
}
double dot(DOUBLE3 const &a, DOUBLE3 const &b)
{
    return a.axis[0] * b.axis[0] + a.axis[1] * b.axis[1] + a.axis[2] * b.axis[2];
}
DOUBLE3 cross(DOUBLE3 const &a, DOUBLE3 const &b)
{
    return {a.axis[1] * b.axis[2] - a.axis[2] * b.axis[1], a.axis[2] * b.axis[0] - a.axis[0] * b.axis[2],
            a.axis[0] * b.axis[1] - a.axis[1] * b.axis[0]};
}

unsigned largest_axis(DOUBLE3 const &v)
{
    double const x = std::abs(v.axis[0]), y = std::abs(v.axis[1]), z = std::abs(v.axis[2]);
    return z > std::max(x, y) ? 2 : unsigned(y > x);
}

// A triangle in 64-bit floats, and how far its corners are from the other triangle's plane, in units of that plane's
// normal. Which corners are how is a set of bits, so that no branch has to be guessed.
struct CUT_TRIANGLE {
    TRIANGLE3 const &triangle;
    double distance[3];
    unsigned above, below;

    explicit CUT_TRIANGLE(TRIANGLE3 const &t) : triangle(t) {}

    DOUBLE3 corner(unsigned i) const { return triangle.corners[i]; }
    double coordinate(unsigned i, unsigned axis) const { return (&triangle.corners[i].x)[axis]; }
    DOUBLE3 edge(unsigned i) const { return corner((i + 1) % 3) - corner(i); }
    DOUBLE3 normal() const { return cross(edge(0), corner(2) - corner(0)); }

    // False if all corners are on one side of the plane through `point`.
    bool cut_by(DOUBLE3 const &plane_normal, DOUBLE3 const &point)
    {
        above = below = 0;
        for (unsigned i = 0; i < 3; ++i) {
            distance[i] = dot(plane_normal, corner(i) - point);
            above |= unsigned(distance[i] > 0) << i;
            below |= unsigned(distance[i] < 0) << i;
        }
        return above != 7 && below != 7;
    }
    bool in_plane() const { return (above | below) == 0; }

    // The corner that is alone on its side of the plane, where the plane counts as above it, or else as below. Not for
    // a triangle that lies in the plane.
    unsigned lone_corner() const
    {
        static unsigned char const lone[8] = {0, 0, 1, 2, 2, 1, 0, 0};
        return lone[below != 0 ? below : above];
    }
};

// Where an edge crosses the other plane: the position numerator / denominator on the line, the denominator positive.
struct CROSSING {
    double numerator, denominator;

    CROSSING(CUT_TRIANGLE const &t, unsigned axis, unsigned from, unsigned to)
    {
        double const d0 = t.distance[from], d1 = t.distance[to];
        double const n = t.coordinate(to, axis) * d0 - t.coordinate(from, axis) * d1;
        numerator = d0 < d1 ? -n : n;
        denominator = std::abs(d0 - d1);
    }
};

// The part of the line within a triangle: between where the two edges of one corner cross the other plane.
struct INTERVAL {
    unsigned from, to[2];
    CROSSING ends[2];

    INTERVAL(CUT_TRIANGLE const &t, unsigned axis, unsigned lone)
        : from(lone), to{(lone + 1) % 3, (lone + 2) % 3}, ends{{t, axis, from, to[0]}, {t, axis, from, to[1]}}
    {}

    VECTOR3 end_point(CUT_TRIANGLE const &t, unsigned end) const
    {
        double const part = t.distance[from] / (t.distance[from] - t.distance[to[end]]);
        auto const at = [&](unsigned axis) {
            double const a = t.coordinate(from, axis), b = t.coordinate(to[end], axis);
            return float(a + (b - a) * part);
        };
        return {at(0), at(1), at(2)};
    }
};

// Triangles in one plane, seen along an axis.
struct FLAT {
    double x, y;
};

double area(FLAT const &a, FLAT const &b, FLAT const &c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool ranges_meet(double a, double b, double c, double d)
{
    return std::min(a, b) <= std::max(c, d) && std::min(c, d) <= std::max(a, b);
}

// Whether the line through a and b parts c and d or touches one of them.
bool line_parts(FLAT const &a, FLAT const &b, FLAT const &c, FLAT const &d)
{
    double const first = area(a, b, c), second = area(a, b, d);
    return !(first > 0 && second > 0) && !(first < 0 && second < 0);
}

bool edges_meet(FLAT const &a, FLAT const &b, FLAT const &c, FLAT const &d)
{
    return ranges_meet(a.x, b.x, c.x, d.x) && ranges_meet(a.y, b.y, c.y, d.y) && line_parts(a, b, c, d) &&
           line_parts(c, d, a, b);
}

bool strictly_inside(FLAT const &point, FLAT const (&t)[3])
{
    double const a = area(t[0], t[1], point), b = area(t[1], t[2], point), c = area(t[2], t[0], point);
    return (a > 0 && b > 0 && c > 0) || (a < 0 && b < 0 && c < 0);
}

[[gnu::noinline]] bool coplanar_meet(CUT_TRIANGLE const &a, CUT_TRIANGLE const &b, DOUBLE3 const &normal)
{
    unsigned const dropped = largest_axis(normal), first = (dropped + 1) % 3, second = (dropped + 2) % 3;
    auto const flat = [&](DOUBLE3 const &v) { return FLAT{v.axis[first], v.axis[second]}; };
    FLAT const p[3] = {flat(a.corner(0)), flat(a.corner(1)), flat(a.corner(2))};
    FLAT const q[3] = {flat(b.corner(0)), flat(b.corner(1)), flat(b.corner(2))};
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j)
            if (edges_meet(p[i], p[(i + 1) % 3], q[j], q[(j + 1) % 3]))
                return true;
    return strictly_inside(p[0], q) || strictly_inside(q[0], p);
}

// A plane through triangle `a`, whose corners lie on a line, that is not the plane of `b`, or that holds both where one
// does. With b on a line too, the normal stands square on both lines. (Of two points there is none, nor is it needed:
// points whose boxes meet are the same.)
[[gnu::noinline]] DOUBLE3 normal_beside(CUT_TRIANGLE const &a, CUT_TRIANGLE const &b, DOUBLE3 const &normal_b)
{
    DOUBLE3 along = a.edge(0).is_zero() ? a.edge(1) : a.edge(0);
    if (along.is_zero())  // a is a point
        along = b.edge(0).is_zero() ? b.edge(1) : b.edge(0);
    DOUBLE3 candidate = cross(along, normal_b);
    for (unsigned i = 0; i < 3 && candidate.is_zero(); ++i)
        candidate = cross(along, b.edge(i));
    for (unsigned i = 0; i < 3 && candidate.is_zero(); ++i)
        candidate = cross(along, b.corner(i) - a.corner(0));
    if (candidate.is_zero()) {  // all on one line
        unsigned const axis = largest_axis(along);
        candidate = cross(along, {axis == 2 ? 1.0 : 0.0, axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0});
    }
    return candidate;
}

bool comes_before(CROSSING const &a, CROSSING const &b)
{
    return a.numerator * b.denominator < b.numerator * a.denominator;
}

// Whether the intervals are apart: every end of one before every end of the other.
bool apart(INTERVAL const &a, INTERVAL const &b)
{
    unsigned before = 0, behind = 0;
    for (CROSSING const &end_a : a.ends)
        for (CROSSING const &end_b : b.ends) {
            before += comes_before(end_a, end_b);
            behind += comes_before(end_b, end_a);
        }
    return before == 4 || behind == 4;
}

// What two intervals that are not apart have in common: of their four ends the middle two.
[[gnu::noinline]] SEGMENT3 overlap(CUT_TRIANGLE const &a, INTERVAL const &on_a, CUT_TRIANGLE const &b,
                                   INTERVAL const &on_b)
{
    struct END {
        CROSSING crossing;
        VECTOR3 point;
    } ends[4] = {{on_a.ends[0], on_a.end_point(a, 0)},
                 {on_a.ends[1], on_a.end_point(a, 1)},
                 {on_b.ends[0], on_b.end_point(b, 0)},
                 {on_b.ends[1], on_b.end_point(b, 1)}};
    std::sort(ends, ends + 4, [](END const &x, END const &y) { return comes_before(x.crossing, y.crossing); });
    return {ends[1].point, ends[2].point};
}

// Whether the boxes around the triangles are apart.
bool boxes_apart(TRIANGLE3 const &a, TRIANGLE3 const &b)
{
    struct BOX {
        __m128 low, high;  // x, y, z; anything

        explicit BOX(TRIANGLE3 const &t)
        {
            float const *const numbers = &t.corners[0].x;
            __m128 const first = _mm_loadu_ps(numbers), second = _mm_loadu_ps(numbers + 3);
            __m128 const end = _mm_loadu_ps(numbers + 5);  // nothing behind the last number is read
            __m128 const third = _mm_shuffle_ps(end, end, _MM_SHUFFLE(3, 3, 2, 1));
            low = _mm_min_ps(_mm_min_ps(first, second), third);
            high = _mm_max_ps(_mm_max_ps(first, second), third);
        }
    };
    BOX const box_a(a), box_b(b);
    __m128 const apart = _mm_or_ps(_mm_cmplt_ps(box_a.high, box_b.low), _mm_cmplt_ps(box_b.high, box_a.low));
    return (_mm_movemask_ps(apart) & 7) != 0;
}

// What the two functions share. `segment` may be null.
[[gnu::noinline]] bool meet(TRIANGLE3 const &first, TRIANGLE3 const &second, bool &coplanar, SEGMENT3 *segment)
{
    coplanar = false;
    CUT_TRIANGLE a(first), b(second);
    DOUBLE3 normal_a = a.normal();
    if (!b.cut_by(normal_a, a.corner(0)))
        return false;
    DOUBLE3 normal_b = b.normal();
    if (!a.cut_by(normal_b, b.corner(0)))
        return false;
    if (normal_a.is_zero() || normal_b.is_zero()) [[unlikely]] {
        if (normal_a.is_zero())
            normal_a = normal_beside(a, b, normal_b);
        if (normal_b.is_zero())
            normal_b = normal_beside(b, a, normal_a);
        if (!b.cut_by(normal_a, a.corner(0)) || !a.cut_by(normal_b, b.corner(0)))
            return false;
    }
    if (a.in_plane() || b.in_plane()) {
        // Here too if a number is missing: the distances are then neither above nor below, and a normal has it missing.
        coplanar = !std::isnan(dot(normal_a, normal_a) + dot(normal_b, normal_b));
        return coplanar && coplanar_meet(a, b, a.in_plane() ? normal_b : normal_a);
    }

    unsigned const axis = largest_axis(cross(normal_a, normal_b));
    INTERVAL const on_a(a, axis, a.lone_corner()), on_b(b, axis, b.lone_corner());
    if (apart(on_a, on_b))
        return false;
    if (segment != nullptr)
        *segment = overlap(a, on_a, b, on_b);
    return true;
}

}  // namespace

bool triangle_triangle(TRIANGLE3 const &a, TRIANGLE3 const &b)
{
    bool coplanar;
    return !boxes_apart(a, b) && meet(a, b, coplanar, nullptr);
}

bool triangle_triangle_with_segment(TRIANGLE3 const &a, TRIANGLE3 const &b, bool &coplanar, SEGMENT3 &overlap)
{
    coplanar = false;
    return !boxes_apart(a, b) && meet(a, b, coplanar, &overlap);
}

}  // namespace SUPPORT
