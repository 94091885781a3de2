#include "support/image/height_field.h"

#include "support/image/typed_image.h"
#include "support/parallel/value_ranges.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace SUPPORT {

void HEIGHT_FIELD::resize(unsigned columns, unsigned rows)
{
    std::uint64_t count = std::uint64_t(columns) * rows;
    if (count > 0xffffffff)
        count = columns = rows = 0;
    width = columns;
    height = rows;
    width_minus_one = columns == 0 ? 0 : columns - 1;
    height_minus_one = rows == 0 ? 0 : rows - 1;
    if (count > values.capacity)
        values.clear();  // what is undefined anyway need not be moved
    values.reserve(unsigned(count));
    values.count = unsigned(count);
}

void HEIGHT_FIELD::half_size(HEIGHT_FIELD &out) const
{
    assert(&out != this);
    out.resize(width / 2 + 1, height / 2 + 1);
    out.scale_x = scale_x;
    out.scale_y = scale_y;
    for (unsigned y = 0; y < out.height; ++y) {
        unsigned const top = y == 0 ? 0 : 2 * y - 1, bottom = std::min(2 * y + 2, height);
        for (unsigned x = 0; x < out.width; ++x) {
            unsigned const left = x == 0 ? 0 : 2 * x - 1, right = std::min(2 * x + 2, width);
            float sum = 0;
            unsigned count = 0;
            for (unsigned from_y = top; from_y < bottom; ++from_y)
                for (unsigned from_x = left; from_x < right; ++from_x, ++count)
                    sum += row(from_y)[from_x];
            out.row(y)[x] = count == 0 ? 0 : sum / float(count);
        }
    }
}

void HEIGHT_FIELD::min_max(float &min, float &max) const
{
    VALUE_RANGE const range = parallel_min_max({values.data, values.count});
    min = range.least;
    max = range.greatest;
}

namespace {

template <class BYTE>
bool write_grey(KN::String const &path, unsigned width, unsigned height, BYTE const &byte_of)
{
    TYPED_IMAGE<KN::FORMAT_A8R8G8B8> image(width, height);
    std::size_t i = 0;
    for (unsigned y = 0; y < image.height(); ++y)
        for (unsigned x = 0; x < image.width(); ++x) {
            std::uint8_t const grey = byte_of(i++);
            image.set_pixel(x, y, {grey, grey, grey, 255});
        }
    return image.write_tga(path, KN::TGA_A8R8G8B8);
}

}  // namespace

bool HEIGHT_FIELD::write_tga_grey(KN::String const &path, float scale) const
{
    return write_grey(path, width, height, [&](std::size_t i) {
        float const grey = std::round(scale * values[i]);
        return std::uint8_t(std::fabs(grey) < 1e9f ? int(grey) : 0);  // nothing that an int cannot hold, no NaN
    });
}

bool write_tga_grey(KN::String const &path, std::span<std::uint8_t const> mask, unsigned width, unsigned height)
{
    assert(mask.size() == std::size_t(width) * height);
    return write_grey(path, width, height, [&](std::size_t i) { return std::uint8_t(-mask[i]); });
}

}  // namespace SUPPORT
