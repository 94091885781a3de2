// A wave's amplitude at an instant is h0 e^(iwt) + conj(h0) e^(-iwt), that is twice the real part of h0 e^(iwt). What
// goes into the other grids is that number times i and a real factor, so that all of it is imaginary.

#include "support/ocean/wave_evolution.h"

#include "foundation/containers.h"
#include "support/ocean/complex_lanes.h"
#include "support/ocean/lane_functions.h"

#include <algorithm>

namespace SUPPORT {

namespace {

struct WAVES {
    COMPLEX const *spectrum;
    float const *frequencies;
    WAVE_NUMBERS numbers;
    KN_STD::VECTOR<float> wave_x;  // of each column
    float time;
};

template <class F>
KERNEL void evolve_cells(WAVE_GRIDS const &grids, WAVES const &waves)
{
    std::uint32_t const half = waves.numbers.n / 2;
    F const none = {};
    for (std::uint32_t first = 0; first < 2 * half * 2 * half; first += half) {  // half rows
        std::uint32_t const left = first % (2 * half);
        float const ky = waves.numbers.y_of(left, first / (2 * half));
        for (std::uint32_t in_half = 0; in_half < half; in_half += lanes_of<F>) {
            std::uint32_t const i = first + in_half;
            F kx, frequency, real, imaginary, sine, cosine;
            load_lanes(kx, waves.wave_x.data() + left + in_half);
            load_lanes(frequency, waves.frequencies + i);
            load_apart(real, imaginary, waves.spectrum + i);
            sine_cosine(F(frequency * waves.time), sine, cosine);
            F const once = real * cosine - imaginary * sine;
            F const h = once + once;
            store_together(h, none, grids.height.cells.data + i);
            store_together(none, F(kx * h), grids.slope_x.cells.data + i);
            store_together(none, F(ky * h), grids.slope_y.cells.data + i);
            if (grids.displacement_x == nullptr)
                continue;
            F k = kx * kx + ky * ky;
            square_root(k);
            store_together(none, F(k > 0 ? -kx / k * h : none), grids.displacement_x->cells.data + i);
            store_together(none, F(k > 0 ? -ky / k * h : none), grids.displacement_y->cells.data + i);
        }
    }
}

WITH_EIGHT_LANES void evolve_by_eight(WAVE_GRIDS const &grids, WAVES const &waves)
{
    evolve_cells<EIGHT_FLOATS>(grids, waves);
}

}  // namespace

void evolve_waves(WAVE_GRIDS const &grids, COMPLEX const *spectrum, float const *frequencies,
                  WAVE_NUMBERS const &numbers, float time)
{
    WAVES waves{spectrum, frequencies, numbers, {}, time};
    for (std::uint32_t x = 0; x < numbers.n; ++x)
        waves.wave_x.push_back(numbers.x_of(x));
    float const fastest = *std::max_element(frequencies, frequencies + std::size_t(numbers.n) * numbers.n);
    if (!(std::abs(fastest * time) < furthest_phase))
        evolve_cells<float>(grids, waves);
    else if (eight_lanes())
        evolve_by_eight(grids, waves);
    else
        evolve_cells<FOUR_FLOATS>(grids, waves);

    for (COMPLEX_GRID *grid :
         {&grids.height, &grids.slope_x, &grids.slope_y, grids.displacement_x, grids.displacement_y})
        if (grid != nullptr)
            grid->transform(FOURIER_DIRECTION::INVERSE);
}

}  // namespace SUPPORT
