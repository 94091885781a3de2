// The nodes that a model's weighted meshes hang on, in the pose in which they were bound.
#pragma once

#include "platform/gltf/document.h"
#include "scene/scene.h"

namespace TOOLDATABUILDER {

class MODEL_SKELETON {
public:
    // Collects the nodes that the meshes' influences name, and the mesh's own node for vertices without influence.
    void add(VEX2_LOADER::VEX2 const &scene, VEX2_LOADER::VEX2_WEIGHTED_MESH const &mesh);
    // To be called once all meshes have been added, before what follows.
    void number_joints();
    std::size_t joint_count() const { return joint_nodes.size(); }

    // The number of the joint that stands for a node of the scene; the node was collected.
    std::uint32_t joint_of(std::uint32_t node) const { return joint_by_node[node]; }
    // That of the node which carries the mesh: what vertices without influence hang on.
    std::uint32_t home_of(VEX2_LOADER::VEX2_WEIGHTED_MESH const &mesh) const
    {
        return mesh.matrix_index < joint_by_node.size() ? joint_by_node[mesh.matrix_index] : 0;
    }

    // Appends the nodes, with those above them, and the skin, which then is the document's only one. False, with a line
    // in `error`, if a node has no inverse.
    bool write(VEX2_LOADER::VEX2 const &scene, GLTF::DOCUMENT &document, KN::String &error);

private:
    std::vector<std::uint32_t> joint_nodes;  // ascending
    std::vector<std::uint32_t> joint_by_node;
    std::vector<bool> is_joint;
};

}  // namespace TOOLDATABUILDER
