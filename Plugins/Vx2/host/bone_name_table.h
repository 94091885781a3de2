// TOOLDATABUILDER::BONE_NAME_TABLE: the bones of a skeleton, in the order in which animations of it hold them. Read by
// the skeleton's name from the raw folder animations/skeletons; docs/formats.md describes the files. A plain value.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

#include <cstdint>

namespace TOOLDATABUILDER {

class CONVERSION_API BONE_NAME_TABLE {
public:
    struct BONE {
        KN::String name;           // UTF-8, A to Z in lower case; no two are equal
        std::int32_t parent = -1;  // index below the bone's own; -1: none
    };

    bool valid = false;           // the table was found and is sound
    unsigned char preferred = 0;  // 1: tried before others where a scene does not name its skeleton
    bool any_nodes = false;       // every set of nodes is such a skeleton; there are no bones in the table then
    KN::String name;              // as given
    KN_STD::VECTOR<BONE> bones;

    // `skeleton`: a name without folders; one that differs from a file's in case only is that file. The skeletons
    // "generic" and "all" have any nodes, and need no file. Where the table is not valid, a warning (KN::message) says
    // why.
    explicit BONE_NAME_TABLE(KN::String const &skeleton);

    // As the table has it; empty if it is not valid.
    KN::String const &root_bone() const { return root; }

private:
    KN::String root;
};

}  // namespace TOOLDATABUILDER
