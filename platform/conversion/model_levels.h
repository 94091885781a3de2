// Sorting of a model's meshes into levels of detail by their names: "roof_lod0", "roof_lod1".
#pragma once

#include "foundation/string.h"

#include <optional>
#include <vector>

namespace TOOLDATABUILDER {

class MESH_SOURCE;

// The number behind "_lod", in any case, at the end of the name; nothing if there is none.
std::optional<unsigned> level_in_name(std::string_view name);

struct MODEL_LEVELS {
    bool are_named = false;                           // the scene brings its levels
    std::vector<std::vector<std::size_t>> meshes_of;  // indices of meshes, the finest level first
};

// With `single_lod`, or if no name has a level, all is one level. False, with a line in `error` that names the mesh, if
// some names have a level and others have none. A mesh's own name counts before that of its node.
bool sort_into_levels(std::vector<MESH_SOURCE> const &meshes, bool single_lod, MODEL_LEVELS &levels, KN::String &error);

}  // namespace TOOLDATABUILDER
