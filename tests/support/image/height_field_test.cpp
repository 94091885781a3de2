#include "support/image/height_field.h"
#include "support/image/tiff.h"
#include "tests/support/image/files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace SUPPORT;

namespace {

HEIGHT_FIELD field_of(unsigned width, unsigned height, std::vector<float> const &values)
{
    HEIGHT_FIELD field(width, height);
    std::ranges::copy(values, field.values.data);
    return field;
}

HEIGHT_FIELD random_field(unsigned width, unsigned height)
{
    HEIGHT_FIELD field(width, height);
    std::mt19937 random(1);
    for (float &value : field.values)
        value = float(random()) / 4294967296.0f;
    field.values[0] = 0;
    field.values[1] = 1;
    return field;
}

// From a DDS of the one form: sides from the header, rows from the bottom.
HEIGHT_FIELD decoded_dds(std::string const &bytes)
{
    auto const at = [&](std::size_t i, unsigned size) {
        unsigned value = 0;
        for (unsigned k = 0; k < size; ++k)
            value |= unsigned(static_cast<unsigned char>(bytes.at(i + k))) << 8 * k;
        return value;
    };
    HEIGHT_FIELD field(at(16, 4), at(12, 4));
    for (unsigned y = 0; y < field.height; ++y)
        for (unsigned x = 0; x < field.width; ++x)
            field.row(field.height - 1 - y)[x] = float(at(128 + 2 * (y * field.width + x), 2));
    return field;
}

constexpr float zero = 0, one = 1;

}  // namespace

TEST(HeightField, DdsByteForByte)
{
    HEIGHT_FIELD const field = field_of(3, 2, {0, 0.5f, 1, -2, NAN, 3});
    FOLDER const folder;
    ASSERT_TRUE(field.write_dds(folder.at("a.dds"), &zero, &one));
    std::string header(128, '\0');
    for (auto const &[at, value] : {std::pair<unsigned, unsigned>{4, 124},
                                    {8, 4103},
                                    {12, 2},
                                    {16, 3},
                                    {76, 32},
                                    {80, 0x20000},
                                    {88, 16},
                                    {92, 65535},
                                    {108, 4096}})
        header.replace(at, 4, u32(value));
    header.replace(0, 4, "DDS ");
    EXPECT_EQ(folder.bytes("a.dds"), header + u16(0) + u16(0) + u16(65535) + u16(0) + u16(32768) + u16(65535));
    ASSERT_TRUE(HEIGHT_FIELD().write_dds(folder.at("empty.dds"), nullptr, nullptr));
    EXPECT_EQ(folder.bytes("empty.dds"), header.replace(12, 8, std::string(8, '\0')));
    EXPECT_FALSE(field.write_dds(folder.at("no/a.dds"), &zero, &one));
    EXPECT_FALSE(field.write_tiff(folder.at("no/a.tif"), &zero, &one));
    HEIGHT_FIELD huge;  // 4 GiB, of which nothing may be looked at
    huge.width = huge.height = 46341;
    EXPECT_FALSE(huge.write_dds(folder.at("huge"), &zero, &one) || huge.write_tiff(folder.at("huge"), &zero, &one));
}

// The formula for each value by itself, against rows whose length is no multiple of what runs abreast.
TEST(HeightField, SamplesOfARange)
{
    struct {
        char const *range;
        float const min, max;
        bool given;
    } const cases[] = {{"given", 0.25f, 0.75f, true},
                       {"turned round", 1, 0, true},
                       {"too narrow", 0.5f, 0.50005f, true},
                       {"its own", 0, 1, false}};
    HEIGHT_FIELD const field = random_field(777, 1500);  // more than is written at once
    FOLDER const folder;
    for (auto const &c : cases) {
        SCOPED_TRACE(c.range);
        ASSERT_TRUE(field.write_dds(folder.at("a.dds"), c.given ? &c.min : nullptr, &c.max));
        ASSERT_TRUE(field.write_tiff(folder.at("a.tif"), &c.min, c.given ? &c.max : nullptr));
        HEIGHT_FIELD const dds = decoded_dds(folder.bytes("a.dds"));
        std::string const tiff = folder.bytes("a.tif");
        ASSERT_EQ(tiff.size(), 134u + 2 * 777 * 1500);
        float const range = c.max - c.min, scale = std::fabs(range) > 0.0001f ? 1 / range : 1;
        for (unsigned y = 0; y < 1500; ++y)
            for (unsigned x = 0; x < 777; ++x) {
                float const v = std::clamp((field.row(y)[x] - c.min) * scale, 0.0f, 1.0f);
                ASSERT_EQ(dds.row(y)[x], std::floor(v * 65535 + 0.5f)) << x << ' ' << y;
                ASSERT_EQ(tiff.substr(134 + 2 * ((1499 - y) * 777 + x), 2), u16(unsigned(v * 65535))) << x << ' ' << y;
            }
    }
    HEIGHT_FIELD const flat = field_of(2, 1, {3, 3});
    ASSERT_TRUE(flat.write_dds(folder.at("flat.dds"), nullptr, nullptr));
    EXPECT_EQ(folder.bytes("flat.dds").substr(128), std::string(4, '\0'));
}

