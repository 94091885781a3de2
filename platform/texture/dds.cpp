// A head of 128 bytes, then the blocks of the picture row by row from the top, then those of its smaller versions.

#include "platform/texture/dds.h"

#include "foundation/finished_file.h"
#include "foundation/messages.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <squish.h>

namespace KESTREL {

namespace {

struct HEAD {
    char mark[4] = {'D', 'D', 'S', ' '};
    std::uint32_t size = 124;
    std::uint32_t flags = 0xa1007;  // which of the members hold something: caps, size, form, levels, bytes
    std::uint32_t height = 0, width = 0;
    std::uint32_t bytes = 0;  // of the picture without its smaller versions
    std::uint32_t depth = 0;
    std::uint32_t levels = 1;
    std::uint32_t unused[11] = {};
    std::uint32_t form_size = 32;
    std::uint32_t form_flags = 4;  // the form is told by its name
    char form[4] = {};
    std::uint32_t masks[5] = {};
    std::uint32_t caps[4] = {0x401008, 0, 0, 0};  // a texture with smaller versions
    std::uint32_t unused_too = 0;
};
static_assert(sizeof(HEAD) == 128);

struct FORM {
    char name[5];
    int squish_flags;
    std::size_t block_size;
};
constexpr FORM bc1{"DXT1", squish::kDxt1, 8}, bc2{"DXT3", squish::kDxt3, 16}, bc3{"DXT5", squish::kDxt5, 16},
    bc5{"ATI2", squish::kBc5, 16};

std::size_t blocks_along(unsigned pixels) { return (std::size_t(pixels) + 3) / 4; }

// False once the work is to end.
bool append_blocks(PICTURE const &picture, FORM const &form, KN::String &bytes)
{
    int const flags = form.squish_flags | squish::kColourClusterFit | squish::kWeightColourByAlpha;
    for (unsigned y0 = 0; y0 < picture.height; y0 += 4) {
        if (!KN::goes_on())
            return false;
        for (unsigned x0 = 0; x0 < picture.width; x0 += 4) {
            squish::u8 pixels[16][4] = {}, block[16];
            int mask = 0;
            for (unsigned i = 0; i < 16; ++i) {
                unsigned const x = x0 + i % 4, y = y0 + i / 4;
                if (x >= picture.width || y >= picture.height)
                    continue;
                std::memcpy(pixels[i], picture.at(x, y), 4);
                mask |= 1 << i;
            }
            squish::CompressMasked(pixels[0], mask, block, flags);
            bytes.append(reinterpret_cast<char const *>(block), form.block_size);
        }
    }
    return true;
}

// One channel of 16 pixels: two ends, then three bits a pixel. In ascending order the ends have four values between
// them, and 0 and 255 stand beside; in descending order six.
void decompress_channel(squish::u8 const *block, unsigned channel, squish::u8 pixels[16][4])
{
    unsigned const a = block[0], b = block[1], between = a > b ? 7 : 5;
    unsigned values[8] = {a, b, 0, 0, 0, 0, 0, 255};
    for (unsigned i = 1; i < between; ++i)
        values[i + 1] = ((between - i) * a + i * b) / between;
    std::uint64_t bits = 0;
    for (unsigned i = 0; i < 6; ++i)
        bits |= std::uint64_t(block[2 + i]) << (8 * i);
    for (unsigned i = 0; i < 16; ++i)
        pixels[i][channel] = squish::u8(values[bits >> (3 * i) & 7]);
}

// Two parts of a direction, and the third, which is never negative.
void decompress_directions(squish::u8 const *block, squish::u8 pixels[16][4])
{
    decompress_channel(block, 0, pixels);
    decompress_channel(block + 8, 1, pixels);
    for (unsigned i = 0; i < 16; ++i) {
        float const x = float(pixels[i][0]) / 127.5f - 1, y = float(pixels[i][1]) / 127.5f - 1;
        pixels[i][2] = squish::u8(std::sqrt(std::max(1 - x * x - y * y, 0.0f)) * 127.5f + 128);
        pixels[i][3] = 255;
    }
}

}  // namespace

bool is_dds(std::string_view bytes) { return bytes.starts_with("DDS "); }

bool read_dds(std::string_view bytes, PICTURE &picture, KN::String &error)
{
    picture = {};
    HEAD head;
    error = "the picture is damaged";
    if (!is_dds(bytes) || bytes.size() < sizeof(head))
        return false;
    std::memcpy(&head, bytes.data(), sizeof(head));
    FORM const *form = nullptr;
    for (FORM const *known : {&bc1, &bc2, &bc3, &bc5})
        if (std::memcmp(head.form, known->name, 4) == 0 && (head.form_flags & 4) != 0)
            form = known;
    if (form == nullptr) {
        error = "only DDS pictures of the forms DXT1, DXT3, DXT5 and ATI2 are read";
        return false;
    }
    if (head.width == 0 || head.height == 0 || head.width > PICTURE::largest || head.height > PICTURE::largest ||
        blocks_along(head.width) * blocks_along(head.height) > (bytes.size() - sizeof(head)) / form->block_size)
        return false;
    picture.width = head.width;
    picture.height = head.height;
    picture.pixels.resize(std::size_t(head.width) * head.height * 4);
    auto const *block = reinterpret_cast<squish::u8 const *>(bytes.data() + sizeof(head));
    for (unsigned y0 = 0; y0 < head.height; y0 += 4)
        for (unsigned x0 = 0; x0 < head.width; x0 += 4, block += form->block_size) {
            squish::u8 pixels[16][4] = {};
            if (form == &bc5)
                decompress_directions(block, pixels);
            else
                squish::Decompress(pixels[0], block, form->squish_flags);
            for (unsigned i = 0; i < 16; ++i) {
                unsigned const x = x0 + i % 4, y = y0 + i / 4;
                if (x < head.width && y < head.height)
                    std::memcpy(picture.at(x, y), pixels[i], 4);
            }
        }
    error.clear();
    return true;
}

bool write_dds(PICTURE const &picture, CONTENT content, KN::String const &path, KN::String &error)
{
    bool is_opaque = true;
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        is_opaque = is_opaque && picture.pixels[i] == 255;
    FORM const &form = content == CONTENT::NORMAL ? bc5 : is_opaque ? bc1 : bc3;
    HEAD head;
    head.width = picture.width;
    head.height = picture.height;
    head.bytes = std::uint32_t(blocks_along(picture.width) * blocks_along(picture.height) * form.block_size);
    while (std::max(picture.width, picture.height) >> head.levels != 0)
        ++head.levels;
    std::memcpy(head.form, form.name, 4);

    KN::String bytes(reinterpret_cast<char const *>(&head), sizeof(head));
    PICTURE level = picture;
    for (std::uint32_t i = 0; i < head.levels; ++i) {
        if (i > 0)
            level = half_of(level, content);
        if (!append_blocks(level, form, bytes))
            return false;
    }
    return KN::write_finished_file(path, bytes, error);
}

}  // namespace KESTREL
