#include "support/image/typed_image.h"

#include "foundation/file.h"

#include <cassert>

namespace SUPPORT {

template <unsigned FORMAT>
TYPED_IMAGE<FORMAT>::TYPED_IMAGE(unsigned width, unsigned height)
{
    TYPED_IMAGE::resize(width, height);
    if (pixels != nullptr)
        std::memset(pixels, 0, std::size_t(pixel_capacity) * FORM::size);
}

template <unsigned FORMAT>
TYPED_IMAGE<FORMAT>::TYPED_IMAGE(KN::String const &tga_path) requires(FORMAT == KN::FORMAT_A8R8G8B8)
{
    KN::MemFileIn file;
    if (file.open(tga_path, true))
        read_tga(file);
}

template <unsigned FORMAT>
TYPED_IMAGE<FORMAT>::TYPED_IMAGE(KN::MemFileIn &tga_file) requires(FORMAT == KN::FORMAT_A8R8G8B8)
{
    read_tga(tga_file);
}

template <unsigned FORMAT>
TYPED_IMAGE<FORMAT>::~TYPED_IMAGE()
{
    free();
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::read_tga(KN::MemFileIn &file)
{
    unsigned const start = file.tell();
    KN::TGAHeader header;
    if (header.read(file) && header.is_plausible(file.size() - file.tell())) {
        TYPED_IMAGE::resize(header.width, header.height);
        if (read_pixels(file, header, TYPED_IMAGE::accessor()))
            return;
        free();
    }
    file.seek(start);
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::take(unsigned capacity)
{
    std::size_t const bytes = std::size_t(capacity) * FORM::size;
    pixels = static_cast<std::uint8_t *>(KN::malloc_aligned(bytes, alignment));
    pixel_capacity = capacity;
    std::size_t const now = ALLOCATOR::mem += bytes;
    std::size_t most = ALLOCATOR::hwm;
    while (most < now && !ALLOCATOR::hwm.compare_exchange_weak(most, now)) {
    }
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::free()
{
    KN::custom_free(pixels);
    ALLOCATOR::mem -= std::size_t(pixel_capacity) * FORM::size;
    pixels = nullptr;
    pixel_capacity = columns = rows = 0;
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::resize(unsigned width, unsigned height)
{
    std::uint64_t const count = std::uint64_t(width) * height;
    if (count > 0xffffffff || width > 0xffffffff / FORM::size) {
        free();
        return;
    }
    if (count > pixel_capacity) {
        free();
        take(unsigned(count));
    }
    columns = width;
    rows = height;
}

template <unsigned FORMAT>
KN::PixelAccessorDescriptor TYPED_IMAGE<FORMAT>::rectangle(unsigned x, unsigned y, unsigned w, unsigned h) const
{
    assert(std::uint64_t(x) + w <= columns && std::uint64_t(y) + h <= rows);
    return {pixels + (std::size_t(y) * columns + x) * FORM::size, w, h, columns * FORM::size, FORMAT};
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::set_pixel(unsigned x, unsigned y, PIXEL_8888 const &pixel)
{
    assert(x < columns && y < rows);
    FORM::pack(pixel, pixels + (std::size_t(y) * columns + x) * FORM::size);
}

template <unsigned FORMAT>
void TYPED_IMAGE<FORMAT>::get_pixel(PIXEL_8888 &out, unsigned x, unsigned y) const
{
    assert(x < columns && y < rows);
    out = FORM::unpack(pixels + (std::size_t(y) * columns + x) * FORM::size);
}

template <unsigned FORMAT>
KN::PixelAccessorDescriptor TYPED_IMAGE<FORMAT>::accessor(unsigned x, unsigned y, unsigned w, unsigned h)
{
    return rectangle(x, y, w, h);
}

template <unsigned FORMAT>
KN::PixelAccessorDescriptor TYPED_IMAGE<FORMAT>::accessor()
{
    return rectangle(0, 0, columns, rows);
}

template <unsigned FORMAT>
KN::PixelAccessorDescriptor const TYPED_IMAGE<FORMAT>::accessor(unsigned x, unsigned y, unsigned w, unsigned h) const
{
    return rectangle(x, y, w, h);
}

template <unsigned FORMAT>
KN::PixelAccessorDescriptor const TYPED_IMAGE<FORMAT>::accessor() const
{
    return rectangle(0, 0, columns, rows);
}

template class TYPED_IMAGE<KN::FORMAT_X1R5G5B5>;
template class TYPED_IMAGE<KN::FORMAT_R5G6B5>;
template class TYPED_IMAGE<KN::FORMAT_A1R5G5B5>;
template class TYPED_IMAGE<KN::FORMAT_A4R4G4B4>;
template class TYPED_IMAGE<KN::FORMAT_R8G8B8>;
template class TYPED_IMAGE<KN::FORMAT_A8R8G8B8>;
template class TYPED_IMAGE<KN::FORMAT_X8R8G8B8>;
template class TYPED_IMAGE<KN::FORMAT_GREY8>;
template class TYPED_IMAGE<KN::FORMAT_GREY16>;

namespace {

template <unsigned FORMAT>
std::unique_ptr<KN::Image> make(unsigned width, unsigned height)
{
    return std::make_unique<TYPED_IMAGE<FORMAT>>(width, height);
}

}  // namespace

std::unique_ptr<KN::Image> create_image(unsigned width, unsigned height, unsigned format)
{
    switch (format) {
    case KN::FORMAT_X1R5G5B5:
        return make<KN::FORMAT_X1R5G5B5>(width, height);
    case KN::FORMAT_R5G6B5:
        return make<KN::FORMAT_R5G6B5>(width, height);
    case KN::FORMAT_A1R5G5B5:
        return make<KN::FORMAT_A1R5G5B5>(width, height);
    case KN::FORMAT_A4R4G4B4:
        return make<KN::FORMAT_A4R4G4B4>(width, height);
    case KN::FORMAT_R8G8B8:
        return make<KN::FORMAT_R8G8B8>(width, height);
    case KN::FORMAT_A8R8G8B8:
        return make<KN::FORMAT_A8R8G8B8>(width, height);
    case KN::FORMAT_X8R8G8B8:
        return make<KN::FORMAT_X8R8G8B8>(width, height);
    case KN::FORMAT_GREY8:
        return make<KN::FORMAT_GREY8>(width, height);
    default:
        return nullptr;
    }
}

}  // namespace SUPPORT
