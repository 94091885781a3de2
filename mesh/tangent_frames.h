// Tangent frames: rebuilds binormal and tangent of every vertex from positions and UVWs, one frame a UVW set, and drops
// degenerate triangles and vertices that nothing refers to. What the file held as frames is replaced.
//
// One thread works on a scene; runs on different scenes share nothing.
#pragma once

#include "mesh/api.h"

namespace VEX2_LOADER {

class VEX2;

struct FRAME_OPTIONS {
    unsigned max_uvw_sets = 1;  // at most so many frames a vertex, whatever its UVW sets
    // A mesh whose first triangle is degenerate is skipped; a section whose first one is keeps its triangles.
    bool keep_degenerate_sections = false;
    bool reserved = false;
    bool shader_materials_only = false;  // skip meshes that no shader material covers in part
};

// Works on all meshes of the scene and of the scenes it refers to; scenes are left at the start time of their
// hierarchy. Static, weighted and morph meshes get frames smoothed over the triangles that share a vertex, from the
// positions at the current time; animated meshes get a flat frame channel a triangle, sampled at 60 Hz over the key
// times of its UVWs, for which vertices that triangles share are unshared first.
//
// Guards: triangles that name a vertex beyond the mesh's are dropped; a UVW set that a vertex lacks reads as zeros;
// attachment indices beyond the vertex count are left alone. Sampling stops with a warning once one call has taken
// 16 million samples or stored 4 million keys: every triangle still gets the sample at its end.
MESH_API void generate_frames(VEX2 &scene, FRAME_OPTIONS const &options);

}  // namespace VEX2_LOADER
