// Noise beside that of stb_perlin on the same points: 16,384 of them scattered over the lattice, where no two share a
// cell in turn, and as many in rows of 256, eight and two and a half to a cell, as a picture or a height field asks for
// them in its first octaves and in its last.

#include "benchmarks/support/side_by_side.h"
#include "support/numeric/gradient_noise.h"
#include "support/numeric/random_state.h"

#include <cmath>
#include <numeric>
#include <vector>

#include <stb/stb_perlin.h>

using namespace SUPPORT;

namespace {

constexpr unsigned point_count = 16384, row_length = 256;

// Gradient noise of unit gradients has a mean of 0 and a deviation of about a quarter.
bool like_noise(std::vector<float> const &values)
{
    double const mean = std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
    double squares = 0;
    for (float value : values)
        squares += (value - mean) * (value - mean);
    double const deviation = std::sqrt(squares / double(values.size()));
    return std::abs(mean) < 0.1 && deviation > 0.15 && deviation < 0.4;
}

void report(benchmark::State &state, SIDE_BY_SIDE const &times, std::vector<float> const &ours,
            std::vector<float> const &theirs)
{
    times.report(state);
    state.counters["to_theirs"] = times.ratio("ours", "theirs");
    state.counters["to_copy"] = times.ratio("ours", "copy");
    if (!like_noise(ours) || !like_noise(theirs))
        state.SkipWithError("this is no noise");
}

void NoiseAtPoints(benchmark::State &state)
{
    GRADIENT_NOISE const noise;
    RANDOM_STATE random{1};
    std::vector<VECTOR3> points(point_count);
    for (VECTOR3 &point : points)
        point = {float(next_random(random)) / 256, float(next_random(random)) / 256, float(next_random(random)) / 256};

    SIDE_BY_SIDE times;
    std::vector<float> ours(point_count), theirs(point_count);
    for (auto _ : state) {
        times.time("theirs", [&] {
            for (unsigned i = 0; i < point_count; ++i)
                theirs[i] = stb_perlin_noise3(points[i].x, points[i].y, points[i].z, 0, 0, 0);
        });
        times.time("ours", [&] {
            for (unsigned i = 0; i < point_count; ++i)
                ours[i] = noise.noise(points[i].x, points[i].y, points[i].z);
        });
        times.time("copy", [&] { benchmark::DoNotOptimize(std::vector<VECTOR3>(points).data()); });
    }
    report(state, times, ours, theirs);
}

void NoiseInRows(benchmark::State &state)
{
    GRADIENT_NOISE const noise;
    float const step = 10.0f / float(state.range(0));  // in cells
    std::vector<float> xs(row_length);
    for (unsigned i = 0; i < row_length; ++i)
        xs[i] = float(i) * step;

    SIDE_BY_SIDE times;
    std::vector<float> ours(point_count), theirs(point_count);
    for (auto _ : state) {
        times.time("theirs", [&] {
            for (unsigned i = 0; i < point_count; ++i)
                theirs[i] = stb_perlin_noise3(xs[i % row_length], float(i / row_length) * step, 0.5f, 0, 0, 0);
        });
        times.time("ours", [&] {
            for (unsigned i = 0; i < point_count; i += row_length)
                noise.noise_row(xs, float(i / row_length) * step, 0.5f, {&ours[i], row_length});
        });
        times.time("copy", [&] { benchmark::DoNotOptimize(std::vector<float>(ours).data()); });
    }
    report(state, times, ours, theirs);
}

}  // namespace

BENCHMARK(NoiseAtPoints)->Iterations(300);
BENCHMARK(NoiseInRows)->Arg(80)->Arg(25)->ArgName("points_per_10_cells")->Iterations(300);
