// Complex numbers as they lie in memory, and apart: real and imaginary parts in lanes of their own. For float, whose
// only lane holds one number, all of it is plain copying.
#pragma once

#include "support/maths/lanes.h"
#include "support/ocean/complex_grid.h"

namespace SUPPORT {

// lanes_of<F> numbers from memory, in their order.
KERNEL void load_apart(float &real, float &imaginary, COMPLEX const *from)
{
    real = from->real;
    imaginary = from->imaginary;
}
KERNEL void load_apart(FOUR_FLOATS &real, FOUR_FLOATS &imaginary, COMPLEX const *from)
{
    FOUR_FLOATS a, b;
    load_lanes(a, &from[0].real);
    load_lanes(b, &from[2].real);
    real = __builtin_shufflevector(a, b, 0, 2, 4, 6);
    imaginary = __builtin_shufflevector(a, b, 1, 3, 5, 7);
}
KERNEL void load_apart(EIGHT_FLOATS &real, EIGHT_FLOATS &imaginary, COMPLEX const *from)
{
    EIGHT_FLOATS a, b;
    load_lanes(a, &from[0].real);
    load_lanes(b, &from[4].real);
    EIGHT_FLOATS const c = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    EIGHT_FLOATS const d = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
    real = __builtin_shufflevector(c, d, 0, 2, 8, 10, 4, 6, 12, 14);
    imaginary = __builtin_shufflevector(c, d, 1, 3, 9, 11, 5, 7, 13, 15);
}

KERNEL void store_together(float const &real, float const &imaginary, COMPLEX *to) { *to = {real, imaginary}; }
KERNEL void store_together(FOUR_FLOATS const &real, FOUR_FLOATS const &imaginary, COMPLEX *to)
{
    store_lanes(__builtin_shufflevector(real, imaginary, 0, 4, 1, 5), &to[0].real);
    store_lanes(__builtin_shufflevector(real, imaginary, 2, 6, 3, 7), &to[2].real);
}
KERNEL void store_together(EIGHT_FLOATS const &real, EIGHT_FLOATS const &imaginary, COMPLEX *to)
{
    EIGHT_FLOATS const a = __builtin_shufflevector(real, imaginary, 0, 8, 1, 9, 4, 12, 5, 13);
    EIGHT_FLOATS const b = __builtin_shufflevector(real, imaginary, 2, 10, 3, 11, 6, 14, 7, 15);
    store_lanes(__builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11), &to[0].real);
    store_lanes(__builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15), &to[4].real);
}

// A square of floats is turned over: lane i of row j changes places with lane j of row i.
KERNEL void turn_over(FOUR_FLOATS (&rows)[4])
{
    FOUR_FLOATS const a = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    FOUR_FLOATS const b = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    FOUR_FLOATS const c = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    FOUR_FLOATS const d = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    rows[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
    rows[1] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
    rows[2] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
    rows[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}
KERNEL void turn_over(EIGHT_FLOATS (&rows)[8])
{
    EIGHT_FLOATS pairs[8];
    for (int i = 0; i < 4; ++i) {
        pairs[2 * i] = __builtin_shufflevector(rows[2 * i], rows[2 * i + 1], 0, 8, 1, 9, 4, 12, 5, 13);
        pairs[2 * i + 1] = __builtin_shufflevector(rows[2 * i], rows[2 * i + 1], 2, 10, 3, 11, 6, 14, 7, 15);
    }
    EIGHT_FLOATS fours[8];  // of half a row each
    for (int half = 0; half < 2; ++half)
        for (int i = 0; i < 2; ++i) {
            EIGHT_FLOATS const &a = pairs[4 * half + i], &b = pairs[4 * half + i + 2];
            fours[4 * half + 2 * i] = __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
            fours[4 * half + 2 * i + 1] = __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
        }
    for (int i = 0; i < 4; ++i) {
        rows[i] = __builtin_shufflevector(fours[i], fours[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        rows[i + 4] = __builtin_shufflevector(fours[i], fours[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
    }
}

}  // namespace SUPPORT
