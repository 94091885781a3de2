// What the reader and the writer of TIFF files have in common.
#pragma once

#include <cstdint>

namespace SUPPORT {

enum TIFF_TAG : std::uint16_t {
    TIFF_WIDTH = 256,
    TIFF_HEIGHT = 257,
    TIFF_BITS_PER_SAMPLE = 258,
    TIFF_COMPRESSION = 259,
    TIFF_PHOTOMETRIC = 262,
    TIFF_STRIP_OFFSETS = 273,
    TIFF_SAMPLES_PER_PIXEL = 277,
    TIFF_ROWS_PER_STRIP = 278,
    TIFF_STRIP_BYTE_COUNTS = 279,
    TIFF_PLANAR_CONFIGURATION = 284,
};

enum TIFF_TYPE : std::uint16_t { TIFF_SHORT = 3, TIFF_LONG = 4 };

// As it stands in the file.
struct TIFF_ENTRY {
    std::uint16_t tag, type;
    std::uint32_t count, value;
};
static_assert(sizeof(TIFF_ENTRY) == 12);

constexpr std::uint32_t tiff_header_size = 8;

}  // namespace SUPPORT
