// Points at which a building catches fire: spread over the surface of its meshes at random, evenly by area, none closer
// to another than a given distance. The same meshes give the same points.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "platform/gltf/geometry.h"

#include <array>

namespace CORVANEUTILITY {

inline constexpr std::size_t most_incendiary_points = 16384;

// In the space of the meshes; `radius` in metres. No points if the radius is not positive and finite, or if the surface
// has no area. Where more points than `most_incendiary_points` would find room, they are spread more widely.
BUILDING_API std::vector<std::array<float, 3>> incendiary_points(std::vector<GLTF::GEOMETRY> const &meshes,
                                                                 float radius);

}  // namespace CORVANEUTILITY
