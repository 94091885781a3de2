#include "platform/texture/dds.h"
#include "platform/texture/png.h"
#include "tests/scene/make_scene.h"

#include <gmock/gmock.h>
#include <random>
#include <stb/stb_image_write.h>
#include <zlib.h>

using namespace KESTREL;
using testing::ElementsAre;

namespace {

using BYTES = std::string;

BYTES u32(unsigned value) { return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)}; }

BYTES chunk(BYTES const &type, BYTES const &data)
{
    BYTES const checked = type + data;
    auto const *const bytes = reinterpret_cast<Bytef const *>(checked.data());
    return u32(unsigned(data.size())) + checked + u32(unsigned(crc32(0, bytes, uInt(checked.size()))));
}

// `rows`: with the numbers of their filters; `more`: chunks in front of them.
BYTES png(unsigned width, unsigned height, int depth, int form, int interlaced, BYTES const &rows,
          BYTES const &more = {})
{
    BYTES packed(compressBound(uLong(rows.size())), '\0');
    uLongf size = uLongf(packed.size());
    compress(reinterpret_cast<Bytef *>(packed.data()), &size, reinterpret_cast<Bytef const *>(rows.data()),
             uLong(rows.size()));
    packed.resize(size);
    BYTES const head = u32(width) + u32(height) + BYTES{char(depth), char(form), 0, 0, char(interlaced)};
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", head) + more + chunk("IDAT", packed) + chunk("IEND", "");
}

bool reads(BYTES const &bytes, PICTURE &picture)
{
    KN::String error;
    std::vector<char> const exact(bytes.begin(), bytes.end());  // so that the sanitizer sees one byte too many
    bool const good = read_png({exact.data(), exact.size()}, picture, error);
    EXPECT_EQ(error.empty(), good);
    return good;
}

PICTURE noise(unsigned width, unsigned height)
{
    PICTURE picture{width, height, std::vector<std::uint8_t>(std::size_t(width) * height * 4)};
    std::mt19937 random(1);
    for (std::uint8_t &byte : picture.pixels)
        byte = std::uint8_t(random());
    return picture;
}

PICTURE filled(unsigned width, unsigned height, std::vector<std::uint8_t> const &pixel)
{
    PICTURE picture{width, height, {}};
    for (unsigned i = 0; i < width * height; ++i)
        picture.pixels.insert(picture.pixels.end(), pixel.begin(), pixel.end());
    return picture;
}

BYTES dds_of(PICTURE const &picture, CONTENT content)
{
    TEST_SCENE::SCRATCH_FOLDER const scratch;
    KN::String error;
    EXPECT_TRUE(write_dds(picture, content, (scratch.folder / "x.dds").string(), error)) << error;
    return scratch.get("x.dds");
}

// The greatest difference of a byte.
int difference(PICTURE const &a, PICTURE const &b)
{
    EXPECT_EQ(a.pixels.size(), b.pixels.size());
    int most = 0;
    for (std::size_t i = 0; i < std::min(a.pixels.size(), b.pixels.size()); ++i)
        most = std::max(most, std::abs(int(a.pixels[i]) - int(b.pixels[i])));
    return most;
}

}  // namespace

TEST(Png, PicturesOfAnotherWriterComeOutTheSame)
{
    PICTURE const original = noise(13, 40);
    BYTES bytes;
    auto const append = [](void *to, void *piece, int size) {
        static_cast<BYTES *>(to)->append(static_cast<char const *>(piece), std::size_t(size));
    };
    ASSERT_NE(stbi_write_png_to_func(append, &bytes, 13, 40, 4, original.pixels.data(), 13 * 4), 0);
    PICTURE read;
    EXPECT_TRUE(reads(bytes, read));
    EXPECT_EQ(read.pixels, original.pixels);
}

TEST(Png, EveryFormAndFilterIsUnderstood)
{
    BYTES const palette = chunk("PLTE", "abcdef") + chunk("tRNS", "\x07");
    BYTES const key = chunk("tRNS", BYTES("\x01\x02\x03\x04\x05\x06", 6));
    using PIXELS = std::vector<std::uint8_t>;
    const struct {
        char const *form;
        BYTES bytes;
        PIXELS pixels;
    } cases[] = {
        {"grey, 1 bit", png(2, 1, 1, 0, 0, {0, 0x40}), {0, 0, 0, 255, 255, 255, 255, 255}},
        {"palette, 2 bits", png(2, 1, 2, 3, 0, {0, 0x10}, palette), {'a', 'b', 'c', 7, 'd', 'e', 'f', 255}},
        {"grey and alpha", png(1, 1, 8, 4, 0, {0, 9, 80}), {9, 9, 9, 80}},
        {"colour of 16 bits, and a transparent one",
         png(2, 1, 16, 2, 0, {0, 1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 7}, key),
         {1, 3, 5, 0, 1, 3, 5, 255}},
        // Each row by another filter; grey values 10 20 / 11 22 / 12 24 / 13 26 / 14 28.
        {"filters",
         png(2, 5, 8, 0, 0, {0, 10, 20, 1, 11, 11, 2, 1, 2, 3, 7, 8, 4, 1, 2}),
         {10, 10, 10, 255, 20, 20, 20, 255, 11, 11, 11, 255, 22, 22, 22, 255, 12, 12, 12, 255,
          24, 24, 24, 255, 13, 13, 13, 255, 26, 26, 26, 255, 14, 14, 14, 255, 28, 28, 28, 255}},
        // Parts 1 (one pixel), 4 (none here, as 2 and 3), 5, 6 and 7 of a picture of 2 x 2.
        {"interlaced",
         png(2, 2, 8, 0, 1, {0, 1, 0, 2, 0, 3, 4}),
         {1, 1, 1, 255, 2, 2, 2, 255, 3, 3, 3, 255, 4, 4, 4, 255}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.form);
        PICTURE picture;
        EXPECT_TRUE(reads(c.bytes, picture));
        EXPECT_EQ(picture.pixels, c.pixels);
    }
}

