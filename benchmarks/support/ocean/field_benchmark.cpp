// A sea at one instant, and its whole loop, beside the same done plainly: each cell with the functions of the standard
// library, the transforms by FFTW; and beside a copy of the five grids. Waves of a fresh breeze, 3 to 4 metres from
// trough to crest, with foam on a few cells in a hundred.
#include "benchmarks/support/side_by_side.h"
#include "fftw_grid.h"
#include "support/ocean/ocean_wave_field.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <memory>
#include <vector>

namespace {

using namespace SUPPORT;

constexpr unsigned side = 256;
WAVE_PARAMETERS const wind = {1, 0.4f, 7, 3e-5f, 0};
CREST_PARAMETERS const crests = {1, {}, 0, 0.3f, 0.08f};

class PLAIN_SEA {
public:
    explicit PLAIN_SEA(OCEAN_WAVE_FIELD const &given)
        : field(given), heights(side * side), slopes(2 * side * side), displacements(2 * side * side)
    {}

    void encode(float time)
    {
        for (unsigned y = 0; y < side; ++y)
            for (unsigned x = 0; x < side; ++x)
                evolve(x, y, time);
        for (FFTW_GRID *grid : {&height, &slope_x, &slope_y, &aside_x, &aside_y})
            grid->transform();
        WAVE_RANGES const &ranges = field.ranges;
        WAVE_SCALES const &scales = field.scales;
        for (unsigned i = 0; i < side * side; ++i) {
            heights[i] = byte(height.cells()[i].real, ranges.height_min, ranges.height_max, scales.height_scale);
            float const x = -slope_x.cells()[i].real, y = -slope_y.cells()[i].real;
            float const up = 1 / std::sqrt(x * x + y * y + 1);
            slopes[2 * i] = byte(angle(x, up), ranges.slope_min_x, ranges.slope_max_x, scales.slope_scale_x);
            slopes[2 * i + 1] = byte(angle(y, up), ranges.slope_min_y, ranges.slope_max_y, scales.slope_scale_y);
            displacements[2 * i] = byte(aside_x.cells()[i].real, ranges.displacement_min_x, ranges.displacement_max_x,
                                        scales.displacement_scale_x);
            displacements[2 * i + 1] = byte(aside_y.cells()[i].real, ranges.displacement_min_y,
                                            ranges.displacement_max_y, scales.displacement_scale_y);
        }
    }

    // Bytes that differ by more than one step, or the differing ones.
    unsigned differences(WAVE_FRAME const &frame, int tolerated) const
    {
        unsigned count = 0;
        for (unsigned i = 0; i < side * side; ++i) {
            count += std::abs(heights[i] - frame.heights.cells[i]) > tolerated;
            count += std::abs(slopes[2 * i] - frame.slopes.cells[i].x) > tolerated;
            count += std::abs(displacements[2 * i + 1] - frame.displacements.cells[i].y) > tolerated;
        }
        return count;
    }

private:
    static float wave(unsigned i, unsigned limit)
    {
        return float(i < limit ? int(i) : int(i) - int(side) + 1) * 6.2831855f * (1 / 70.0f);
    }
    static std::uint8_t byte(float value, float least, float most, float scale)
    {
        return std::uint8_t((std::clamp(value, least, most) - least) * scale);
    }
    static std::uint16_t angle(float slope, float up)
    {
        return std::uint16_t((std::atan2(slope * up, up) + 3.1415927f) * 0.15915494f * 65535);
    }

    void evolve(unsigned x, unsigned y, float time)
    {
        float const kx = wave(x, side / 2), ky = wave(y, x < side / 2 ? 127 : 128);
        float const k = std::sqrt(kx * kx + ky * ky), w = std::sqrt(k * 9.88f);
        COMPLEX const h0 = field.spectrum[y * side + x];
        float const h = 2 * (h0.real * std::cos(w * time) - h0.imaginary * std::sin(w * time));
        unsigned const i = y * side + x;
        height.cells()[i] = {h, 0};
        slope_x.cells()[i] = {0, kx * h};
        slope_y.cells()[i] = {0, ky * h};
        aside_x.cells()[i] = {0, k > 0 ? -kx / k * h : 0};
        aside_y.cells()[i] = {0, k > 0 ? -ky / k * h : 0};
    }

    OCEAN_WAVE_FIELD const &field;
    FFTW_GRID height{side}, slope_x{side}, slope_y{side}, aside_x{side}, aside_y{side};
    std::vector<std::uint8_t> heights, slopes, displacements;
};

void SeaInstant(benchmark::State &state)
{
    SEA_WAVE_FIELD sea(wind, crests, false);
    PLAIN_SEA plain(sea);
    std::vector<COMPLEX> copy(5 * side * side), grids(5 * side * side);
    SIDE_BY_SIDE times;
    float time = 0;
    for (auto _ : state) {
        time += 0.1f;
        times.time("plain", [&] { plain.encode(time); });
        times.time("ours", [&] { sea.update(wind, time); });
        times.time("copy", [&] {
            std::copy(grids.begin(), grids.end(), copy.begin());
            benchmark::ClobberMemory();
        });
    }
    times.report(state);
    state.counters["to_plain"] = times.ratio("ours", "plain");
    state.counters["to_copy"] = times.ratio("ours", "copy");
    state.counters["bytes_that_differ"] = plain.differences(sea.frames[0], 0);
    if (plain.differences(sea.frames[0], 1) > 0 || plain.differences(sea.frames[0], 0) > 500)
        state.SkipWithError("the instants differ");
}
BENCHMARK(SeaInstant)->Iterations(100)->Unit(benchmark::kMillisecond);

// All of the build, the file (in the current directory, removed afterwards) included. A loop takes too long to stay
// undisturbed, so both are measured in the time that the processor spends on them.
void SeaLoop(benchmark::State &state)
{
    SEA_WAVE_FIELD const instant(wind, crests, false);
    PLAIN_SEA plain(instant);
    std::unique_ptr<SEA_WAVE_FIELD> loop;
    std::clock_t least_plain = std::numeric_limits<std::clock_t>::max(), least_loop = least_plain;
    auto const time = [](std::clock_t &least, auto const &work) {
        std::clock_t const start = std::clock();
        work();
        least = std::min(least, std::clock() - start);
    };
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i)
            time(least_plain, [&] { plain.encode(float(i)); });
        time(least_loop, [&] { loop = std::make_unique<SEA_WAVE_FIELD>(wind, crests, true); });
    }
    std::remove("sea");
    state.counters["loop_us"] = double(least_loop) * 1e6 / CLOCKS_PER_SEC;
    state.counters["plain_instant_us"] = double(least_plain) * 1e6 / CLOCKS_PER_SEC;
    state.counters["loop_to_plain_instant"] = double(least_loop) / double(least_plain);
    if (loop->frames.count != 100 || loop->frames[50].crests.empty())
        state.SkipWithError("no loop");
}
BENCHMARK(SeaLoop)->Iterations(8)->Unit(benchmark::kMillisecond);

}  // namespace
