// A DDS file is a header of 128 bytes and the samples; a TIFF is that of tiff.h. Both hold the last row first.

#include "support/image/height_field.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "support/image/samples16.h"
#include "support/image/tiff.h"
#include "support/parallel/parallel_range.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace SUPPORT {

namespace {

struct DDS_HEADER {
    char mark[4] = {'D', 'D', 'S', ' '};
    std::uint32_t size = 124;
    std::uint32_t flags = 4103;  // sides and form are told
    std::uint32_t height = 0, width = 0;
    std::uint32_t unused[14] = {};
    std::uint32_t form_size = 32;
    std::uint32_t form_flags = 0x20000;  // brightness
    std::uint32_t name = 0;
    std::uint32_t bits = 16;
    std::uint32_t mask = 65535;
    std::uint32_t unused_masks[3] = {};
    std::uint32_t caps = 4096;  // a texture
    std::uint32_t unused_too[4] = {};
};
static_assert(sizeof(DDS_HEADER) == 128);

template <class FILE>
bool read_size(FILE &file, unsigned &width, unsigned &height)
{
    DDS_HEADER header;
    if (file.read(&header, sizeof(header)) != sizeof(header))
        return false;
    width = header.width;
    height = header.height;
    return true;
}

// Rows that are worth a task.
unsigned rows_a_task(HEIGHT_FIELD const &field) { return std::max((1u << 16) / std::max(field.width, 1u), 1u); }

// A file is taken in pieces of this size, so that what was fetched from the disk is still near when it becomes values.
constexpr unsigned piece_size = 1 << 16;

// The `size` bytes at `place`, fetched into `room` unless they are held; null if they cannot be had.
unsigned char const *bytes_at(KN::MemFileIn const &file, unsigned place, unsigned, unsigned char *)
{
    return file.data() + place;
}

unsigned char const *bytes_at(KN::FileIn const &file, unsigned place, unsigned size, unsigned char *room)
{
    return file.read_at(place, room, size) == size ? room : nullptr;
}

// Where the samples lie in a file: strips of equally many rows, the last of them shorter.
struct STRIPS {
    std::uint32_t const *places;
    unsigned rows_per_strip;
};

// All of one task's rows, in ascending order in the field, because that is what processors expect. The file's row i is
// the field's i-th from the end.
template <class FILE>
bool read_rows(HEIGHT_FIELD &field, INDEX_RANGE const &part, FILE const &file, STRIPS const &strips)
{
    constexpr unsigned sample_size = sizeof(std::uint16_t);
    constexpr std::size_t cached_size = 4 << 20;  // what may be near the cores when the caller goes on
    bool const past_caches = field.values.size() > cached_size / sizeof(float);
    unsigned const columns = std::min(field.width, piece_size / sample_size), rows = piece_size / sample_size / columns;
    alignas(16) unsigned char room[piece_size];
    for (unsigned y = part.begin; y < part.end;) {
        unsigned const last = field.height_minus_one - y, in_strip = last % strips.rows_per_strip;
        unsigned const count = std::min({rows, part.end - y, in_strip + 1});
        for (unsigned x = 0; x < field.width; x += columns) {
            std::uint64_t const before = std::uint64_t(in_strip + 1 - count) * field.width + x;
            unsigned const length = std::min(columns, field.width - x);
            unsigned char const *const samples =
                bytes_at(file, unsigned(strips.places[last / strips.rows_per_strip] + before * sample_size),
                         ((count - 1) * field.width + length) * sample_size, room);
            if (samples == nullptr)
                return false;
            for (unsigned row = 0; row < count; ++row)
                values_of_samples(samples + std::size_t(count - 1 - row) * field.width * sample_size, length,
                                  field.row(y + row) + x, past_caches);
        }
        y += count;
    }
    return true;
}

template <class FILE>
bool read_all(HEIGHT_FIELD &field, FILE const &file, STRIPS const &strips)
{
    std::atomic<bool> whole = true;
    parallel_for(INDEX_RANGE{0, field.height, rows_a_task(field)}, [&](INDEX_RANGE const &part) {
        if (!read_rows(field, part, file, strips))
            whole = false;
    });
    return whole;
}

template <class FILE>
bool read_dds_file(HEIGHT_FIELD &field, FILE &file)
{
    unsigned columns, rows;
    if (!read_size(file, columns, rows))
        return false;
    std::uint64_t const count = std::uint64_t(columns) * rows;
    std::uint32_t const begin = file.tell();
    if (count == 0 || count > (file.size() - begin) / sizeof(std::uint16_t))
        return false;
    field.resize(columns, rows);
    file.seek(std::int64_t(begin + count * sizeof(std::uint16_t)));
    return read_all(field, file, {&begin, rows});
}

template <class FILE>
bool read_tiff_strips(HEIGHT_FIELD &field, FILE const &file, TIFF_INFO const &info)
{
    if (info.bits_per_sample.size() != 1 || info.bits_per_sample[0] != 16 ||
        std::uint64_t(info.width) * info.height > file.size() / sizeof(std::uint16_t))
        return false;

    std::size_t const row_size = info.width * sizeof(std::uint16_t);
    unsigned const rows_per_strip = std::min(info.rows_per_strip, info.height);
    if (rows_per_strip == 0 || (info.height - 1) / rows_per_strip >= info.strip_offsets.size())
        return false;
    for (unsigned strip = 0, row = 0; row < info.height; ++strip, row += rows_per_strip)
        if (info.strip_offsets[strip] + std::min(rows_per_strip, info.height - row) * row_size > file.size())
            return false;

    field.resize(info.width, info.height);
    return read_all(field, file, {info.strip_offsets.data, rows_per_strip});
}

bool write(HEIGHT_FIELD const &field, KN::String const &path, void const *header, std::size_t header_size,
           SAMPLE_SCALE const &scale)
{
    // Files are written in large blocks that lie at multiples of their size, for which the system has the least to do.
    constexpr std::size_t block = (1 << 20) / sizeof(std::uint16_t);
    std::size_t gathered = header_size / sizeof(std::uint16_t);
    std::uint64_t const whole = gathered + std::uint64_t(field.width) * field.height;
    unsigned const rows_at_once = field.width == 0 ? field.height : unsigned(block / field.width + 1);
    KN::DynamicArray<std::uint16_t> samples;  // room for a block that is not full, and the rows that fill it
    samples.reserve(unsigned(std::min<std::uint64_t>(block + std::uint64_t(rows_at_once) * field.width, whole)));
    std::memcpy(samples.data, header, header_size);

    KN::FinishedFile file(path);
    file.expect(whole * sizeof(std::uint16_t));
    unsigned end = field.height;
    do {
        unsigned const count = std::min(rows_at_once, end), first = end - count;
        parallel_for(INDEX_RANGE{first, end, rows_a_task(field)}, [&](INDEX_RANGE const &part) {
            for (unsigned y = part.begin; y < part.end; ++y)
                samples_of_values(field.row(y), field.width, scale,
                                  samples.data + gathered + std::size_t(end - 1 - y) * field.width);
        });
        gathered += std::size_t(count) * field.width;
        end = first;
        std::size_t const full = end == 0 ? gathered : gathered / block * block;
        file.write(samples.data, full * sizeof(std::uint16_t));
        gathered -= full;
        std::memmove(samples.data, samples.data + full, gathered * sizeof(std::uint16_t));
    } while (end > 0);
    return file.commit();
}

SAMPLE_SCALE scale_of(HEIGHT_FIELD const &field, float const *min, float const *max, float added)
{
    if (min != nullptr && max != nullptr)
        return {*min, *max, added};
    float least, greatest;
    field.min_max(least, greatest);
    return {least, greatest, added};
}

}  // namespace

