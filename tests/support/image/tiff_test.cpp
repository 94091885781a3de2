#include "support/image/tiff.h"
#include "tests/support/image/files.h"

#include <gtest/gtest.h>

#include <vector>

using namespace SUPPORT;

namespace {

constexpr unsigned short_type = 3, long_type = 4;

std::string entry(unsigned tag, unsigned type, unsigned count, unsigned value)
{
    return u16(tag) + u16(type) + u32(count) + u32(value);
}

// 4 x 2 pixels of 8 bits in two strips: "abcdefgh" from byte 8 on in strips of 5 and 3 bytes; behind the pixels arrays
// of SHORT { 5, 3, 1 } (at 16) and LONG { 8, 13 } (at 24); the directory stands at 32.
struct MADE_TIFF {
    std::vector<std::string> entries = {entry(256, short_type, 1, 0xdead0004),  entry(257, long_type, 1, 2),
                                        entry(258, short_type, 1, 8),           entry(259, short_type, 1, 1),
                                        entry(262, short_type, 1, 1),           entry(273, long_type, 2, 24),
                                        entry(277, short_type, 1, 1),           entry(278, short_type, 1, 1),
                                        entry(279, short_type, 2, 5 | 3 << 16), entry(284, short_type, 1, 1),
                                        entry(305, 2, 0xffffffff, 0xffffffff)};

    std::string bytes() const
    {
        std::string all = "II" + u16(42) + u32(32) + "abcdefgh" + u16(5) + u16(3) + u16(1) + u16(0) + u32(8) + u32(13) +
                          u16(unsigned(entries.size()));
        for (std::string const &one : entries)
            all += one;
        return all;
    }
    MADE_TIFF with(unsigned number, std::string const &other) const
    {
        MADE_TIFF changed = *this;
        changed.entries[number] = other;
        return changed;
    }
};

template <class VALUES>
std::vector<unsigned> list(VALUES const &values)
{
    return {values.begin(), values.end()};
}

bool strips_into(std::string const &bytes, std::vector<std::string> &buffers)
{
    std::vector<std::span<std::uint8_t>> spans;
    for (std::string &buffer : buffers)
        spans.push_back({reinterpret_cast<std::uint8_t *>(buffer.data()), buffer.size()});
    BYTES_FILE source(bytes);
    return tiff_read_strips(source.file, spans);
}

}  // namespace

TEST(Tiff, HeaderBehindOtherBytes)
{
    TIFF_INFO info;
    info.width = 3;
    info.height = 2;
    info.photometric = 1;
    info.bits_per_sample.append(std::uint16_t(16));
    std::string const header = "II" + u16(42) + u32(13) + u16(10) + entry(256, 4, 1, 3) + entry(257, 4, 1, 2) +
                               entry(258, 3, 1, 16) + entry(259, 3, 1, 1) + entry(262, 3, 1, 1) +
                               entry(273, 4, 1, 5 + 8 + 2 + 120 + 4) + entry(277, 3, 1, 1) + entry(278, 4, 1, 2) +
                               entry(279, 4, 1, 12) + entry(284, 3, 1, 1) + u32(0);
    FOLDER const folder;
    std::string const pixels = "abcdefghijkl";
    auto const span = [&](std::size_t at, std::size_t size) {
        return std::span(reinterpret_cast<std::uint8_t const *>(pixels.data()) + at, size);
    };
    {
        KN::FileOut image, buffers, other;
        EXPECT_FALSE(tiff_write_header(other, info));
        ASSERT_TRUE(image.open(folder.at("image"), false, true) && buffers.open(folder.at("buffers"), false, true));
        image.write("front", 5);
        buffers.write("front", 5);
        EXPECT_TRUE(tiff_write_image(image, info, pixels.data()));
        std::span<std::uint8_t const> const parts[] = {span(0, 5), span(5, 0), span(5, 7)}, few[] = {span(0, 11)};
        EXPECT_FALSE(tiff_write_buffers(buffers, info, few));
        EXPECT_TRUE(tiff_write_buffers(buffers, info, parts));
        info.bits_per_sample.append(std::uint16_t(16));
        EXPECT_FALSE(tiff_write_header(image, info));
    }
    EXPECT_EQ(folder.bytes("image"), "front" + header + pixels);
    EXPECT_EQ(folder.bytes("buffers"), "front" + header + pixels);
}

