// A DDS file is a header of 128 bytes and the samples; a TIFF is that of tiff.h. Both hold the last row first.

#include "support/image/height_field.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "support/image/samples16.h"
#include "support/image/tiff.h"

#include <algorithm>
#include <limits>

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

// The samples of `count` rows, downwards from the one above `end`, from where the file stands.
void read_rows(KN::MemFileIn &file, unsigned end, unsigned count, KN::DynamicArray<std::uint16_t> &buffer,
               HEIGHT_FIELD &field)
{
    buffer.resize(field.width);
    for (unsigned y = end; y-- > end - count;) {
        file.read(buffer.data, unsigned(field.width * sizeof(std::uint16_t)));
        values_of_samples(buffer.data, field.width, field.row(y));
    }
}

bool write(HEIGHT_FIELD const &field, KN::String const &path, void const *header, std::size_t header_size,
           SAMPLE_SCALE const &scale)
{
    KN::FinishedFile file(path);
    file.write(header, header_size);
    // Rows are gathered to blocks that stay in the cache.
    constexpr unsigned block = 1 << 16;
    KN::DynamicArray<std::uint16_t> samples;
    samples.resize(std::max(block, field.width));
    unsigned gathered = 0;
    for (unsigned y = field.height; y-- > 0;) {
        if (gathered + field.width > samples.count) {
            file.write(samples.data, gathered * sizeof(std::uint16_t));
            gathered = 0;
        }
        samples_of_values(field.row(y), field.width, scale, samples.data + gathered);
        gathered += field.width;
    }
    file.write(samples.data, gathered * sizeof(std::uint16_t));
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
    if (std::uint64_t(columns) * rows > (file.size() - file.tell()) / sizeof(std::uint16_t))
        return false;
    resize(columns, rows);
    KN::DynamicArray<std::uint16_t> buffer;
    read_rows(file, rows, rows, buffer, *this);
    return true;
}

bool HEIGHT_FIELD::read_tiff(KN::MemFileIn &file)
{
    TIFF_INFO info;
    if (!tiff_read_info(file, info) || info.bits_per_sample.size() != 1 || info.bits_per_sample[0] != 16 ||
        std::uint64_t(info.width) * info.height > file.size() / sizeof(std::uint16_t))
        return false;

    unsigned const row_size = unsigned(info.width * sizeof(std::uint16_t));
    auto const rows_of = [&](unsigned left) { return std::min(info.rows_per_strip, left); };
    unsigned left = info.height;
    for (std::uint32_t offset : info.strip_offsets) {
        unsigned const rows = rows_of(left);
        if (offset > unsigned(std::numeric_limits<int>::max()) || offset + std::uint64_t(rows) * row_size > file.size())
            return false;
        left -= rows;
    }
    if (left != 0)
        return false;

    resize(info.width, info.height);
    KN::DynamicArray<std::uint16_t> buffer;
    left = info.height;
    for (std::uint32_t offset : info.strip_offsets) {
        file.seek(int(offset));
        read_rows(file, left, rows_of(left), buffer, *this);
        left -= rows_of(left);
    }
    return true;
}

bool HEIGHT_FIELD::write_dds(KN::String const &path, float const *min, float const *max) const
{
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
