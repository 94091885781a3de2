// Materials of a scene as those of a glTF file, with their pictures as PNG (or JPEG, where they are) beside it.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

namespace GLTF {
struct DOCUMENT;
}
namespace VEX2_LOADER {
class VEX2;
}

// Material i of the scene becomes material i of the document; a null one becomes a plain one. Textures are looked for
// beside `source`; one that is not to be had becomes a warning. Files are written as soon as they are met.
void export_materials(VEX2_LOADER::VEX2 const &scene, KN::String const &source, KN::String const &target,
                      GLTF::DOCUMENT &document, KN_STD::VECTOR<KN::String> &warnings);
