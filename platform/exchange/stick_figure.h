// A figure that shows bones: a stick from each bone's parent to the bone.
#pragma once

#include "platform/gltf/document.h"
#include "support/maths/matrix.h"

#include <span>

// Adds the figure as a skinned mesh of the document's first nodes, which are the bones, as they stand now; `parents`
// has a number for each, below the bone's own, -1 for none. `inverse_matrices`: from the figure's space into that of
// each bone; of another count than the bones, those of the pose are taken. Bones at one place give no stick; nothing is
// added if there are none at all, or more bones than a skin's 16-bit numbers can name.
void add_stick_figure(GLTF::DOCUMENT &document, std::span<int const> parents,
                      std::span<SUPPORT::MATRIX44 const> inverse_matrices);
