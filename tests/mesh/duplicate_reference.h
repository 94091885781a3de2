// The merge of duplicate vertices in its plainest form: every list a list, every search a walk. What the pass has to
// give is what this gives.
#pragma once

#include "mesh/duplicate_vertices.h"
#include "scene/mesh.h"

#include <vector>

namespace VEX2_LOADER {

struct MERGED {
    std::vector<unsigned> kept;     // the old index of each vertex that stays, in the new order
    std::vector<unsigned> corners;  // all triangle indices, section by section
};

MERGED merge_by_the_letter(VEX2_MORPH_MESH const &mesh, DUPLICATE_OPTIONS const &options);

}  // namespace VEX2_LOADER
