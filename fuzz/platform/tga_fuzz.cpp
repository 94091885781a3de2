// Pictures from the bytes of TGA files, which have no mark of their own: whatever is neither PNG nor DDS. Seeds:
// platform_seeds.
#include "fuzz_kit.h"
#include "platform/texture/tga.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    using namespace FUZZ;
    KESTREL::TGA_PICTURE picture;
    KN::String error;
    bool const good = KESTREL::read_tga({reinterpret_cast<char const *>(bytes), size}, picture, error);
    require(good == error.empty(), "a line exactly where a picture is refused");
    if (!good)
        return 0;
    require(picture.channels == 1 || picture.channels == 3 || picture.channels == 4, "channels that are known");
    require(picture.width >= 1 && picture.width <= KESTREL::PICTURE::largest && picture.height >= 1 &&
                picture.height <= KESTREL::PICTURE::largest,
            "a size within the limits");
    require(picture.pixels.size() == std::size_t(picture.width) * picture.height * picture.channels,
            "a byte for each channel of each pixel");
    return 0;
}
