// Attachments, links and name links: objects that point at others by carried numbers. The scene keeps attachments in
// ten lists; four of them belong to a mesh kind (see VEX2), and a polygon attachment there holds triangles in the
// vertex numbering of the mesh at `index` of that kind.
#pragma once

#include "scene/mesh.h"

#include <limits>

namespace VEX2_LOADER {

class SCENE_API VEX2_ATTACHMENT : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    static constexpr std::uint32_t kind = 0;
    std::uint32_t index = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v.obsolete_channel(1.12f, 1.13f);
        v("index", &VEX2_ATTACHMENT::index);
    }
    VEX2_SERIAL_OPERATIONS
    virtual bool equals(VEX2_ATTACHMENT const &other) const;
    virtual std::uint32_t subtype() const { return kind; }
    virtual VEX2_ATTACHMENT *clone() const { return new VEX2_ATTACHMENT(*this); }
    std::uint32_t chunk_type() const override { return 14; }
};

class SCENE_API VEX2_INDEX_ATTACHMENT : public VEX2_ATTACHMENT {
public:
    static constexpr std::uint32_t kind = 1;
    KN::DynamicArray<std::uint32_t> indices;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_ATTACHMENT::fields(v);
        v("indices", &VEX2_INDEX_ATTACHMENT::indices);
    }
    VEX2_SERIAL_OPERATIONS
    bool equals(VEX2_ATTACHMENT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_INDEX_ATTACHMENT *clone() const override { return new VEX2_INDEX_ATTACHMENT(*this); }
    std::uint32_t chunk_type() const override { return 16; }
};

class SCENE_API VEX2_WEIGHT_ATTACHMENT : public VEX2_INDEX_ATTACHMENT {
public:
    static constexpr std::uint32_t kind = 2;
    KN::DynamicArray<std::uint32_t> second_indices;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_INDEX_ATTACHMENT::fields(v);
        v("second_indices", &VEX2_WEIGHT_ATTACHMENT::second_indices);
    }
    VEX2_SERIAL_OPERATIONS
    bool equals(VEX2_ATTACHMENT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_WEIGHT_ATTACHMENT *clone() const override { return new VEX2_WEIGHT_ATTACHMENT(*this); }
    std::uint32_t chunk_type() const override { return 18; }
};

class SCENE_API VEX2_POLYGON_ATTACHMENT : public VEX2_INDEX_ATTACHMENT {
public:
    static constexpr std::uint32_t kind = 3;
    KN::DynamicArray<VEX2_POLYGON_SET> sections;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_INDEX_ATTACHMENT::fields(v);
        v("sections", &VEX2_POLYGON_ATTACHMENT::sections);
    }
    VEX2_SERIAL_OPERATIONS
    bool equals(VEX2_ATTACHMENT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_POLYGON_ATTACHMENT *clone() const override { return new VEX2_POLYGON_ATTACHMENT(*this); }
    std::uint32_t chunk_type() const override { return 19; }
};

class SCENE_API VEX2_LINK : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    KN::DynamicArray<std::uint32_t> indices;
    KN::UniString first_text;
    std::int32_t number = 0x7fffffff;
    KN::UniString second_text_of_link;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v("indices", &VEX2_LINK::indices);
        v.obsolete_channel(1.12f, 1.13f);
        v("first_text", &VEX2_LINK::first_text);
        v("number", &VEX2_LINK::number);
        v("second_text_of_link", &VEX2_LINK::second_text_of_link);
    }
    VEX2_SERIAL_OPERATIONS
    std::uint32_t chunk_type() const override { return 21; }
};

class SCENE_API VEX2_NAME_LINK : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    KN::DynamicArray<std::uint32_t> indices;
    KN::UniString link_text;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v.obsolete_channel(-std::numeric_limits<float>::infinity(), 1.13f);
        v("indices", &VEX2_NAME_LINK::indices);
        v("link_text", &VEX2_NAME_LINK::link_text);
    }
    VEX2_SERIAL_OPERATIONS
    std::uint32_t chunk_type() const override { return 23; }
};

}  // namespace VEX2_LOADER
