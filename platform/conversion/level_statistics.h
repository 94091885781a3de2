// What there is to count about a level of detail, once its meshes are in the model.
#pragma once

#include "Plugins/Vx2/host/model_statistics.h"
#include "platform/conversion/model_mesh.h"

namespace TOOLDATABUILDER {

// `joints`: how many the model's skin has, if one of the meshes is skinned. The distance is left to the caller.
MODEL_LEVEL_STATISTICS count_level(GLTF::DOCUMENT &document, std::vector<MODEL_MESH> const &level,
                                   std::uint32_t joints);

// As the model carries them in its extras.
GLTF::VALUE as_value(std::vector<MODEL_LEVEL_STATISTICS> const &levels);

}  // namespace TOOLDATABUILDER
