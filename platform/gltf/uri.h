// Paths as URIs, for the files that a glTF file names.
#pragma once

#include <string>
#include <string_view>

namespace GLTF {

// `path` with every byte that has a meaning in URIs percent-encoded, slashes apart.
std::string encoded_uri(std::string_view path);
std::string decoded_uri(std::string_view uri);

// The way from the folder of the file `from` to the file `to`, with slashes and not encoded; both absolute or both
// relative to one folder, without "." and ".." sections.
std::string relative_path(std::string_view from, std::string_view to);

}  // namespace GLTF
