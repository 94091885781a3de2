// HEIGHT_FIELD: heights in a grid of floats, row 0 first, which is the top one of a picture. Its files hold 16-bit
// samples: a grey DDS and a grey TIFF. A file is read as values from 0 to 1; how high 1 is nobody wrote down.
//
// Files are not trusted: the memory that is taken is bounded by a few times their size. A disk that fails in the middle
// of a reading leaves undefined values. Paths are written whole or not at all. Threads: const calls may run at once.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>
#include <span>

namespace KN {
class FileIn;
class MemFileIn;
}  // namespace KN

namespace SUPPORT {

class HEIGHT_FIELD {
public:
    HEIGHT_FIELD() = default;
    HEIGHT_FIELD(unsigned columns, unsigned rows) { resize(columns, rows); }

    // The values are undefined afterwards. At most 2^32 - 1 of them; of more the field stays empty.
    void resize(unsigned columns, unsigned rows);

    // Files on the disk are not held as a whole on the way: the fastest form for large fields. On all cores.
    //
    // DDS: from the file's position on. False, with the field as it was, if the file is cut off or has no samples.
    bool read_dds(KN::FileIn &file);
    bool read_dds(KN::MemFileIn &file);
    // TIFF: false, with the field as it was, if the file has not one sample of 16 bits a pixel, or is cut off. The
    // samples are taken as unsigned and as not compressed, whatever the file says.
    bool read_tiff(KN::FileIn &file);
    bool read_tiff(KN::MemFileIn &file);
    // The sides alone. False, with both as they were, if the file has no whole header.
    static bool read_dds_size(KN::FileIn &file, unsigned &width, unsigned &height);
    static bool read_dds_size(KN::MemFileIn &file, unsigned &width, unsigned &height);

    // `min` becomes sample 0 and `max` 65535; the values' own range if either is null. DDS rounds, TIFF cuts off. The
    // last row comes first. False if the file cannot be written or would pass 4 GiB.
    bool write_dds(KN::String const &path, float const *min, float const *max) const;
    bool write_tiff(KN::String const &path, float const *min, float const *max) const;
    // A picture to look at: the lower eight bits of the rounded scale * value, halves away from 0, in all colours.
    bool write_tga_grey(KN::String const &path, float scale = 1) const;

    // Half as many columns and rows, rounded down, and one more; each value the mean of those of the 3 x 3 around twice
    // its place that lie inside. `out` is another field.
    void half_size(HEIGHT_FIELD &out) const;
    // On all cores. An empty field gives 3.4028235e38 and -3.4028235e38.
    void min_max(float &min, float &max) const;

    float *row(unsigned y) { return values.data + std::size_t(y) * width; }
    float const *row(unsigned y) const { return values.data + std::size_t(y) * width; }

    unsigned width = 0, height = 0;
    unsigned width_minus_one = 0, height_minus_one = 0;  // 0 where there is nothing
    float scale_x = 1, scale_y = 1;                      // carried for the caller
    KN::DynamicArray<float> values;
};

// The picture of a mask, one byte a pixel and row 0 first: 0 is black, any other byte b the grey 256 - b. False if the
// file cannot be written. `mask` holds width * height bytes.
bool write_tga_grey(KN::String const &path, std::span<std::uint8_t const> mask, unsigned width, unsigned height);

}  // namespace SUPPORT
