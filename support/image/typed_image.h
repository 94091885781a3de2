// TYPED_IMAGE: a picture that owns its pixels, one class for each pixel format. Rows follow each other without a gap,
// row 0 is the top one. The bytes of all pictures are counted: those of format 12 in KN::ImageLargeAllocator, all
// others in KN::ImageDefaultAllocator.
//
// A picture of more than 2^32 - 1 pixels, or as many bytes in a row, stays empty. One thread at a time, or const calls
// of several at once.
#pragma once

#include "foundation/image.h"

#include <memory>
#include <type_traits>

namespace KN {
class MemFileIn;
}

namespace SUPPORT {

using KN::PIXEL_8888;

template <unsigned FORMAT>
class TYPED_IMAGE final : public KN::Image {
public:
    // All bytes 0.
    TYPED_IMAGE(unsigned width, unsigned height);
    // From a TGA file of any kind that KN::read_pixels knows. If it cannot be read the picture is empty, and the file
    // stands where it stood.
    explicit TYPED_IMAGE(KN::String const &tga_path) requires(FORMAT == KN::FORMAT_A8R8G8B8);
    explicit TYPED_IMAGE(KN::MemFileIn &tga_file) requires(FORMAT == KN::FORMAT_A8R8G8B8);
    TYPED_IMAGE(TYPED_IMAGE const &) = delete;
    TYPED_IMAGE &operator=(TYPED_IMAGE const &) = delete;

    unsigned format() const override { return FORMAT; }
    unsigned width() const override { return columns; }
    unsigned height() const override { return rows; }
    void set_pixel(unsigned x, unsigned y, PIXEL_8888 const &pixel) override;
    void get_pixel(PIXEL_8888 &out, unsigned x, unsigned y) const override;
    // Takes a new block only if the pixels do not fit into the old one.
    void resize(unsigned width, unsigned height) override;
    KN::PixelAccessorDescriptor accessor(unsigned x, unsigned y, unsigned w, unsigned h) override;
    KN::PixelAccessorDescriptor accessor() override;
    KN::PixelAccessorDescriptor const accessor(unsigned x, unsigned y, unsigned w, unsigned h) const override;
    KN::PixelAccessorDescriptor const accessor() const override;
    ~TYPED_IMAGE() override;

private:
    using FORM = KN::PixelForm<FORMAT>;
    using ALLOCATOR =
        std::conditional_t<FORMAT == KN::FORMAT_GREY8, KN::ImageLargeAllocator, KN::ImageDefaultAllocator>;
    static constexpr unsigned alignment = FORMAT <= KN::FORMAT_A4R4G4B4 ? 2 : 1;  // of the pixels

    void take(unsigned capacity);
    void free();
    void read_tga(KN::MemFileIn &file);
    KN::PixelAccessorDescriptor rectangle(unsigned x, unsigned y, unsigned w, unsigned h) const;

    unsigned columns = 0, rows = 0;
    unsigned pixel_capacity = 0;
    std::uint8_t *pixels = nullptr;
};

extern template class TYPED_IMAGE<KN::FORMAT_X1R5G5B5>;
extern template class TYPED_IMAGE<KN::FORMAT_R5G6B5>;
extern template class TYPED_IMAGE<KN::FORMAT_A1R5G5B5>;
extern template class TYPED_IMAGE<KN::FORMAT_A4R4G4B4>;
extern template class TYPED_IMAGE<KN::FORMAT_R8G8B8>;
extern template class TYPED_IMAGE<KN::FORMAT_A8R8G8B8>;
extern template class TYPED_IMAGE<KN::FORMAT_X8R8G8B8>;
extern template class TYPED_IMAGE<KN::FORMAT_GREY8>;
extern template class TYPED_IMAGE<KN::FORMAT_GREY16>;

// Null for a number that is no format, and for format 19, which is made by its class only.
std::unique_ptr<KN::Image> create_image(unsigned width, unsigned height, unsigned format);

}  // namespace SUPPORT
