// Rotations and translations of four or eight bones at once: from memory into lanes and back. A rotation's components
// lie in an array one behind the other; in lanes, each component of all the bones is together.
#pragma once

#include "support/maths/packed_quaternion.h"
#include "support/maths/quaternion_kernel.h"

namespace SUPPORT {

// The components of as many bones as F has lanes, of which each has four floats from `from` on.
KERNEL void load_rotations(QUATERNION const *from, COMPONENTS<FOUR_FLOATS> &to)
{
    __m128 x = _mm_loadu_ps(&from[0].x), y = _mm_loadu_ps(&from[1].x);
    __m128 z = _mm_loadu_ps(&from[2].x), w = _mm_loadu_ps(&from[3].x);
    _MM_TRANSPOSE4_PS(x, y, z, w);
    to = {x, y, z, w};
}
KERNEL void load_rotations(QUATERNION const *from, COMPONENTS<EIGHT_FLOATS> &to)
{
    COMPONENTS<FOUR_FLOATS> a, b;
    load_rotations(from, a);
    load_rotations(from + 4, b);
    to = {__builtin_shufflevector(a.x, b.x, 0, 1, 2, 3, 4, 5, 6, 7),
          __builtin_shufflevector(a.y, b.y, 0, 1, 2, 3, 4, 5, 6, 7),
          __builtin_shufflevector(a.z, b.z, 0, 1, 2, 3, 4, 5, 6, 7),
          __builtin_shufflevector(a.w, b.w, 0, 1, 2, 3, 4, 5, 6, 7)};
}

// Four packed rotations as x x x x y y y y and z z z z w w w w.
KERNEL void interleave(PACKED_QUATERNION const *from, __m128i &xy, __m128i &zw)
{
    __m128i const q01 = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from));
    __m128i const q23 = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from + 2));
    __m128i const q02 = _mm_unpacklo_epi16(q01, q23), q13 = _mm_unpackhi_epi16(q01, q23);
    xy = _mm_unpacklo_epi16(q02, q13);
    zw = _mm_unpackhi_epi16(q02, q13);
}

KERNEL void load_rotations(PACKED_QUATERNION const *from, COMPONENTS<FOUR_FLOATS> &to)
{
    __m128i xy, zw;
    interleave(from, xy, zw);
    __m128 const step = _mm_set1_ps(packed_step);
    to = {_mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(xy, xy), 16)), step),
          _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpackhi_epi16(xy, xy), 16)), step),
          _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(zw, zw), 16)), step),
          _mm_mul_ps(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpackhi_epi16(zw, zw), 16)), step)};
}

