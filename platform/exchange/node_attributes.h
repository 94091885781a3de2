// What artists wrote on a node in their tool, as string attributes: extras of glTF, user properties of FBX.
#pragma once

struct aiNode;

namespace VEX2_LOADER {
class VEX2_ATTRIBUTES;
}

// A list becomes one attribute with several values; what stands within a group is called "group.name".
void add_node_attributes(aiNode const &node, VEX2_LOADER::VEX2_ATTRIBUTES &attributes);
