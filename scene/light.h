// Lights: channels that are read, kept, moved in time and written back. Names are by position.
#pragma once

#include "scene/map.h"
#include "scene/object.h"

namespace VEX2_LOADER {

class SCENE_API VEX2_LIGHT_RANGE : public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_INT_CHANNEL> enabled;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> start;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> end;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("enabled", &VEX2_LIGHT_RANGE::enabled);
        v("start", &VEX2_LIGHT_RANGE::start);
        v("end", &VEX2_LIGHT_RANGE::end);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_SHADOW_LOOK : public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> value;
    VEX2_OWNED<VEX2_INT_CHANNEL> first_number;
    VEX2_OWNED<VEX2_MAP> map;
    VEX2_OWNED<VEX2_INT_CHANNEL> second_number;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("colour", &VEX2_SHADOW_LOOK::colour);
        v("value", &VEX2_SHADOW_LOOK::value);
        v("first_number", &VEX2_SHADOW_LOOK::first_number);
        v("map", &VEX2_SHADOW_LOOK::map);
        v("second_number", &VEX2_SHADOW_LOOK::second_number);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_SHADOW_BIAS : public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_INT_CHANNEL> number;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> first_value;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> second_value;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("number", &VEX2_SHADOW_BIAS::number);
        v("first_value", &VEX2_SHADOW_BIAS::first_value);
        v("second_value", &VEX2_SHADOW_BIAS::second_value);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_SHADOW_FILTER : public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> first_value;
    VEX2_OWNED<VEX2_INT_CHANNEL> first_number;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> second_value;
    VEX2_OWNED<VEX2_INT_CHANNEL> second_number;
    VEX2_OWNED<VEX2_INT_CHANNEL> third_number;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("first_value", &VEX2_SHADOW_FILTER::first_value);
        v("first_number", &VEX2_SHADOW_FILTER::first_number);
        v("second_value", &VEX2_SHADOW_FILTER::second_value);
        v("second_number", &VEX2_SHADOW_FILTER::second_number);
        v("third_number", &VEX2_SHADOW_FILTER::third_number);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_LIGHT_SHADOW : public VEX2_ANIMATED {
public:
    VEX2_OWNED<VEX2_INT_CHANNEL> enabled;
    VEX2_SHADOW_LOOK look;
    VEX2_SHADOW_BIAS bias;
    VEX2_SHADOW_FILTER filter;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("enabled", &VEX2_LIGHT_SHADOW::enabled);
        v.as_array("look", &VEX2_LIGHT_SHADOW::look);
        v.as_array("bias", &VEX2_LIGHT_SHADOW::bias);
        v.as_array("filter", &VEX2_LIGHT_SHADOW::filter);
    }
    VEX2_ANIMATED_OPERATIONS
};

class SCENE_API VEX2_LIGHT : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    VEX2_OWNED<VEX2_INT_CHANNEL> enabled;
    VEX2_OWNED<VEX2_COLOUR_CHANNEL> colour_0, colour_1, colour_2;
    VEX2_OWNED<VEX2_VECTOR_CHANNEL> target;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> intensity;
    VEX2_OWNED<VEX2_MAP> projector;
    VEX2_LIGHT_RANGE near_range, far_range;
    VEX2_LIGHT_SHADOW shadow;

    virtual bool equals(VEX2_LIGHT const &other) const = 0;
    virtual std::uint32_t subtype() const = 0;
    virtual VEX2_LIGHT *clone() const = 0;
    std::uint32_t chunk_type() const override { return 5; }

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v("enabled", &VEX2_LIGHT::enabled, 1.07f);
        v("colour_0", &VEX2_LIGHT::colour_0, 1.07f);
        v("colour_1", &VEX2_LIGHT::colour_1, 1.07f);
        v("colour_2", &VEX2_LIGHT::colour_2, 1.07f);
        v("target", &VEX2_LIGHT::target, 1.07f);
        v("intensity", &VEX2_LIGHT::intensity, 1.07f);
        v("projector", &VEX2_LIGHT::projector, 1.07f);
        v("near_range", &VEX2_LIGHT::near_range, 1.05f);
        v("far_range", &VEX2_LIGHT::far_range, 1.05f);
        v("shadow", &VEX2_LIGHT::shadow, 1.07f);
    }
};

// What spot and direct lights have in common; the two differ in their number only.
template <std::uint32_t SUBTYPE>
class SCENE_API VEX2_SPREAD_LIGHT : public VEX2_LIGHT {
public:
    static constexpr std::uint32_t kind = SUBTYPE;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> spread_inner, spread_outer;
    std::uint32_t spread_shape = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_LIGHT::fields(v);
        v("spread_inner", &VEX2_SPREAD_LIGHT::spread_inner);
        v("spread_outer", &VEX2_SPREAD_LIGHT::spread_outer);
        v("spread_shape", &VEX2_SPREAD_LIGHT::spread_shape);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_LIGHT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_SPREAD_LIGHT *clone() const override { return new VEX2_SPREAD_LIGHT(*this); }
};

using VEX2_SPOT_LIGHT = VEX2_SPREAD_LIGHT<0>;
using VEX2_DIRECT_LIGHT = VEX2_SPREAD_LIGHT<2>;

class SCENE_API VEX2_OMNI_LIGHT : public VEX2_LIGHT {
public:
    static constexpr std::uint32_t kind = 1;
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_LIGHT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_OMNI_LIGHT *clone() const override { return new VEX2_OMNI_LIGHT(*this); }
};

}  // namespace VEX2_LOADER
