// Scene files as programs handle them: loaded with a reason when that fails, written whole or not at all.
#pragma once

#include "foundation/string.h"

namespace VEX2_LOADER {
class VEX2;
}

// A path of the command line as the scene library wants it: UTF-8 decoded; bytes that are no UTF-8 each become a unit.
KN::UniString scene_path(KN::String const &path);

// False with one line in `error`: "PATH: what is wrong; what to do".
bool load_scene(KN::String const &path, VEX2_LOADER::VEX2 &scene, KN::String &error);

// Writes the scene alone: the files of its references are left as they are. Needs the scene for writing because the
// references are taken out of it meanwhile.
bool write_scene(KN::String const &path, VEX2_LOADER::VEX2 &scene, KN::String &error);

// Writes the scene, which was loaded from `source`, and before it the scenes that it refers to, where their paths lead
// from `path`. References whose file was missing stay without one.
bool write_scene_with_references(KN::String const &source, KN::String const &path, VEX2_LOADER::VEX2 &scene,
                                 KN::String &error);
