// What importer and exporter mean by the numbers of cameras and lights, which a scene itself only carries. Both look
// along -z of their node, a camera with y up.
//
// Camera: `kind` 0 perspective, 1 parallel; `first_value` the horizontal field of view in radians, for a parallel one
// half the width of the picture in metres; `second_value` width over height of the picture, 0 if unknown;
// `first_range` the nearest and the farthest distance seen, in metres.
//
// Light: `colour_0` its colour, largest part 1; `intensity` the factor on it; spots: `spread_inner` and `spread_outer`
// the whole angles of the full and of the fading cone, in radians.
#pragma once

#include <cstdint>

constexpr std::uint32_t perspective_camera = 0;
constexpr std::uint32_t parallel_camera = 1;
