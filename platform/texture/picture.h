// KESTREL::PICTURE: a texture in memory, four bytes a pixel whatever its file held, and the reading of the three kinds
// of files that models name.
#pragma once

#include "foundation/string.h"

#include <cstdint>
#include <vector>

namespace KESTREL {

struct PICTURE {
    static constexpr unsigned largest = 16384;  // pixels, width and height

    unsigned width = 0, height = 0;
    std::vector<std::uint8_t> pixels;  // red, green, blue, alpha; row by row from the top

    std::uint8_t *at(unsigned x, unsigned y) { return &pixels[(std::size_t(y) * width + x) * 4]; }
    std::uint8_t const *at(unsigned x, unsigned y) const { return &pixels[(std::size_t(y) * width + x) * 4]; }
};

// TGA (8 bits grey, 24, 32; packed or not), PNG or DDS, told apart by their first bytes. False, with a line in `error`,
// for a file that is missing, damaged, of another kind or larger than PICTURE::largest; the picture is then empty. The
// bytes are not trusted.
bool read_picture(KN::String const &path, PICTURE &picture, KN::String &error);

}  // namespace KESTREL
