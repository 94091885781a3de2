#include "support/image/tiff.h"

#include "foundation/file.h"
#include "support/image/tiff_tags.h"

#include <algorithm>

namespace SUPPORT {

namespace {

// Moves to `offset` if `size` bytes stand there.
template <class FILE>
bool find(FILE &file, std::uint32_t offset, std::uint64_t size)
{
    if (offset + size > file.size())
        return false;
    file.seek(offset);
    return true;
}

// The entries of the tags that are taken; the last of each, and of what is absent an entry without a type.
class DIRECTORY {
public:
    template <class FILE>
    bool read(FILE &file)
    {
        std::uint32_t header[2];
        static_assert(sizeof(header) == tiff_header_size);
        std::uint16_t count;
        if (file.read(header, sizeof(header)) != sizeof(header) || !find(file, header[1], sizeof(count)) ||
            file.read(&count, sizeof(count)) != sizeof(count) ||
            !find(file, header[1] + sizeof(count), count * sizeof(TIFF_ENTRY)))
            return false;
        KN::DynamicArray<TIFF_ENTRY> entries;
        entries.resize(count);
        file.read(entries.data, unsigned(count * sizeof(TIFF_ENTRY)));
        for (TIFF_ENTRY const &entry : entries)
            for (TIFF_ENTRY &slot : taken)
                if (slot.tag == entry.tag)
                    slot = entry;
        end = file.tell();
        return true;
    }

    TIFF_ENTRY const &entry(std::uint16_t tag) const { return *std::ranges::find(taken, tag, &TIFF_ENTRY::tag); }

    template <class VALUE>
    void get(std::uint16_t tag, VALUE &value) const
    {
        TIFF_ENTRY const &found = entry(tag);
        if (found.type != 0)
            value = VALUE(found.type == TIFF_SHORT ? found.value & 0xffff : found.value);
    }

    template <class FILE, class VALUE>
    bool get_array(FILE &file, std::uint16_t tag, KN::DynamicArray<VALUE> &values) const
    {
        TIFF_ENTRY const &found = entry(tag);
        bool const is_long = found.type == TIFF_LONG, is_short = found.type == TIFF_SHORT;
        unsigned const in_entry = is_long ? 1 : 2, size = is_long ? 4 : is_short ? 2 : 1;
        if (found.count > file.size() / size && found.count > in_entry)
            return false;
        values.resize(found.count);
        if (is_long && found.count == 1) {
            values[0] = VALUE(found.value);
        } else if (is_short && found.count <= in_entry) {
            for (unsigned i = 0; i < found.count; ++i)
                values[i] = VALUE(found.value >> 16 * i & 0xffff);
        } else if ((is_long || is_short) && found.count != 0) {
            if (!find(file, found.value, std::uint64_t(found.count) * size))
                return false;
            KN::DynamicArray<std::uint8_t> bytes;
            bytes.resize(found.count * size);
            file.read(bytes.data, bytes.count);
            for (unsigned i = 0; i < found.count; ++i) {
                std::uint32_t value = 0;
                std::memcpy(&value, &bytes[i * size], size);
                values[i] = VALUE(value);
            }
            file.seek(end);
        }
        return true;
    }

private:
    TIFF_ENTRY taken[10] = {{TIFF_WIDTH, 0, 0, 0},
                            {TIFF_HEIGHT, 0, 0, 0},
                            {TIFF_BITS_PER_SAMPLE, 0, 0, 0},
                            {TIFF_COMPRESSION, 0, 0, 0},
                            {TIFF_PHOTOMETRIC, 0, 0, 0},
                            {TIFF_STRIP_OFFSETS, 0, 0, 0},
                            {TIFF_SAMPLES_PER_PIXEL, 0, 0, 0},
                            {TIFF_ROWS_PER_STRIP, 0, 0, 0},
                            {TIFF_STRIP_BYTE_COUNTS, 0, 0, 0},
                            {TIFF_PLANAR_CONFIGURATION, 0, 0, 0}};
    std::uint32_t end = 0;
};

// What both forms take.
template <class FILE>
bool read_picture(FILE &file, DIRECTORY &directory, TIFF_INFO &info)
{
    info = {};
    if (!directory.read(file))
        return false;
    directory.get(TIFF_WIDTH, info.width);
    directory.get(TIFF_HEIGHT, info.height);
    directory.get(TIFF_COMPRESSION, info.compression);
    directory.get(TIFF_PHOTOMETRIC, info.photometric);
    return directory.get_array(file, TIFF_BITS_PER_SAMPLE, info.bits_per_sample) && info.width >= 1 &&
           info.height >= 1 && info.photometric != TIFF_INFO::no_photometric;
}

template <class FILE>
bool read_size(FILE &file, std::uint32_t &width, std::uint32_t &height)
{
    TIFF_INFO info;
    if (!tiff_read_info(file, info))
        return false;
    width = info.width;
    height = info.height;
    return true;
}

template <class FILE>
bool read_layout(FILE &file, TIFF_INFO &info)
{
    DIRECTORY directory;
    bool const has_picture = read_picture(file, directory, info);
    directory.get(TIFF_SAMPLES_PER_PIXEL, info.samples_per_pixel);
    directory.get(TIFF_ROWS_PER_STRIP, info.rows_per_strip);
    directory.get(TIFF_PLANAR_CONFIGURATION, info.planar_configuration);
    return has_picture && directory.get_array(file, TIFF_STRIP_OFFSETS, info.strip_offsets) &&
           directory.get_array(file, TIFF_STRIP_BYTE_COUNTS, info.strip_byte_counts) && !info.strip_offsets.empty() &&
           info.strip_offsets.size() == info.strip_byte_counts.size();
}

}  // namespace

bool tiff_read_info(KN::MemFileIn &file, TIFF_INFO &info) { return read_layout(file, info); }
bool tiff_read_layout(KN::FileIn &file, TIFF_INFO &info) { return read_layout(file, info); }

bool tiff_read_info(KN::FileIn &file, TIFF_INFO &info)
{
    DIRECTORY directory;
    return read_picture(file, directory, info);
}

bool tiff_read_size(KN::MemFileIn &file, std::uint32_t &width, std::uint32_t &height)
{
    return read_size(file, width, height);
}

bool tiff_read_size(KN::FileIn &file, std::uint32_t &width, std::uint32_t &height)
{
    return read_size(file, width, height);
}

bool tiff_read_strips(KN::MemFileIn &file, std::span<std::span<std::uint8_t> const> buffers)
{
    TIFF_INFO info;
    if (!tiff_read_info(file, info) || info.compression != TIFF_INFO::not_compressed)
        return false;
    std::span<std::uint8_t> room;
    for (unsigned strip = 0; strip < info.strip_offsets.size(); ++strip) {
        std::uint32_t left = info.strip_byte_counts[strip];
        if (!find(file, info.strip_offsets[strip], left))
            return false;
        while (left != 0) {
            while (room.empty()) {
                if (buffers.empty())
                    return true;
                room = buffers.front();
                buffers = buffers.subspan(1);
            }
            unsigned const moved = unsigned(std::min<std::size_t>(left, room.size()));
            file.read(room.data(), moved);
            room = room.subspan(moved);
            left -= moved;
        }
    }
    return true;
}

bool tiff_read_contiguous(KN::MemFileIn &file, std::span<std::uint8_t> destination)
{
    return tiff_read_strips(file, {&destination, 1});
}

}  // namespace SUPPORT
