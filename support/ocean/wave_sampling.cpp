#include "foundation/image.h"
#include "support/ocean/ocean_wave_field.h"
#include "support/parallel/parallel_range.h"

#include <array>
#include <cassert>

namespace SUPPORT {

struct OCEAN_WAVE_FIELD::PLACE {
    std::uint32_t x, y;  // within the grid
    float fx, fy;        // from that cell to the next, 0 to 1
};

namespace {

// A coordinate in 4096ths of a cell. What is no number, or too large, lies in cell 0.
std::uint32_t cell_of(float fixed, float &within)
{
    float const cell = std::floor(fixed / 4096);
    within = (fixed - cell * 4096) / 4096;
    return std::abs(cell) < 0x1p62f ? std::uint32_t(std::int64_t(cell)) : 0;
}

std::uint16_t decoded_angle(std::uint8_t byte, float unit, std::uint16_t least)
{
    return std::uint16_t(int(float(byte) * unit + float(least)));
}

// The angle along one axis that each byte stands for.
using DECODED_ANGLES = std::array<std::uint16_t, 256>;

DECODED_ANGLES decoded_angles(float unit, std::uint16_t least)
{
    DECODED_ANGLES angles;
    for (unsigned byte = 0; byte < angles.size(); ++byte)
        angles[byte] = decoded_angle(std::uint8_t(byte), unit, least);
    return angles;
}

std::uint16_t blended_angle(std::uint16_t a, std::uint16_t b, std::uint32_t weight_b)
{
    return std::uint16_t(a + ((int(b) - int(a)) * int(weight_b) >> 8));
}

float steepness(std::uint16_t angle) { return std::tan(float(angle) / 65535 * 6.2831855f - 3.1415927f); }

}  // namespace

OCEAN_WAVE_FIELD::PLACE OCEAN_WAVE_FIELD::place_of(float x, float y) const
{
    PLACE place;
    place.x = cell_of(fixed_scale * x, place.fx);
    place.y = cell_of(fixed_scale * y, place.fy);
    return place;
}

float OCEAN_WAVE_FIELD::height_of(WAVE_FRAME const &frame, std::uint32_t x, std::uint32_t y) const
{
    return float(frame.heights.at(x & (grid - 1), y & (grid - 1))) * scales.height_unit + ranges.height_min;
}

VECTOR2 OCEAN_WAVE_FIELD::displacement_of(WAVE_FRAME const &frame, std::uint32_t x, std::uint32_t y) const
{
    BYTE_PAIR const pair = frame.displacements.at(x & (grid - 1), y & (grid - 1));
    return {float(pair.x) * scales.displacement_unit_x + ranges.displacement_min_x,
            float(pair.y) * scales.displacement_unit_y + ranges.displacement_min_y};
}

float OCEAN_WAVE_FIELD::height_at(FRAME_BLEND const &blend, float x, float y) const
{
    PLACE const place = place_of(x, y);
    WAVE_FRAME const &frame_a = frames[looped ? blend.frame_a : 0], &frame_b = frames[looped ? blend.frame_b : 0];
    auto const cell = [&](std::uint32_t right, std::uint32_t down) {
        float const a = height_of(frame_a, place.x + right, place.y + down);
        return looped ? a + (height_of(frame_b, place.x + right, place.y + down) - a) * blend.t : a;
    };
    float const h00 = cell(0, 0), h11 = cell(1, 1);
    if (place.fx > place.fy) {
        float const h10 = cell(1, 0);
        return h00 + (h10 - h00) * place.fx + (h11 - h10) * place.fy;
    }
    float const h01 = cell(0, 1);
    return h00 + (h11 - h01) * place.fx + (h01 - h00) * place.fy;
}

VECTOR3 OCEAN_WAVE_FIELD::displacement_at(FRAME_BLEND const &blend, float x, float y) const
{
    WAVE_FRAME const &frame_a = frames[looped ? blend.frame_a : 0], &frame_b = frames[looped ? blend.frame_b : 0];
    if (frame_a.displacements.cells.empty() || frame_b.displacements.cells.empty())
        return {};
    PLACE const place = place_of(x, y);
    auto const cell = [&](std::uint32_t right, std::uint32_t down) {
        VECTOR2 const a = displacement_of(frame_a, place.x + right, place.y + down);
        return looped ? a + (displacement_of(frame_b, place.x + right, place.y + down) - a) * blend.t : a;
    };
    VECTOR2 const s00 = cell(0, 0);
    if (place.fx == 0 && place.fy == 0)
        return {s00.x, 0, s00.y};
    VECTOR2 const s11 = cell(1, 1);
    if (place.fx > place.fy) {
        VECTOR2 const s10 = cell(1, 0);
        return {s00.x + (s10.x - s00.x) * place.fx, 0, s10.y + (s11.y - s10.y) * place.fy};
    }
    VECTOR2 const s01 = cell(0, 1);
    return {s01.x + (s11.x - s01.x) * place.fx, 0, s00.y + (s01.y - s00.y) * place.fy};
}

VECTOR3 OCEAN_WAVE_FIELD::displaced_point(FRAME_BLEND const &blend, VECTOR3 const &point, float scale) const
{
    return point - displacement_at(blend, point.x, point.z) * scale;
}

SLOPE_ANGLES OCEAN_WAVE_FIELD::slope_angles_at(FRAME_BLEND const &blend, std::uint32_t cell_x,
                                               std::uint32_t cell_y) const
{
    std::uint32_t const x = cell_x & (grid - 1), y = cell_y & (grid - 1);
    BYTE_PAIR const a = frames[looped ? blend.frame_a : 0].slopes.at(x, y);
    BYTE_PAIR const b = frames[looped ? blend.frame_b : 0].slopes.at(x, y);
    auto const blended = [&](std::uint8_t byte_a, std::uint8_t byte_b, float unit, std::uint16_t least) {
        return std::uint16_t((decoded_angle(byte_b, unit, least) * blend.weight_b +
                              decoded_angle(byte_a, unit, least) * blend.weight_a) >>
                             8);
    };
    return {blended(a.x, b.x, scales.slope_unit_x, ranges.slope_min_x),
            blended(a.y, b.y, scales.slope_unit_y, ranges.slope_min_y)};
}

VECTOR3 OCEAN_WAVE_FIELD::normal_at(FRAME_BLEND const &blend, std::uint32_t cell_x, std::uint32_t cell_y) const
{
    float x, y;
    if (looped) {
        SLOPE_ANGLES const angles = slope_angles_at(blend, cell_x, cell_y);
        x = steepness(angles.x);
        y = steepness(angles.y);
    } else {
        std::size_t const cell = std::size_t(cell_y & (grid - 1)) * grid + (cell_x & (grid - 1));
        x = -slope_x.cells[cell].real;
        y = -slope_y.cells[cell].real;
    }
    float const up = 1 / std::sqrt(x * x + y * y + 1);
    return {x * up, y * up, up};
}

void OCEAN_WAVE_FIELD::fill_slope_image(FRAME_BLEND const &blend, KN::PixelAccessorDescriptor const &image) const
{
    assert(image.width == grid && image.height == grid && image.pitch >= 4 * grid);
    if (!looped) {
        for (std::uint32_t y = 0; y < grid; ++y)  // the angles of the grids' normals
            std::memcpy(image.row(y), &instant.slopes[y * grid], 4 * std::size_t(grid));
        return;
    }
    WAVE_PLANE<BYTE_PAIR> const &plane_a = frames[blend.frame_a].slopes, &plane_b = frames[blend.frame_b].slopes;
    DECODED_ANGLES const x_of = decoded_angles(scales.slope_unit_x, ranges.slope_min_x);
    DECODED_ANGLES const y_of = decoded_angles(scales.slope_unit_y, ranges.slope_min_y);
    parallel_for({0, grid, 1}, [&](INDEX_RANGE const &rows) {
        for (std::uint32_t y = rows.begin; y < rows.end; ++y)
            for (std::uint32_t x = 0; x < grid; ++x) {
                BYTE_PAIR const a = plane_a.at(x, y), b = plane_b.at(x, y);
                std::uint32_t const word = blended_angle(x_of[a.x], x_of[b.x], blend.weight_b) |
                                           std::uint32_t(blended_angle(y_of[a.y], y_of[b.y], blend.weight_b)) << 16;
                std::memcpy(image.row(y) + 4 * std::size_t(x), &word, 4);
            }
    });
}

VECTOR2 OCEAN_WAVE_FIELD::tile_origin(float x, float y) const
{
    return {std::floor(x / size) * size, std::floor(y / size) * size};
}

}  // namespace SUPPORT
