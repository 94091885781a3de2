#include "support/image/tiff.h"

#include "foundation/file.h"
#include "support/image/tiff_tags.h"

namespace SUPPORT {

namespace {

template <class VALUE>
void append(KN::String &bytes, VALUE const &value)
{
    bytes.append(reinterpret_cast<char const *>(&value), sizeof(value));
}

std::uint64_t strip_size(TIFF_INFO const &info)
{
    std::uint64_t size = std::uint64_t(info.width) * info.height;
    for (std::uint16_t bits : info.bits_per_sample)
        size *= bits / 8;
    return size;
}

bool write(KN::FileOut &file, void const *bytes, std::size_t size) { return file.write(bytes, unsigned(size)) == size; }

}  // namespace

KN::String tiff_header(TIFF_INFO const &info, std::uint32_t position)
{
    constexpr std::uint16_t entry_count = 10;
    constexpr std::uint32_t size = tiff_header_size + sizeof(entry_count) + entry_count * sizeof(TIFF_ENTRY) + 4;
    if (info.bits_per_sample.size() != 1 || std::uint64_t(info.width) * info.height > 0xffffffff ||
        std::uint64_t(position) + size + strip_size(info) > 0xffffffff)
        return {};
    TIFF_ENTRY const entries[entry_count] = {
        {TIFF_WIDTH, TIFF_LONG, 1, info.width},
        {TIFF_HEIGHT, TIFF_LONG, 1, info.height},
        {TIFF_BITS_PER_SAMPLE, TIFF_SHORT, 1, info.bits_per_sample[0]},
        {TIFF_COMPRESSION, TIFF_SHORT, 1, info.compression},
        {TIFF_PHOTOMETRIC, TIFF_SHORT, 1, info.photometric},
        {TIFF_STRIP_OFFSETS, TIFF_LONG, 1, position + size},
        {TIFF_SAMPLES_PER_PIXEL, TIFF_SHORT, 1, 1},
        {TIFF_ROWS_PER_STRIP, TIFF_LONG, 1, info.height},
        {TIFF_STRIP_BYTE_COUNTS, TIFF_LONG, 1, std::uint32_t(strip_size(info))},
        {TIFF_PLANAR_CONFIGURATION, TIFF_SHORT, 1, 1},
    };
    KN::String bytes = "II";
    append(bytes, std::uint16_t(42));
    append(bytes, position + tiff_header_size);
    append(bytes, entry_count);
    append(bytes, entries);
    append(bytes, std::uint32_t(0));  // no further directory
    return bytes;
}

bool tiff_write_header(KN::FileOut &file, TIFF_INFO const &info)
{
    KN::String const header = file.status() == 0 ? tiff_header(info, file.tell()) : KN::String();
    return !header.empty() && write(file, header.data(), header.size());
}

bool tiff_write_image(KN::FileOut &file, TIFF_INFO const &info, void const *pixels)
{
    return tiff_write_header(file, info) && write(file, pixels, std::size_t(strip_size(info)));
}

bool tiff_write_buffers(KN::FileOut &file, TIFF_INFO const &info,
                        std::span<std::span<std::uint8_t const> const> buffers)
{
    std::uint64_t size = 0;
    for (std::span<std::uint8_t const> buffer : buffers)
        size += buffer.size();
    if (size != strip_size(info) || !tiff_write_header(file, info))
        return false;
    for (std::span<std::uint8_t const> buffer : buffers)
        if (!write(file, buffer.data(), buffer.size()))
            return false;
    return true;
}

}  // namespace SUPPORT
