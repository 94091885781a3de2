#include "platform/conversion/model_skeleton.h"

#include "platform/conversion/node_pose.h"

#include <algorithm>
#include <cmath>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

// The parent, if it stands before its child as it should; else -1, and the node counts as a root.
std::int32_t parent_of(KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes, std::uint32_t index)
{
    std::int32_t const parent = nodes[index].parent_index;
    return parent >= 0 && std::uint32_t(parent) < index ? parent : -1;
}

void take_local_pose(KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes, std::uint32_t index, GLTF::NODE &to)
{
    VEX2_MATRIX_NODE const &node = nodes[index];
    double local[3][4];
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 4; ++c)
            local[r][c] = double(node.matrix[r][c]);
    std::int32_t const parent = parent_of(nodes, index);
    double to_parent[3][4];
    if (parent >= 0 && invert(nodes[std::uint32_t(parent)].matrix, to_parent)) {
        double world[3][4];
        std::copy(&local[0][0], &local[0][0] + 12, &world[0][0]);
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 4; ++c)
                local[r][c] = to_parent[r][0] * world[0][c] + to_parent[r][1] * world[1][c] +
                              to_parent[r][2] * world[2][c] + (c == 3 ? to_parent[r][3] : 0);
    }
    NODE_POSE const pose = pose_of(local);
    std::copy_n(pose.translation, 3, to.translation);
    std::copy_n(pose.rotation, 4, to.rotation);
    std::copy_n(pose.scale, 3, to.scale);
}

KN::String flat_node_text(std::string const &name)
{
    return "node '" + name + "' has no size in one direction; meshes cannot be bound to it";
}

bool is_finite(GLTF::NODE const &node)
{
    float sum = 0;
    for (int i = 0; i < 3; ++i)
        sum += node.translation[i] + node.scale[i] + node.rotation[i];
    return std::isfinite(sum + node.rotation[3]);
}

}  // namespace

void MODEL_SKELETON::add(VEX2 const &scene, VEX2_WEIGHTED_MESH const &mesh)
{
    std::uint32_t const count = scene.hierarchy.nodes.count;
    is_joint.resize(count);
    for (VEX2_WEIGHTED_VERTEX const &vertex : mesh.vertices)
        for (VEX2_INFLUENCE const &influence : vertex.influences)
            if (influence.matrix_index < count)
                is_joint[influence.matrix_index] = true;
    if (mesh.matrix_index < count)
        is_joint[mesh.matrix_index] = true;
}

void MODEL_SKELETON::number_joints()
{
    joint_nodes.clear();
    joint_by_node.assign(is_joint.size(), 0);
    for (std::uint32_t node = 0; node < is_joint.size(); ++node) {
        if (!is_joint[node])
            continue;
        joint_by_node[node] = std::uint32_t(joint_nodes.size());
        joint_nodes.push_back(node);
    }
}

bool MODEL_SKELETON::write(VEX2 const &scene, GLTF::DOCUMENT &document, KN::String &error)
{
    // The pose at the start is that of the bind positions; the scene itself stays at its current time.
    VEX2_MATRIX_HIERARCHY bound(scene.hierarchy);
    bound.seek(scene.info.start_time);
    KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes = bound.nodes;

    std::vector<bool> is_needed = is_joint;
    for (std::uint32_t node = nodes.count; node-- > 0;)
        if (is_needed[node] && parent_of(nodes, node) >= 0)
            is_needed[std::uint32_t(parent_of(nodes, node))] = true;

    // The joints of a skin need one node above them all.
    int const root = int(document.nodes.size());
    document.roots.push_back(root);
    document.nodes.emplace_back().name = "skeleton";
    std::vector<int> written(nodes.count, -1);
    for (std::uint32_t node = 0; node < nodes.count; ++node) {
        if (!is_needed[node])
            continue;
        GLTF::NODE made;
        made.name = KN::to_utf8(nodes[node].name);
        take_local_pose(nodes, node, made);
        if (!is_finite(made)) {
            error = flat_node_text(made.name);
            return false;
        }
        written[node] = int(document.nodes.size());
        std::int32_t const parent = parent_of(nodes, node);
        int const above = parent >= 0 ? written[std::uint32_t(parent)] : root;
        document.nodes[std::size_t(above)].children.push_back(written[node]);
        document.nodes.push_back(std::move(made));
    }

    GLTF::SKIN skin;
    skin.inverse_bind_matrices = document.buffer.add(GLTF::COMPONENT::F32, 16, joint_nodes.size(), GLTF::USE::OTHER);
    if (skin.inverse_bind_matrices < 0)
        return true;  // the writer refuses the buffer
    float *to = document.buffer.at<float>(skin.inverse_bind_matrices);
    for (std::uint32_t const node : joint_nodes) {
        double inverse[3][4];
        if (!invert(nodes[node].matrix, inverse)) {
            error = flat_node_text(KN::to_utf8(nodes[node].name));
            return false;
        }
        for (int c = 0; c < 4; ++c) {
            for (int r = 0; r < 3; ++r)
                *to++ = float(inverse[r][c]);
            *to++ = c == 3 ? 1.0f : 0.0f;
        }
        skin.joints.push_back(written[node]);
    }
    document.skins.push_back(std::move(skin));
    return true;
}

}  // namespace TOOLDATABUILDER
