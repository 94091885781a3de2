// Cameras and their effects: channels by position.
#pragma once

#include "scene/object.h"

namespace VEX2_LOADER {

// An effect is a fixed list of channels; what channel stands at which place is the business of the class.
class SCENE_API VEX2_CAMERA_EFFECT : public VEX2_SERIAL, public VEX2_ANIMATED {
public:
    virtual bool equals(VEX2_CAMERA_EFFECT const &other) const = 0;
    virtual std::uint32_t subtype() const = 0;
    virtual VEX2_CAMERA_EFFECT *clone() const = 0;
};

class SCENE_API VEX2_BLUR_EFFECT : public VEX2_CAMERA_EFFECT {
public:
    static constexpr std::uint32_t kind = 0;
    VEX2_OWNED<VEX2_INT_CHANNEL> number_0, number_3, number_5, number_6, number_7;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> value_1, value_2, value_4;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("number_0", &VEX2_BLUR_EFFECT::number_0);
        v("value_1", &VEX2_BLUR_EFFECT::value_1);
        v("value_2", &VEX2_BLUR_EFFECT::value_2);
        v("number_3", &VEX2_BLUR_EFFECT::number_3);
        v("value_4", &VEX2_BLUR_EFFECT::value_4);
        v("number_5", &VEX2_BLUR_EFFECT::number_5);
        v("number_6", &VEX2_BLUR_EFFECT::number_6);
        v("number_7", &VEX2_BLUR_EFFECT::number_7);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_CAMERA_EFFECT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_BLUR_EFFECT *clone() const override { return new VEX2_BLUR_EFFECT(*this); }
};

class SCENE_API VEX2_DEPTH_EFFECT : public VEX2_CAMERA_EFFECT {
public:
    static constexpr std::uint32_t kind = 1;
    VEX2_OWNED<VEX2_INT_CHANNEL> number_0, number_2, number_3, number_6, number_8, number_9, number_10;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> value_1, value_4, value_5, value_7;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("number_0", &VEX2_DEPTH_EFFECT::number_0);
        v("value_1", &VEX2_DEPTH_EFFECT::value_1);
        v("number_2", &VEX2_DEPTH_EFFECT::number_2);
        v("number_3", &VEX2_DEPTH_EFFECT::number_3);
        v("value_4", &VEX2_DEPTH_EFFECT::value_4);
        v("value_5", &VEX2_DEPTH_EFFECT::value_5);
        v("number_6", &VEX2_DEPTH_EFFECT::number_6);
        v("value_7", &VEX2_DEPTH_EFFECT::value_7);
        v("number_8", &VEX2_DEPTH_EFFECT::number_8);
        v("number_9", &VEX2_DEPTH_EFFECT::number_9);
        v("number_10", &VEX2_DEPTH_EFFECT::number_10);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    bool equals(VEX2_CAMERA_EFFECT const &other) const override;
    std::uint32_t subtype() const override { return kind; }
    VEX2_DEPTH_EFFECT *clone() const override { return new VEX2_DEPTH_EFFECT(*this); }
};

class SCENE_API VEX2_CAMERA : public VEX2_OBJECT, public VEX2_CHUNK {
public:
    std::uint32_t kind = 0;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> first_value;
    VEX2_OWNED<VEX2_FLOAT_CHANNEL> second_value;
    VEX2_OWNED<VEX2_RANGE_CHANNEL> first_range;
    VEX2_OWNED<VEX2_RANGE_CHANNEL> second_range;
    KN::DynamicArray<VEX2_OWNED<VEX2_CAMERA_EFFECT>> effects;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        VEX2_OBJECT::fields(v);
        v("kind", &VEX2_CAMERA::kind);
        v("first_value", &VEX2_CAMERA::first_value);
        v("second_value", &VEX2_CAMERA::second_value);
        v("first_range", &VEX2_CAMERA::first_range);
        v("second_range", &VEX2_CAMERA::second_range);
        v("effects", &VEX2_CAMERA::effects);
    }
    VEX2_SERIAL_OPERATIONS
    VEX2_ANIMATED_OPERATIONS
    std::uint32_t chunk_type() const override { return 6; }
};

}  // namespace VEX2_LOADER
