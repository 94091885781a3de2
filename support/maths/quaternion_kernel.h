// The arithmetic of rotations over lanes, with the same bits in every lane as for a single float: interpolation, with
// sine and arc cosine as polynomials, and the entries of the matrix. Polynomials from Abramowitz and Stegun, Handbook
// of Mathematical Functions, 4.3.97 and 4.4.46, whose errors are below 3e-8 before rounding; they are summed in pairs,
// so that their steps need not wait for each other.
#pragma once

#include "support/maths/lanes.h"

namespace SUPPORT {

// For x from -pi / 2 to pi / 2; good to 2e-7.
template <class F>
KERNEL void sine_of_quarter(F const &x, F &sine)
{
    F const s = x * x;
    F const s2 = s * s;
    F const low = 1.0f + -0.1666666664f * s;
    F const middle = 0.0083333315f + -0.0001984090f * s;
    F const high = 0.0000027526f + -0.0000000239f * s;
    sine = x * (low + s2 * (middle + s2 * high));
}

// For any angle; good to 6e-7 up to 10,000 radians.
template <class F>
KERNEL void sine_of_any(F const &angle, F &sine)
{
    // To -pi .. pi. What is added and taken away again leaves a whole number; two pi in two parts, the first with few
    // enough bits that its multiples are exact.
    constexpr float carrier = 12582912.0f;  // 1.5 * 2^23: from 2^23 on floats have no bits behind the point
    F const turns = (angle * 0.15915494f + carrier) - carrier;
    F x = (angle - turns * 6.28125f) - turns * 1.9353072e-3f;
    // The sine of x is that of pi - x: to -pi / 2 .. pi / 2.
    F mirrored = 3.14159265f - x;
    x = x < mirrored ? x : mirrored;
    mirrored = -3.14159265f - x;
    x = x > mirrored ? x : mirrored;
    sine_of_quarter(x, sine);
}

// For x from 0 to 1; good to 4e-7.
template <class F>
KERNEL void arc_cosine(F const &x, F &angle)
{
    F const x2 = x * x;
    F const x4 = x2 * x2;
    F const p01 = 1.5707963050f + -0.2145988016f * x;
    F const p23 = 0.0889789874f + -0.0501743046f * x;
    F const p45 = 0.0308918810f + -0.0170881256f * x;
    F const p67 = 0.0066700901f + -0.0012624911f * x;
    F root = 1.0f - x;
    square_root(root);
    angle = root * ((p01 + x2 * p23) + x4 * (p45 + x2 * p67));
}

// The components of one quaternion in each lane.
template <class F>
struct COMPONENTS {
    F x, y, z, w;
};

template <class F>
KERNEL void dot(COMPONENTS<F> const &a, COMPONENTS<F> const &b, F &product)
{
    product = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

// Componentwise, straight from `a` to `b`.
template <class F>
KERNEL void straight_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float t, COMPONENTS<F> &blended)
{
    blended = {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
}

// Straight on the shorter way.
template <class F>
KERNEL void linear_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float t, COMPONENTS<F> &blended)
{
    F d;
    dot(a, b, d);
    straight_blend(a, {d < 0.0f ? -b.x : b.x, d < 0.0f ? -b.y : b.y, d < 0.0f ? -b.z : b.z, d < 0.0f ? -b.w : b.w}, t,
                   blended);
}

// Along the arc on the shorter way where 1 - dot(a, b) is at least `threshold`, straight elsewhere. The second one is
// turned to the other side unless the dot product is at least 0, which one that is no number is not.
template <class F>
KERNEL void spherical_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &given, float t, float threshold,
                            COMPONENTS<F> &blended)
{
    F d;
    dot(a, given, d);
    COMPONENTS<F> const b = {d >= 0.0f ? given.x : -given.x, d >= 0.0f ? given.y : -given.y,
                             d >= 0.0f ? given.z : -given.z, d >= 0.0f ? given.w : -given.w};
    d = d >= 0.0f ? d : -d;
    straight_blend(a, b, t, blended);
    F const distance = 1.0f - d;
    auto const far = distance >= threshold;
    if (!anywhere(far))
        return;

    F angle, divisor, of_a, of_b;
    arc_cosine(d, angle);
    sine_of_quarter(angle, divisor);
    F const rest = (1 - t) * angle, way = t * angle;
    if (t >= 0 && t <= 1) {
        sine_of_quarter(rest, of_a);
        sine_of_quarter(way, of_b);
    } else {
        sine_of_any(rest, of_a);
        sine_of_any(way, of_b);
    }
    of_a = of_a / divisor;
    of_b = of_b / divisor;
    blended = {far ? a.x * of_a + b.x * of_b : blended.x, far ? a.y * of_a + b.y * of_b : blended.y,
               far ? a.z * of_a + b.z * of_b : blended.z, far ? a.w * of_a + b.w * of_b : blended.w};
}

// The matrix of a rotation, entry by entry.
template <class F>
KERNEL void rotation_entries(COMPONENTS<F> const &q, F (&m)[3][3])
{
    F const x2 = 2.0f * q.x, y2 = 2.0f * q.y, z2 = 2.0f * q.z, w2 = 2.0f * q.w;
    m[0][0] = 1.0f - y2 * q.y - z2 * q.z;
    m[0][1] = x2 * q.y - w2 * q.z;
    m[0][2] = x2 * q.z + w2 * q.y;
    m[1][0] = x2 * q.y + w2 * q.z;
    m[1][1] = 1.0f - x2 * q.x - z2 * q.z;
    m[1][2] = y2 * q.z - w2 * q.x;
    m[2][0] = x2 * q.z - w2 * q.y;
    m[2][1] = y2 * q.z + w2 * q.x;
    m[2][2] = 1.0f - x2 * q.x - y2 * q.y;
}

}  // namespace SUPPORT