TEST(HeightField, FilesComeBackAndThoseThatAreCutDoNot)
{
    HEIGHT_FIELD const field = random_field(5, 3);
    FOLDER const folder;
    ASSERT_TRUE(field.write_dds(folder.at("a.dds"), &zero, &one) && field.write_tiff(folder.at("a.tif"), &zero, &one));
    for (bool dds : {true, false}) {
        std::string const whole = folder.bytes(dds ? "a.dds" : "a.tif");
        for (std::size_t size = 0; size <= whole.size(); ++size) {
            BYTES_FILE source(whole.substr(0, size));
            std::ofstream(folder.path / "cut", std::ios::binary) << whole.substr(0, size);
            KN::FileIn on_disk;
            ASSERT_TRUE(on_disk.open(folder.at("cut"), true));
            HEIGHT_FIELD read = field_of(1, 1, {7}), same = read;
            ASSERT_EQ(dds ? read.read_dds(source.file) : read.read_tiff(source.file), size == whole.size()) << size;
            ASSERT_EQ(dds ? same.read_dds(on_disk) : same.read_tiff(on_disk), size == whole.size()) << size;
            ASSERT_TRUE(same.width == read.width && std::ranges::equal(same.values, read.values)) << size;
            if (size < whole.size()) {
                ASSERT_TRUE(read.width == 1 && read.values[0] == 7) << size;
                continue;
            }
            ASSERT_EQ(read.width * 10 + read.height, 53u);
            EXPECT_EQ(read.width_minus_one * 10 + read.height_minus_one, 42u);
            for (unsigned i = 0; i < 15; ++i) {
                float const sample = std::floor(field.values[i] * 65535 + (dds ? 0.5f : 0));
                EXPECT_EQ(read.values[i], sample * 1.5259022e-5f) << i;
            }
        }
    }
    // More than there is, and nothing at all, which would have two billion rows when halved.
    for (std::string const &sides : {u32(0xffffffff) + u32(0xffffffff), u32(0xffffffff) + u32(0)}) {
        BYTES_FILE source(folder.bytes("a.dds").replace(12, 8, sides));
        HEIGHT_FIELD read;
        EXPECT_FALSE(read.read_dds(source.file));
        source.file.seek(0);
        unsigned width = 7, height = 7;
        EXPECT_TRUE(HEIGHT_FIELD::read_dds_size(source.file, width, height));
        EXPECT_EQ(u32(height) + u32(width), sides);
    }
}

// The same pictures in the hands of others' tools: sides and samples as they see them, and their strips.
TEST(HeightField, TiffOfOthers)
{
    HEIGHT_FIELD const field = random_field(37, 23);
    FOLDER const folder;
    ASSERT_TRUE(field.write_tiff(folder.at("a.tif"), nullptr, nullptr));
    ASSERT_TRUE(folder.run("tiffinfo -D a.tif"));
    std::string const report = folder.bytes("output");
    EXPECT_NE(report.find("Image Width: 37 Image Length: 23"), report.npos) << report;
    EXPECT_NE(report.find("Bits/Sample: 16"), report.npos);
    EXPECT_EQ(report.find("arning"), report.npos) << report;

    ASSERT_TRUE(folder.run("tiff2rgba -c none a.tif rgba.tif"));
    KN::MemFileIn rgba;
    std::vector<std::uint8_t> pixels(4 * 37 * 23);
    ASSERT_TRUE(rgba.open(folder.at("rgba.tif"), true) && tiff_read_contiguous(rgba, pixels));
    for (unsigned y = 0; y < 23; ++y)
        for (unsigned x = 0; x < 37; ++x)
            ASSERT_NEAR(pixels[4 * ((22 - y) * 37 + x)], field.row(y)[x] * 255, 1) << x << ' ' << y;

    ASSERT_TRUE(folder.run("tiffcp -c none -r 5 a.tif strips.tif && tiffcp -c lzw a.tif lzw.tif"));
    KN::MemFileIn strips, packed;
    HEIGHT_FIELD read;
    TIFF_INFO info;
    ASSERT_TRUE(strips.open(folder.at("strips.tif"), true) && packed.open(folder.at("lzw.tif"), true));
    ASSERT_TRUE(tiff_read_info(strips, info));
    strips.seek(0);
    ASSERT_TRUE(read.read_tiff(strips));
    EXPECT_EQ(info.strip_offsets.size(), 5u);
    for (unsigned i = 0; i < 37 * 23; ++i)
        ASSERT_EQ(read.values[i], std::floor(field.values[i] * 65535) * 1.5259022e-5f) << i;
    EXPECT_FALSE(tiff_read_contiguous(packed, pixels));
    rgba.seek(0);
    EXPECT_FALSE(read.read_tiff(rgba));  // four samples of 8 bits
}

