// Export of built animations as binary glTF: the bones as nodes, each animated value as a channel, and a figure of
// sticks that is bound to the bones, so that any viewer shows how they move.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

// `source`: an animation file. `skeleton`: the reference pose of its skeleton, whose matrices are looked for beside it
// (.bone_inv_trans_mats); empty: none, and what the animation does not hold stands at the parent. What is odd but does
// no harm becomes a line in `warnings`. False with one line in `error` and no file at `target`.
bool export_animation(KN::String const &source, KN::String const &skeleton, KN::String const &target,
                      KN_STD::VECTOR<KN::String> &warnings, KN::String &error);
