// The transform hierarchy: one array of nodes, parents before children, each with keyed translation, rotation and
// scale. A seek gives every node its world matrix.
#pragma once

#include "scene/attributes.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_MATRIX_NODE : public VEX2_NAMED, public VEX2_ANIMATED {
public:
    std::int32_t parent_index = -1;  // negative: a root
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> translation;
    VEX2_OWNED<VEX2_ROTATION_CHANNEL> rotation;
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> scale;
    VEX2_MATRIX const *parent = nullptr;  // the parent node's `matrix`; set by VEX2_MATRIX_HIERARCHY::link
    VEX2_MATRIX matrix;                   // world
    KN::UniString node_text;
    VEX2_ATTRIBUTES attributes;

    VEX2_MATRIX_NODE() = default;
    // A deep copy without a parent pointer: the copy may stand in another array.
    VEX2_MATRIX_NODE(VEX2_MATRIX_NODE const &other);
    VEX2_MATRIX_NODE(VEX2_MATRIX_NODE &&) = default;
    VEX2_MATRIX_NODE &operator=(VEX2_MATRIX_NODE const &other);
    VEX2_MATRIX_NODE &operator=(VEX2_MATRIX_NODE &&) = default;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("parent_index", &VEX2_MATRIX_NODE::parent_index);
        v("translation", &VEX2_MATRIX_NODE::translation);
        v("rotation", &VEX2_MATRIX_NODE::rotation);
        v("scale", &VEX2_MATRIX_NODE::scale, 1.15f);
        v.stored_matrix("matrix", &VEX2_MATRIX_NODE::matrix);
        v("node_text", &VEX2_MATRIX_NODE::node_text);
        v("attributes", &VEX2_MATRIX_NODE::attributes, 1.04f);
    }
    VEX2_SERIAL_OPERATIONS
    // Moves the channels, then recomputes `matrix` from them and from `parent`. A node without translation or rotation
    // keeps its matrix as it is.
    VEX2_ANIMATED_OPERATIONS

private:
    void update_matrix();
};

class SCENE_API VEX2_MATRIX_HIERARCHY : public VEX2_SERIAL, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    KN::DynamicArray<VEX2_MATRIX_NODE> nodes;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("nodes", &VEX2_MATRIX_HIERARCHY::nodes);
    }
    VEX2_SERIAL_OPERATIONS
    // Both link the nodes first, so that nodes may be appended, copied and moved at will in between.
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 12; }

    // Points every node's `parent` at its parent in `nodes`; null for roots and for an index that names no node.
    void link();

    // For makers of scenes: appends a node with constant channels and gives its index. Without a scale there is no
    // scale channel.
    std::uint32_t add_node(std::u16string_view name, std::int32_t parent_index, VEX2_VECTOR const &translation,
                           VEX2_QUATERNION const &rotation = {}, VEX2_VECTOR const *scale = nullptr);
};

}  // namespace VEX2_LOADER
