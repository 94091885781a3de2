#include "platform/texture/picture.h"

#include "foundation/file.h"
#include "platform/texture/dds.h"
#include "platform/texture/png.h"
#include "platform/texture/tga.h"

namespace KESTREL {

namespace {

bool read_any_tga(std::string_view bytes, PICTURE &picture, KN::String &error)
{
    TGA_PICTURE stored;
    if (!read_tga(bytes, stored, error))
        return false;
    picture.width = stored.width;
    picture.height = stored.height;
    picture.pixels.resize(std::size_t(stored.width) * stored.height * 4);
    std::uint8_t const *from = stored.pixels.data();
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4, from += stored.channels) {
        for (unsigned c = 0; c < 3; ++c)
            picture.pixels[i + c] = from[stored.channels == 1 ? 0 : c];
        picture.pixels[i + 3] = stored.channels == 4 ? from[3] : 255;
    }
    return true;
}

}  // namespace

bool read_picture(KN::String const &path, PICTURE &picture, KN::String &error)
{
    picture = {};
    KN::FileIn file;
    KN::String bytes;
    bool good = file.open(path, true);
    if (good) {
        bytes.resize(file.size());
        good = file.read(bytes.data(), file.size()) == file.size();
    }
    if (!good) {
        error = path + ": cannot be read";
        return false;
    }
    auto *const read = is_png(bytes) ? read_png : is_dds(bytes) ? read_dds : read_any_tga;
    if (read(bytes, picture, error))
        return true;
    error = path + ": " + error;
    return false;
}

}  // namespace KESTREL
