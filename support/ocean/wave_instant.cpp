#include "support/ocean/wave_instant.h"

#include "support/ocean/complex_lanes.h"
#include "support/ocean/lane_functions.h"
#include "support/ocean/wave_evolution.h"
#include "support/ocean/wave_frame.h"

#include <algorithm>

namespace SUPPORT {

namespace {

template <class F>
KERNEL void whole_angle(INTS<F> &whole, F const &component, F const &up)
{
    F angle;
    arc_tangent(component, up, angle);
    F const units = (angle + 3.1415927f) * 0.15915494f * 65535.0f;
    truncate_lanes(whole, F(units > 0 ? units : F{}));  // what is no number becomes 0
}

template <class F>
KERNEL void find_angles(std::uint32_t *words, COMPLEX_GRID const &slope_x, COMPLEX_GRID const &slope_y)
{
    for (std::uint32_t i = 0; i < slope_x.cells.count; i += lanes_of<F>) {
        F x, y, imaginary;
        load_apart(x, imaginary, slope_x.cells.data + i);
        load_apart(y, imaginary, slope_y.cells.data + i);
        x = -x;
        y = -y;
        F root = x * x + y * y + 1.0f;
        square_root(root);
        F const up = 1.0f / root;
        INTS<F> angle_x, angle_y;
        whole_angle<F>(angle_x, x * up, up);
        whole_angle<F>(angle_y, y * up, up);
        angle_x |= angle_y << 16;
        std::memcpy(words + i, &angle_x, sizeof angle_x);
    }
}

WITH_EIGHT_LANES void find_angles_by_eight(std::uint32_t *words, COMPLEX_GRID const &slope_x,
                                           COMPLEX_GRID const &slope_y)
{
    find_angles<EIGHT_FLOATS>(words, slope_x, slope_y);
}

void take_real_parts(KN::DynamicArray<float> &values, COMPLEX_GRID const &grid)
{
    values.resize(grid.cells.count);
    for (std::uint32_t i = 0; i < values.count; i += 4) {
        FOUR_FLOATS real, imaginary;
        load_apart(real, imaginary, grid.cells.data + i);
        store_lanes(real, values.data + i);
    }
}

void widen_range(float &least, float &greatest, KN::DynamicArray<float> const &values)
{
    FOUR_FLOATS low = FOUR_FLOATS{} + least, high = FOUR_FLOATS{} + greatest;
    for (std::uint32_t i = 0; i < values.count; i += 4) {
        FOUR_FLOATS four;
        load_lanes(four, values.data + i);
        low = four < low ? four : low;  // neither holds for what is no number
        high = four > high ? four : high;
    }
    for (int lane = 0; lane < 4; ++lane) {
        least = std::min(least, low[lane]);
        greatest = std::max(greatest, high[lane]);
    }
}

}  // namespace

void find_slope_angles(std::uint32_t *words, COMPLEX_GRID const &slope_x, COMPLEX_GRID const &slope_y)
{
    if (eight_lanes())
        find_angles_by_eight(words, slope_x, slope_y);
    else
        find_angles<FOUR_FLOATS>(words, slope_x, slope_y);
}

void WAVE_INSTANT::take(WAVE_GRIDS const &grids)
{
    take_real_parts(heights, grids.height);
    slopes.resize(grids.slope_x.cells.count);
    find_slope_angles(slopes.data, grids.slope_x, grids.slope_y);
    if (grids.displacement_x != nullptr) {
        take_real_parts(displacements_x, *grids.displacement_x);
        take_real_parts(displacements_y, *grids.displacement_y);
    }
}

void WAVE_INSTANT::widen(WAVE_RANGES &ranges) const
{
    widen_range(ranges.height_min, ranges.height_max, heights);
    for (std::uint32_t const word : slopes) {
        std::uint16_t const x = std::uint16_t(word), y = std::uint16_t(word >> 16);
        ranges.slope_min_x = std::min(ranges.slope_min_x, x);
        ranges.slope_min_y = std::min(ranges.slope_min_y, y);
        ranges.slope_max_x = std::max(ranges.slope_max_x, x);
        ranges.slope_max_y = std::max(ranges.slope_max_y, y);
    }
    widen_range(ranges.displacement_min_x, ranges.displacement_max_x, displacements_x);
    widen_range(ranges.displacement_min_y, ranges.displacement_max_y, displacements_y);
}

}  // namespace SUPPORT
