// The arithmetic of spherical interpolation, for `float` and FOUR_FLOATS alike and with the same bits in both: sine and
// arc cosine as polynomials, and the two factors that an interpolation needs. Polynomials from Abramowitz and Stegun,
// Handbook of Mathematical Functions, 4.3.97 and 4.4.46; both are good to 3e-8 before rounding.
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

// Good to 3e-7 for angles of up to 10,000 radians.
template <class F>
F sine(F x)
{
    // To -pi .. pi; two pi in two parts, the first with few enough bits that its multiples are exact.
    F const turns = nearest_whole(x * F(0.15915494f));
    x = (x - turns * F(6.28125f)) - turns * F(1.9353072e-3f);
    // The sine of x is that of pi - x: to -pi / 2 .. pi / 2.
    x = least_of(x, F(3.14159265f) - x);
    x = most_of(x, F(-3.14159265f) - x);
    F const s = x * x;
    F const p = ((((F(-0.0000000239f) * s + F(0.0000027526f)) * s + F(-0.0001984090f)) * s + F(0.0083333315f)) * s +
                 F(-0.1666666664f)) *
                    s +
                F(1.0f);
    return p * x;
}

// For x from 0 to 1.
template <class F>
F arc_cosine(F x)
{
    F const p = ((((((F(-0.0012624911f) * x + F(0.0066700901f)) * x + F(-0.0170881256f)) * x + F(0.0308918810f)) * x +
                   F(-0.0501743046f)) *
                      x +
                  F(0.0889789874f)) *
                     x +
                 F(-0.2145988016f)) *
                    x +
                F(1.5707963050f);
    return square_root(F(1.0f) - x) * p;
}

// The factors of a spherical interpolation.
template <class F>
struct ARC_FACTORS {
    F of_a, of_b;
};

// For two quaternions whose dot product is `d`, where 1 - d is above 0 and d at least 0.
template <class F>
ARC_FACTORS<F> arc_factors(F d, F t)
{
    F const angle = arc_cosine(d);
    F const divisor = sine(angle);
    return {sine((F(1.0f) - t) * angle) / divisor, sine(t * angle) / divisor};
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

template <class F>
COMPONENTS<F> linear_blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, F t)
{
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
}

// `a` where the dot product `d` is at least 0, otherwise its negative.
template <class F>
COMPONENTS<F> turned_to_side(COMPONENTS<F> const &a, F d)
{
    F const zero = F(0.0f);
    return {where_at_least(d, zero, a.x, -a.x), where_at_least(d, zero, a.y, -a.y), where_at_least(d, zero, a.z, -a.z),
            where_at_least(d, zero, a.w, -a.w)};
}

template <class F>
COMPONENTS<F> spherical_blend(COMPONENTS<F> const &a, COMPONENTS<F> b, F t, F threshold)
{
    F d = dot(a, b);
    b = turned_to_side(b, d);
    d = where_at_least(d, F(0.0f), d, -d);
    COMPONENTS<F> blended = linear_blend(a, b, t);
    F const distance = F(1.0f) - d;
    if (!anywhere_at_least(distance, threshold))
        return blended;
    ARC_FACTORS<F> const arc = arc_factors(d, t);
    blended.x = where_at_least(distance, threshold, a.x * arc.of_a + b.x * arc.of_b, blended.x);
    blended.y = where_at_least(distance, threshold, a.y * arc.of_a + b.y * arc.of_b, blended.y);
    blended.z = where_at_least(distance, threshold, a.z * arc.of_a + b.z * arc.of_b, blended.z);
    blended.w = where_at_least(distance, threshold, a.w * arc.of_a + b.w * arc.of_b, blended.w);
    return blended;
}

}  // namespace SUPPORT
