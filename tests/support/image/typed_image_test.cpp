#include "support/image/typed_image.h"
#include "tests/support/image/files.h"
#include "tests/support/slot.h"

#include <gtest/gtest.h>

using namespace SUPPORT;

TEST(TypedImage, BytesOfEachFormatAndThePixelsThatComeBack)
{
    constexpr std::uint8_t kept = 0;  // the byte that format 11 leaves alone
    PIXEL_8888 const pixel{0x12, 0x9a, 0xf3, 0x85};
    struct {
        unsigned format, size;
        std::uint8_t bytes[4];
        PIXEL_8888 back;
        PIXEL_8888 white;
    } const cases[] = {
        {0, 2, {0x62, 0x7a}, {16, 156, 247, 255}, {255, 255, 255, 255}},
        {1, 2, {0xc2, 0xf4}, {16, 154, 247, 255}, {255, 255, 255, 255}},
        {2, 2, {0x62, 0xfa}, {16, 156, 247, 255}, {255, 255, 255, 255}},
        {3, 2, {0x91, 0x8f}, {0x10, 0x90, 0xf0, 0x80}, {240, 240, 240, 240}},
        {4, 3, {0x12, 0x9a, 0xf3}, {0x12, 0x9a, 0xf3, 255}, {255, 255, 255, 255}},
        {7, 4, {0x12, 0x9a, 0xf3, 0x85}, pixel, {255, 255, 255, 255}},
        {11, 4, {0x12, 0x9a, 0xf3, kept}, {0x12, 0x9a, 0xf3, 255}, {255, 255, 255, 255}},
        {12, 1, {165}, {165, 165, 165, 165}, {254, 254, 254, 254}},
        {19, 2, {0xd7, 0xa4}, {0xa4, 0xa4, 0xa4, 0xa4}, {253, 253, 253, 253}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.format);
        TYPED_IMAGE<KN::FORMAT_GREY16> grey(3, 2);
        std::unique_ptr<KN::Image> const made = create_image(3, 2, c.format);
        EXPECT_EQ(made == nullptr, c.format == 19);
        KN::Image &image = made == nullptr ? grey : *made;
        EXPECT_EQ(image.format(), c.format);
        image.set_pixel(2, 1, pixel);
        KN::PixelAccessorDescriptor const corner = image.accessor(2, 1, 1, 1);
        EXPECT_EQ(corner.pitch, 3 * c.size);
        EXPECT_EQ(static_cast<std::uint8_t *>(corner.data) - image.accessor().row(0), 5 * int(c.size));
        EXPECT_EQ(std::memcmp(corner.data, c.bytes, c.size), 0);
        PIXEL_8888 back;
        image.get_pixel(back, 2, 1);
        EXPECT_EQ(back, c.back);
        image.set_pixel(0, 0, {255, 255, 255, 255});
        image.get_pixel(back, 0, 0);
        EXPECT_EQ(back, c.white);
        image.get_pixel(back, 1, 1);  // untouched: nothing of its neighbours came over
        EXPECT_EQ(back.red, 0);
    }
    for (unsigned format : {5u, 6u, 8u, 10u, 13u, 18u, 20u, ~0u})
        EXPECT_EQ(create_image(4, 4, format), nullptr) << format;
}

TEST(TypedImage, SixteenBitsSurviveTheNeutralForm)
{
    TYPED_IMAGE<KN::FORMAT_A1R5G5B5> image(256, 256);
    for (unsigned format : {1u, 2u, 3u}) {
        std::unique_ptr<KN::Image> const all = create_image(256, 256, format), back = create_image(256, 256, format);
        auto *const bits = static_cast<std::uint16_t *>(all->accessor().data);
        for (unsigned i = 0; i < 65536; ++i)
            bits[i] = std::uint16_t(i);
        TYPED_IMAGE<KN::FORMAT_A8R8G8B8> neutral(256, 256);
        EXPECT_TRUE(neutral.accessor().copy(all->accessor()));
        EXPECT_TRUE(back->accessor().copy(neutral.accessor()));
        EXPECT_EQ(std::memcmp(back->accessor().data, bits, 2 * 65536), 0) << format;
    }
}

