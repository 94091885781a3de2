// What must hold for every file that is accepted.
#pragma once

#include "foundation/file.h"
#include "support/image/height_field.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace SUPPORT {

inline void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// The file of these bytes as the disk has it gives the same field as the held one.
inline void require_same_from_disk(unsigned char const *bytes, std::size_t size,
                                   bool (HEIGHT_FIELD::*read)(KN::FileIn &), bool was_read, HEIGHT_FIELD const &held)
{
    int const handle = memfd_create("fuzz", 0);
    require(handle >= 0 && ::write(handle, bytes, size) == ssize_t(size), "the system has memory for files");
    KN::FileIn file;
    HEIGHT_FIELD field;
    bool const is_read = file.open("/proc/self/fd/" + std::to_string(handle), true) && (field.*read)(file);
    ::close(handle);
    require(is_read == was_read && field.width == held.width && std::ranges::equal(field.values, held.values),
            "from the disk the same");
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
