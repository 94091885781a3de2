#include "foundation/file.h"
#include "foundation/image.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

namespace {

using KN::PIXEL_8888;

// Grey pixels in rows that are `pitch` bytes apart; what lies between the rows is ".".
struct GREY_PIXELS {
    std::string bytes;
    unsigned width, height;

    KN::PixelAccessorDescriptor accessor()
    {
        return {bytes.data(), width, height, unsigned(bytes.size() / height), KN::FORMAT_GREY8};
    }
};

std::string header(unsigned type, unsigned width, unsigned height, unsigned depth, unsigned descriptor)
{
    std::string bytes(18, '\0');
    bytes[2] = char(type);
    bytes[12] = char(width);
    bytes[14] = char(height);
    bytes[16] = char(depth);
    bytes[17] = char(descriptor);
    return bytes;
}

bool read(std::string const &bytes, KN::PixelAccessorDescriptor const &target)
{
    KN::MemFileIn file(bytes.data(), unsigned(bytes.size()));
    KN::TGAHeader head;
    return head.read(file) && KN::read_pixels(file, head, target);
}

// An image that lives in the test, of 2 x 1 pixels in the neutral form.
class TWO_PIXELS final : public KN::Image {
public:
    unsigned format() const override { return KN::FORMAT_A8R8G8B8; }
    unsigned width() const override { return 2; }
    unsigned height() const override { return 1; }
    void set_pixel(unsigned x, unsigned, PIXEL_8888 const &pixel) override { pixels[x] = pixel; }
    void get_pixel(PIXEL_8888 &out, unsigned x, unsigned) const override { out = pixels[x]; }
    void resize(unsigned, unsigned) override {}
    KN::PixelAccessorDescriptor accessor(unsigned, unsigned, unsigned, unsigned) override { return accessor(); }
    KN::PixelAccessorDescriptor accessor() override { return {pixels, 2, 1, 8, format()}; }
    KN::PixelAccessorDescriptor const accessor(unsigned, unsigned, unsigned, unsigned) const override
    {
        return accessor();
    }
    KN::PixelAccessorDescriptor const accessor() const override
    {
        return {const_cast<PIXEL_8888 *>(pixels), 2, 1, 8, format()};
    }

private:
    PIXEL_8888 pixels[2] = {{'b', 'g', 'r', 'a'}, {'B', 'G', 'R', 'A'}};
};

TEST(Pixels, CopyFillsWhatBothHaveAndNothingElse)
{
    GREY_PIXELS source{"abc..def..", 3, 2};
    GREY_PIXELS narrow{"--.--.--.", 2, 3};
    EXPECT_TRUE(narrow.accessor().copy(source.accessor()));
    EXPECT_EQ(narrow.bytes, "ab.de.--.");

    // More pixels than are converted at a time, and back.
    GREY_PIXELS row{std::string(1000, '\0'), 1000, 1}, back = row;
    for (unsigned i = 0; i < 1000; ++i)
        row.bytes[i] = char(i * 7);
    std::vector<PIXEL_8888> neutral(1000);
    KN::PixelAccessorDescriptor const wide{neutral.data(), 1000, 1, 4000, KN::FORMAT_A8R8G8B8};
    EXPECT_TRUE(wide.copy(row.accessor()));
    for (unsigned i = 0; i < 1000; ++i)
        ASSERT_EQ(neutral[i].red, std::uint8_t(i * 7)) << i;
    EXPECT_TRUE(back.accessor().copy(wide));
    for (unsigned i = 0; i < 1000; ++i)  // the weights of the colours add up to 254 of 255
        ASSERT_EQ(std::uint8_t(back.bytes[i]), (254 * std::uint8_t(i * 7) + 127) / 255) << i;

    KN::PixelAccessorDescriptor unknown = source.accessor();
    unknown.format = 5;
    EXPECT_FALSE(narrow.accessor().copy(unknown));
    EXPECT_FALSE(unknown.copy(source.accessor()));
    EXPECT_FALSE(narrow.accessor().resize_copy(unknown));
}

TEST(Pixels, ResizedToTheMeanOfWhatTheyCover)
{
    struct {
        char const *how;
        unsigned width, height;
        std::vector<std::uint8_t> from;
        unsigned to_width, to_height;
        std::vector<std::uint8_t> to;
    } const cases[] = {
        {"halved", 4, 2, {10, 20, 30, 40, 11, 21, 255, 255}, 2, 1, {16, 145}},
        {"three to two", 3, 1, {10, 20, 40}, 2, 1, {10, 30}},
        {"doubled", 2, 2, {1, 2, 3, 4}, 4, 4, {1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4}},
        {"wider and lower", 1, 3, {3, 6, 200}, 2, 1, {70, 70}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.how);
        std::vector<PIXEL_8888> from, to(c.to.size());
        for (std::uint8_t value : c.from)
            from.push_back({value, 1, std::uint8_t(255 - value), 7});
        KN::PixelAccessorDescriptor const source{from.data(), c.width, c.height, 4 * c.width, KN::FORMAT_A8R8G8B8};
        KN::PixelAccessorDescriptor const target{to.data(), c.to_width, c.to_height, 4 * c.to_width,
                                                 KN::FORMAT_A8R8G8B8};
        ASSERT_TRUE(target.resize_copy(source));
        for (std::size_t i = 0; i < to.size(); ++i) {
            EXPECT_EQ(to[i].blue, c.to[i]) << i;
            EXPECT_NEAR(to[i].red, 255 - c.to[i], 1) << i;
            EXPECT_EQ(to[i].green * 10 + to[i].alpha, 17) << i;
        }
        EXPECT_FALSE(target.resize_copy({from.data(), 0, 1, 0, KN::FORMAT_A8R8G8B8}));
    }
}

TEST(Tga, RowsAndColumnsInEachOrderPackedAndNot)
{
    struct {
        unsigned descriptor;
        char const *pixels;
    } const cases[] = {{0x20, "abcdef"}, {0x00, "defabc"}, {0x30, "cbafed"}, {0x10, "fedcba"}};
    for (auto const &c : cases) {
        GREY_PIXELS plain{std::string(6, '-'), 3, 2}, packed = plain;
        EXPECT_TRUE(read(header(3, 3, 2, 8, c.descriptor) + "abcdef", plain.accessor()));
        EXPECT_EQ(plain.bytes, c.pixels);
        // One packet of four pixels, which ends in the second row, and two of one each.
        EXPECT_TRUE(read(header(11, 3, 2, 8, c.descriptor) + "\3abcd" + "\x80" + "e" + std::string(1, '\0') + "f",
                         packed.accessor()));
        EXPECT_EQ(packed.bytes, c.pixels);
    }
}

TEST(Tga, WrittenInEachFormatAndReadBack)
{
    TWO_PIXELS image;
    struct {
        KN::TGAFormat format;
        std::string bytes;
    } const cases[] = {
        {KN::TGA_R8G8B8, header(2, 2, 1, 24, 0x20) + "bgrBGR"},
        {KN::TGA_A8R8G8B8, header(2, 2, 1, 32, 0x28) + "bgraBGRA"},
        {KN::TGA_GREY8, header(3, 2, 1, 8, 0x20) + "iI"},  // 28 b + 150 g + 76 r, a 255th of it
        {KN::TGA_X1R5G5B5, header(2, 2, 1, 16, 0x20) + "\x8c\x39\x08\x29"},
        {KN::TGA_A1R5G5B5, header(2, 2, 1, 16, 0x21) + "\x8c\x39\x08\x29"},
    };
    KN::String const path = testing::TempDir() + "image_test.tga";
    for (auto const &c : cases) {
        SCOPED_TRACE(c.format);
        {
            KN::FileOut file;
            ASSERT_TRUE(file.open(path, false, true));
            file.write("front", 5);
            EXPECT_TRUE(image.write_tga(file, c.format));
        }
        KN::MemFileIn file;
        ASSERT_TRUE(file.open(path, true));
        std::string bytes(file.size(), '\0');
        file.read(bytes.data(), file.size());
        EXPECT_EQ(bytes, "front" + c.bytes);

        PIXEL_8888 same[2];
        ASSERT_TRUE(read(c.bytes, {same, 2, 1, 8, KN::FORMAT_A8R8G8B8}));
        EXPECT_NEAR(same[1].green, 'G', 5);
        EXPECT_FALSE(read(c.bytes.substr(0, c.bytes.size() - 1), {same, 2, 1, 8, KN::FORMAT_A8R8G8B8}));
    }
    EXPECT_FALSE(image.write_tga(path, KN::TGAFormat(5)));
    EXPECT_FALSE(image.write_tga(path + "/none.tga", KN::TGA_R8G8B8));
    std::filesystem::remove(path.c_str());
}

}  // namespace
