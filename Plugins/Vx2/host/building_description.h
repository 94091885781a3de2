// CORVANEUTILITY::BUILDING_DESCRIPTION: the tech file that the game reads for a model: its collision meshes, their
// boxes, whether it can burn, and the points at which it catches fire.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/string.h"

class PROGRESS_CALLBACK;

namespace CORVANEUTILITY {

class BUILDING_API BUILDING_DESCRIPTION {
public:
    // Reads the converted tech meshes at `parsed` and, if that file exists, further ones at `collision`, and writes the
    // description to `target`. Incendiary points lie on the surface, evenly spread and no two closer than `radius`
    // (metres); a radius that is not positive and finite gives none. Failures and what was counted go to `callback`,
    // failures with level 2; nothing is written then. `origin` is the path that messages name.
    BUILDING_DESCRIPTION(KN::String const &parsed, KN::String const &collision, KN::String const &target,
                         KN::String const &origin, bool can_burn, PROGRESS_CALLBACK *callback, float radius);
};

}  // namespace CORVANEUTILITY
