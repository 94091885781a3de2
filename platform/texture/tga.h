// Truecolour and grey TGA pictures, as artists' tools, the importer and the engine save them.
#pragma once

#include "platform/texture/picture.h"

#include <string_view>

namespace KESTREL {

// A picture with the channels that its file has.
struct TGA_PICTURE {
    unsigned width = 0, height = 0;
    unsigned channels = 0;             // 1 grey, 3 colour, 4 with opacity
    std::vector<std::uint8_t> pixels;  // row by row from the top, red first
};

// Types 2, 3, 10 and 11 with 8, 24 or 32 bits, of at most PICTURE::largest pixels a side. False, with what is wrong in
// `error`, for any other and for bytes that are damaged.
bool read_tga(std::string_view bytes, TGA_PICTURE &picture, KN::String &error);

// Truecolour of 32 bits, not packed.
bool write_tga(PICTURE const &picture, KN::String const &path, KN::String &error);

}  // namespace KESTREL
