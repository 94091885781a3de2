// TGA pictures in 16, 24 and 32 bits and in 8 bits grey: what is read and written of them. Palettes are no business of
// these.
#pragma once

#include "foundation/api.h"
#include "foundation/pixel_format.h"
#include "foundation/string.h"

#include <cstdint>

namespace KN {

class MemFileIn;
struct PixelAccessorDescriptor;

// The pixel formats that a file can hold, under their numbers.
enum TGAFormat : unsigned {
    TGA_X1R5G5B5 = FORMAT_X1R5G5B5,
    TGA_A1R5G5B5 = FORMAT_A1R5G5B5,
    TGA_R8G8B8 = FORMAT_R8G8B8,
    TGA_A8R8G8B8 = FORMAT_A8R8G8B8,
    TGA_GREY8 = FORMAT_GREY8,
};

// The first 18 bytes of a file.
#pragma pack(push, 1)
struct TGAHeader {
    static constexpr unsigned largest = 16384;  // pixels a side that are read

    std::uint8_t id_length = 0;   // of a text behind the header
    std::uint8_t map_type = 0;    // 1: a palette follows the text
    std::uint8_t image_type = 0;  // 1 palette, 2 colour, 3 grey; 8 more: packed
    std::uint16_t map_first = 0;
    std::uint16_t map_length = 0;
    std::uint8_t map_depth = 0;
    std::uint16_t x_origin = 0, y_origin = 0;
    std::uint16_t width = 0, height = 0;
    std::uint8_t depth = 0;       // bits a pixel
    std::uint8_t descriptor = 0;  // 0x0f: bits of alpha, 0x10: right column first, 0x20: top row first

    // From the file's position on; false if it ends.
    FOUNDATION_API bool read(MemFileIn &file);
    // False if the pixels are of a kind that read_pixels does not know.
    FOUNDATION_API bool pixel_format(TGAFormat &format) const;
    // True if read_pixels knows the kind, no side has 0 or more than `largest` pixels, and `bytes_left` behind the
    // header can hold them: to be asked before memory is taken for the picture.
    FOUNDATION_API bool is_plausible(std::uint64_t bytes_left) const;
};
#pragma pack(pop)
static_assert(sizeof(TGAHeader) == 18);

// The picture of `header`, behind which the file stands, into `target`, which may be of any format; what is larger than
// the target is left out. False, with nothing written, if it is not plausible or the file ends too early. The bytes are
// not trusted: no more memory is taken than 128 times what is left of the file.
FOUNDATION_API bool read_pixels(MemFileIn &file, TGAHeader const &header, PixelAccessorDescriptor const &target);

// A whole file, not packed, with the top row first. Empty if a side has more than 65535 pixels or a format is unknown.
FOUNDATION_API String tga_bytes(PixelAccessorDescriptor const &source, TGAFormat format);

}  // namespace KN
