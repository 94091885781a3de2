#include "platform/texture/tga.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "foundation/image.h"

#include <utility>

namespace KESTREL {

static_assert(PICTURE::largest == KN::TGAHeader::largest);

// Files have blue first, pictures red.
static void swap_ends(std::vector<std::uint8_t> &pixels, unsigned channels)
{
    for (std::size_t i = 0; channels > 1 && i < pixels.size(); i += channels)
        std::swap(pixels[i], pixels[i + 2]);
}

static KN::PixelAccessorDescriptor accessor(std::vector<std::uint8_t> &pixels, unsigned width, unsigned height,
                                            unsigned channels, KN::TGAFormat format)
{
    KN::PixelAccessorDescriptor all;
    all.data = pixels.data();
    all.width = width;
    all.height = height;
    all.pitch = width * channels;
    all.format = format;
    return all;
}

bool read_tga(std::string_view bytes, TGA_PICTURE &picture, KN::String &error)
{
    error = "the picture is cut off";
    if (bytes.size() > ~0u)
        return false;
    KN::MemFileIn file(bytes.data(), unsigned(bytes.size()));
    KN::TGAHeader header;
    if (!header.read(file))
        return false;
    KN::TGAFormat format;
    if (!header.pixel_format(format) || header.map_type != 0 || header.depth == 16) {
        error = "only TGA pictures of 8, 24 or 32 bits without a palette are read; save it anew";
        return false;
    }
    if (header.width == 0 || header.height == 0 || header.width > PICTURE::largest ||
        header.height > PICTURE::largest) {
        error = "the picture measures " + std::to_string(header.width) + " x " + std::to_string(header.height) +
                " pixels; 1 to " + std::to_string(PICTURE::largest) + " are allowed";
        return false;
    }
    if (!header.is_plausible(file.size() - file.tell()))
        return false;
    picture.width = header.width;
    picture.height = header.height;
    picture.channels = header.depth / 8u;
    picture.pixels.resize(std::size_t(picture.width) * picture.height * picture.channels);
    if (!KN::read_pixels(file, header,
                         accessor(picture.pixels, picture.width, picture.height, picture.channels, format)))
        return false;
    swap_ends(picture.pixels, picture.channels);
    error.clear();
    return true;
}

bool write_tga(PICTURE const &picture, KN::String const &path, KN::String &error)
{
    std::vector<std::uint8_t> pixels = picture.pixels;
    swap_ends(pixels, 4);
    constexpr KN::TGAFormat format = KN::TGA_A8R8G8B8;
    return KN::write_finished_file(
        path, KN::tga_bytes(accessor(pixels, picture.width, picture.height, 4, format), format), error);
}

}  // namespace KESTREL
