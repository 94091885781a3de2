// Pictures from the bytes of DDS files. Seeds: platform_seeds.
#include "picture_walk.h"
#include "platform/texture/dds.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    FUZZ::walk_picture(KESTREL::read_dds, {reinterpret_cast<char const *>(bytes), size});
    return 0;
}
