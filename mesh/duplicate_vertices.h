// Merging of duplicate vertices: vertices of one mesh that agree within a number of decimal digits become one, except
// where their tangent frames point in clearly different directions; the triangles follow. The new order of the vertices
// is that of the slots of a hash table, so every mesh is permuted, also one without duplicates.
//
// One thread works on a scene; runs on different scenes share nothing.
#pragma once

#include "mesh/api.h"

namespace VEX2_LOADER {

class VEX2;
class VEX2_STATIC_MESH;
class VEX2_MORPH_MESH;
class VEX2_WEIGHTED_MESH;

struct DUPLICATE_OPTIONS {
    bool compare_positions = true;
    bool compare_normals = true;
    bool compare_colours = true;
    bool compare_uvws = true;  // off: the number of UVW sets still has to agree
    bool split_by_frames = true;
    float frame_cosine = 0.707f;  // frames apart by more than the angle of this cosine keep vertices apart
    // Decimal digits behind the point that count, -38 to 38. 0.5 of the last one rounds away from zero.
    int position_digits = 4;
    int normal_digits = 4;
    int colour_digits = 4;
    int uvw_digits = 4;
};

// Merges within each static, weighted and morph mesh of the scene and of the scenes it refers to. Influences and deltas
// are not compared; colours only where the mesh's colour_flag is set. Animated meshes stay as they are. The influences'
// frames are taken anew, which leaves the hierarchy at the scene's start time.
MESH_API void remove_duplicates(VEX2 &scene, DUPLICATE_OPTIONS const &options);

// Merges within one mesh, with `options` as they stand. Triangle indices beyond the vertex count stay as they are, and
// so do the triangles of polygon attachments. Where vertices hold fewer frames than others of their mesh, a missing
// frame counts as close to any.
MESH_API void remove_duplicates_from_mesh(VEX2_STATIC_MESH &mesh, DUPLICATE_OPTIONS const &options);
MESH_API void remove_duplicates_from_mesh(VEX2_WEIGHTED_MESH &mesh, DUPLICATE_OPTIONS const &options);
MESH_API void remove_duplicates_from_mesh(VEX2_MORPH_MESH &mesh, DUPLICATE_OPTIONS const &options);

}  // namespace VEX2_LOADER
