// Export of scenes as binary glTF: hierarchy, meshes, skins, morph targets, materials, cameras and node animation, so
// that the picture of an imported model is the picture of its export. Pictures are written beside the file as PNG.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

// `scene` was loaded from `source`. It is moved in time. Key times before 0 are left out, as glTF knows none: what
// holds at time 0 begins there. Animated meshes stand still as they are at time 0 (or at the scene's start, if that is
// later). What glTF has no place for becomes a line in `warnings`. False with one line in `error` and no file at
// `target`.
bool export_scene(VEX2_LOADER::VEX2 &scene, KN::String const &source, KN::String const &target,
                  KN_STD::VECTOR<KN::String> &warnings, KN::String &error);
