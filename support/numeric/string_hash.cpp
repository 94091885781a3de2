#include "support/numeric/string_map.h"

namespace SUPPORT {

std::uint32_t string_hash(std::string_view text)
{
    std::uint32_t hash = 0xF73A51C9;
    unsigned shift = 0;
    for (auto byte = text.rbegin(); byte != text.rend(); ++byte) {
        hash ^= std::uint32_t(std::int32_t(static_cast<signed char>(*byte))) << shift;
        shift = (shift + 8) % 32;
    }
    return hash;
}

}  // namespace SUPPORT
