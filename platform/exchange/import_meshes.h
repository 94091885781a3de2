// Meshes of an imported scene: one scene mesh for each mesh that a node carries, so that instances survive. A mesh with
// bones becomes a weighted mesh, one with shapes a morph mesh, any other a static one. Corners that agree in every bit
// of what a vertex holds share one vertex.
#pragma once

#include "platform/exchange/import_hierarchy.h"

struct aiMesh;

namespace VEX2_LOADER {
class VEX2_MESH;
}

class IMPORT_MESHES {
public:
    // `crease_cosine`: see generate_normals, for meshes without normals. `materials[i]`: the scene's material for
    // material i of the source. All of them outlive this object.
    IMPORT_MESHES(aiScene const &source, aiAnimation const *clip, IMPORT_HIERARCHY const &hierarchy, double unit,
                  float crease_cosine, KN_STD::VECTOR<int> const &materials, IMPORT_NOTES &notes);

    // The mesh, in the scene that owns it, for mesh `mesh` as node `node` carries it; null with `error` if it is
    // broken. Name, node and attributes are the caller's to set.
    VEX2_LOADER::VEX2_MESH *add(VEX2_LOADER::VEX2 &scene, unsigned mesh, std::size_t node, KN::String &error);

private:
    struct CORNERS;
    bool take_corners(aiMesh const &mesh, CORNERS &corners, KN::String &error);

    aiScene const &source;
    aiAnimation const *clip;
    IMPORT_HIERARCHY const &hierarchy;
    double unit;
    float crease_cosine;
    KN_STD::VECTOR<int> const &materials;
    IMPORT_NOTES &notes;
};
