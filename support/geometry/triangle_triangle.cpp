// Each triangle is cut by the other's plane. If both are, the cuts lie on the line that the planes have in common, and
// the triangles meet if the two intervals on it do. A position on the line is one coordinate, along the axis nearest to
// the line's direction, kept as a fraction.

#include "support/geometry/triangle_triangle.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SUPPORT {

namespace {

struct DOUBLE3 {
    double x, y, z;

    DOUBLE3(double given_x, double given_y, double given_z) : x(given_x), y(given_y), z(given_z) {}
    DOUBLE3(VECTOR3 const &v) : x(v.x), y(v.y), z(v.z) {}

    bool is_zero() const { return x == 0 && y == 0 && z == 0; }
};

DOUBLE3 operator-(DOUBLE3 const &a, DOUBLE3 const &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(DOUBLE3 const &a, DOUBLE3 const &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
DOUBLE3 cross(DOUBLE3 const &a, DOUBLE3 const &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// A triangle in 64-bit floats, and how far its corners are from the other triangle's plane, in units of that plane's
// normal.
struct CUT_TRIANGLE {
    DOUBLE3 corner[3];
    double distance[3];

    explicit CUT_TRIANGLE(TRIANGLE3 const &t) : corner{t.corners[0], t.corners[1], t.corners[2]} {}

    DOUBLE3 edge(unsigned i) const { return corner[(i + 1) % 3] - corner[i]; }
    DOUBLE3 normal() const { return cross(corner[1] - corner[0], corner[2] - corner[0]); }

    // False if all corners are on one side of the plane through `point`.
    bool cut_by(DOUBLE3 const &plane_normal, DOUBLE3 const &point)
    {
        for (unsigned i = 0; i < 3; ++i)
            distance[i] = dot(plane_normal, corner[i] - point);
        bool const above = distance[0] > 0 && distance[1] > 0 && distance[2] > 0;
        bool const below = distance[0] < 0 && distance[1] < 0 && distance[2] < 0;
        return !above && !below;
    }
    bool in_plane() const { return distance[0] == 0 && distance[1] == 0 && distance[2] == 0; }
};

double coordinate(DOUBLE3 const &v, unsigned axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

unsigned largest_axis(DOUBLE3 const &v)
{
    double const x = std::abs(v.x), y = std::abs(v.y), z = std::abs(v.z);
    return x >= y && x >= z ? 0 : y >= z ? 1 : 2;
}

// Where an edge crosses the other plane: the position numerator / denominator on the line, the denominator positive.
struct CROSSING {
    double numerator, denominator;
    unsigned from, to;  // corners of the edge

    CROSSING(CUT_TRIANGLE const &t, unsigned axis, unsigned from_corner, unsigned to_corner)
        : from(from_corner), to(to_corner)
    {
        double const d0 = t.distance[from], d1 = t.distance[to];
        double const sign = d0 < d1 ? -1 : 1;
        numerator = sign * (coordinate(t.corner[to], axis) * d0 - coordinate(t.corner[from], axis) * d1);
        denominator = sign * (d0 - d1);
    }

    bool operator<(CROSSING const &other) const
    {
        return numerator * other.denominator < other.numerator * denominator;
    }

    DOUBLE3 point(CUT_TRIANGLE const &t) const
    {
        double const part = t.distance[from] / (t.distance[from] - t.distance[to]);
        DOUBLE3 const &a = t.corner[from], &b = t.corner[to];
        return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part, a.z + (b.z - a.z) * part};
    }
};

// The corner that is alone on its side of the plane, or on the plane alone. Not for a triangle that lies in the plane.
unsigned lone_corner(CUT_TRIANGLE const &t)
{
    double const *const d = t.distance;
    if (d[0] * d[1] > 0)
        return 2;
    if (d[0] * d[2] > 0)
        return 1;
    if (d[1] * d[2] > 0 || d[0] != 0)
        return 0;
    return d[1] != 0 ? 1 : 2;
}

// The part of the line within a triangle.
struct INTERVAL {
    CROSSING low, high;

    INTERVAL(CUT_TRIANGLE const &t, unsigned axis, unsigned lone)
        : low(t, axis, lone, (lone + 1) % 3), high(t, axis, lone, (lone + 2) % 3)
    {
        if (high < low)
            std::swap(low, high);
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

bool coplanar_meet(CUT_TRIANGLE const &a, CUT_TRIANGLE const &b, DOUBLE3 const &normal)
{
    unsigned const dropped = largest_axis(normal), first = (dropped + 1) % 3, second = (dropped + 2) % 3;
    auto const flat = [&](DOUBLE3 const &v) { return FLAT{coordinate(v, first), coordinate(v, second)}; };
    FLAT const p[3] = {flat(a.corner[0]), flat(a.corner[1]), flat(a.corner[2])};
    FLAT const q[3] = {flat(b.corner[0]), flat(b.corner[1]), flat(b.corner[2])};
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j)
            if (edges_meet(p[i], p[(i + 1) % 3], q[j], q[(j + 1) % 3]))
                return true;
    return strictly_inside(p[0], q) || strictly_inside(q[0], p);
}

// A plane through triangle `a`, whose corners lie on a line, that is not the plane of `b`, or that holds both where one
// does. With b on a line too, the normal stands square on both lines.
DOUBLE3 normal_beside(CUT_TRIANGLE const &a, CUT_TRIANGLE const &b, DOUBLE3 const &normal_b)
{
    DOUBLE3 along = a.edge(0).is_zero() ? a.edge(1) : a.edge(0);
    if (along.is_zero())  // a is a point
        along = b.edge(0).is_zero() ? b.edge(1) : b.edge(0);
    if (along.is_zero())  // b too
        along = b.corner[0] - a.corner[0];
    DOUBLE3 candidate = cross(along, normal_b);
    for (unsigned i = 0; i < 3 && candidate.is_zero(); ++i)
        candidate = cross(along, b.edge(i));
    for (unsigned i = 0; i < 3 && candidate.is_zero(); ++i)
        candidate = cross(along, b.corner[i] - a.corner[0]);
    if (candidate.is_zero()) {  // all on one line
        unsigned const axis = largest_axis(along);
        candidate = cross(along, {axis == 2 ? 1.0 : 0.0, axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0});
    }
    return candidate;
}

// What the two functions share. `segment` may be null.
bool meet(TRIANGLE3 const &first, TRIANGLE3 const &second, bool &coplanar, SEGMENT3 *segment)
{
    coplanar = false;
    CUT_TRIANGLE a(first), b(second);
    DOUBLE3 normal_a = a.normal(), normal_b = b.normal();
    if (normal_a.is_zero()) [[unlikely]]
        normal_a = normal_beside(a, b, normal_b);
    if (normal_b.is_zero()) [[unlikely]]
        normal_b = normal_beside(b, a, normal_a);

    if (!b.cut_by(normal_a, a.corner[0]) || !a.cut_by(normal_b, b.corner[0]))
        return false;
    coplanar = a.in_plane() || b.in_plane();
    if (coplanar)
        return coplanar_meet(a, b, a.in_plane() ? normal_b : normal_a);

    unsigned const axis = largest_axis(cross(normal_a, normal_b));
    INTERVAL const on_a(a, axis, lone_corner(a)), on_b(b, axis, lone_corner(b));
    if (on_a.high < on_b.low || on_b.high < on_a.low)
        return false;
    if (segment != nullptr) {
        DOUBLE3 const start = on_a.low < on_b.low ? on_b.low.point(b) : on_a.low.point(a);
        DOUBLE3 const end = on_b.high < on_a.high ? on_b.high.point(b) : on_a.high.point(a);
        *segment = {{float(start.x), float(start.y), float(start.z)}, {float(end.x), float(end.y), float(end.z)}};
    }
    return true;
}

}  // namespace

bool triangle_triangle(TRIANGLE3 const &a, TRIANGLE3 const &b)
{
    bool coplanar;
    return meet(a, b, coplanar, nullptr);
}

bool triangle_triangle_with_segment(TRIANGLE3 const &a, TRIANGLE3 const &b, bool &coplanar, SEGMENT3 &overlap)
{
    return meet(a, b, coplanar, &overlap);
}

}  // namespace SUPPORT
