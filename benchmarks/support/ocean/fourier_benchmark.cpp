// The transform of a grid of 256 x 256, with the widest instructions of the processor and with those that all have,
// beside FFTW and a copy of the grid. The grid begins with the same numbers each time.
#include "benchmarks/support/side_by_side.h"
#include "fftw_grid.h"
#include "support/maths/lanes.h"

#include <cmath>
#include <cstring>
#include <random>

namespace {

using namespace SUPPORT;

constexpr unsigned side = 256;

void Fourier(benchmark::State &state)
{
    COMPLEX_GRID source, ours;
    source.allocate(side);
    ours.allocate(side);
    FFTW_GRID theirs(side);
    std::mt19937 random(1);
    std::normal_distribution<float> any;
    for (COMPLEX &cell : source.cells)
        cell = {any(random), any(random)};
    std::size_t const bytes = source.cells.count * sizeof(COMPLEX);

    SIDE_BY_SIDE times;
    for (auto _ : state) {
        std::memcpy(theirs.cells(), source.cells.data, bytes);
        times.time("fftw", [&] { theirs.transform(); });
        allow_eight_lanes(false);
        times.time("copy", [&] { std::memcpy(ours.cells.data, source.cells.data, bytes); });
        times.time("by_four", [&] { ours.transform(FOURIER_DIRECTION::INVERSE); });
        allow_eight_lanes(true);
        std::memcpy(ours.cells.data, source.cells.data, bytes);
        times.time("ours", [&] { ours.transform(FOURIER_DIRECTION::INVERSE); });
    }
    times.report(state);
    state.counters["to_fftw"] = times.ratio("ours", "fftw");
    state.counters["by_four_to_fftw"] = times.ratio("by_four", "fftw");
    state.counters["to_copy"] = times.ratio("ours", "copy");

    float worst = 0;
    for (unsigned i = 0; i < side * side; ++i)
        worst = std::max({worst, std::abs(ours.cells[i].real - theirs.cells()[i].real),
                          std::abs(ours.cells[i].imaginary - theirs.cells()[i].imaginary)});
    if (!(worst < 0.05f))  // the numbers are about 256
        state.SkipWithError("the transforms differ");
}
BENCHMARK(Fourier)->Iterations(200);

}  // namespace
