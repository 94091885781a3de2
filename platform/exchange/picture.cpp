#include "platform/exchange/picture.h"

#include "foundation/file.h"
#include "foundation/image.h"

#include <climits>
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

namespace {

bool is_opaque(PICTURE const &picture)
{
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        if (picture.pixels[i] != 255)
            return false;
    return true;
}

// Files have blue first, pictures red.
void swap_ends(KN_STD::VECTOR<std::uint8_t> &pixels)
{
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        std::swap(pixels[i], pixels[i + 2]);
}

KN::PixelAccessorDescriptor accessor(KN_STD::VECTOR<std::uint8_t> &pixels, unsigned width, unsigned height)
{
    return {pixels.data(), width, height, 4 * width, KN::FORMAT_A8R8G8B8};
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
    KN_STD::VECTOR<std::uint8_t> pixels = picture.pixels;
    swap_ends(pixels);
    return KN::tga_bytes(accessor(pixels, picture.width, picture.height),
                         is_opaque(picture) ? KN::TGA_R8G8B8 : KN::TGA_A8R8G8B8);
}

bool is_plain_tga(std::string_view bytes)
{
    KN::MemFileIn file(bytes.data(), unsigned(bytes.size()));
    KN::TGAHeader header;
    return header.read(file) && header.is_plausible(file.size() - file.tell()) && header.id_length == 0 &&
           header.image_type == 2 && header.depth >= 24 &&
           bytes.size() == sizeof(header) + std::size_t(header.depth / 8) * header.width * header.height;
}

PICTURE picture_of_plain_tga(std::string_view bytes)
{
    KN::MemFileIn file(bytes.data(), unsigned(bytes.size()));
    KN::TGAHeader header;
    header.read(file);
    PICTURE picture;
    picture.width = header.width;
    picture.height = header.height;
    picture.pixels.resize(std::size_t(4) * picture.width * picture.height);
    KN::read_pixels(file, header, accessor(picture.pixels, picture.width, picture.height));
    swap_ends(picture.pixels);
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
