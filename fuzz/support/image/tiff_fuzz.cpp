// The directory, a height field and the strips of the bytes of a TIFF file. Seeds: small TIFF files of any making, not
// compressed.
#include "require.h"
#include "support/image/tiff.h"

#include <algorithm>
#include <vector>

using namespace SUPPORT;

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    KN::MemFileIn file(bytes, unsigned(size));
    TIFF_INFO info;
    bool const is_known = tiff_read_info(file, info);
    require(!is_known || (info.width >= 1 && info.height >= 1 && !info.strip_offsets.empty() &&
                          info.strip_offsets.size() == info.strip_byte_counts.size()),
            "what is accepted has a picture");
    require(info.bits_per_sample.size() <= size && info.strip_offsets.size() <= size, "arrays were in the file");

    HEIGHT_FIELD field;
    file.seek(0);
    bool const is_field = field.read_tiff(file);
    require_same_from_disk(bytes, size, &HEIGHT_FIELD::read_tiff, is_field, field);
    if (is_field) {
        require(is_known && field.width == info.width && field.height == info.height, "a field has a directory");
        walk(field, size);
    }

    // All strips at once, and by way of small buffers.
    std::vector<std::uint8_t> whole(200, 0xee), parts = whole;
    std::vector<std::span<std::uint8_t>> buffers;
    for (std::size_t at = 0, next = 0; at < parts.size(); at = next) {
        next = std::min(at + at % 11 + buffers.size() % 2, parts.size());  // empty ones too
        buffers.push_back(std::span(parts).subspan(at, next - at));
    }
    file.seek(0);
    bool const read_whole = tiff_read_contiguous(file, whole);
    file.seek(0);
    require(tiff_read_strips(file, buffers) == read_whole && is_known >= read_whole, "buffers make no difference");
    require(whole == parts, "nor to the bytes");
    return 0;
}
