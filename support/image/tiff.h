// Uncompressed little-endian TIFF: the directory, whole pictures out, strips in. Every reading starts with the header,
// at which the file must stand.
//
// A directory is a count and as many entries of tag, type, count and value; it stands behind the 8 bytes of the header
// here, and anywhere in files of others. What is read of it: sides, bits, compression, kind of colour, strips. The
// header's mark is not looked at. Nothing in a file is trusted: what it counts or points at must lie inside it, or the
// reading fails.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>
#include <span>

namespace KN {
class FileIn;
class FileOut;
class MemFileIn;
}  // namespace KN

namespace SUPPORT {

struct TIFF_INFO {
    static constexpr std::uint16_t not_compressed = 1, no_photometric = 65535, black_is_zero = 1;

    std::uint16_t compression = not_compressed;
    std::uint32_t width = 0, height = 0;
    KN::DynamicArray<std::uint16_t> bits_per_sample;  // one entry for each sample of a pixel
    KN::DynamicArray<std::uint32_t> strip_offsets, strip_byte_counts;
    std::uint16_t photometric = no_photometric;
    std::uint16_t planar_configuration = 1;
    std::uint16_t samples_per_pixel = 1;
    std::uint32_t rows_per_strip = 0xffffffff;
};

// True if the picture has a side, a photometric, strips, and as many lengths as offsets of them. Tags that are absent
// leave what TIFF_INFO starts with; arrays that are neither SHORT nor LONG are zeros. The file then stands behind the
// directory's entries.
bool tiff_read_info(KN::MemFileIn &file, TIFF_INFO &info);
// Of a file that is read for its size: sides, bits, compression and photometric only, and no word about strips.
bool tiff_read_info(KN::FileIn &file, TIFF_INFO &info);
// All of it, of a file whose strips are to be read from the disk.
bool tiff_read_layout(KN::FileIn &file, TIFF_INFO &info);

// The sides; as they were if the directory cannot be read.
bool tiff_read_size(KN::MemFileIn &file, std::uint32_t &width, std::uint32_t &height);
bool tiff_read_size(KN::FileIn &file, std::uint32_t &width, std::uint32_t &height);

// The bytes of all strips, one after the other, into the buffers, one after the other. Bytes that find no room are left
// out; room for which there are no bytes stays as it is. False for a compressed file and for a strip that does not lie
// in the file; of such a strip nothing is read.
bool tiff_read_strips(KN::MemFileIn &file, std::span<std::span<std::uint8_t> const> buffers);
bool tiff_read_contiguous(KN::MemFileIn &file, std::span<std::uint8_t> destination);

// Header and directory for one strip of one sample a pixel, to stand at `position` of a file, the strip right behind
// them. Empty for any other number of samples, and for a strip that would pass 4 GiB.
KN::String tiff_header(TIFF_INFO const &info, std::uint32_t position);
// At the file's position, at which the strip is then to be written. False for a file in a failed state too.
bool tiff_write_header(KN::FileOut &file, TIFF_INFO const &info);
// Header and strip. `pixels` holds width * height * (bits / 8) bytes; the buffers hold as many together, or the result
// is false and nothing is written.
bool tiff_write_image(KN::FileOut &file, TIFF_INFO const &info, void const *pixels);
bool tiff_write_buffers(KN::FileOut &file, TIFF_INFO const &info,
                        std::span<std::span<std::uint8_t const> const> buffers);

}  // namespace SUPPORT
