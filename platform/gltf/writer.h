// Writes a DOCUMENT as a binary glTF 2.0 file. The same document gives the same bytes.
#pragma once

#include "foundation/string.h"

namespace GLTF {

struct DOCUMENT;

// The file comes to stand whole or not at all; its folder must be there. `document` is used up: its buffer is empty
// afterwards. False, with a line in `error`, if the buffer was refused or the file cannot be written. `size`, if
// given, gets the bytes of the file.
bool write_glb(DOCUMENT &document, KN::String const &path, KN::String &error, std::uint64_t *size = nullptr);

}  // namespace GLTF
