// The check that a scene's texture coordinates are fit for the clean-up passes.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

namespace TOOLDATABUILDER {

// Leaves `message` empty if, within every mesh of the scene, all vertices have the same number of UVW sets and of
// frames and all coordinates are finite; else `message` names the first mesh and vertex that fails. Meshes without
// UVWs are sound.
CONVERSION_API void test_vex2_uvws(VEX2_LOADER::VEX2 const &scene, KN::UniString &message);

}  // namespace TOOLDATABUILDER