// More than stays near the cores, in strips of others and with rows that are longer than what is fetched at once.
TEST(HeightField, LargeFilesComeBackFromMemoryAndDisk)
{
    FOLDER const folder;
    for (auto const &[width, height] : {std::pair(70001u, 19u), std::pair(1201u, 1103u)}) {
        HEIGHT_FIELD const field = random_field(width, height);
        ASSERT_TRUE(field.write_tiff(folder.at("a.tif"), &zero, &one) &&
                    field.write_dds(folder.at("a.dds"), &zero, &one));
        ASSERT_TRUE(folder.run("tiffcp -c none -r 7 a.tif strips.tif"));
        for (char const *const name : {"a.tif", "strips.tif", "a.dds"}) {
            SCOPED_TRACE(std::string(name) + " of " + std::to_string(width));
            bool const dds = name == std::string_view("a.dds");
            KN::MemFileIn held;
            KN::FileIn on_disk;
            HEIGHT_FIELD read, same;
            ASSERT_TRUE(held.open(folder.at(name), true) && on_disk.open(folder.at(name), true));
            ASSERT_TRUE(dds ? read.read_dds(held) && same.read_dds(on_disk)
                            : read.read_tiff(held) && same.read_tiff(on_disk));
            ASSERT_EQ(std::pair(read.width, read.height), std::pair(width, height));
            for (unsigned i = 0; i < field.values.size(); ++i)
                ASSERT_EQ(read.values[i], std::floor(field.values[i] * 65535 + (dds ? 0.5f : 0)) * 1.5259022e-5f) << i;
            EXPECT_TRUE(std::ranges::equal(same.values, read.values));
        }
    }
}

// A file with a hole, of which the disk holds only both ends.
TEST(HeightField, SamplesBehindTwoGigabytes)
{
    FOLDER const folder;
    constexpr std::uint32_t far = 0xa0000000u;
    HEIGHT_FIELD const field = field_of(2, 2, {0, 0.25f, 0.5f, 1});
    ASSERT_TRUE(field.write_tiff(folder.at("a.tif"), &zero, &one));
    std::string bytes = folder.bytes("a.tif");
    std::string const samples = bytes.substr(bytes.size() - 8);
    bytes.replace(bytes.find(u16(273) + u16(4)) + 8, 4, u32(far));
    std::ofstream(folder.path / "a.tif", std::ios::binary).write(bytes.data(), std::streamsize(bytes.size())).seekp(far)
        << samples;
    KN::FileIn file;
    HEIGHT_FIELD read;
    ASSERT_TRUE(file.open(folder.at("a.tif"), true) && file.size() == far + 8 && read.read_tiff(file));
    for (unsigned i = 0; i < 4; ++i)
        EXPECT_NEAR(read.values[i], field.values[i], 1.6e-5f) << i;
    file.seek(far + 6);
    EXPECT_EQ(file.tell(), far + 6);
}

TEST(HeightField, HalfSize)
{
    HEIGHT_FIELD field = field_of(4, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), half;
    field.scale_x = 3;
    field.scale_y = 5;
    field.half_size(half);
    ASSERT_EQ(half.width * 10 + half.height, 32u);
    EXPECT_EQ(half.scale_x * 10 + half.scale_y, 35.0f);
    float const expected[] = {3.5f, 5, 6, 7.5f, 9, 10};
    for (unsigned i = 0; i < 6; ++i)
        EXPECT_EQ(half.values[i], expected[i]) << i;
    HEIGHT_FIELD().half_size(half);
    EXPECT_EQ(half.values[0], 0.0f);
}

TEST(HeightField, GreyPictures)
{
    FOLDER const folder;
    HEIGHT_FIELD const field = field_of(6, 1, {1.25f, -0.25f, 0.2f, 129, 1e30f, NAN});
    ASSERT_TRUE(field.write_tga_grey(folder.at("a.tga"), 2));
    std::string const bytes = folder.bytes("a.tga");
    ASSERT_EQ(bytes.size(), 18u + 24);
    std::uint8_t const grey[] = {3, 255, 0, 2, 0, 0};  // halves away from 0; the lower 8 bits; what no int can hold
    for (unsigned i = 0; i < 6; ++i)
        EXPECT_EQ(bytes.substr(18 + 4 * i, 4), std::string(3, char(grey[i])) + '\xff') << i;
    std::uint8_t const mask[] = {0, 1, 255, 128};
    ASSERT_TRUE(write_tga_grey(folder.at("m.tga"), mask, 2, 2));
    EXPECT_EQ(folder.bytes("m.tga").substr(18),
              std::string("\0\0\0\xff\xff\xff\xff\xff\1\1\1\xff\x80\x80\x80\xff", 16));
}
