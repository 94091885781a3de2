// The converter of a scene's tech meshes: collision bodies and other helpers that the game needs but never shows.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

namespace TOOLDATABUILDER {

class VEX2_FILTER;

namespace MESH {

class CONVERSION_API RIGID_MODEL_TECH_PROCESSOR {
public:
    // Writes the meshes that the filter takes to the file `parsed` and adds an id to `references` for each scene that
    // `scene` refers to: the lower-case stem of its file + "/tech". With `all_kinds` meshes of every kind are asked
    // for, else static ones only. No mesh at all is no fault. False, with a message, if the file could not be written
    // or a mesh is broken. The scene is not changed.
    static bool convert_vex(VEX2_LOADER::VEX2 &scene, KN::UniString const &source, KN::UniString const &parsed,
                            bool all_kinds, VEX2_FILTER const &filter, KN_STD::SET<KN::String> &references);
};

}  // namespace MESH
}  // namespace TOOLDATABUILDER
