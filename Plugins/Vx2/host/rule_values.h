// Rules that the host reads for the converters.
#pragma once

#include "Plugins/Vx2/host/rules.h"
#include "foundation/containers.h"

// The rules LODDistances and LODQualities of a file: its properties 1 to 6, up to the first that is absent or no
// number. Distances in metres; qualities 0 to 100 (clamped).
HOST_API void get_lod_distances_and_qualities(KN_STD::VECTOR<float> &distances,
                                              KN_STD::VECTOR<unsigned char> &qualities, RULE_CACHE const &rules,
                                              PHYSICAL_PATH const &file);

// The global rule Vx2: true if OutputAnimDebugText is "true" or "1", without regard to case.
HOST_API bool should_output_debug_animation_info(RULE_CACHE const &rules);
