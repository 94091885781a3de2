#include "platform/conversion/animation_bones.h"

#include "Plugins/Vx2/host/bone_name_table.h"
#include "Plugins/Vx2/host/vex2_filter.h"
#include "scene/scene.h"

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

using NODES = KN::DynamicArray<VEX2_MATRIX_NODE>;

KN::String bone_name(VEX2_MATRIX_NODE const &node) { return KN::to_utf8(node.name).lower(); }

// The node that stands before its parent, if there is one. Nothing else can make parents lead round in a ring.
bool is_ordered(NODES const &nodes, KN::String &fault)
{
    for (std::uint32_t i = 0; i < nodes.count; ++i) {
        if (nodes[i].parent_index < std::int32_t(i))
            continue;
        fault = "node " + std::to_string(i) + " '" + KN::printable(KN::to_utf8(nodes[i].name)) +
                "' stands before its parent; export the scene again";
        return false;
    }
    return true;
}

void take_nodes(NODES const &nodes, VEX2_FILTER const &filter, KN_STD::VECTOR<ANIMATION_BONE> &bones)
{
    KN_STD::VECTOR<std::int32_t> nearest(nodes.count, -1);  // the bone at or above each node
    for (std::uint32_t i = 0; i < nodes.count; ++i) {
        std::int32_t const parent = nodes[i].parent_index;
        nearest[i] = parent >= 0 ? nearest[std::uint32_t(parent)] : -1;
        if (!filter.node(nodes, int(i)))
            continue;
        bones.push_back({bone_name(nodes[i]), nearest[i], i});
        nearest[i] = std::int32_t(bones.size()) - 1;
    }
}

bool take_named(NODES const &nodes, BONE_NAME_TABLE const &table, VEX2_FILTER const &filter,
                KN_STD::VECTOR<ANIMATION_BONE> &bones, KN::String &fault)
{
    KN_STD::MAP<KN::String, std::uint32_t> by_name;
    for (std::uint32_t i = 0; i < nodes.count; ++i)
        if (filter.node(nodes, int(i)))
            by_name.emplace(bone_name(nodes[i]), i);

    constexpr std::size_t named_at_most = 5;
    std::size_t missing = 0;
    for (BONE_NAME_TABLE::BONE const &bone : table.bones) {
        auto const found = by_name.find(bone.name);
        if (found != by_name.end())
            bones.push_back({bone.name, bone.parent, found->second});
        else if (++missing <= named_at_most)
            fault += (missing == 1 ? "'" : ", '") + KN::printable(bone.name) + "'";
    }
    if (missing == 0)
        return true;
    if (missing > named_at_most)
        fault += " and " + std::to_string(missing - named_at_most) + " more";
    fault = "skeleton '" + KN::printable(table.name) + "' does not fit: no node is called " + fault;
    return false;
}

}  // namespace

bool find_bones(VEX2 const &scene, BONE_NAME_TABLE const &table, VEX2_FILTER const &filter, bool all_nodes,
                KN_STD::VECTOR<ANIMATION_BONE> &bones, KN::String &fault)
{
    NODES const &nodes = scene.hierarchy.nodes;
    fault.clear();
    bones.clear();
    if (!is_ordered(nodes, fault))
        return false;
    if (!all_nodes && !table.any_nodes)
        return take_named(nodes, table, filter, bones, fault);
    take_nodes(nodes, filter, bones);
    if (bones.empty())
        fault = "the scene has no nodes for a skeleton";
    return !bones.empty();
}

}  // namespace TOOLDATABUILDER
