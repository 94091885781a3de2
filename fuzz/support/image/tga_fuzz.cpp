// Pictures from the bytes of a TGA file, true colour and with a palette. Seeds: TGA files of both kinds, packed and
// not.
#include "foundation/file.h"
#include "require.h"
#include "support/image/palette_image.h"
#include "support/image/typed_image.h"

#include <cstring>

using namespace SUPPORT;

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    KN::MemFileIn file(bytes, unsigned(size));
    PALETTE_IMAGE const palette(file);
    require(palette.pixels.size() == palette.width * palette.height && palette.pixels.size() <= size,
            "a byte of the file for each pixel");

    file.seek(0);
    TYPED_IMAGE<KN::FORMAT_A8R8G8B8> const image(file);
    if (image.width() == 0) {
        require(file.tell() == 0, "a file that is refused stands where it stood");
        return 0;
    }
    KN::String const written = tga_bytes(image.accessor(), KN::TGA_A8R8G8B8);
    KN::MemFileIn again(written.data(), unsigned(written.size()));
    TYPED_IMAGE<KN::FORMAT_A8R8G8B8> const same(again);
    require(same.width() == image.width() && same.height() == image.height() &&
                std::memcmp(same.accessor().data, image.accessor().data, 4 * image.width() * image.height()) == 0,
            "a picture comes back from its file");
    return 0;
}
