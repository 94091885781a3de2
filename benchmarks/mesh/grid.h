// A field of 408 by 408 squares as importers hand it over: every triangle with three corners of its own, a million
// corners of 52 bytes of which 167,281 are different. And what the benchmarks measure with.
#pragma once

#include "scene/scene.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

struct GRID_CORNER {
    float position[3];
    float normal[3];
    float colour[4];
    float uvw[3];
};
static_assert(sizeof(GRID_CORNER) == 52);

enum class GRID_KIND {
    HILLS,     // all attributes are random; triangles row by row
    SHUFFLED,  // the same, the triangles in random order
    FLAT       // level ground with planar UVWs (u = x, v = z) and one colour
};

constexpr unsigned grid_side = 408;
constexpr unsigned grid_distinct = (grid_side + 1) * (grid_side + 1);

// The same on every run.
std::vector<GRID_CORNER> make_grid(GRID_KIND kind);

// A scene with the corners as its one static mesh; the arrays stand as the load leaves them.
std::unique_ptr<VEX2_LOADER::VEX2> scene_of(std::vector<GRID_CORNER> const &corners);

template <class WORK>
double seconds_of(WORK work)
{
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The least of several times: what the work takes when nothing disturbs it.
inline double least(std::vector<double> const &times) { return *std::min_element(times.begin(), times.end()); }
