// Bare geometry in binary glTF files: meshes of positions and triangles with a few texts each, as collision meshes and
// descriptions need them. What is written here reads back the same.
#pragma once

#include "foundation/string.h"
#include "platform/gltf/document.h"

#include <map>

namespace GLTF {

struct GEOMETRY {
    std::string name;                          // of the node
    std::map<std::string, std::string> texts;  // among the node's extras
    std::vector<float> positions;              // three a vertex, in the file's space; finite
    std::vector<std::uint32_t> indices;        // three a triangle, all below the number of vertices
};

// The meshes of the file's nodes in their order; the primitives of a mesh are put together, textures and skins are not
// looked at. The bytes are not trusted. False, with a line in `error`, for a file that is missing or damaged, or that
// holds a node which turns or moves its mesh.
bool read_geometry(KN::String const &path, std::vector<GEOMETRY> &meshes, KN::String &error);

// One node with one mesh for each of `meshes`, those without triangles left out. `node_extras`, if not empty, has
// further extras for each of them; `extras` goes to the scene. As write_glb otherwise.
bool write_geometry(std::vector<GEOMETRY> const &meshes, std::vector<MEMBERS> const &node_extras, MEMBERS const &extras,
                    KN::String const &path, KN::String &error);

}  // namespace GLTF