bool HEIGHT_FIELD::read_dds_size(KN::FileIn &file, unsigned &width, unsigned &height)
{
    return read_size(file, width, height);
}

bool HEIGHT_FIELD::read_dds_size(KN::MemFileIn &file, unsigned &width, unsigned &height)
{
    return read_size(file, width, height);
}

bool HEIGHT_FIELD::read_dds(KN::FileIn &file) { return read_dds_file(*this, file); }
bool HEIGHT_FIELD::read_dds(KN::MemFileIn &file) { return read_dds_file(*this, file); }

bool HEIGHT_FIELD::read_tiff(KN::FileIn &file)
{
    TIFF_INFO info;
    return tiff_read_layout(file, info) && read_tiff_strips(*this, file, info);
}

bool HEIGHT_FIELD::read_tiff(KN::MemFileIn &file)
{
    TIFF_INFO info;
    return tiff_read_info(file, info) && read_tiff_strips(*this, file, info);
}

bool HEIGHT_FIELD::write_dds(KN::String const &path, float const *min, float const *max) const
{
    if (std::uint64_t(width) * height > (0xffffffff - sizeof(DDS_HEADER)) / sizeof(std::uint16_t))
        return false;
    DDS_HEADER header;
    header.height = height;
    header.width = width;
    return write(*this, path, &header, sizeof(header), scale_of(*this, min, max, SAMPLE_SCALE::rounding));
}

bool HEIGHT_FIELD::write_tiff(KN::String const &path, float const *min, float const *max) const
{
    TIFF_INFO info;
    info.width = width;
    info.height = height;
    info.photometric = TIFF_INFO::black_is_zero;
    info.bits_per_sample.append(std::uint16_t(16));
    KN::String const header = tiff_header(info, 0);
    return !header.empty() &&
           write(*this, path, header.data(), header.size(), scale_of(*this, min, max, SAMPLE_SCALE::truncating));
}

}  // namespace SUPPORT
