#include "foundation/image.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"

#include <algorithm>

namespace KN {

std::atomic<std::size_t> ImageDefaultAllocator::mem = 0, ImageDefaultAllocator::hwm = 0;
std::atomic<std::size_t> ImageLargeAllocator::mem = 0, ImageLargeAllocator::hwm = 0;

namespace {

void unpack_row(unsigned format, std::uint8_t const *from, unsigned count, PIXEL_8888 *to)
{
    with_pixel_form(format, [&](auto form) {
        for (unsigned i = 0; i < count; ++i)
            to[i] = form.unpack(from + i * form.size);
    });
}

void pack_row(unsigned format, PIXEL_8888 const *from, unsigned count, std::uint8_t *to)
{
    with_pixel_form(format, [&](auto form) {
        for (unsigned i = 0; i < count; ++i)
            form.pack(from[i], to + i * form.size);
    });
}

// The pixels of a longer side that pixel `i` of a shorter one covers; one pixel the other way round.
struct COVERED {
    unsigned first, end;

    COVERED(unsigned i, unsigned count, unsigned source_count)
        : first(unsigned(std::uint64_t(i) * source_count / count)),
          end(std::max(unsigned((std::uint64_t(i) + 1) * source_count / count), first + 1))
    {}
};

struct SUM {
    std::uint64_t blue = 0, green = 0, red = 0, alpha = 0;

    void add(PIXEL_8888 pixel)
    {
        blue += pixel.blue;
        green += pixel.green;
        red += pixel.red;
        alpha += pixel.alpha;
    }
    PIXEL_8888 mean(std::uint64_t count) const
    {
        auto const part = [=](std::uint64_t sum) { return std::uint8_t((sum + count / 2) / count); };
        return {part(blue), part(green), part(red), part(alpha)};
    }
};

}  // namespace

bool PixelAccessorDescriptor::copy(PixelAccessorDescriptor const &source) const
{
    unsigned const size = pixel_size(format), source_size = pixel_size(source.format);
    if (size == 0 || source_size == 0)
        return false;
    constexpr unsigned block = 256;
    PIXEL_8888 pixels[block];
    unsigned const columns = std::min(width, source.width), rows = std::min(height, source.height);
    for (unsigned y = 0; y < rows; ++y) {
        if (format == source.format && format != FORMAT_X8R8G8B8) {
            if (columns != 0)
                std::memcpy(row(y), source.row(y), std::size_t(columns) * size);
            continue;
        }
        for (unsigned x = 0; x < columns; x += block) {
            unsigned const count = std::min(block, columns - x);
            unpack_row(source.format, source.row(y) + std::size_t(x) * source_size, count, pixels);
            pack_row(format, pixels, count, row(y) + std::size_t(x) * size);
        }
    }
    return true;
}

bool PixelAccessorDescriptor::resize_copy(PixelAccessorDescriptor const &source) const
{
    unsigned const size = pixel_size(format), source_size = pixel_size(source.format);
    if (size == 0 || source_size == 0 || source.width == 0 || source.height == 0)
        return false;
    DynamicArray<PIXEL_8888> pixels;
    DynamicArray<SUM> sums;
    pixels.resize(std::max(source.width, width));
    for (unsigned y = 0; y < height; ++y) {
        COVERED const rows(y, height, source.height);
        sums.clear();
        sums.resize(width);
        for (unsigned from = rows.first; from < rows.end; ++from) {
            unpack_row(source.format, source.row(from), source.width, pixels.data);
            for (unsigned x = 0; x < width; ++x) {
                COVERED const columns(x, width, source.width);
                for (unsigned i = columns.first; i < columns.end; ++i)
                    sums[x].add(pixels[i]);
            }
        }
        for (unsigned x = 0; x < width; ++x) {
            COVERED const columns(x, width, source.width);
            pixels[x] = sums[x].mean(std::uint64_t(rows.end - rows.first) * (columns.end - columns.first));
        }
        pack_row(format, pixels.data, width, row(y));
    }
    return true;
}

bool Image::write_tga(String const &path, TGAFormat format) const
{
    String const bytes = tga_bytes(accessor(), format);
    String error;
    return !bytes.empty() && write_finished_file(path, bytes, error);
}

bool Image::write_tga(FileOut &file, TGAFormat format) const
{
    String const bytes = tga_bytes(accessor(), format);
    return !bytes.empty() && bytes.size() <= 0xffffffff && file.status() == 0 &&
           file.write(bytes.data(), unsigned(bytes.size())) == bytes.size();
}

}  // namespace KN
