// COMPLEX_GRID: a square of complex numbers and its two-dimensional Fourier transform, in place, the rows first. The
// lines are transformed by halving (radix 2, decimation in time) with factors that each stage steps by a rotation, all
// in 32-bit floats; several lines go abreast, with the bits that each would have alone, on every processor.
#pragma once

#include "foundation/dynamic_array.h"

#include <cstdint>

namespace SUPPORT {

struct COMPLEX {
    float real = 0, imaginary = 0;
};

enum class FOURIER_DIRECTION {
    FORWARD,  // e^(-i k x), every line times 1 / n
    INVERSE,  // e^(+i k x), not scaled
};

// Memory for one number of each line that goes abreast.
struct alignas(32) ABREAST {
    float lines[8];
};

struct COMPLEX_GRID {
    std::uint32_t n = 0;  // the side, a power of two
    std::uint32_t log2_n = 0;
    KN::DynamicArray<COMPLEX> cells;    // row y, column x at y * n + x
    KN::DynamicArray<ABREAST> scratch;  // lines on their way

    bool is_allocated() const { return n > 0; }
    void allocate(std::uint32_t side);  // zeros
    void free();

    void transform(FOURIER_DIRECTION direction);
};

}  // namespace SUPPORT
