// Reads the geometry of a binary glTF file: its nodes with meshes, their positions, triangles and plain extras. Takes
// what our own writer puts out, without textures or skins; the bytes are not trusted.
#pragma once

#include "foundation/string.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace GLTF {

struct GEOMETRY {
    std::string name;                          // of the node
    std::map<std::string, std::string> texts;  // the node's extras that are texts
    std::vector<float> positions;              // three a vertex, in the file's space; finite
    std::vector<std::uint32_t> indices;        // three a triangle, all below the number of vertices
};

// The meshes of the nodes in their order; the primitives of a mesh are put together. False, with a line in `error`, for
// a file that is missing or damaged, or that holds a node which turns or moves its mesh.
bool read_geometry(KN::String const &path, std::vector<GEOMETRY> &meshes, KN::String &error);

}  // namespace GLTF
