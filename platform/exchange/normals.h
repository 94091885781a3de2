// Normals for meshes that come without them or with damaged ones.
#pragma once

#include "scene/values.h"

#include <cstdint>
#include <span>

// `corners`: three indices into `positions` a triangle, all in range. normals[i], one a corner, becomes the sum of the
// normals of the triangles that meet at the corner's position and whose planes lie within the angle of
// `crease_cosine` of the corner's own triangle, weighted by area, of length 1. With a cosine of 1 or more every
// triangle stands for itself. A triangle without area takes what its neighbours have; where nothing has an area the
// normal points up (y). Positions meet if they are equal.
void generate_normals(std::span<VEX2_LOADER::VEX2_VECTOR const> positions, std::span<std::uint32_t const> corners,
                      float crease_cosine, std::span<VEX2_LOADER::VEX2_VECTOR> normals);