TEST(Png, DamagedBytesFailAndLeaveThePictureEmpty)
{
    BYTES const whole = png(3, 2, 8, 2, 0, BYTES(20, '\1').replace(10, 1, 1, '\1'));
    PICTURE picture;
    ASSERT_TRUE(reads(whole, picture));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(reads(whole.substr(0, size), picture)) << size << " bytes";
    for (std::size_t i = 16; i < whole.size() - 12; ++i) {
        BYTES changed = whole;
        changed[i] = char(changed[i] ^ 0x20);
        EXPECT_FALSE(reads(changed, picture)) << "byte " << i;
    }
    const struct {
        char const *fault;
        BYTES bytes;
    } cases[] = {
        {"no picture", png(0, 2, 8, 2, 0, "")},
        {"larger than the limit", png(16385, 1, 8, 0, 0, BYTES(16386, '\0'))},
        {"far larger than its bytes", png(16384, 16384, 16, 6, 0, BYTES(100, '\0'))},
        {"rows end too soon", png(3, 2, 8, 2, 0, BYTES(19, '\0'))},
        {"unknown filter", png(1, 1, 8, 0, 0, "\5\1")},
        {"depth that the form does not have", png(1, 1, 4, 2, 0, BYTES(4, '\0'))},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_FALSE(reads(c.bytes, picture));
        EXPECT_TRUE(picture.pixels.empty());
    }
}

TEST(Mips, ColoursAreAveragedAsLightAndByTheirAlpha)
{
    PICTURE black_and_white = filled(2, 1, {0, 0, 0, 255});
    std::fill_n(black_and_white.at(1, 0), 3, std::uint8_t(255));
    EXPECT_THAT(half_of(black_and_white, CONTENT::COLOUR).pixels, ElementsAre(188, 188, 188, 255));
    EXPECT_THAT(half_of(black_and_white, CONTENT::VALUES).pixels, ElementsAre(128, 128, 128, 255));

    PICTURE leaf = filled(2, 2, {0, 0, 0, 0});
    std::copy_n(std::initializer_list<std::uint8_t>{10, 200, 30, 255}.begin(), 4, leaf.at(1, 1));
    EXPECT_THAT(half_of(leaf, CONTENT::COLOUR).pixels, ElementsAre(10, 200, 30, 64));

    PICTURE tilted = filled(2, 1, {255, 128, 128, 255});  // along x and along z
    std::copy_n(std::initializer_list<std::uint8_t>{128, 128, 255, 255}.begin(), 4, tilted.at(1, 0));
    EXPECT_THAT(half_of(tilted, CONTENT::NORMAL).pixels,
                ElementsAre(testing::AllOf(testing::Ge(216), testing::Le(219)), 128,
                            testing::AllOf(testing::Ge(216), testing::Le(219)), 255));

    // Nothing is left out of sizes that are odd: one white pixel of three by three.
    PICTURE odd = filled(3, 3, {0, 0, 0, 255});
    std::fill_n(odd.at(2, 2), 3, std::uint8_t(90));
    EXPECT_THAT(half_of(odd, CONTENT::VALUES).pixels, ElementsAre(10, 10, 10, 255));
}

TEST(Dds, TheFormFollowsTheContentAndHoldsEveryLevel)
{
    PICTURE const opaque = filled(8, 8, {200, 100, 50, 255}), clear = filled(5, 3, {200, 100, 50, 99}),
                  direction = filled(4, 4, {204, 128, 230, 255});  // 0.6, 0, 0.8
    const struct {
        char const *name;
        PICTURE const &picture;
        CONTENT content;
        std::size_t size;  // 4 + 1 + 1 + 1, 2 + 1 + 1 and 1 + 1 + 1 blocks
    } cases[] = {{"DXT1", opaque, CONTENT::COLOUR, 128 + 7 * 8},
                 {"DXT5", clear, CONTENT::VALUES, 128 + 4 * 16},
                 {"ATI2", direction, CONTENT::NORMAL, 128 + 3 * 16}};
    for (auto const &c : cases) {
        SCOPED_TRACE(c.name);
        BYTES const file = dds_of(c.picture, c.content);
        EXPECT_EQ(file.size(), c.size);
        EXPECT_EQ(file.substr(84, 4), c.name);
        EXPECT_EQ(unsigned(file[12]), c.picture.height);
        EXPECT_EQ(unsigned(file[16]), c.picture.width);
        EXPECT_EQ(file, dds_of(c.picture, c.content));
        PICTURE read;
        KN::String error;
        EXPECT_TRUE(read_dds(file, read, error)) << error;
        EXPECT_LE(difference(read, c.picture), 5);
        for (std::size_t size = 0; size < 129; ++size)
            EXPECT_FALSE(read_dds(std::string_view(file).substr(0, size), read, error)) << size << " bytes";
    }
}
