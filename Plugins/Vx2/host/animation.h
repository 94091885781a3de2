// TOOLDATABUILDER::ANIMATION: the nodes of a scene sampled as an animation of one skeleton, ready to be written.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/string.h"

namespace KN {
class FileOut;
}
namespace VEX2_LOADER {
class VEX2;
}

namespace TOOLDATABUILDER {

class BONE_NAME_TABLE;
class VEX2_FILTER;

class CONVERSION_API ANIMATION {
public:
    // The skeleton fits: each of its bones is a node that the filter takes, case apart; and there are times and places
    // to make frames of.
    bool valid = false;

    // Moves the scene in time, and does not need it afterwards. An animation begins at the scene's start, but not
    // before 0, and has `rate` frames a second, 20 if that is 0. A reference pose is one frame at the start itself.
    // With `rigid_reference` all nodes are bones, whatever the table lists.
    //
    // `strip_*`: bones whose translations or rotations are left out, separated by blanks, "," or ";"; a name that ends
    // in "*" stands for all that begin so. `debug`: a message says what was taken.
    ANIMATION(VEX2_LOADER::VEX2 &scene, BONE_NAME_TABLE const &table, KN::String const &strip_translations,
              KN::String const &strip_rotations, float rate, bool reference_pose, VEX2_FILTER const &filter,
              bool rigid_reference, bool debug);

    KN::String fault;     // why it is not valid, in one line
    KN::String file;      // the bytes of the file, to the end of its frames; a matrix block may follow
    KN::String matrices;  // of a reference pose: the block of its inverse matrices
};

// Writes `file`.
CONVERSION_API KN::FileOut &operator<<(KN::FileOut &out, ANIMATION const &animation);

}  // namespace TOOLDATABUILDER
