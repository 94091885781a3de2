// A mesh of a scene as the converters take it: every kind looked at through plain vertices and placed in model space.
#pragma once

#include "platform/gltf/geometry.h"
#include "scene/scene.h"

namespace TOOLDATABUILDER {

// What takes places, displacements and directions of a mesh into model space.
struct PLACEMENT {
    VEX2_LOADER::VEX2_MATRIX matrix;
    bool is_identity = true;
    bool is_mirrored = false;  // triangles are to be turned around
    // Without the matrix's size, which may be of any order: their largest element is 1 or -1. The second has the
    // cofactors, with the sign of the determinant.
    float direction_matrix[3][3], normal_matrix[3][3];

    explicit PLACEMENT(VEX2_LOADER::VEX2_MATRIX const &from);
    VEX2_LOADER::VEX2_VECTOR place(VEX2_LOADER::VEX2_VECTOR const &point) const;
    VEX2_LOADER::VEX2_VECTOR displace(VEX2_LOADER::VEX2_VECTOR const &offset) const;
    // The results have the right direction, but any length.
    VEX2_LOADER::VEX2_VECTOR turn(VEX2_LOADER::VEX2_VECTOR const &direction) const;
    VEX2_LOADER::VEX2_VECTOR turn_normal(VEX2_LOADER::VEX2_VECTOR const &normal) const;
};

class MESH_SOURCE {
public:
    // The mesh and the scene outlive the object. Vertices of an animated mesh are taken as they are now. Weighted
    // meshes stand in model space already; the others are placed by their node, if it exists.
    MESH_SOURCE(VEX2_LOADER::VEX2 const &scene, VEX2_LOADER::VEX2_MESH const &from);

    VEX2_LOADER::VEX2_MESH const &mesh;
    VEX2_LOADER::VEX2_MORPH_MESH const *morph = nullptr;        // the mesh, if it is one
    VEX2_LOADER::VEX2_WEIGHTED_MESH const *weighted = nullptr;  // the mesh, if it is one
    std::string name;                                           // UTF-8; that of the node if the mesh has none
    std::string node_name;
    PLACEMENT placement;

    std::uint32_t vertex_count() const { return count; }
    VEX2_LOADER::VEX2_VERTEX const &vertex(std::uint32_t i) const
    {
        return *reinterpret_cast<VEX2_LOADER::VEX2_VERTEX const *>(first + std::size_t(i) * stride);
    }

    // The triangles of a section, front faces counter-clockwise in model space, appended to `indices`. False, with a
    // line in `error`, if one names a vertex that is not there.
    bool append_triangles(VEX2_LOADER::VEX2_POLYGON_SET const &section, std::vector<std::uint32_t> &indices,
                          KN::String &error) const;
    // Positions now and triangles, in model space. False, with a line in `error`, for a bad index or a position that is
    // no number.
    bool take_geometry(GLTF::GEOMETRY &to, KN::String &error) const;

private:
    template <class VERTEX>
    void look_at(KN::DynamicArray<VERTEX> const &vertices);

    KN::DynamicArray<VEX2_LOADER::VEX2_VERTEX> posed;  // of an animated mesh
    unsigned char const *first = nullptr;
    std::size_t stride = 0;
    std::uint32_t count = 0;
};

// All meshes of the scene that the filter takes, in the order of its lists: static, weighted, morph, animated.
class VEX2_FILTER;
std::vector<VEX2_LOADER::VEX2_MESH const *> filtered_meshes(VEX2_LOADER::VEX2 const &scene, VEX2_FILTER const &filter);

}  // namespace TOOLDATABUILDER