KERNEL void load_rotations(PACKED_QUATERNION const *from, COMPONENTS<EIGHT_FLOATS> &to)
{
    using EIGHT_SHORTS = short __attribute__((vector_size(16)));
    using SIXTEEN_SHORTS = short __attribute__((vector_size(32)));
    __m128i xy0, zw0, xy1, zw1;
    interleave(from, xy0, zw0);
    interleave(from + 4, xy1, zw1);
    auto const unpack = [](__m128i const &lower, __m128i const &upper, EIGHT_FLOATS &first, EIGHT_FLOATS &second)
        __attribute__((always_inline))
    {
        SIXTEEN_SHORTS const both = __builtin_shufflevector(EIGHT_SHORTS(lower), EIGHT_SHORTS(upper), 0, 1, 2, 3, 4, 5,
                                                            6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        // Each number twice in 32 bits, of which the upper half stays, with its sign.
        SIXTEEN_SHORTS const firsts =
            __builtin_shufflevector(both, both, 0, 0, 1, 1, 2, 2, 3, 3, 8, 8, 9, 9, 10, 10, 11, 11);
        SIXTEEN_SHORTS const seconds =
            __builtin_shufflevector(both, both, 4, 4, 5, 5, 6, 6, 7, 7, 12, 12, 13, 13, 14, 14, 15, 15);
        first = __builtin_convertvector(EIGHT_INTS(firsts) >> 16, EIGHT_FLOATS) * packed_step;
        second = __builtin_convertvector(EIGHT_INTS(seconds) >> 16, EIGHT_FLOATS) * packed_step;
    };
    unpack(xy0, xy1, to.x, to.y);
    unpack(zw0, zw1, to.z, to.w);
}

// Rows of four columns from four lanes of columns; from eight, rows 0 to 3 in the lower and 4 to 7 in the upper halves.
KERNEL void transpose(COMPONENTS<FOUR_FLOATS> const &columns, FOUR_FLOATS (&rows)[4])
{
    __m128 x = columns.x, y = columns.y, z = columns.z, w = columns.w;
    _MM_TRANSPOSE4_PS(x, y, z, w);
    rows[0] = x;
    rows[1] = y;
    rows[2] = z;
    rows[3] = w;
}
KERNEL void transpose(COMPONENTS<EIGHT_FLOATS> const &columns, EIGHT_FLOATS (&rows)[4])
{
    EIGHT_FLOATS const xy0 = __builtin_shufflevector(columns.x, columns.y, 0, 8, 1, 9, 4, 12, 5, 13);
    EIGHT_FLOATS const xy2 = __builtin_shufflevector(columns.x, columns.y, 2, 10, 3, 11, 6, 14, 7, 15);
    EIGHT_FLOATS const zw0 = __builtin_shufflevector(columns.z, columns.w, 0, 8, 1, 9, 4, 12, 5, 13);
    EIGHT_FLOATS const zw2 = __builtin_shufflevector(columns.z, columns.w, 2, 10, 3, 11, 6, 14, 7, 15);
    rows[0] = __builtin_shufflevector(xy0, zw0, 0, 1, 8, 9, 4, 5, 12, 13);
    rows[1] = __builtin_shufflevector(xy0, zw0, 2, 3, 10, 11, 6, 7, 14, 15);
    rows[2] = __builtin_shufflevector(xy2, zw2, 0, 1, 8, 9, 4, 5, 12, 13);
    rows[3] = __builtin_shufflevector(xy2, zw2, 2, 3, 10, 11, 6, 7, 14, 15);
}

// Row i of a transposed block goes to `to` + i * `stride` floats.
KERNEL void store_rows(COMPONENTS<FOUR_FLOATS> const &columns, float *to, std::size_t stride)
{
    FOUR_FLOATS rows[4];
    transpose(columns, rows);
    for (unsigned i = 0; i < 4; ++i)
        store_lanes(rows[i], to + i * stride);
}
KERNEL void store_rows(COMPONENTS<EIGHT_FLOATS> const &columns, float *to, std::size_t stride)
{
    EIGHT_FLOATS rows[4];
    transpose(columns, rows);
    for (unsigned i = 0; i < 4; ++i) {
        store_lanes(lower_half(rows[i]), to + i * stride);
        store_lanes(upper_half(rows[i]), to + (4 + i) * stride);
    }
}

// Translations stay as they lie in memory, three floats a bone.
template <class F>
struct TRANSLATIONS {
    F part[3];
};

template <class F>
KERNEL void load_translations(VECTOR3 const *from, TRANSLATIONS<F> &to)
{
    for (unsigned i = 0; i < 3; ++i)
        load_lanes(to.part[i], &from->x + i * lanes_of<F>);
}
template <class F>
KERNEL void store_translations(TRANSLATIONS<F> const &from, VECTOR3 *to)
{
    for (unsigned i = 0; i < 3; ++i)
        store_lanes(from.part[i], &to->x + i * lanes_of<F>);
}

// All x, all y and all z of as many bones as F has lanes.
KERNEL void load_columns(VECTOR3 const *from, FOUR_FLOATS (&to)[3])
{
    TRANSLATIONS<FOUR_FLOATS> t;  // x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3
    load_translations(from, t);
    FOUR_FLOATS const x23 = __builtin_shufflevector(t.part[1], t.part[2], 2, 2, 5, 5);
    FOUR_FLOATS const y01 = __builtin_shufflevector(t.part[0], t.part[1], 1, 1, 4, 4);
    FOUR_FLOATS const y23 = __builtin_shufflevector(t.part[1], t.part[2], 3, 3, 6, 6);
    FOUR_FLOATS const z01 = __builtin_shufflevector(t.part[0], t.part[1], 2, 2, 5, 5);
    to[0] = __builtin_shufflevector(t.part[0], x23, 0, 3, 4, 6);
    to[1] = __builtin_shufflevector(y01, y23, 0, 2, 4, 6);
    to[2] = __builtin_shufflevector(z01, t.part[2], 0, 2, 4, 7);
}
KERNEL void load_columns(VECTOR3 const *from, EIGHT_FLOATS (&to)[3])
{
    FOUR_FLOATS a[3], b[3];
    load_columns(from, a);
    load_columns(from + 4, b);
    for (unsigned i = 0; i < 3; ++i)
        to[i] = __builtin_shufflevector(a[i], b[i], 0, 1, 2, 3, 4, 5, 6, 7);
}

}  // namespace SUPPORT
