// Codes of the units that a measure may end in, such as "12px" or "3.5km".
#pragma once

#include <cstdint>
#include <string_view>

namespace SUPPORT {

// 0 for a text that is no unit as a whole; "M" and "m" differ.
std::uint32_t unit_from_suffix(std::string_view text);

}  // namespace SUPPORT