TEST(TypedImage, BytesAreCountedAndBlocksKept)
{
    struct {
        unsigned format, size;
        std::atomic<std::size_t> &mem, &hwm;
    } const cases[] = {{4, 3, KN::ImageDefaultAllocator::mem, KN::ImageDefaultAllocator::hwm},
                       {12, 1, KN::ImageLargeAllocator::mem, KN::ImageLargeAllocator::hwm}};
    for (auto const &c : cases) {
        std::size_t const before = c.mem;
        {
            std::unique_ptr<KN::Image> const image = create_image(1000, 1000, c.format);
            EXPECT_EQ(c.mem, before + 1000000 * c.size);
            void const *const block = image->accessor().data;
            image->resize(4000, 250);
            EXPECT_EQ(image->accessor().data, block);
            EXPECT_EQ(image->width(), 4000u);
            image->resize(2, 3);
            EXPECT_EQ(c.mem, before + 1000000 * c.size);
            image->resize(2000, 1000);
            EXPECT_EQ(c.mem, before + 2000000 * c.size);
            image->resize(0xffffffff, 0xffffffff);
            EXPECT_EQ(image->width() + image->height(), 0u);
        }
        EXPECT_EQ(c.mem, before);
        EXPECT_GE(c.hwm, before + 2000000 * c.size);
    }
    TYPED_IMAGE<KN::FORMAT_R8G8B8> image(4, 4);
    image.resize(0x60000000, 0);  // rows of more than 4 GiB, if none of them
    EXPECT_EQ(image.accessor().width + image.accessor().pitch, 0u);
}

// Rows from the bottom, packed, behind a text; in front of the picture stand bytes that are none of its business.
TEST(TypedImage, FromTga)
{
    std::string const header =
        std::string("\2\0\12\0\0\0\0\0\0\0\0\0", 12) + u16(2) + u16(2) + std::string("\x18\0", 2);
    std::string const picture = header + "id" + "\x80" + "abc" + "\2" + "defghijkl";
    BYTES_FILE source("xyz" + picture);
    source.file.seek(3);
    TYPED_IMAGE<KN::FORMAT_A8R8G8B8> const image(source.file);
    ASSERT_EQ(image.width() * image.height(), 4u);
    EXPECT_EQ(std::memcmp(image.accessor().data,
                          "ghi\xffjkl\xff"
                          "abc\xff"
                          "def\xff",
                          16),
              0);

    std::string unknown = picture, huge = picture;
    unknown[16] = 17;  // bits a pixel
    huge[13] = huge[15] = '\x3f';
    for (std::string const &bytes : {picture.substr(0, 17), picture.substr(0, picture.size() - 1), unknown, huge}) {
        BYTES_FILE faulty("xyz" + bytes);
        faulty.file.seek(3);
        TYPED_IMAGE<KN::FORMAT_A8R8G8B8> const none(faulty.file);
        EXPECT_EQ(none.width() + none.height(), 0u);
        EXPECT_EQ(faulty.file.tell(), 3u);
    }

    FOLDER const folder;
    EXPECT_TRUE(image.write_tga(folder.path.string() + "\\a.tga", KN::TGA_A8R8G8B8));  // as a path of another system
    TYPED_IMAGE<KN::FORMAT_A8R8G8B8> const again(folder.at("a.tga"));
    ASSERT_EQ(again.width() * again.height(), 4u);
    EXPECT_EQ(std::memcmp(again.accessor().data, image.accessor().data, 16), 0);
    EXPECT_EQ(TYPED_IMAGE<KN::FORMAT_A8R8G8B8>(folder.at("none.tga")).width(), 0u);
}

#if defined(HAS_SLOT_OF)
TEST(TypedImage, OperationsKeepTheirSlots)
{
    using KN::Image;
    using ACCESSOR = KN::PixelAccessorDescriptor;
    int slot = 0;
    for (int is : {slot_of(&Image::format), slot_of(&Image::width), slot_of(&Image::height), slot_of(&Image::set_pixel),
                   slot_of(&Image::get_pixel), slot_of(&Image::resize),
                   slot_of<ACCESSOR (Image::*)(unsigned, unsigned, unsigned, unsigned)>(&Image::accessor),
                   slot_of<ACCESSOR (Image::*)()>(&Image::accessor),
                   slot_of<ACCESSOR const (Image::*)(unsigned, unsigned, unsigned, unsigned) const>(&Image::accessor),
                   slot_of<ACCESSOR const (Image::*)() const>(&Image::accessor),
                   slot_of<bool (Image::*)(KN::String const &, KN::TGAFormat) const>(&Image::write_tga),
                   slot_of<bool (Image::*)(KN::FileOut &, KN::TGAFormat) const>(&Image::write_tga)})
        EXPECT_EQ(is, slot++);
}
#endif
