// The materials of a model: those of the scene that its meshes use, as glTF knows them.
#pragma once

#include "platform/gltf/document.h"
#include "scene/scene.h"

#include <map>

namespace TOOLDATABUILDER {

class TEXTURE_FILES;

struct MATERIAL_OPTIONS {
    bool disable_alpha_test = false;
    bool tree = false;
    bool with_pictures = true;
    std::map<std::string, std::string> const *lighting = nullptr;  // types by name in lower case
};

// A material that still lacks its textures, and the pictures' names.
struct MODEL_MATERIAL {
    GLTF::MATERIAL material;
    KN::String diffuse, normal;  // as the scene names them; empty: none
};

// How many UVW sets a mesh has to have for the material's pictures.
std::uint32_t uv_sets_of(MODEL_MATERIAL const &material);

MODEL_MATERIAL take_material(VEX2_LOADER::VEX2_MATERIAL const &from, MATERIAL_OPTIONS const &options);

// Publishes the pictures and names them relatively to `folder`, where the model is; absolute and tidy as that of the
// published files.
GLTF::MATERIAL with_textures(MODEL_MATERIAL const &material, TEXTURE_FILES &files, KN::String const &folder);

}  // namespace TOOLDATABUILDER
