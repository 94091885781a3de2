#include "support/image/palette_image.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "foundation/tga.h"

#include <algorithm>

namespace SUPPORT {

namespace {

constexpr unsigned has_palette = 1, picked_colours = 1, pixel_depth = 8, alpha_bits = 8;

}  // namespace

PALETTE_IMAGE::PALETTE_IMAGE(unsigned columns, unsigned rows, unsigned palette_size)
{
    if (std::uint64_t(columns) * rows > 0xffffffff)
        return;
    width = columns;
    height = rows;
    pixels.resize(columns * rows);
    palette.resize(palette_size);
    std::ranges::fill(palette, 0xffffffff);
}

PALETTE_IMAGE::PALETTE_IMAGE(KN::String const &path)
{
    KN::MemFileIn file;
    if (file.open(path, true))
        read(file);
}

PALETTE_IMAGE::PALETTE_IMAGE(KN::MemFileIn &file) { read(file); }

void PALETTE_IMAGE::read(KN::MemFileIn &file)
{
    unsigned const start = file.tell();
    KN::TGAHeader header;
    if (header.read(file) && header.map_type == has_palette && header.image_type == picked_colours &&
        header.depth == pixel_depth && header.descriptor == alpha_bits) {
        unsigned const entry_size = header.map_depth == 24 ? 3 : header.map_depth == 32 ? 4 : 0;
        std::uint64_t const needed = std::uint64_t(header.id_length) + header.map_length * entry_size +
                                     std::uint64_t(header.width) * header.height;
        if (needed <= file.size() - file.tell()) {
            std::uint8_t text[255];
            file.read(text, header.id_length);
            palette.resize(entry_size == 0 ? 0 : header.map_length);
            for (std::uint32_t &entry : palette) {
                entry = 0xffffffff;
                file.read(&entry, entry_size);
            }
            width = header.width;
            height = header.height;
            pixels.resize(width * height);
            file.read(pixels.data, pixels.count);
            return;
        }
    }
    file.seek(start);
}

bool PALETTE_IMAGE::write(KN::String const &path) const
{
    if (width > 0xffff || height > 0xffff || palette.size() > 0xffff)
        return false;
    KN::TGAHeader header;
    header.map_type = has_palette;
    header.image_type = picked_colours;
    header.map_length = std::uint16_t(palette.size());
    header.map_depth = 24;
    header.width = std::uint16_t(width);
    header.height = std::uint16_t(height);
    header.depth = pixel_depth;
    header.descriptor = alpha_bits;
    KN::String bytes(reinterpret_cast<char const *>(&header), sizeof(header));
    for (std::uint32_t const &entry : palette)
        bytes.append(reinterpret_cast<char const *>(&entry), 3);
    bytes.append(reinterpret_cast<char const *>(pixels.data), pixels.size());
    KN::String error;
    return KN::write_finished_file(path, bytes, error);
}

}  // namespace SUPPORT
