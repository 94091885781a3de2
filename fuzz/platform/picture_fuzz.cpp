// Pictures from the bytes of PNG, DDS and TGA files. Seeds: small pictures of each kind. The checksums of a PNG's
// chunks are made anew first: otherwise no change would ever reach what is behind them.
#include "platform/texture/dds.h"
#include "platform/texture/png.h"
#include "platform/texture/tga.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <zlib.h>

using namespace KESTREL;

namespace {

std::size_t u32_at(std::string const &bytes, std::size_t at)
{
    std::size_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

void mend_checksums(std::string &png)
{
    for (std::size_t at = 8; png.size() - at >= 12;) {
        std::size_t const size = u32_at(png, at);
        if (size > png.size() - at - 12)
            return;
        auto const sum = crc32(0, reinterpret_cast<Bytef const *>(&png[at + 4]), uInt(size + 4));
        for (std::size_t i = 0; i < 4; ++i)
            png[at + 8 + size + i] = char(sum >> (24 - 8 * i));
        at += size + 12;
    }
}

void check(bool read, unsigned width, unsigned height, unsigned channels, std::size_t held, KN::String const &error)
{
    bool const whole = width >= 1 && width <= PICTURE::largest && height >= 1 && height <= PICTURE::largest &&
                       held == std::size_t(width) * height * channels;
    if (read ? whole : !error.empty())
        return;
    std::fprintf(stderr, "broken: a picture has all its pixels, or there is a reason\n");
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size)
{
    std::string bytes(reinterpret_cast<char const *>(data), size);
    PICTURE picture;
    KN::String error;
    if (is_png(bytes)) {
        mend_checksums(bytes);
        bool const read = read_png(bytes, picture, error);
        check(read, picture.width, picture.height, 4, picture.pixels.size(), error);
    } else if (is_dds(bytes)) {
        bool const read = read_dds(bytes, picture, error);
        check(read, picture.width, picture.height, 4, picture.pixels.size(), error);
    } else {
        TGA_PICTURE tga;
        bool const read = read_tga(bytes, tga, error);
        check(read, tga.width, tga.height, tga.channels, tga.pixels.size(), error);
    }
    return 0;
}
