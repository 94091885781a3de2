// The shapes that the intersection tests work on: plain runs of 32-bit floats in the order written, so that arrays of
// them can be read and handed over as they stand.
#pragma once

#include "support/maths/vector.h"

#include <cstdint>

namespace SUPPORT {

struct SEGMENT2 {
    VECTOR2 start, end;
};

struct SEGMENT3 {
    VECTOR3 start, end;
};

struct CIRCLE {
    VECTOR2 centre;
    float radius = 0;
};

struct SPHERE {
    VECTOR3 centre;
    float radius = 0;
};

struct CAPSULE {
    SEGMENT3 axis;
    float radius = 0;
};

// The points p with normal · p + d = 0; with a normal of length 1 the left side is the signed distance of any p.
struct PLANE {
    VECTOR3 normal;
    float d = 0;
};

struct RECT2 {
    VECTOR2 min, max;
};

struct BOX3 {
    VECTOR3 min, max;
};

// Counter-clockwise corners.
struct QUAD2 {
    VECTOR2 corners[4];
};

// The axes have length 1 and stand square on each other.
struct ORIENTED_RECT {
    VECTOR2 centre;
    float width = 0, height = 0;
    VECTOR2 width_axis, height_axis;
};

// Where a segment ends: it may go on beyond its start, its end or both.
using END_FLAGS = std::uint8_t;
inline constexpr END_FLAGS closed_segment = 0;
inline constexpr END_FLAGS open_before_start = 1;
inline constexpr END_FLAGS open_past_end = 2;
inline constexpr END_FLAGS infinite_line = 3;

// Whether the parameter t, 0 at the start and 1 at the end, belongs to a segment with these ends. What is no number
// does only where the segment goes on before its start.
constexpr bool within_ends(float t, END_FLAGS flags)
{
    return ((flags & open_before_start) != 0 || t >= 0) && ((flags & open_past_end) != 0 || !(t > 1));
}

}  // namespace SUPPORT