TEST(Tiff, DirectoryInEachFormOfItsValues)
{
    MADE_TIFF const made;
    struct {
        char const *form;
        MADE_TIFF file;
        std::vector<unsigned> offsets, counts, bits;
    } const cases[] = {
        {"as made", made, {8, 13}, {5, 3}, {8}},
        {"three shorts outside",
         made.with(8, entry(279, short_type, 3, 16)).with(5, entry(273, short_type, 3, 16)),
         {5, 3, 1},
         {5, 3, 1},
         {8}},
        {"one long inside",
         made.with(5, entry(273, 4, 1, 70000)).with(8, entry(279, 3, 1, 0x30005)),
         {70000},
         {5},
         {8}},
        {"longs for bits", made.with(2, entry(258, 4, 2, 24)), {8, 13}, {5, 3}, {8, 13}},
        {"another type", made.with(2, entry(258, 1, 3, 9)), {8, 13}, {5, 3}, {0, 0, 0}},
        {"the last of two", made.with(10, entry(258, 3, 2, 0x20001)), {8, 13}, {5, 3}, {1, 2}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.form);
        BYTES_FILE source(c.file.bytes());
        TIFF_INFO info;
        ASSERT_TRUE(tiff_read_info(source.file, info));
        EXPECT_EQ(info.width * 10 + info.height, 42u);
        EXPECT_EQ(info.rows_per_strip, 1u);
        EXPECT_EQ(list(info.strip_offsets), c.offsets);
        EXPECT_EQ(list(info.strip_byte_counts), c.counts);
        EXPECT_EQ(list(info.bits_per_sample), c.bits);
    }
    // Without a word on rows.
    BYTES_FILE source(made.with(7, entry(305, 2, 1, 0)).bytes());
    TIFF_INFO info;
    EXPECT_TRUE(tiff_read_info(source.file, info));
    EXPECT_EQ(info.rows_per_strip, 0xffffffff);
}

TEST(Tiff, FaultyDirectoriesFail)
{
    MADE_TIFF const made;
    struct {
        char const *fault;
        MADE_TIFF file;
        bool has_size;
    } const cases[] = {
        {"no width", made.with(0, entry(256, 3, 1, 0)), false},
        {"no height", made.with(1, entry(305, 3, 1, 1)), false},
        {"no photometric", made.with(4, entry(305, 3, 1, 1)), false},
        {"no strips", made.with(5, entry(273, 4, 0, 0)).with(8, entry(279, 4, 0, 0)), true},
        {"more offsets than counts", made.with(8, entry(279, 4, 1, 8)), true},
        {"an array behind the end", made.with(5, entry(273, 4, 2, 200)), true},
        {"an array that wraps", made.with(5, entry(273, 4, 2, 0xfffffff8)), true},
        {"a count beyond the file", made.with(5, entry(273, 4, 0x40000001, 8)), true},
        {"a count without values", made.with(2, entry(258, 7, 0xffffffff, 8)), false},
    };
    FOLDER const folder;
    for (auto const &c : cases) {
        SCOPED_TRACE(c.fault);
        BYTES_FILE source(c.file.bytes());
        TIFF_INFO info;
        EXPECT_FALSE(tiff_read_info(source.file, info));
        std::ofstream(folder.at("a.tif"), std::ios::binary) << c.file.bytes();
        KN::FileIn file;
        ASSERT_TRUE(file.open(folder.at("a.tif"), true));
        unsigned width = 7, height = 7;
        EXPECT_EQ(tiff_read_size(file, width, height), c.has_size);
        EXPECT_EQ(width * 10 + height, c.has_size ? 42u : 77u);
    }
    std::string const whole = made.bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        BYTES_FILE source(whole.substr(0, size));
        TIFF_INFO info;
        EXPECT_FALSE(tiff_read_info(source.file, info)) << size;
    }
}

TEST(Tiff, StripsIntoBuffers)
{
    MADE_TIFF const made;
    struct {
        std::vector<std::string> before, after;
    } const cases[] = {
        {{"........"}, {"abcdefgh"}},
        {{"...", "", "....", "..."}, {"abc", "", "defg", "h.."}},
        {{".", "....."}, {"a", "bcdef"}},  // no room for all
        {{}, {}},
    };
    for (auto const &c : cases) {
        std::vector<std::string> buffers = c.before;
        EXPECT_TRUE(strips_into(made.bytes(), buffers));
        EXPECT_EQ(buffers, c.after);
    }
    std::vector<std::string> room(1, std::string(20, '.'));
    EXPECT_FALSE(strips_into(made.with(3, entry(259, 3, 1, 5)).bytes(), room));  // compressed
    EXPECT_FALSE(strips_into(made.with(5, entry(273, 4, 1, 1)).with(8, entry(279, 4, 1, 400)).bytes(), room));
    EXPECT_FALSE(strips_into(made.with(5, entry(273, 4, 1, 0xfffffff0)).with(8, entry(279, 4, 1, 32)).bytes(), room));
    EXPECT_EQ(room[0], std::string(20, '.'));
    BYTES_FILE source(made.bytes());
    std::uint8_t all[8];
    EXPECT_TRUE(tiff_read_contiguous(source.file, all));
    EXPECT_EQ(std::string(all, all + 8), "abcdefgh");
}
