// The game's list of lighting materials, an XML file below the raw root that may be absent:
// <materials><material name="brick" type="standard_dirtmap"/>...</materials>
#pragma once

#include "foundation/string.h"

#include <map>
#include <string>

namespace TOOLDATABUILDER {

// By material name in lower case: the type. A file that is damaged is a warning and gives what stood before the damage.
std::map<std::string, std::string> read_lighting_materials(KN::String const &path);

}  // namespace TOOLDATABUILDER
