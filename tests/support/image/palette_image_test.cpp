#include "support/image/palette_image.h"
#include "tests/support/image/files.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace SUPPORT;

namespace {

// Up to the pixels: a text of three bytes, two colours, 3 x 2 pixels.
std::string head(char palette_depth)
{
    return std::string("\3\1\1\0\0\2\0", 7) + palette_depth + std::string("\0\0\0\0\3\0\2\0\10\10", 10) + "txt";
}

}  // namespace

TEST(PaletteImage, WrittenByteForByte)
{
    PALETTE_IMAGE image(3, 2, 3);
    EXPECT_EQ(image.palette[2], 0xffffffff);
    image.palette[0] = 0x80563412;
    image.palette[1] = 0x000000ff;
    for (unsigned i = 1; i < 6; ++i)
        image.pixels[i] = std::uint8_t(i % 3);
    FOLDER const folder;
    ASSERT_TRUE(image.write(folder.path.string() + "\\a.tga"));  // as a path of another system
    EXPECT_EQ(folder.bytes("a.tga"), std::string("\0\1\1\0\0\3\0\x18\0\0\0\0\3\0\2\0\10\10", 18) +
                                         std::string("\x12\x34\x56\xff\0\0\xff\xff\xff", 9) +
                                         std::string("\0\1\2\0\1\2", 6));
    PALETTE_IMAGE const again(folder.at("a.tga"));
    EXPECT_TRUE(std::ranges::equal(again.pixels, image.pixels) && again.palette[0] == 0xff563412);
    EXPECT_TRUE(PALETTE_IMAGE(folder.at("none.tga")).palette.empty());
    EXPECT_FALSE(image.write(folder.at("no/a.tga")));
    image.width = 65536;
    EXPECT_FALSE(image.write(folder.at("b.tga")));
}

TEST(PaletteImage, ReadWithEachPaletteAndRefusedWhenCut)
{
    struct {
        char depth;
        std::string palette;
        std::vector<std::uint32_t> colours;
    } const cases[] = {
        {24, "abcdef", {0xff636261, 0xff666564}}, {32, "abcdefgh", {0x64636261, 0x68676665}}, {16, "", {}}};
    for (auto const &c : cases) {
        SCOPED_TRACE(int(c.depth));
        std::string const bytes = "before" + head(c.depth) + c.palette + "\1\2\3\4\5\6";
        for (std::size_t size = 6; size <= bytes.size(); ++size) {
            BYTES_FILE source(bytes.substr(0, size));
            source.file.seek(6);
            PALETTE_IMAGE const image(source.file);
            if (size < bytes.size()) {
                ASSERT_TRUE(image.pixels.empty() && image.width == 0 && source.file.tell() == 6) << size;
                continue;
            }
            ASSERT_EQ(image.width * 10 + image.height, 32u);
            EXPECT_EQ(std::string(image.pixels.begin(), image.pixels.end()), "\1\2\3\4\5\6");
            EXPECT_EQ(std::vector<std::uint32_t>(image.palette.begin(), image.palette.end()), c.colours);
        }
        // Another kind of map, picture, depth or origin.
        for (unsigned at : {1, 2, 16, 17}) {
            std::string other = head(c.depth) + c.palette + "\1\2\3\4\5\6";
            other[at] ^= 0x18;
            BYTES_FILE source(other);
            EXPECT_TRUE(PALETTE_IMAGE(source.file).pixels.empty()) << at;
        }
    }
}
