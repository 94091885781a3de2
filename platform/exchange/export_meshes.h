// Meshes of a scene as those of a glTF file, with skins, morph targets and the animation of their weights.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"
#include "platform/gltf/document.h"
#include "scene/values.h"

namespace VEX2_LOADER {
class VEX2;
class VEX2_MESH;
}  // namespace VEX2_LOADER

// Puts each mesh on the document's node of its place; where that node has one already, or another name or attributes
// than the mesh, on a new node below it. Meshes of one node that are parts of one (same kind, named NODE, NODE_part2,
// ...) become one mesh again.
class MESH_EXPORT {
public:
    // The document's nodes are those of the scene, in their order. `start_matrices`: of the nodes at the scene's start.
    // The scene stands at the time of the picture. `animation` gets the channels of weights.
    MESH_EXPORT(VEX2_LOADER::VEX2 const &scene, KN_STD::VECTOR<VEX2_LOADER::VEX2_MATRIX> const &start_matrices,
                GLTF::DOCUMENT &document, GLTF::ANIMATION &animation, KN_STD::VECTOR<KN::String> &warnings);

    bool add_all(KN::String &error);

private:
    struct PART;
    bool add_parts(std::size_t node, KN_STD::VECTOR<PART> const &parts, KN::String &error);
    bool add_primitives(PART const &part, KN_STD::VECTOR<int> const &joints, GLTF::MESH &made, KN::String &error);
    int add_skin(KN_STD::VECTOR<PART> const &parts, KN_STD::VECTOR<int> &joints);
    void add_weight_channel(VEX2_LOADER::VEX2_MESH const &mesh, int node);

    VEX2_LOADER::VEX2 const &scene;
    KN_STD::VECTOR<VEX2_LOADER::VEX2_MATRIX> const &start_matrices;
    GLTF::DOCUMENT &document;
    GLTF::ANIMATION &animation;
    KN_STD::VECTOR<KN::String> &warnings;
};

// Attributes with text as extras; those that `extras` has already stay.
namespace VEX2_LOADER {
class VEX2_ATTRIBUTES;
}
void add_extras(VEX2_LOADER::VEX2_ATTRIBUTES const &attributes, GLTF::MEMBERS &extras);
