// TOOLDATABUILDER::BONE_NAME_TABLE: the bones of a skeleton in the order of the game, read by the skeleton's name.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/string.h"

namespace TOOLDATABUILDER {

class CONVERSION_API BONE_NAME_TABLE {
public:
    bool valid = false;           // the table was found and read
    unsigned char preferred = 0;  // 1: tried before others where a scene does not name its skeleton
    KN::String name;
};

}  // namespace TOOLDATABUILDER
