// The clean-up that every scene goes through before it is converted: duplicates are merged, then frames are built.
#pragma once

#include "mesh/duplicate_vertices.h"
#include "mesh/tangent_frames.h"

namespace VEX2_LOADER {

// What a build merges and builds by. The passes stand apart for callers that report between them.
inline constexpr DUPLICATE_OPTIONS prepare_duplicate_options{};
inline constexpr FRAME_OPTIONS prepare_frame_options{};

inline void prepare_scene(VEX2 &scene)
{
    remove_duplicates(scene, prepare_duplicate_options);
    generate_frames(scene, prepare_frame_options);
}

}  // namespace VEX2_LOADER
