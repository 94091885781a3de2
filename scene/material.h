// Materials: the classic kind with colours, amounts and a tree of maps, and the kind that names a shader and lists its
// parameters. The meaning of most numbers lies with the exporter; the names here are names of convenience.
#pragma once

#include "scene/map.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_MATERIAL : public VEX2_NAMED, public VEX2_ANIMATED, public VEX2_CHUNK {
public:
    KN::UniString second_name;
    VEX2_ATTRIBUTES attributes;

    virtual bool equals(VEX2_MATERIAL const &other) const = 0;
    virtual std::uint32_t subtype() const = 0;
    virtual VEX2_MATERIAL *clone() const = 0;
    std::uint32_t chunk_type() const override { return 13; }

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("second_name", &VEX2_MATERIAL::second_name, 1.08f);
        v("attributes", &VEX2_MATERIAL::attributes, 1.15f);
    }
};

class SCENE_API VEX2_STANDARD_MATERIAL : public VEX2_MATERIAL {
public:
    static constexpr std::uint32_t kind = 0;
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour_0, colour_1, colour_2, colour_3;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> amount_0, amount_1, amount_2, amount_3;
    bool flag = false;
    std::uint32_t mode = 0;
    KN::DynamicArray<VEX2_OWNED<VEX2_MAP>> maps;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_MATERIAL::fields(v);
        v("colour_0", &VEX2_STANDARD_MATERIAL::colour_0);
        v("colour_1", &VEX2_STANDARD_MATERIAL::colour_1);
        v("colour_2", &VEX2_STANDARD_MATERIAL::colour_2);
        v("colour_3", &VEX2_STANDARD_MATERIAL::colour_3);
        v("amount_0", &VEX2_STANDARD_MATERIAL::amount_0);
        v("amount_1", &VEX2_STANDARD_MATERIAL::amount_1);
        v("amount_2", &VEX2_STANDARD_MATERIAL::amount_2);
        v("amount_3", &VEX2_STANDARD_MATERIAL::amount_3);
        v("flag", &VEX2_STANDARD_MATERIAL::flag);
        v("mode", &VEX2_STANDARD_MATERIAL::mode);
        v("maps", &VEX2_STANDARD_MATERIAL::maps);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_MATERIAL const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_STANDARD_MATERIAL *clone() const override { return new VEX2_STANDARD_MATERIAL(*this); }
};

struct SCENE_API VEX2_SHADER_TEXTURE {
    KN::UniString slot;
    KN::UniString file;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("slot", &VEX2_SHADER_TEXTURE::slot);
        v("file", &VEX2_SHADER_TEXTURE::file);
    }
};

struct SCENE_API VEX2_SHADER_SLOT {
    KN::UniString name;
    std::uint32_t numbers[2] = {};

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("name", &VEX2_SHADER_SLOT::name);
        v("numbers", &VEX2_SHADER_SLOT::numbers);
    }
};

class SCENE_API VEX2_SHADER_MATERIAL : public VEX2_MATERIAL {
public:
    static constexpr std::uint32_t kind = 1;
    KN::UniString shader;
    std::uint32_t technique = 0;
    KN::DynamicArray<VEX2_SHADER_TEXTURE> textures;
    KN::DynamicArray<VEX2_SHADER_SLOT> slots;
    KN::DynamicArray<VEX2_FLOAT_ATTRIBUTE> floats;
    KN::DynamicArray<VEX2_INT_ATTRIBUTE> ints;
    KN::DynamicArray<VEX2_VECTOR_ATTRIBUTE> vectors;
    KN::DynamicArray<VEX2_VECTOR4_ATTRIBUTE> vector4s;
    std::uint32_t last_value = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_MATERIAL::fields(v);
        v("shader", &VEX2_SHADER_MATERIAL::shader);
        v("technique", &VEX2_SHADER_MATERIAL::technique);
        v("textures", &VEX2_SHADER_MATERIAL::textures);
        v("slots", &VEX2_SHADER_MATERIAL::slots);
        v("floats", &VEX2_SHADER_MATERIAL::floats);
        v("ints", &VEX2_SHADER_MATERIAL::ints);
        v("vectors", &VEX2_SHADER_MATERIAL::vectors);
        v("vector4s", &VEX2_SHADER_MATERIAL::vector4s);
        v("last_value", &VEX2_SHADER_MATERIAL::last_value, 1.14f);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_MATERIAL const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_SHADER_MATERIAL *clone() const override { return new VEX2_SHADER_MATERIAL(*this); }
};

}  // namespace VEX2_LOADER
