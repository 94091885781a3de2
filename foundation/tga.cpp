// An 18-byte header, an identification text, then the pixels, from the bottom row up unless the header says otherwise,
// blue first. Types 10 and 11 pack them: a byte n below 128 stands before n + 1 pixels, one from 128 on before a pixel
// that counts n - 127 times; packets may run over the ends of rows.

#include "foundation/tga.h"

#include "foundation/file.h"
#include "foundation/image.h"

#include <algorithm>

namespace KN {

namespace {

constexpr unsigned colour = 2, grey = 3, packed_flag = 8, right_first = 0x10, top_first = 0x20;

// `to` has room for all pixels. False if the bytes run out first.
bool unpack(DynamicArray<std::uint8_t> const &bytes, std::size_t pixel_size, DynamicArray<std::uint8_t> &to)
{
    std::size_t at = 0, done = 0;
    while (done < to.count) {
        if (at == bytes.count)
            return false;
        unsigned const packet = bytes[at++];
        std::size_t const size = std::min((packet % 128 + 1) * pixel_size, to.count - done);
        std::size_t const stored = packet < 128 ? size : pixel_size;
        if (stored > bytes.count - at)
            return false;
        for (std::size_t i = 0; i < size; i += stored)
            std::memcpy(&to[done + i], &bytes[at], stored);
        at += stored;
        done += size;
    }
    return true;
}

void turn_round(std::uint8_t *row, unsigned width, unsigned pixel_size)
{
    for (unsigned left = 0, right = width - 1; left < right; ++left, --right)
        std::swap_ranges(row + left * pixel_size, row + (left + 1) * pixel_size, row + right * pixel_size);
}

}  // namespace

bool TGAHeader::read(MemFileIn &file) { return file.read(this, sizeof(*this)) == sizeof(*this); }

bool TGAHeader::pixel_format(TGAFormat &format) const
{
    unsigned const kind = image_type & ~packed_flag;
    if (map_type != 0 || (kind != colour && kind != grey))
        return false;
    if (kind == grey && depth == 8)
        format = TGA_GREY8;
    else if (kind == colour && depth == 16)
        format = (descriptor & 0x0f) != 0 ? TGA_A1R5G5B5 : TGA_X1R5G5B5;
    else if (kind == colour && depth == 24)
        format = TGA_R8G8B8;
    else if (kind == colour && depth == 32)
        format = TGA_A8R8G8B8;
    else
        return false;
    return true;
}

bool TGAHeader::is_plausible(std::uint64_t bytes_left) const
{
    TGAFormat format;
    if (!pixel_format(format) || width == 0 || height == 0 || width > largest || height > largest)
        return false;
    std::uint64_t const size = depth / 8, pixels = std::uint64_t(width) * height;
    // A packet of 128 pixels takes at least one pixel and a byte.
    return bytes_left >= id_length + ((image_type & packed_flag) != 0 ? pixels / 128 * (size + 1) : pixels * size);
}

bool read_pixels(MemFileIn &file, TGAHeader const &header, PixelAccessorDescriptor const &target)
{
    TGAFormat format;
    if (!header.is_plausible(file.size() - file.tell()) || !header.pixel_format(format) ||
        pixel_size(target.format) == 0)
        return false;
    unsigned const size = pixel_size(format), pitch = header.width * size, total = pitch * header.height;
    std::uint8_t text[255];
    file.read(text, header.id_length);
    DynamicArray<std::uint8_t> pixels;
    pixels.resize(total);
    if ((header.image_type & packed_flag) != 0) {
        DynamicArray<std::uint8_t> bytes;
        bytes.resize(file.size() - file.tell());
        file.read(bytes.data, bytes.count);
        if (!unpack(bytes, size, pixels))
            return false;
    } else {
        file.read(pixels.data, total);
    }

    PixelAccessorDescriptor from{nullptr, header.width, 1, pitch, format}, to = target;
    to.height = 1;
    for (unsigned y = 0; y < std::min<unsigned>(header.height, target.height); ++y) {
        from.data = pixels.data + std::size_t(header.descriptor & top_first ? y : header.height - 1 - y) * pitch;
        if (header.descriptor & right_first)
            turn_round(static_cast<std::uint8_t *>(from.data), header.width, size);
        to.data = target.row(y);
        to.copy(from);
    }
    return true;
}

String tga_bytes(PixelAccessorDescriptor const &source, TGAFormat format)
{
    if (source.width > 0xffff || source.height > 0xffff)
        return {};
    unsigned const size = pixel_size(format);
    TGAHeader header;
    header.image_type = format == TGA_GREY8 ? grey : colour;
    header.width = std::uint16_t(source.width);
    header.height = std::uint16_t(source.height);
    header.depth = std::uint8_t(8 * size);
    header.descriptor = top_first | (format == TGA_A8R8G8B8 ? 8 : format == TGA_A1R5G5B5 ? 1 : 0);

    String bytes(reinterpret_cast<char const *>(&header), sizeof(header));
    TGAFormat known;
    if (!header.pixel_format(known) || known != format)
        return {};
    bytes.resize(sizeof(header) + std::size_t(source.width) * source.height * size);
    PixelAccessorDescriptor const target{bytes.data() + sizeof(header), source.width, source.height,
                                         source.width * size, format};
    return target.copy(source) ? bytes : String();
}

}  // namespace KN
