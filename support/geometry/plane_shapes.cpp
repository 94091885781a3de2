#include "support/geometry/plane_shapes.h"

#include <cmath>

namespace SUPPORT {

static float area(VECTOR2 const &a, VECTOR2 const &b) { return a.x * b.y - a.y * b.x; }

static SEGMENT2 side(VECTOR2 const *corners, unsigned i) { return {corners[i], corners[(i + 1) % 4]}; }

bool segments_intersect_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags, float &t,
                           float &u, float epsilon)
{
    t = 0;
    u = 0;
    VECTOR2 const e = a.end - a.start, f = b.end - b.start;
    float const determinant = f.y * e.x - f.x * e.y;
    if (!(std::abs(determinant) > epsilon))
        return false;

    VECTOR2 const w = a.start - b.start;
    float const reciprocal = 1 / determinant;
    t = (f.x * w.y - f.y * w.x) * reciprocal;
    if (!within_ends(t, a_flags))
        return false;
    u = (e.x * w.y - e.y * w.x) * reciprocal;
    return within_ends(u, b_flags);
}

bool segments_cross_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags, float epsilon)
{
    float t, u;
    return segments_intersect_2d(a, b, a_flags, b_flags, t, u, epsilon);
}

bool segments_intersection_point_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags,
                                    VECTOR2 &point, float epsilon)
{
    float t, u;
    if (!segments_intersect_2d(a, b, a_flags, b_flags, t, u, epsilon))
        return false;
    point = a.start + (a.end - a.start) * t;
    return true;
}

bool line_parameter_2d(SEGMENT2 const &a, SEGMENT2 const &b, float &t)
{
    VECTOR2 const e = a.end - a.start, f = b.end - b.start, w = a.start - b.start;
    float const determinant = f.y * e.x - f.x * e.y;
    t = determinant != 0 ? (f.x * w.y - f.y * w.x) / determinant : 0;
    return determinant != 0;
}

bool segment_circle_parameters(SEGMENT2 const &segment, CIRCLE const &circle, END_FLAGS flags, float &t0, float &t1)
{
    VECTOR2 const direction = segment.end - segment.start, m = segment.start - circle.centre;
    float const a = dot(direction, direction);
    float const b = 2 * dot(direction, m);
    float const c = dot(m, m) - circle.radius * circle.radius;
    float const discriminant = b * b - 4 * a * c;
    if (!(discriminant >= 0) || a == 0)
        return false;

    float const root = std::sqrt(discriminant), reciprocal = 1 / (2 * a);
    t0 = (-b - root) * reciprocal;
    t1 = (root - b) * reciprocal;
    return within_ends(t0, flags) || within_ends(t1, flags);
}

bool segment_circle(SEGMENT2 const &segment, CIRCLE const &circle, END_FLAGS flags)
{
    float t0, t1;
    return segment_circle_parameters(segment, circle, flags, t0, t1);
}

bool point_in_rect(RECT2 const &rect, VECTOR2 const &point)
{
    return point.x >= rect.min.x && point.x <= rect.max.x && point.y >= rect.min.y && point.y <= rect.max.y;
}

bool point_in_oriented_rect(ORIENTED_RECT const &rect, VECTOR2 const &point)
{
    VECTOR2 const v = point - rect.centre;
    return std::abs(dot(v, rect.width_axis)) <= rect.width * 0.5f &&
           std::abs(dot(v, rect.height_axis)) <= rect.height * 0.5f;
}

bool point_in_quad(QUAD2 const &quad, VECTOR2 const &point)
{
    for (unsigned i = 0; i < 4; ++i) {
        SEGMENT2 const edge = side(quad.corners, i);
        if (!(area(edge.end - edge.start, point - edge.start) >= 0))
            return false;
    }
    return true;
}

bool segment_rect(SEGMENT2 const &segment, RECT2 const &rect)
{
    if (point_in_rect(rect, segment.start) || point_in_rect(rect, segment.end))
        return true;
    VECTOR2 const corners[4] = {rect.min, {rect.max.x, rect.min.y}, rect.max, {rect.min.x, rect.max.y}};
    for (unsigned i = 0; i < 4; ++i)
        if (segments_cross_2d(segment, side(corners, i), closed_segment, closed_segment, 0))
            return true;
    return false;
}

bool quad_oriented_rect(QUAD2 const &quad, ORIENTED_RECT const &rect)
{
    VECTOR2 const across = rect.width_axis * (rect.width * 0.5f), along = rect.height_axis * (rect.height * 0.5f);
    VECTOR2 const corners[4] = {rect.centre - across - along, rect.centre + across - along,
                                rect.centre + across + along, rect.centre - across + along};
    for (unsigned i = 0; i < 4; ++i)
        if (point_in_oriented_rect(rect, quad.corners[i]) || point_in_quad(quad, corners[i]))
            return true;
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned j = 0; j < 4; ++j)
            if (segments_cross_2d(side(quad.corners, i), side(corners, j), closed_segment, closed_segment, 0))
                return true;
    return false;
}

bool bezier_rect(VECTOR2 const (&control_points)[4], RECT2 const &rect, unsigned chords)
{
    VECTOR2 from = control_points[0];
    for (unsigned i = 1; i <= chords; ++i) {
        float const t = float(i) / float(chords), s = 1 - t;
        VECTOR2 const to = control_points[0] * (s * s * s) + control_points[1] * (3 * s * s * t) +
                           control_points[2] * (3 * s * t * t) + control_points[3] * (t * t * t);
        if (segment_rect({from, to}, rect))
            return true;
        from = to;
    }
    return false;
}

}  // namespace SUPPORT
