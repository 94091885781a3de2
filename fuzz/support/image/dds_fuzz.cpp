// A height field from the bytes of a DDS file. Seeds: files of HEIGHT_FIELD::write_dds.
#include "require.h"

using namespace SUPPORT;

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    KN::MemFileIn file(bytes, unsigned(size));
    HEIGHT_FIELD field;
    bool const is_field = field.read_dds(file);
    require_same_from_disk(bytes, size, &HEIGHT_FIELD::read_dds, is_field, field);
    if (is_field) {
        unsigned width = 0, height = 0;
        file.seek(0);
        require(HEIGHT_FIELD::read_dds_size(file, width, height) && width == field.width && height == field.height,
                "the size alone is that of the field");
        walk(field, size);
    }
    return 0;
}
