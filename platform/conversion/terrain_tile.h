// The files of a terrain tile, made from its mesh seen from above: a height map, how far the mesh departs from it, and
// the outlines of the mesh.
#pragma once

#include "platform/gltf/geometry.h"

namespace TOOLDATABUILDER {

// Writes hf_height_map.data, hf_height_map_mesh_delta.data and terrain_outlines.xml into `folder`, which is there. The
// forms are told in docs/formats.md. A mesh without ground, such as a sign that stands in a folder of that name, gives
// a warning and no files. False, with a line in `error`, if one cannot be written.
bool write_terrain_tile(std::vector<GLTF::GEOMETRY> const &meshes, KN::String const &folder, KN::String &error);

}  // namespace TOOLDATABUILDER
