#include "support/numeric/unit_suffix.h"

namespace SUPPORT {

struct UNIT_SUFFIX {
    std::string_view text;
    std::uint32_t code;
};

static constexpr UNIT_SUFFIX unit_suffixes[] = {
    {"px", 1},  {"%", 2},  {"C", 4},   {"c", 4},   {"in", 6},  {"miles", 8}, {"nm", 9},  {"mm", 10},
    {"cm", 11}, {"m", 12}, {"km", 13}, {"Mm", 14}, {"ly", 17}, {"pt", 18},   {"fl", 19},
};

std::uint32_t unit_from_suffix(std::string_view text)
{
    for (UNIT_SUFFIX const &suffix : unit_suffixes)
        if (suffix.text == text)
            return suffix.code;
    return 0;
}

}  // namespace SUPPORT
