// Skeleton tables from scenes.
#pragma once

#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

// The skeleton of `scene`, which was loaded from `source`, as the TOML file `target`: `root`, `preferred` (false) and
// `bones`, pairs of a name and its parent's, parents first, the root's parent empty. The root is the lowest node above
// all nodes that skins hang on; its bones are what stands below it, but for nodes that only carry objects. In a scene
// without skins the only root node is the root. False with one line in `error`, and nothing written, if there is no
// single root or two bones have one name.
bool write_bone_table(VEX2_LOADER::VEX2 const &scene, KN::String const &source, KN::String const &target,
                      KN::String &error);
