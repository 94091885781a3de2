// What must hold for every file that is accepted.
#pragma once

#include "support/image/height_field.h"

#include <cstdio>
#include <cstdlib>

namespace SUPPORT {

inline void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// `field` as read from a file of `size` bytes.
inline void walk(HEIGHT_FIELD const &field, std::size_t size)
{
    require(std::uint64_t(field.width) * field.height == field.values.size(), "a value for each place");
    require(2 * std::uint64_t(field.values.size()) <= size, "every value was in the file");
    for (float value : field.values)
        require(value >= 0 && value < 1.0001f, "samples are from 0 to 1");
    HEIGHT_FIELD half;
    field.half_size(half);
    require(half.width == field.width / 2 + 1 && half.height == field.height / 2 + 1,
            "half of each side, and one more");
}

}  // namespace SUPPORT
