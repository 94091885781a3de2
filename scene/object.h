// VEX2_OBJECT: what stands in a scene. An object holds no transform of its own but the index of the node that places
// it.
#pragma once

#include "scene/attributes.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_OBJECT : public VEX2_NAMED, public VEX2_ANIMATED {
public:
    KN::UniString second_text;
    KN::UniString third_text;
    std::uint32_t matrix_index = 0;  // into hierarchy.nodes; not checked by the load
    VEX2_ATTRIBUTES attributes;
    VEX2_OWNED<VEX2_VECTOR_PAIR_CHANNEL> extent;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("second_text", &VEX2_OBJECT::second_text);
        v("third_text", &VEX2_OBJECT::third_text);
        v("matrix_index", &VEX2_OBJECT::matrix_index);
        v("attributes", &VEX2_OBJECT::attributes, 1.04f);
        v("extent", &VEX2_OBJECT::extent, 1.13f);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_HELPER : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    std::uint32_t chunk_type() const override { return 17; }
};

}  // namespace VEX2_LOADER
