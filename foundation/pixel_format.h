// Pixel formats, as pictures and accessors number them, and the way between each of them and PIXEL_8888, the form in
// which single pixels are handed over. Multi-byte formats are little-endian. Narrowing keeps the upper bits; widening
// repeats them below, but for the four bits of format 3, which stay alone.
#pragma once

#include <cstdint>
#include <cstring>

namespace KN {

enum PixelFormat : unsigned {
    FORMAT_X1R5G5B5 = 0,  // 16 bits: blue at the bottom, then green, red; the top bit is clear
    FORMAT_R5G6B5 = 1,
    FORMAT_A1R5G5B5 = 2,
    FORMAT_A4R4G4B4 = 3,
    FORMAT_R8G8B8 = 4,  // bytes: blue, green, red
    FORMAT_A8R8G8B8 = 7,
    FORMAT_X8R8G8B8 = 11,  // the fourth byte is never touched
    FORMAT_GREY8 = 12,
    FORMAT_GREY16 = 19,
};

struct PIXEL_8888 {
    std::uint8_t blue = 0, green = 0, red = 0, alpha = 0;

    bool operator==(PIXEL_8888 const &) const = default;
};
static_assert(sizeof(PIXEL_8888) == 4);

// Brightness by weights that add up to 254: white comes to 64897.
constexpr unsigned grey_sum(PIXEL_8888 pixel) { return 28u * pixel.blue + 150u * pixel.green + 76u * pixel.red + 127u; }

// PixelForm<FORMAT>: `size` in bytes, pack to them and unpack from them.
template <unsigned FORMAT>
struct PixelForm;

// 16 bits of so many for each, from the bottom up.
template <unsigned BLUE, unsigned GREEN, unsigned RED, unsigned ALPHA>
struct PackedPixelForm {
    static constexpr unsigned size = 2;

    static void pack(PIXEL_8888 pixel, std::uint8_t *to)
    {
        unsigned const bits = pixel.blue >> (8 - BLUE) | pixel.green >> (8 - GREEN) << BLUE |
                              pixel.red >> (8 - RED) << (BLUE + GREEN) |
                              pixel.alpha >> (8 - ALPHA) << (BLUE + GREEN + RED);
        to[0] = std::uint8_t(bits);
        to[1] = std::uint8_t(bits >> 8);
    }
    static PIXEL_8888 unpack(std::uint8_t const *from)
    {
        unsigned const bits = from[0] | unsigned(from[1]) << 8;
        return {widened<BLUE>(bits), widened<GREEN>(bits >> BLUE), widened<RED>(bits >> (BLUE + GREEN)),
                widened<ALPHA>(bits >> (BLUE + GREEN + RED))};
    }

private:
    template <unsigned COUNT>
    static std::uint8_t widened(unsigned bits)
    {
        unsigned const value = bits & ((1u << COUNT) - 1);
        if constexpr (COUNT == 0)
            return 255;
        else if constexpr (COUNT == 1)
            return value != 0 ? 255 : 0;
        else if constexpr (COUNT == 4)
            return std::uint8_t(value << 4);
        else
            return std::uint8_t(value << (8 - COUNT) | value >> (2 * COUNT - 8));
    }
};

template <>
struct PixelForm<FORMAT_X1R5G5B5> : PackedPixelForm<5, 5, 5, 0> {};
template <>
struct PixelForm<FORMAT_R5G6B5> : PackedPixelForm<5, 6, 5, 0> {};
template <>
struct PixelForm<FORMAT_A1R5G5B5> : PackedPixelForm<5, 5, 5, 1> {};
template <>
struct PixelForm<FORMAT_A4R4G4B4> : PackedPixelForm<4, 4, 4, 4> {};

// Bytes as they stand in PIXEL_8888: its first three, or all four.
template <unsigned SIZE, unsigned COPIED>
struct BytePixelForm {
    static constexpr unsigned size = SIZE;

    static void pack(PIXEL_8888 pixel, std::uint8_t *to) { std::memcpy(to, &pixel, COPIED); }
    static PIXEL_8888 unpack(std::uint8_t const *from)
    {
        return {from[0], from[1], from[2], COPIED == 4 ? from[COPIED - 1] : std::uint8_t(255)};
    }
};

template <>
struct PixelForm<FORMAT_R8G8B8> : BytePixelForm<3, 3> {};
template <>
struct PixelForm<FORMAT_A8R8G8B8> : BytePixelForm<4, 4> {};
template <>
struct PixelForm<FORMAT_X8R8G8B8> : BytePixelForm<4, 3> {};

template <>
struct PixelForm<FORMAT_GREY8> {
    static constexpr unsigned size = 1;

    static void pack(PIXEL_8888 pixel, std::uint8_t *to) { *to = std::uint8_t(grey_sum(pixel) / 255); }
    static PIXEL_8888 unpack(std::uint8_t const *from) { return {*from, *from, *from, *from}; }
};
template <>
struct PixelForm<FORMAT_GREY16> {
    static constexpr unsigned size = 2;

    static void pack(PIXEL_8888 pixel, std::uint8_t *to)
    {
        to[0] = std::uint8_t(grey_sum(pixel));
        to[1] = std::uint8_t(grey_sum(pixel) >> 8);
    }
    static PIXEL_8888 unpack(std::uint8_t const *from) { return {from[1], from[1], from[1], from[1]}; }
};

// use(PixelForm<FORMAT>()) for the format of that number; false for a number that is none.
template <class USE>
bool with_pixel_form(unsigned format, USE const &use)
{
    switch (format) {
    case FORMAT_X1R5G5B5:
        return use(PixelForm<FORMAT_X1R5G5B5>()), true;
    case FORMAT_R5G6B5:
        return use(PixelForm<FORMAT_R5G6B5>()), true;
    case FORMAT_A1R5G5B5:
        return use(PixelForm<FORMAT_A1R5G5B5>()), true;
    case FORMAT_A4R4G4B4:
        return use(PixelForm<FORMAT_A4R4G4B4>()), true;
    case FORMAT_R8G8B8:
        return use(PixelForm<FORMAT_R8G8B8>()), true;
    case FORMAT_A8R8G8B8:
        return use(PixelForm<FORMAT_A8R8G8B8>()), true;
    case FORMAT_X8R8G8B8:
        return use(PixelForm<FORMAT_X8R8G8B8>()), true;
    case FORMAT_GREY8:
        return use(PixelForm<FORMAT_GREY8>()), true;
    case FORMAT_GREY16:
        return use(PixelForm<FORMAT_GREY16>()), true;
    default:
        return false;
    }
}

// Bytes of a pixel; 0 for a number that is no format.
inline unsigned pixel_size(unsigned format)
{
    unsigned size = 0;
    with_pixel_form(format, [&](auto form) { size = form.size; });
    return size;
}

}  // namespace KN
