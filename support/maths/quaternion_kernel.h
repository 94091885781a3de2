// The arithmetic of rotations, for `float` and FOUR_FLOATS alike and with the same bits in both: interpolation, with
// sine and arc cosine as polynomials, and the entries of the matrix. Polynomials from Abramowitz and Stegun,
// Handbook of Mathematical Functions, 4.3.97 and 4.4.46; both have errors below 3e-8 before rounding.
#pragma once

#include "support/maths/four_floats.h"

namespace SUPPORT {

// Rounds to the nearest whole number below 2^22 in size: beyond 2^23 a float has no bits behind the point.
template <class F>
F nearest_whole(F x)
{
    F const carrier = F(12582912.0f);  // 1.5 * 2^23
    return (x + carrier) - carrier;
}

// The polynomials are summed in pairs, so that their steps need not wait for each other.

// For x from -pi / 2 to pi / 2; good to 2e-7.
template <class F>
F sine_of_quarter(F x)
{
    F const s = x * x;
    F const s2 = s * s;
    F const low = F(1.0f) + F(-0.1666666664f) * s;
    F const middle = F(0.0083333315f) + F(-0.0001984090f) * s;
    F const high = F(0.0000027526f) + F(-0.0000000239f) * s;
    return x * (low + s2 * (middle + s2 * high));
}

// For any angle; good to 6e-7 up to 10,000 radians.
template <class F>
F sine(F x)
{
    // To -pi .. pi; two pi in two parts, the first with few enough bits that its multiples are exact.
    F const turns = nearest_whole(x * F(0.15915494f));
    x = (x - turns * F(6.28125f)) - turns * F(1.9353072e-3f);
    // The sine of x is that of pi - x: to -pi / 2 .. pi / 2.
    x = least_of(x, F(3.14159265f) - x);
    x = most_of(x, F(-3.14159265f) - x);
    return sine_of_quarter(x);
}

// For x from 0 to 1; good to 4e-7.
template <class F>
F arc_cosine(F x)
{
    F const x2 = x * x;
    F const x4 = x2 * x2;
    F const p01 = F(1.5707963050f) + F(-0.2145988016f) * x;
    F const p23 = F(0.0889789874f) + F(-0.0501743046f) * x;
    F const p45 = F(0.0308918810f) + F(-0.0170881256f) * x;
    F const p67 = F(0.0066700901f) + F(-0.0012624911f) * x;
    return square_root(F(1.0f) - x) * ((p01 + x2 * p23) + x4 * (p45 + x2 * p67));
}

// The factors of a spherical interpolation.
template <class F>
struct ARC_FACTORS {
    F of_a, of_b;
};

// For two quaternions whose dot product is `d`, where 1 - d is above 0 and d at least 0.
template <class F>
ARC_FACTORS<F> arc_factors(F d, float t)
{
    F const angle = arc_cosine(d);
    F const divisor = sine_of_quarter(angle);
    F const rest = F(1 - t) * angle, way = F(t) * angle;
    if (t >= 0 && t <= 1)
        return {sine_of_quarter(rest) / divisor, sine_of_quarter(way) / divisor};
    return {sine(rest) / divisor, sine(way) / divisor};
}

// Four components each, of one quaternion (F is float) or of four (F is FOUR_FLOATS).
template <class F>
struct COMPONENTS {
    F x, y, z, w;
};

template <class F>
F dot(COMPONENTS<F> const &a, COMPONENTS<F> const &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

// Componentwise, straight from `a` to `b`.
template <class F>
COMPONENTS<F> straight_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float weight)
{
    F const t = F(weight);
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
}

template <class F>
COMPONENTS<F> linear_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float t)
{
    F const d = dot(a, b);
    return straight_blend(a,
                          {negated_where_below_0(b.x, d), negated_where_below_0(b.y, d), negated_where_below_0(b.z, d),
                           negated_where_below_0(b.w, d)},
                          t);
}

template <class F>
COMPONENTS<F> spherical_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &from, float t, float threshold)
{
    F d = dot(a, from);
    COMPONENTS<F> const b = {negated_unless_from_0(from.x, d), negated_unless_from_0(from.y, d),
                             negated_unless_from_0(from.z, d), negated_unless_from_0(from.w, d)};
    d = negated_unless_from_0(d, d);
    COMPONENTS<F> const straight = straight_blend(a, b, t);
    F const distance = F(1.0f) - d, least = F(threshold);
    if (!anywhere_at_least(distance, least))
        return straight;
    ARC_FACTORS<F> const arc = arc_factors(d, t);
    return {where_at_least(distance, least, a.x * arc.of_a + b.x * arc.of_b, straight.x),
            where_at_least(distance, least, a.y * arc.of_a + b.y * arc.of_b, straight.y),
            where_at_least(distance, least, a.z * arc.of_a + b.z * arc.of_b, straight.z),
            where_at_least(distance, least, a.w * arc.of_a + b.w * arc.of_b, straight.w)};
}

// The matrix of a rotation, entry by entry.
template <class F>
struct ROTATION_ENTRIES {
    F m[3][3];
};

template <class F>
ROTATION_ENTRIES<F> rotation_entries(COMPONENTS<F> const &q)
{
    F const one = F(1.0f), two = F(2.0f);
    F const x2 = two * q.x, y2 = two * q.y, z2 = two * q.z, w2 = two * q.w;
    return {{{one - y2 * q.y - z2 * q.z, x2 * q.y - w2 * q.z, x2 * q.z + w2 * q.y},
             {x2 * q.y + w2 * q.z, one - x2 * q.x - z2 * q.z, y2 * q.z - w2 * q.x},
             {x2 * q.z - w2 * q.y, y2 * q.z + w2 * q.x, one - x2 * q.x - y2 * q.y}}};
}

}  // namespace SUPPORT
