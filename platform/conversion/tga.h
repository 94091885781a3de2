// Truecolour and grey TGA pictures, as artists' tools and the importer save textures.
#pragma once

#include "foundation/string.h"

#include <cstdint>
#include <vector>

namespace TOOLDATABUILDER {

struct PICTURE {
    static constexpr unsigned largest = 16384;  // pixels, width and height

    unsigned width = 0, height = 0;
    unsigned channels = 0;             // 1 grey, 3 colour, 4 with opacity
    std::vector<std::uint8_t> pixels;  // row by row from the top, red first
};

// Types 2, 3, 10 and 11 with 8, 24 or 32 bits. False, with what is wrong in `error`, for any other and for bytes that
// are damaged.
bool read_tga(std::string_view bytes, PICTURE &picture, KN::String &error);

}  // namespace TOOLDATABUILDER
