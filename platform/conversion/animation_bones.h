// Which nodes of a scene are the bones of a skeleton.
#pragma once

#include "foundation/containers.h"
#include "foundation/string.h"

#include <cstdint>

namespace VEX2_LOADER {
class VEX2;
}

namespace TOOLDATABUILDER {

class BONE_NAME_TABLE;
class VEX2_FILTER;

struct ANIMATION_BONE {
    KN::String name;      // UTF-8, A to Z in lower case
    std::int32_t parent;  // index below the bone's own; -1: none
    std::uint32_t node;   // of the scene
};

// The table's bones in its order, each with the first node of its name that the filter takes; or, if the table has any
// nodes or `all_nodes` is set, all nodes that the filter takes in their order, each below the nearest such node above
// it. False, with one line in `fault`, if a bone has no node, or if nodes stand before their parents: these have no
// place at any time.
bool find_bones(VEX2_LOADER::VEX2 const &scene, BONE_NAME_TABLE const &table, VEX2_FILTER const &filter, bool all_nodes,
                KN_STD::VECTOR<ANIMATION_BONE> &bones, KN::String &fault);

}  // namespace TOOLDATABUILDER
