// Tests of shapes in the plane against each other. The parameter of a point on a segment is 0 at its start and 1 at its
// end; the ends count as on it (`within_ends`). All are pure functions on 32-bit floats, without allocation, that stop
// at the first rejection. A step in which a number is missing (NaN) rejects, unless said otherwise; of rectangles,
// quads and curves another side may still meet.
#pragma once

#include "support/geometry/shapes.h"

namespace SUPPORT {

// Whether the segments have a point in common. Segments whose directions span an area of at most `epsilon` count as
// parallel and never do, also where they lie on one line.
bool segments_cross_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags, float epsilon);

// The same, with the parameters of the common point: t on a, u on b. Of parallel segments both are 0; where t already
// rejects, u is 0.
bool segments_intersect_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags, float &t,
                           float &u, float epsilon);

// The same, with the point, which stays as it is if there is none.
bool segments_intersection_point_2d(SEGMENT2 const &a, SEGMENT2 const &b, END_FLAGS a_flags, END_FLAGS b_flags,
                                    VECTOR2 &point, float epsilon);

// Where the endless line through b meets that through a, as the parameter on a. False with t = 0 if they are exactly
// parallel. With a number missing t is NaN.
bool line_parameter_2d(SEGMENT2 const &a, SEGMENT2 const &b, float &t);

// Whether the segment meets the circle's line. A segment within the circle does not, nor does one of length 0.
bool segment_circle(SEGMENT2 const &segment, CIRCLE const &circle, END_FLAGS flags);

// The same, with the parameters of both points of the endless line, t0 <= t1, which stay as they are if it misses.
bool segment_circle_parameters(SEGMENT2 const &segment, CIRCLE const &circle, END_FLAGS flags, float &t0, float &t1);

// The borders belong to all rectangles and quads.
bool point_in_rect(RECT2 const &rect, VECTOR2 const &point);
bool point_in_oriented_rect(ORIENTED_RECT const &rect, VECTOR2 const &point);
bool point_in_quad(QUAD2 const &quad, VECTOR2 const &point);
bool segment_rect(SEGMENT2 const &segment, RECT2 const &rect);
bool quad_oriented_rect(QUAD2 const &quad, ORIENTED_RECT const &rect);

// A cubic Bézier curve, taken as `chords` straight pieces of equal steps of its parameter.
bool bezier_rect(VECTOR2 const (&control_points)[4], RECT2 const &rect, unsigned chords);

}  // namespace SUPPORT
