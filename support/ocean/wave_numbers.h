// The wave vector of each cell of a square grid: whole multiples of one wave a tile. The lower half of the columns and
// rows counts up from 0, the upper half up to 0, so that all four corners hold the wave number 0; the row at which the
// count changes is one earlier in the left half.
#pragma once

#include <cmath>
#include <cstdint>

namespace SUPPORT {

struct WAVE_NUMBERS {
    std::uint32_t n;
    float tile;  // world length

    // Waves a tile.
    int column(std::uint32_t x) const { return x < n / 2 ? int(x) : int(x) - int(n) + 1; }
    int row(std::uint32_t x, std::uint32_t y) const
    {
        std::uint32_t const limit = x < n / 2 ? (n - 1) / 2 : n / 2;
        return y < limit ? int(y) : int(y) - int(n) + 1;
    }
    // Radians a unit of length.
    float from_waves(int waves) const { return float(waves) * 6.2831855f * (1 / tile); }
    float x_of(std::uint32_t x) const { return from_waves(column(x)); }
    float y_of(std::uint32_t x, std::uint32_t y) const { return from_waves(row(x, y)); }
};

// Radians a second of a wave in deep water; `length` in radians a unit of length.
inline float wave_frequency(float length) { return length == 0 ? 0 : std::sqrt(length * 9.88f); }

// The frequency of which a whole number fits into `period`, if one does; else 0.
inline float looped_frequency(float frequency, float period)
{
    if (frequency == 0)
        return 0;
    float const waves = std::round(period / (6.2831855f / frequency));
    return waves == 0 ? 0 : 6.2831855f / (period / waves);
}

}  // namespace SUPPORT
