// Pictures of artists' files: decoded from memory, written as TGA. Only the import's child process decodes.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

#include <cstddef>
#include <cstdint>

struct PICTURE {
    static constexpr unsigned largest = 16384;  // width or height

    unsigned width = 0, height = 0;
    KN_STD::VECTOR<std::uint8_t> pixels;  // four bytes a pixel: red, green, blue, opacity; the top row first
};

// PNG, JPEG, TGA, BMP, GIF, PSD and what else the decoder knows. False with the reason in `error`, without a path.
bool decode_picture(void const *bytes, std::size_t size, PICTURE &picture, KN::String &error);

// The bytes of an uncompressed TGA: 32 bits a pixel if anything is not fully opaque, else 24.
KN::String tga_bytes(PICTURE const &picture);

// True if `bytes` are a TGA as tga_bytes makes them, whatever their pixels.
bool is_plain_tga(std::string_view bytes);

// `bytes` have been found to be a plain TGA.
PICTURE picture_of_plain_tga(std::string_view bytes);

KN::String png_bytes(PICTURE const &picture);
