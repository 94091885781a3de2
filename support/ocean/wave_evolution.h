// From a spectrum to the surface at an instant.
#pragma once

#include "support/ocean/complex_grid.h"
#include "support/ocean/wave_numbers.h"

namespace SUPPORT {

struct WAVE_GRIDS {
    COMPLEX_GRID &height, &slope_x, &slope_y;
    COMPLEX_GRID *displacement_x, *displacement_y;  // null unless the water is choppy
};

// Each wave turned on by `time` seconds at its frequency, in radians a second, and summed up: heights, their slopes
// along both axes, and how far the surface is drawn aside, as the real parts of the grids. `spectrum` and `frequencies`
// have n * n elements, n being 16 or more.
void evolve_waves(WAVE_GRIDS const &grids, COMPLEX const *spectrum, float const *frequencies,
                  WAVE_NUMBERS const &numbers, float time);

}  // namespace SUPPORT
