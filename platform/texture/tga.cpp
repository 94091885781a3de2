// An 18-byte head, an identification text, then the pixels, from the bottom row up unless the head says otherwise, blue
// first. Types 10 and 11 pack them: a byte n below 128 stands before n + 1 pixels, one from 128 on before a pixel that
// counts n - 127 times; packets may run over the ends of rows.

#include "platform/texture/tga.h"

#include <algorithm>

namespace KESTREL {

namespace {

constexpr std::size_t head_size = 18;

unsigned u16_at(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | unsigned(static_cast<unsigned char>(bytes[at + 1])) << 8;
}

// `raw`: room for all pixels. False if the bytes run out first.
bool unpack(std::string_view bytes, std::size_t pixel_size, std::vector<std::uint8_t> &raw)
{
    std::size_t at = 0, done = 0;
    while (done < raw.size()) {
        if (at == bytes.size())
            return false;
        unsigned const packet = static_cast<unsigned char>(bytes[at++]);
        std::size_t const size = std::min((packet % 128 + 1) * pixel_size, raw.size() - done);
        std::size_t const stored = packet < 128 ? size : pixel_size;
        if (stored > bytes.size() - at)
            return false;
        for (std::size_t i = 0; i < size; ++i)
            raw[done + i] = static_cast<std::uint8_t>(bytes[at + i % stored]);
        at += stored;
        done += size;
    }
    return true;
}

}  // namespace

bool read_tga(std::string_view bytes, TGA_PICTURE &picture, KN::String &error)
{
    if (bytes.size() < head_size) {
        error = "the picture is cut off";
        return false;
    }
    unsigned const type = static_cast<unsigned char>(bytes[2]), bits = static_cast<unsigned char>(bytes[16]);
    bool const grey = type == 3 || type == 11, packed = type >= 10;
    bool const known = (type == 2 || type == 3 || type == 10 || type == 11) && bytes[1] == 0 &&
                       (grey ? bits == 8 : bits == 24 || bits == 32);
    if (!known) {
        error = "only TGA pictures of 8, 24 or 32 bits without a palette are read; save it anew";
        return false;
    }
    picture.width = u16_at(bytes, 12);
    picture.height = u16_at(bytes, 14);
    picture.channels = bits / 8;
    if (picture.width == 0 || picture.height == 0 || picture.width > PICTURE::largest ||
        picture.height > PICTURE::largest) {
        error = "the picture measures " + std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                " pixels; 1 to " + std::to_string(PICTURE::largest) + " are allowed";
        return false;
    }

    std::size_t const pixel_size = picture.channels, row_size = picture.width * pixel_size;
    std::size_t const size = row_size * picture.height;
    std::size_t const start = std::min(head_size + static_cast<unsigned char>(bytes[0]), bytes.size());
    std::string_view const data = bytes.substr(start);
    // A packet of 128 pixels takes at least one pixel and a byte.
    bool const enough = packed ? data.size() >= size / 128 / pixel_size * (pixel_size + 1) : data.size() >= size;
    std::vector<std::uint8_t> raw(enough ? size : 0);
    if (enough && !packed)
        std::copy_n(data.begin(), size, raw.begin());
    if (!enough || (packed && !unpack(data, pixel_size, raw))) {
        error = "the picture is cut off";
        return false;
    }

    bool const top_first = bytes[17] & 0x20, right_first = bytes[17] & 0x10;
    picture.pixels.resize(size);
    for (unsigned y = 0; y < picture.height; ++y) {
        std::uint8_t const *const row = raw.data() + (top_first ? y : picture.height - 1 - y) * row_size;
        std::uint8_t *to = picture.pixels.data() + y * row_size;
        for (unsigned x = 0; x < picture.width; ++x, to += pixel_size) {
            std::uint8_t const *const from = row + (right_first ? picture.width - 1 - x : x) * pixel_size;
            std::copy_n(from, pixel_size, to);
            if (!grey)
                std::swap(to[0], to[2]);
        }
    }
    return true;
}

}  // namespace KESTREL
