// A DDS file is a header of 128 bytes and the samples; a TIFF is that of tiff.h. Both hold the last row first.

#include "support/image/height_field.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "support/image/samples16.h"
#include "support/image/tiff.h"
#include "support/parallel/parallel_range.h"

#include <algorithm>
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

// samples_of(i): where row i of the file stands, which is the i-th from the field's end. In the field, which is the
// larger of the two, the rows are filled in ascending order, because that is what processors expect.
template <class SAMPLES_OF>
void read_rows(HEIGHT_FIELD &field, SAMPLES_OF const &samples_of)
{
    parallel_for(INDEX_RANGE{0, field.height, rows_a_task(field)}, [&](INDEX_RANGE const &part) {
        for (unsigned y = part.begin; y < part.end; ++y)
            values_of_samples(samples_of(field.height_minus_one - y), field.width, field.row(y));
    });
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

bool HEIGHT_FIELD::read_dds(KN::MemFileIn &file)
{
    unsigned columns, rows;
    if (!read_size(file, columns, rows))
        return false;
    std::uint64_t const count = std::uint64_t(columns) * rows;
    if (count == 0 || count > (file.size() - file.tell()) / sizeof(std::uint16_t))
        return false;
    resize(columns, rows);
    unsigned char const *const samples = file.data() + file.tell();
    read_rows(*this, [&](unsigned i) { return samples + std::size_t(i) * columns * sizeof(std::uint16_t); });
    file.seek(int(file.tell() + count * sizeof(std::uint16_t)));
    return true;
}

bool HEIGHT_FIELD::read_tiff(KN::MemFileIn &file)
{
    TIFF_INFO info;
    if (!tiff_read_info(file, info) || info.bits_per_sample.size() != 1 || info.bits_per_sample[0] != 16 ||
        std::uint64_t(info.width) * info.height > file.size() / sizeof(std::uint16_t))
        return false;

    std::size_t const row_size = info.width * sizeof(std::uint16_t);
    unsigned const rows_per_strip = std::min(info.rows_per_strip, info.height);
    if (rows_per_strip == 0 || (info.height - 1) / rows_per_strip >= info.strip_offsets.size())
        return false;
    for (unsigned strip = 0, row = 0; row < info.height; ++strip, row += rows_per_strip)
        if (info.strip_offsets[strip] + std::min(rows_per_strip, info.height - row) * row_size > file.size())
            return false;

    resize(info.width, info.height);
    read_rows(*this, [&](unsigned i) {
        return file.data() + info.strip_offsets[i / rows_per_strip] + i % rows_per_strip * row_size;
    });
    return true;
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
