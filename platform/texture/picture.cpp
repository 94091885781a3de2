#include "platform/texture/picture.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/texture/dds.h"
#include "platform/texture/png.h"
#include "platform/texture/tga.h"

#include <algorithm>

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

// A head of 18 bytes, then the rows from the top, blue first.
bool write_tga(PICTURE const &picture, KN::String const &path, KN::String &error)
{
    std::uint8_t head[18] = {};
    head[2] = 2;  // truecolour
    head[12] = std::uint8_t(picture.width);
    head[13] = std::uint8_t(picture.width >> 8);
    head[14] = std::uint8_t(picture.height);
    head[15] = std::uint8_t(picture.height >> 8);
    head[16] = 32;
    head[17] = 0x28;  // eight bits of alpha, the top row first
    KN::String bytes(reinterpret_cast<char const *>(head), sizeof(head));
    bytes.append(reinterpret_cast<char const *>(picture.pixels.data()), picture.pixels.size());
    for (std::size_t i = sizeof(head); i < bytes.size(); i += 4)
        std::swap(bytes[i], bytes[i + 2]);
    return KN::write_finished_file(path, bytes, error);
}

}  // namespace KESTREL
