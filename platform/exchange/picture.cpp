#include "platform/exchange/picture.h"

#include <climits>
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

// TGA, type 2: an 18-byte head, then the rows from the bottom up, blue first.
namespace {

constexpr std::size_t head_size = 18;

bool is_opaque(PICTURE const &picture)
{
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        if (picture.pixels[i] != 255)
            return false;
    return true;
}

unsigned u16_at(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
}

}  // namespace

bool decode_picture(void const *bytes, std::size_t size, PICTURE &picture, KN::String &error)
{
    stbi_uc const *const data = static_cast<stbi_uc const *>(bytes);
    int width = 0, height = 0, channels = 0;
    if (size > INT_MAX || !stbi_info_from_memory(data, int(size), &width, &height, &channels)) {
        error = "this is no picture of a known format; save it as PNG";
        return false;
    }
    if (width <= 0 || height <= 0 || width > int(PICTURE::largest) || height > int(PICTURE::largest)) {
        error = "the picture measures " + std::to_string(width) + " x " + std::to_string(height) +
                " pixels; make it at most " + std::to_string(PICTURE::largest) + " either way";
        return false;
    }
    stbi_uc *const decoded = stbi_load_from_memory(data, int(size), &width, &height, &channels, 4);
    if (decoded == nullptr) {
        error = "the picture is damaged; save it again";
        return false;
    }
    picture.width = unsigned(width);
    picture.height = unsigned(height);
    picture.pixels.assign(decoded, decoded + std::size_t(width) * std::size_t(height) * 4);
    stbi_image_free(decoded);
    return true;
}

KN::String tga_bytes(PICTURE const &picture)
{
    bool const opaque = is_opaque(picture);
    std::size_t const pixel_size = opaque ? 3 : 4;

    KN::String bytes(head_size + pixel_size * picture.width * picture.height, '\0');
    bytes[2] = 2;
    bytes[12] = char(picture.width);
    bytes[13] = char(picture.width >> 8);
    bytes[14] = char(picture.height);
    bytes[15] = char(picture.height >> 8);
    bytes[16] = char(8 * pixel_size);
    bytes[17] = opaque ? 0 : 8;  // bits of opacity
    char *out = bytes.data() + head_size;
    for (unsigned y = picture.height; y-- > 0;) {
        std::uint8_t const *in = picture.pixels.data() + std::size_t(y) * picture.width * 4;
        for (unsigned x = 0; x < picture.width; ++x, in += 4) {
            *out++ = char(in[2]);
            *out++ = char(in[1]);
            *out++ = char(in[0]);
            if (!opaque)
                *out++ = char(in[3]);
        }
    }
    return bytes;
}

bool is_plain_tga(std::string_view bytes)
{
    if (bytes.size() < head_size || bytes[0] != 0 || bytes[1] != 0 || bytes[2] != 2)
        return false;
    std::size_t const width = u16_at(bytes, 12), height = u16_at(bytes, 14), bits = bytes[16];
    return (bytes[17] & 0x30) == 0 && (bits == 24 || bits == 32) && width != 0 && height != 0 &&
           width <= PICTURE::largest && height <= PICTURE::largest &&
           bytes.size() == head_size + bits / 8 * width * height;
}

PICTURE picture_of_plain_tga(std::string_view bytes)
{
    PICTURE picture;
    picture.width = u16_at(bytes, 12);
    picture.height = u16_at(bytes, 14);
    picture.pixels.resize(std::size_t(4) * picture.width * picture.height);
    std::size_t const pixel_size = std::size_t(bytes[16]) / 8;
    char const *in = bytes.data() + head_size;
    for (unsigned y = picture.height; y-- > 0;) {
        std::uint8_t *out = picture.pixels.data() + std::size_t(y) * picture.width * 4;
        for (unsigned x = 0; x < picture.width; ++x, in += pixel_size, out += 4) {
            out[0] = std::uint8_t(in[2]);
            out[1] = std::uint8_t(in[1]);
            out[2] = std::uint8_t(in[0]);
            out[3] = pixel_size == 4 ? std::uint8_t(in[3]) : 255;
        }
    }
    return picture;
}

KN::String png_bytes(PICTURE const &picture)
{
    int const channels = is_opaque(picture) ? 3 : 4;
    KN_STD::VECTOR<std::uint8_t> packed;
    packed.reserve(picture.pixels.size());
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4)
        packed.insert(packed.end(), picture.pixels.data() + i, picture.pixels.data() + i + channels);
    KN::String bytes;
    auto const append = [](void *to, void *data, int size) {
        static_cast<KN::String *>(to)->append(static_cast<char const *>(data), std::size_t(size));
    };
    stbi_write_png_to_func(append, &bytes, int(picture.width), int(picture.height), channels, packed.data(),
                           int(picture.width) * channels);
    return bytes;
}
