// FOUR_FLOATS: four 32-bit floats that are worked on at once, for loops that are written once as a template and run
// with `float` and with this type. Each operation gives in each lane the bits that the same operation on floats gives,
// comparisons that meet no number included.
#pragma once

#include <cmath>
#include <emmintrin.h>

namespace SUPPORT {

struct FOUR_FLOATS {
    __m128 lanes;

    FOUR_FLOATS() = default;
    FOUR_FLOATS(__m128 given) : lanes(given) {}
    FOUR_FLOATS(float same) : lanes(_mm_set1_ps(same)) {}
};

inline FOUR_FLOATS operator+(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_add_ps(a.lanes, b.lanes); }
inline FOUR_FLOATS operator-(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_sub_ps(a.lanes, b.lanes); }
inline FOUR_FLOATS operator*(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_mul_ps(a.lanes, b.lanes); }
inline FOUR_FLOATS operator/(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_div_ps(a.lanes, b.lanes); }
inline FOUR_FLOATS operator-(FOUR_FLOATS a) { return _mm_xor_ps(a.lanes, _mm_set1_ps(-0.0f)); }

// The smaller or larger one; b if one of them is no number.
inline float least_of(float a, float b) { return a < b ? a : b; }
inline float most_of(float a, float b) { return a > b ? a : b; }
inline FOUR_FLOATS least_of(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_min_ps(a.lanes, b.lanes); }
inline FOUR_FLOATS most_of(FOUR_FLOATS a, FOUR_FLOATS b) { return _mm_max_ps(a.lanes, b.lanes); }

inline float square_root(float a) { return std::sqrt(a); }
inline FOUR_FLOATS square_root(FOUR_FLOATS a) { return _mm_sqrt_ps(a.lanes); }

// `taken` where a >= b, `other` where it is not, or where one of them is no number.
inline float where_at_least(float a, float b, float taken, float other) { return a >= b ? taken : other; }
inline FOUR_FLOATS where_at_least(FOUR_FLOATS a, FOUR_FLOATS b, FOUR_FLOATS taken, FOUR_FLOATS other)
{
    __m128 const mask = _mm_cmpge_ps(a.lanes, b.lanes);
    return _mm_or_ps(_mm_and_ps(mask, taken.lanes), _mm_andnot_ps(mask, other.lanes));
}

// `a`, negated where `d` is below 0.
inline float negated_where_below_0(float a, float d) { return d < 0 ? -a : a; }
inline FOUR_FLOATS negated_where_below_0(FOUR_FLOATS a, FOUR_FLOATS d)
{
    return _mm_xor_ps(a.lanes, _mm_and_ps(_mm_cmplt_ps(d.lanes, _mm_setzero_ps()), _mm_set1_ps(-0.0f)));
}

// `a`, negated where `d` is below 0 or no number.
inline float negated_unless_from_0(float a, float d) { return d >= 0 ? a : -a; }
inline FOUR_FLOATS negated_unless_from_0(FOUR_FLOATS a, FOUR_FLOATS d)
{
    return _mm_xor_ps(a.lanes, _mm_and_ps(_mm_cmpnge_ps(d.lanes, _mm_setzero_ps()), _mm_set1_ps(-0.0f)));
}

// True if a >= b in any lane.
inline bool anywhere_at_least(float a, float b) { return a >= b; }
inline bool anywhere_at_least(FOUR_FLOATS a, FOUR_FLOATS b)
{
    return _mm_movemask_ps(_mm_cmpge_ps(a.lanes, b.lanes)) != 0;
}

}  // namespace SUPPORT
