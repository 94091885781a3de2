#include "platform/exchange/bone_table.h"

#include "foundation/containers.h"
#include "foundation/finished_file.h"
#include "scene/scene.h"

using namespace VEX2_LOADER;

namespace {

// Of the nodes that weighted vertices hang on.
KN_STD::VECTOR<bool> skinned_nodes(VEX2 const &scene)
{
    KN_STD::VECTOR<bool> skinned(scene.hierarchy.nodes.count, false);
    for (VEX2_WEIGHTED_MESH const *mesh : scene.weighted_meshes)
        if (mesh != nullptr)
            for (VEX2_WEIGHTED_VERTEX const &vertex : mesh->vertices)
                for (VEX2_INFLUENCE const &influence : vertex.influences)
                    if (influence.matrix_index < skinned.size())
                        skinned[influence.matrix_index] = true;
    return skinned;
}

KN_STD::VECTOR<bool> carrying_nodes(VEX2 const &scene)
{
    KN_STD::VECTOR<bool> carrying(scene.hierarchy.nodes.count, false);
    auto const mark = [&](auto const &objects) {
        for (VEX2_OBJECT const *object : objects)
            if (object != nullptr && object->matrix_index < carrying.size())
                carrying[object->matrix_index] = true;
    };
    mark(scene.static_meshes);
    mark(scene.animated_meshes);
    mark(scene.morph_meshes);
    mark(scene.weighted_meshes);
    mark(scene.cameras);
    mark(scene.lights);
    return carrying;
}

KN::String quoted(KN::UniString const &name)
{
    KN::String text = "\"";
    for (char const c : KN::to_utf8(name)) {
        char escaped[8];
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned(static_cast<unsigned char>(c)));
            text += escaped;
        } else {
            text += c;
        }
    }
    return text + "\"";
}

}  // namespace

bool write_bone_table(VEX2 const &scene, KN::String const &source, KN::String const &target, KN::String &error)
{
    auto const fail = [&](KN::String const &what) {
        error = KN::printable(source) + ": " + what;
        return false;
    };
    KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes = scene.hierarchy.nodes;
    if (nodes.empty())
        return fail("the scene has no nodes; a skeleton needs some");
    for (unsigned i = 0; i < nodes.count; ++i)
        if (nodes[i].parent_index >= int(i))
            return fail("node " + std::to_string(i) + " stands before its parent; export the scene again");

    // below[i]: how many skinned nodes stand at or below node i. The last node with all of them is the lowest one.
    KN_STD::VECTOR<bool> const skinned = skinned_nodes(scene);
    KN_STD::VECTOR<unsigned> below(nodes.count, 0);
    unsigned all = 0, roots = 0;
    for (unsigned i = nodes.count; i-- > 0;) {
        below[i] += skinned[i];
        all += skinned[i];
        if (nodes[i].parent_index >= 0)
            below[unsigned(nodes[i].parent_index)] += below[i];
        else
            ++roots;
    }
    if (all == 0 && roots > 1)
        return fail("the scene has several root nodes and no skin; put the skeleton under one node");
    unsigned root = nodes.count;
    for (unsigned i = 0; i < nodes.count; ++i)
        if (all == 0 ? nodes[i].parent_index < 0 : below[i] == all)
            root = i;
    if (root == nodes.count)
        return fail("the skin hangs on nodes below different roots; put the skeleton under one node");

    KN_STD::VECTOR<bool> const carrying = carrying_nodes(scene);
    KN_STD::VECTOR<bool> taken(nodes.count, false);
    KN_STD::SET<KN::UniString> names;
    KN::String bones;
    for (unsigned i = root; i < nodes.count; ++i) {
        unsigned const parent = unsigned(nodes[i].parent_index);
        taken[i] = i == root || (nodes[i].parent_index >= 0 && taken[parent] && (below[i] != 0 || !carrying[i]));
        if (!taken[i])
            continue;
        if (!names.insert(nodes[i].name.lower()).second)
            return fail("two bones are called " + quoted(nodes[i].name) + "; rename one");
        bones +=
            "    [" + quoted(nodes[i].name) + ", " + quoted(i == root ? KN::UniString() : nodes[parent].name) + "],\n";
    }
    KN::String const text = "root = " + quoted(nodes[root].name) + "\npreferred = false\nbones = [\n" + bones + "]\n";
    if (KN::write_finished_file(target, text, error))
        return true;
    error += "; check the folder";
    return false;
}
