// The walker of a scene's invariants: indices in range, key times ascending and finite, as many values as times,
// parents before children, weights that sum to one. For tests, fuzzers and the validator; the load itself refuses only
// what could not be used safely.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"
#include "scene/api.h"

namespace VEX2_LOADER {

class VEX2;

struct VEX2_FINDINGS {
    // Each a line: which object, what is wrong. An error is what no load lets through or what a consumer cannot use, a
    // warning what is suspect. At most 100 lines each; `omitted` counts the rest.
    KN_STD::VECTOR<KN::String> errors;
    KN_STD::VECTOR<KN::String> warnings;
    unsigned omitted = 0;
};

// Of the scene and of the scenes it references.
SCENE_API VEX2_FINDINGS check_scene(VEX2 const &scene);

}  // namespace VEX2_LOADER
