// Named values that artists attach to objects, nodes and materials.
#pragma once

#include "scene/channel.h"

#include <string_view>

namespace VEX2_LOADER {

class SCENE_API VEX2_NAMED : public VEX2_SERIAL {
public:
    KN::UniString name;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("name", &VEX2_NAMED::name);
    }
    VEX2_SERIAL_OPERATIONS
};

class SCENE_API VEX2_STRING_ATTRIBUTE : public VEX2_NAMED {
public:
    KN::DynamicArray<KN::UniString> values;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("values", &VEX2_STRING_ATTRIBUTE::values);
    }
    VEX2_SERIAL_OPERATIONS
};

template <class CHANNEL>
class SCENE_API VEX2_CHANNEL_ATTRIBUTE : public VEX2_NAMED, public VEX2_ANIMATED {
public:
    VEX2_OWNED<CHANNEL> value;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_NAMED::fields(v);
        v("value", &VEX2_CHANNEL_ATTRIBUTE::value);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
};

using VEX2_INT_ATTRIBUTE = VEX2_CHANNEL_ATTRIBUTE<VEX2_INT_CHANNEL>;
using VEX2_FLOAT_ATTRIBUTE = VEX2_CHANNEL_ATTRIBUTE<VEX2_FLOAT_CHANNEL>;
using VEX2_VECTOR_ATTRIBUTE = VEX2_CHANNEL_ATTRIBUTE<VEX2_VECTOR_CHANNEL>;
using VEX2_VECTOR4_ATTRIBUTE = VEX2_CHANNEL_ATTRIBUTE<VEX2_VECTOR4_CHANNEL>;

// Not VEX2_ANIMATED: the channels of attributes keep their position when a scene moves in time.
class SCENE_API VEX2_ATTRIBUTES : public VEX2_SERIAL {
public:
    KN::DynamicArray<VEX2_STRING_ATTRIBUTE> strings;
    KN::DynamicArray<VEX2_INT_ATTRIBUTE> ints;
    KN::DynamicArray<VEX2_FLOAT_ATTRIBUTE> floats;
    KN::DynamicArray<VEX2_VECTOR_ATTRIBUTE> vectors;
    KN::DynamicArray<VEX2_VECTOR4_ATTRIBUTE> vector4s;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("strings", &VEX2_ATTRIBUTES::strings);
        v("ints", &VEX2_ATTRIBUTES::ints);
        v("floats", &VEX2_ATTRIBUTES::floats);
        v("vectors", &VEX2_ATTRIBUTES::vectors);
        v("vector4s", &VEX2_ATTRIBUTES::vector4s);
    }
    VEX2_SERIAL_OPERATIONS

    // The value of the first string attribute of that exact name that has exactly one value; null if there is none.
    KN::UniString const *single_string(std::u16string_view attribute) const;
    // "class_TYPE", by which artists sort objects ("DISPLAY", "TECH"): null if the object has none.
    KN::UniString const *class_type() const { return single_string(u"class_TYPE"); }

    // For makers of scenes: appends a string attribute with that one value.
    void add_string(std::u16string_view attribute, std::u16string_view value);
};

}  // namespace VEX2_LOADER
