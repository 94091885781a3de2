// Finished models read back from binary glTF files: their head (levels of detail, materials, skeleton) and the finest
// level as plain arrays to draw. Skins and morph targets are not looked at: a model has its bind shape.
#pragma once

#include "foundation/string.h"
#include "platform/gltf/document.h"

namespace GLTF {

struct MODEL_HEAD {
    struct MESH_USE {
        std::string mesh;            // name
        std::vector<int> materials;  // indices into `materials`, each once, ascending
    };
    // Textures have their URIs decoded.
    std::vector<MATERIAL> materials;
    std::vector<std::vector<MESH_USE>> levels;  // the finest first; at least one
    std::string skeleton;                       // empty: none
    // The folder below the working root that the textures' paths start from; empty: that of the model.
    std::string place;
};

// One draw of the finest level. All numbers are finite; arrays other than the first may be empty.
struct MODEL_PART {
    std::vector<float> positions;        // 3 a vertex
    std::vector<float> normals;          // 3 a vertex
    std::vector<float> tangents;         // 4 a vertex, the last one the handedness
    std::vector<float> uvs;              // 2 a vertex, v downwards: the set of the material's colour texture
    std::vector<float> colours;          // 4 a vertex, 0 to 1, linear light
    std::vector<std::uint32_t> indices;  // 3 a triangle, all below the number of vertices
    int material = -1;                   // index into `materials`, or none
};

// The bytes are not trusted. False, with a line in `error`, for a file that is missing or damaged, or that holds a node
// which turns or moves its mesh. `parts` may be null: then the buffer stays on the disk.
bool read_model(KN::String const &path, MODEL_HEAD &head, std::vector<MODEL_PART> *parts, KN::String &error);

}  // namespace GLTF
