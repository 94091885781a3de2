// The random spectrum of wind waves, after Phillips: a complex amplitude for each wave vector. The same parameters give
// the same spectrum every time.
#pragma once

#include "support/ocean/complex_grid.h"
#include "support/ocean/wave_numbers.h"
#include "support/ocean/wave_settings.h"

namespace SUPPORT {

// `cells`: n * n, row by row.
void fill_spectrum(COMPLEX *cells, WAVE_NUMBERS const &numbers, WAVE_PARAMETERS const &waves);

}  // namespace SUPPORT
