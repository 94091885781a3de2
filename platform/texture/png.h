// PNG pictures, by a small reader of our own over zlib: every kind of the standard, samples of 16 bits cut to 8.
// Whatever is said about colour spaces and the like is passed over.
#pragma once

#include "platform/texture/picture.h"

#include <string_view>

namespace KESTREL {

bool is_png(std::string_view bytes);

// False, with what is wrong in `error`, for bytes that are damaged; the picture is then empty.
bool read_png(std::string_view bytes, PICTURE &picture, KN::String &error);

}  // namespace KESTREL
