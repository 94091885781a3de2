// Text for XML files that are written line by line.
#pragma once

#include <string>
#include <string_view>

namespace TOOLDATABUILDER {

// UTF-8 text fit for an attribute in double quotes. Control characters, which XML cannot hold, become "?".
std::string xml_escaped(std::string_view text);

// A number in the shortest form that reads back to the same float.
std::string number_text(float value);

}  // namespace TOOLDATABUILDER
