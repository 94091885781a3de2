// One instant of a wave field as it is kept: bytes between the least and the greatest value of all frames, and the
// crests. A frame is plain data; the OCEAN_WAVE_FIELD says what its bytes stand for.
#pragma once

#include "foundation/dynamic_array.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace SUPPORT {

struct BYTE_PAIR {
    std::uint8_t x = 0, y = 0;
};

// Cell (x, y) lies at (y << row_shift) + x. The width is a power of two; a plane without cells has width and rows 0.
template <class CELL>
struct WAVE_PLANE {
    KN::DynamicArray<CELL> cells;
    std::uint32_t width = 0;
    std::uint32_t row_shift = 0;
    std::uint32_t rows = 0;

    void allocate(std::uint32_t columns, std::uint32_t lines)
    {
        set_shape(columns, lines);
        cells.resize(columns * lines);
    }
    void set_shape(std::uint32_t columns, std::uint32_t lines)
    {
        width = columns;
        rows = lines;
        row_shift = columns > 0 ? std::uint32_t(std::countr_zero(columns)) : 0;
    }
    CELL const &at(std::uint32_t x, std::uint32_t y) const { return cells[(std::size_t(y) << row_shift) + x]; }
};

struct CREST_POINT {
    std::uint32_t x = 0, y = 0;  // the cell
    float strength = 0;
    float next_strength = 0;  // in the next frame
};

struct WAVE_FRAME {
    WAVE_PLANE<std::uint8_t> heights;
    WAVE_PLANE<BYTE_PAIR> slopes;
    WAVE_PLANE<BYTE_PAIR> displacements;  // only of choppy water
    KN::DynamicArray<CREST_POINT> crests;
    struct PAIR {
        std::uint32_t first = 0, second = 0;
    };
    KN::DynamicArray<PAIR> pairs;  // carried by files
};

struct WAVE_RANGES {
    float height_min = std::numeric_limits<float>::max();
    float height_max = -std::numeric_limits<float>::max();
    std::uint16_t slope_min_x = 65535, slope_min_y = 65535;  // angles, 65535 to the full turn
    std::uint16_t slope_max_x = 0, slope_max_y = 0;
    float displacement_min_x = std::numeric_limits<float>::max();
    float displacement_min_y = std::numeric_limits<float>::max();
    float displacement_max_x = -std::numeric_limits<float>::max();
    float displacement_max_y = -std::numeric_limits<float>::max();
};

// From values to bytes (`scale`) and back (`unit`).
struct WAVE_SCALES {
    float height_scale = 0, height_unit = 0;
    float slope_scale_x = 0, slope_scale_y = 0, slope_unit_x = 0, slope_unit_y = 0;
    float displacement_scale_x = 0, displacement_scale_y = 0, displacement_unit_x = 0, displacement_unit_y = 0;

    void set(WAVE_RANGES const &ranges);
};

}  // namespace SUPPORT
