// PALETTE_IMAGE: a picture of one byte a pixel, which chooses among up to 256 colours (files may list more), and its
// TGA files. Row 0 is the first in the file, which viewers show at the bottom. Nobody checks that the bytes stay inside
// the palette.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>

namespace KN {
class MemFileIn;
}

namespace SUPPORT {

class PALETTE_IMAGE {
public:
    // Pixels 0, the palette 0xffffffff. More than 2^32 - 1 pixels: an empty picture.
    PALETTE_IMAGE(unsigned width, unsigned height, unsigned palette_size);
    // A TGA with a palette of 24 or 32 bits (with other depths it is taken to be absent) and pixels of 8, which are not
    // packed. A file of another kind or one that is cut off gives an empty picture, and stands where it stood.
    explicit PALETTE_IMAGE(KN::String const &path);
    explicit PALETTE_IMAGE(KN::MemFileIn &file);

    // With a palette of 24 bits: its top bytes are lost. False if a side or the palette has more than 65535 entries, or
    // if the file cannot be written; it is written whole or not at all.
    bool write(KN::String const &path) const;

    unsigned width = 0, height = 0;
    KN::DynamicArray<std::uint8_t> pixels;
    KN::DynamicArray<std::uint32_t> palette;  // from the lowest byte up: blue, green, red, alpha

private:
    void read(KN::MemFileIn &file);
};

}  // namespace SUPPORT
