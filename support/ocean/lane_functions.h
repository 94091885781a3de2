// Sine, cosine and arc tangent of several floats at once, by polynomials near the best of their degree. Every processor
// gives the same bits.
#pragma once

#include "support/maths/lanes.h"

#include <cstdint>

namespace SUPPORT {

template <class F>
struct LANE_INTS;
template <>
struct LANE_INTS<float> {
    using TYPE = std::int32_t;
};
template <>
struct LANE_INTS<FOUR_FLOATS> {
    using TYPE = FOUR_INTS;
};
template <>
struct LANE_INTS<EIGHT_FLOATS> {
    using TYPE = EIGHT_INTS;
};
template <class F>
using INTS = typename LANE_INTS<F>::TYPE;

// The parts before the point; `numbers` have to be within the range of the integers.
KERNEL void truncate_lanes(std::int32_t &whole, float const &numbers) { whole = std::int32_t(numbers); }
template <class F>
KERNEL void truncate_lanes(INTS<F> &whole, F const &numbers)
{
    whole = __builtin_convertvector(numbers, INTS<F>);
}

// For what is beyond it, one float at a time serves.
inline constexpr float furthest_phase = 8192;  // radians, either way

// To within 1e-7 of the true values.
template <class F>
KERNEL void sine_cosine(F const &phase, F &sine, F &cosine)
{
    // The nearest multiple of a quarter turn, whose length stands in three parts of few bits, is taken off. Adding 1.5
    // times 2^23 leaves no bits behind the point.
    F const shifted = phase * 0.63661977f + 12582912.0f;
    F const quarters = shifted - 12582912.0f;
    F const x = ((phase - quarters * 1.5703125f) - quarters * 4.837512970e-4f) - quarters * 7.54978995e-8f;
    F const z = x * x;
    F const s = ((-1.958537321e-4f * z + 8.332736559e-3f) * z - 0.166666646f) * z * x + x;
    F const c = ((2.454541908e-5f * z - 1.38882913e-3f) * z + 4.16666646e-2f) * z * z - 0.5f * z + 1.0f;

    INTS<F> bits;
    std::memcpy(&bits, &shifted, sizeof bits);
    INTS<F> const odd = (bits & 1) != 0;
    F const sine_size = odd ? c : s, cosine_size = odd ? s : c;
    sine = (bits & 2) != 0 ? -sine_size : sine_size;
    cosine = ((bits + 1) & 2) != 0 ? -cosine_size : cosine_size;
}
KERNEL void sine_cosine(float const &phase, float &sine, float &cosine)
{
    sine = std::sin(phase);
    cosine = std::cos(phase);
}

// The angle of (x, y) against the x axis, for x of 0 and more: -pi / 2 to pi / 2, to within 1e-7; 0 for (0, 0).
template <class F>
KERNEL void arc_tangent(F const &y, F const &x, F &angle)
{
    F const size = y < 0 ? -y : y;
    F const steep = size > x ? F{} + 1.0f : F{};
    F const longer = size > x ? size : x, shorter = size > x ? x : size;
    F const t = longer > 0 ? shorter / longer : F{};
    F const z = t * t;
    F p = -2.386997317e-3f * z + 1.350777143e-2f;
    p = p * z - 3.587153898e-2f;
    p = p * z + 6.250169445e-2f;
    p = p * z - 8.65688043e-2f;
    p = p * z + 0.1103376412f;
    p = p * z - 0.1427856875f;
    p = p * z + 0.1999973933f;
    p = p * z - 0.3333333173f;
    F const flat = p * z * t + t;
    F const from_axis = steep > 0 ? 1.5707964f - flat : flat;
    angle = y < 0 ? -from_axis : from_axis;
}

}  // namespace SUPPORT
