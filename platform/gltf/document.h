// GLTF::DOCUMENT: the contents of a glTF file as plain records that refer to each other by index, -1 for none. What is
// left at its default is not written. Texts are UTF-8.
#pragma once

#include "platform/gltf/buffer.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace GLTF {

// Free data that rides along: `extras` of glTF.
struct VALUE;
using MEMBERS = std::vector<std::pair<std::string, VALUE>>;  // each name once
struct VALUE : std::variant<bool, int, double, std::string, std::vector<VALUE>, MEMBERS> {
    using variant::variant;
};

struct PRIMITIVE {
    // Attribute names of glTF ("POSITION", "TEXCOORD_0") and accessors; of one count throughout the primitive.
    using ATTRIBUTES = std::vector<std::pair<std::string, int>>;
    ATTRIBUTES attributes;
    std::vector<ATTRIBUTES> targets;  // morph targets: displacements
    int indices = -1;                 // accessor; triangles
    int material = -1;
};

struct MESH {
    std::string name;
    std::vector<PRIMITIVE> primitives;  // at least one; all with the same number of targets
    std::vector<float> weights;         // one a morph target, or none
    std::vector<std::string> target_names;
};

struct SKIN {
    std::string name;
    std::vector<int> joints;         // nodes
    int inverse_bind_matrices = -1;  // accessor: F32, 16 components, column by column
};

struct CAMERA {
    std::string name;
    float vertical_angle = 1;                // radians
    float aspect = 0;                        // width / height; 0: that of the viewer
    float near_plane = 0.1f, far_plane = 0;  // metres; far 0: none
};

struct NODE {
    std::string name;
    float translation[3] = {0, 0, 0};
    float rotation[4] = {0, 0, 0, 1};  // x, y, z, w; of length 1
    float scale[3] = {1, 1, 1};
    std::vector<int> children;
    int mesh = -1, skin = -1, camera = -1;
    std::vector<int> coarser_levels;  // nodes that take this one's place far away, in their order (MSFT_lod)
    MEMBERS extras;
};

struct TEXTURE {
    std::string uri;  // relative to the file, percent-encoded (see uri.h); empty: none
    int uv_set = 0;
};

struct MATERIAL {
    enum ALPHA { SOLID, CUT_OFF, BLENDED };
    std::string name;
    float colour[4] = {1, 1, 1, 1};  // linear light, 0 to 1
    float metalness = 0, roughness = 1;
    TEXTURE diffuse, normal;
    ALPHA alpha = SOLID;
    float cut_off = 0.5f;
    bool two_sided = false;
    MEMBERS extras;
};

struct ANIMATION {
    enum PATH { TRANSLATION, ROTATION, SCALE, WEIGHTS };
    struct CHANNEL {
        int node;
        PATH path;
        int times, values;   // accessors; the times are bounded
        bool steps = false;  // values hold until the next key instead of being blended
    };
    std::string name;
    std::vector<CHANNEL> channels;  // at least one
};

struct DOCUMENT {
    BUFFER buffer;
    std::vector<MESH> meshes;
    std::vector<SKIN> skins;
    std::vector<CAMERA> cameras;
    std::vector<NODE> nodes;
    std::vector<MATERIAL> materials;
    std::vector<ANIMATION> animations;
    std::vector<int> roots;  // nodes of the one scene
    MEMBERS extras;          // of the scene
};

}  // namespace GLTF
