// A wave field at one instant, before it is cut down to bytes.
#pragma once

#include "foundation/dynamic_array.h"

#include <cstdint>

namespace SUPPORT {

struct COMPLEX_GRID;
struct WAVE_GRIDS;
struct WAVE_RANGES;

// One value a cell, row by row.
struct WAVE_INSTANT {
    KN::DynamicArray<float> heights;
    KN::DynamicArray<std::uint32_t> slopes;                    // angle x in the low half, angle y in the high half
    KN::DynamicArray<float> displacements_x, displacements_y;  // only of choppy water

    // What the real parts of evolved grids amount to.
    void take(WAVE_GRIDS const &grids);
    // Each range is widened by what lies outside it.
    void widen(WAVE_RANGES &ranges) const;
};

// The angles of a surface against the plane along both axes, 65535 to the full turn and half a turn for the level, from
// the real parts of `slope_x` and `slope_y`: `words` as in WAVE_INSTANT, n * n of them.
void find_slope_angles(std::uint32_t *words, COMPLEX_GRID const &slope_x, COMPLEX_GRID const &slope_y);

}  // namespace SUPPORT
