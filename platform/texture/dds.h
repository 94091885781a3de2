// Block-compressed textures in DDS files: 4x4 pixels in 8 or 16 bytes, with all smaller versions behind the picture.
#pragma once

#include "platform/texture/mip.h"

#include <string_view>

namespace KESTREL {

bool is_dds(std::string_view bytes);

// The picture itself, of a file in one of the forms DXT1, DXT3, DXT5 and ATI2 (two channels of a direction, whose third
// is computed). False, with what is wrong in `error`, for any other and for bytes that are damaged.
bool read_dds(std::string_view bytes, PICTURE &picture, KN::String &error);

// Directions become ATI2 (BC5), others DXT5 (BC3) if any pixel is not opaque, else DXT1 (BC1). The same picture gives
// the same bytes. False, with a line in `error`, if the file cannot be written, or without one once KN::goes_on() says
// no.
bool write_dds(PICTURE const &picture, CONTENT content, KN::String const &path, KN::String &error);

}  // namespace KESTREL
