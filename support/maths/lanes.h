// Several 32-bit floats that are worked on at once, for loops that are written once, as templates over F: `float`,
// FOUR_FLOATS, or EIGHT_FLOATS. Operators and `condition ? a : b` work lane by lane, a plain number stands for all
// lanes, and every lane gets the bits that the same operation on floats gives, comparisons with what is no number
// included.
//
// Every processor has four lanes. Eight are for functions with the mark WITH_EIGHT_LANES, which may be called only
// where eight_lanes() says so; what they call has to be a KERNEL, because only what is built into them is built for
// their registers. Eight lanes go to and from other functions by reference.
#pragma once

#include "support/maths/api.h"

#include <cmath>
#include <cstring>
#include <emmintrin.h>

#define KERNEL inline __attribute__((always_inline))
#define WITH_EIGHT_LANES __attribute__((target("avx2")))

namespace SUPPORT {

using FOUR_FLOATS = float __attribute__((vector_size(16)));
using FOUR_INTS = int __attribute__((vector_size(16)));
using EIGHT_FLOATS = float __attribute__((vector_size(32)));
using EIGHT_INTS = int __attribute__((vector_size(32)));

template <class F>
inline constexpr unsigned lanes_of = sizeof(F) / sizeof(float);

// Whether this processor has eight lanes and `allow_eight_lanes` has not ruled them out.
MATHS_API bool eight_lanes();
// For tests and measurements of the other form; to be called while no loop runs.
MATHS_API void allow_eight_lanes(bool allowed);

KERNEL FOUR_FLOATS lower_half(EIGHT_FLOATS const &a) { return __builtin_shufflevector(a, a, 0, 1, 2, 3); }
KERNEL FOUR_FLOATS upper_half(EIGHT_FLOATS const &a) { return __builtin_shufflevector(a, a, 4, 5, 6, 7); }

KERNEL void square_root(float &a) { a = std::sqrt(a); }
KERNEL void square_root(FOUR_FLOATS &a) { a = _mm_sqrt_ps(a); }
KERNEL void square_root(EIGHT_FLOATS &a)
{
    FOUR_FLOATS const lower = _mm_sqrt_ps(lower_half(a)), upper = _mm_sqrt_ps(upper_half(a));
    a = __builtin_shufflevector(lower, upper, 0, 1, 2, 3, 4, 5, 6, 7);
}

// Whether a comparison holds in any lane.
KERNEL bool anywhere(bool const &compared) { return compared; }
KERNEL bool anywhere(FOUR_INTS const &compared) { return _mm_movemask_epi8(__m128i(compared)) != 0; }
KERNEL bool anywhere(EIGHT_INTS const &compared)
{
    return anywhere(__builtin_shufflevector(compared, compared, 0, 1, 2, 3) |
                    __builtin_shufflevector(compared, compared, 4, 5, 6, 7));
}

// Memory needs no alignment.
template <class F>
KERNEL void load_lanes(F &lanes, float const *from)
{
    std::memcpy(&lanes, from, sizeof lanes);
}
template <class F>
KERNEL void store_lanes(F const &lanes, float *to)
{
    std::memcpy(to, &lanes, sizeof lanes);
}

}  // namespace SUPPORT
