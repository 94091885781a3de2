// The description of a model: its collision meshes as binary glTF, and as extras the boxes, whether it can burn, and
// the points at which it catches fire.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "platform/gltf/geometry.h"

namespace CORVANEUTILITY {

struct DESCRIPTION {
    std::vector<GLTF::GEOMETRY> meshes;  // in model space
    bool can_burn = false;
    float incendiary_radius = 0;  // metres; see incendiary_points
};

// As GLTF::write_glb. `points`: how many incendiary points were found room for.
BUILDING_API bool write_description(DESCRIPTION const &description, KN::String const &target, std::size_t &points,
                                    KN::String &error);

}  // namespace CORVANEUTILITY
