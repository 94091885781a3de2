// Pictures from the bytes of PNG files: as they are, and as the parts of a file whose checksums and compressed stream
// are sound, since no mutation finds those: 13 bytes of the head, a byte for the size of a palette, one for that of its
// transparency, these two, and the rows. Seeds: platform_seeds.
#include "picture_walk.h"
#include "platform/texture/png.h"

#include <algorithm>
#include <zlib.h>

static std::string u32(std::size_t value)
{
    return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
}

static std::string chunk(std::string const &type, std::string_view data)
{
    std::string const checked = type + std::string(data);
    auto const *const bytes = reinterpret_cast<Bytef const *>(checked.data());
    return u32(data.size()) + checked + u32(crc32(0, bytes, uInt(checked.size())));
}

static std::string packed(std::string_view rows)
{
    std::string stream(compressBound(uLong(rows.size())), '\0');
    uLongf size = uLongf(stream.size());
    compress2(reinterpret_cast<Bytef *>(stream.data()), &size, reinterpret_cast<Bytef const *>(rows.data()),
              uLong(rows.size()), 1);
    stream.resize(size);
    return stream;
}

static std::string file_of(std::string_view parts)
{
    auto const take = [&parts](std::size_t size) {
        std::string_view const taken = parts.substr(0, size);
        parts.remove_prefix(taken.size());
        return taken;
    };
    std::string_view const head = take(13), sizes = take(2);
    std::string file = "\x89PNG\r\n\x1a\n" + chunk("IHDR", head);
    if (sizes.size() == 2) {
        file += chunk("PLTE", take(std::uint8_t(sizes[0])));
        file += chunk("tRNS", take(std::uint8_t(sizes[1])));
    }
    return file + chunk("IDAT", packed(parts)) + chunk("IEND", "");
}

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    std::string_view const input(reinterpret_cast<char const *>(bytes), size);
    FUZZ::walk_picture(KESTREL::read_png, KESTREL::is_png(input) ? input : std::string_view(file_of(input)));
    return 0;
}
