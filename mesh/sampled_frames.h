// Tangent frames of animated meshes: a flat frame channel a triangle, sampled over the time in which its UVWs move.
#pragma once

#include "mesh/trim_mesh.h"

namespace VEX2_LOADER {

// What one call of the pass may still spend. A few bytes of a file can ask for any number of samples; honest scenes
// (some thousand moving triangles over some ten seconds) stay far below.
struct SAMPLE_BUDGET {
    std::uint32_t samples = 1u << 24;
    std::uint32_t keys = 1u << 22;
    bool reported = false;
};

// Gives every triangle vertices of its own: triangle i, counted over all sections, those at 3i, 3i + 1 and 3i + 2.
// Vertices that only attachments name follow behind. `users` as triangles_of gives them. Nothing changes where it is so
// already. False, with a warning and nothing changed, if the copies would take more than 64 MiB and 32 times the mesh.
bool unshare_vertices(VEX2_ANIMATED_MESH &mesh, KN::DynamicArray<POLYGON_SETS *> const &users);

// Fills the first `sets` entries of the `frames` of every triangle's vertices, which are there. Vertices are unshared.
void build_sampled_frames(VEX2_ANIMATED_MESH &mesh, std::uint32_t sets, SAMPLE_BUDGET &budget);

}  // namespace VEX2_LOADER
