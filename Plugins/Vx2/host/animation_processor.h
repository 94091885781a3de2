// TOOLDATABUILDER::ANIMATION_PROCESSOR: the converter from a scene file to an animation, or to the reference pose of a
// skeleton.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/string.h"

namespace TOOLDATABUILDER {

class CONVERSION_API ANIMATION_PROCESSOR {
public:
    // Writes `target` and, of a reference pose, `bone_matrices`; each comes to stand whole. `skeleton`: its name; a
    // table of that name is needed unless `rigid_reference` says that the scene's own nodes are the skeleton. Strip
    // texts, `rate` and `debug` as for ANIMATION. False if it failed, with the cause as an error (KN::message) if
    // `report`.
    static bool convert_vex2(bool report, KN::UniString const &source, KN::UniString const &target,
                             KN::UniString const &bone_matrices, KN::UniString const &skeleton,
                             KN::String const &strip_translations, KN::String const &strip_rotations, float rate,
                             bool reference_pose, bool rigid_reference, bool debug);
};

}  // namespace TOOLDATABUILDER
