// The mesh of the load benchmarks: a square grid of 400,000 triangles whose vertices are shared. It stands for a dense
// prop or a terrain tile after its clean-up.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace GRID_SHAPE {

constexpr std::uint32_t side = 448;  // vertices along an edge
constexpr std::uint32_t triangle_count = (side - 1) * (side - 1) * 2;

inline float along(std::uint32_t place) { return float(place) / (side - 1); }

inline std::array<float, 3> position(std::uint32_t column, std::uint32_t row)
{
    return {along(column) * 100, std::sin(along(column) * 9) * std::cos(along(row) * 7), along(row) * 100};
}

// Calls add(a, b, c) for every triangle.
template <class ADD>
void for_each_triangle(ADD const &add)
{
    for (std::uint32_t row = 0; row + 1 < side; ++row)
        for (std::uint32_t column = 0; column + 1 < side; ++column) {
            std::uint32_t const a = row * side + column;
            add(a, a + side, a + 1);
            add(a + 1, a + side, a + side + 1);
        }
}

}  // namespace GRID_SHAPE
