// Keyed values: key times, key values and a position that remembers the key last used. Nearly every number of a scene
// stands in one of the twelve kinds of channel; a channel with one key is a constant.
//
// Times are seconds and ascend strictly. Files are not trusted in this: a position or an array that does not fit is met
// with the nearest key, a channel without values has the value zero (identity for rotations), and nothing is ever read
// outside the arrays.
#pragma once

#include "scene/record.h"
#include "scene/values.h"

#include <initializer_list>

namespace VEX2_LOADER {

class SCENE_API VEX2_CHANNEL : public VEX2_SERIAL, public VEX2_ANIMATED {
public:
    std::uint32_t key = 0;  // the key at or before the current time
    float fraction = 0;     // 0 to 1, on the way from `key` to `key` + 1
    KN::DynamicArray<float> times;

    virtual std::uint32_t subtype() const = 0;
    // Same kind, times and values. Two floats are equal if neither is less, so a NaN equals anything.
    virtual bool equals(VEX2_CHANNEL const &other) const = 0;
    virtual VEX2_CHANNEL *clone() const = 0;

    // To `time`, held between the first and the last key. Starts looking from the current position.
    void seek(float time) final;
    // `delta` further, wrapping around at the end; a negative step stops at the first key.
    void advance(float delta) final;

private:
    float current_time() const;
};

// The channels of one value type. What a kind cannot do to its keys leaves them as they are.
template <class VALUE>
class SCENE_API VEX2_KEYED_CHANNEL : public VEX2_CHANNEL {
public:
    KN::DynamicArray<VALUE> values;  // one per time

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v("key", &VEX2_KEYED_CHANNEL::key);
        v("fraction", &VEX2_KEYED_CHANNEL::fraction);
        v("times", &VEX2_KEYED_CHANNEL::times);
        v("values", &VEX2_KEYED_CHANNEL::values);
    }

    VEX2_SERIAL_OPERATIONS
    bool equals(VEX2_CHANNEL const &other) const override;

    virtual void value(VALUE &out) const = 0;
    VALUE value() const
    {
        VALUE now{};
        value(now);
        return now;
    }
};

// Kinds whose values are interpolated field by field.
template <class VALUE>
class SCENE_API VEX2_LINEAR_CHANNEL : public VEX2_KEYED_CHANNEL<VALUE> {
public:
    using VEX2_KEYED_CHANNEL<VALUE>::value;
    void value(VALUE &out) const override;

protected:
    void add_to_keys(VALUE const &step, float sign);
    void scale_keys(float factor);
};

// The kinds with all four operations on their keys.
template <class VALUE, std::uint32_t SUBTYPE>
class SCENE_API VEX2_LINEAR_KIND : public VEX2_LINEAR_CHANNEL<VALUE> {
public:
    static constexpr std::uint32_t kind = SUBTYPE;
    std::uint32_t subtype() const override { return SUBTYPE; }
    virtual void add(VALUE const &step) { this->add_to_keys(step, 1); }
    virtual void subtract(VALUE const &step) { this->add_to_keys(step, -1); }
    virtual void scale(float factor) { this->scale_keys(factor); }
    virtual void divide(float factor) { scale(1 / factor); }
};

#define VEX2_LINEAR_KIND_CLASS(CLASS, VALUE, SUBTYPE)                                                                  \
    class SCENE_API CLASS : public VEX2_LINEAR_KIND<VALUE, SUBTYPE> {                                                  \
    public:                                                                                                            \
        CLASS *clone() const override { return new CLASS(*this); }                                                     \
    };
VEX2_LINEAR_KIND_CLASS(VEX2_FLOAT_CHANNEL, float, 0)
VEX2_LINEAR_KIND_CLASS(VEX2_VECTOR_CHANNEL, VEX2_VECTOR, 3)
VEX2_LINEAR_KIND_CLASS(VEX2_VECTOR2_CHANNEL, VEX2_VECTOR2, 4)
VEX2_LINEAR_KIND_CLASS(VEX2_RECTANGLE_CHANNEL, VEX2_RECTANGLE, 7)
VEX2_LINEAR_KIND_CLASS(VEX2_VECTOR4_CHANNEL, VEX2_VECTOR4, 9)
VEX2_LINEAR_KIND_CLASS(VEX2_VECTOR_PAIR_CHANNEL, VEX2_VECTOR_PAIR, 11)
#undef VEX2_LINEAR_KIND_CLASS

class SCENE_API VEX2_RANGE_CHANNEL : public VEX2_LINEAR_CHANNEL<VEX2_RANGE> {
public:
    static constexpr std::uint32_t kind = 1;
    std::uint32_t subtype() const override { return kind; }
    VEX2_RANGE_CHANNEL *clone() const override { return new VEX2_RANGE_CHANNEL(*this); }
    virtual void add(VEX2_RANGE const &step) { add_to_keys(step, 1); }
    virtual void subtract(VEX2_RANGE const &step) { add_to_keys(step, -1); }
};

class SCENE_API VEX2_COLOUR_CHANNEL : public VEX2_LINEAR_CHANNEL<VEX2_COLOUR> {
public:
    static constexpr std::uint32_t kind = 2;
    std::uint32_t subtype() const override { return kind; }
    VEX2_COLOUR_CHANNEL *clone() const override { return new VEX2_COLOUR_CHANNEL(*this); }
    virtual void add(VEX2_COLOUR const &step) { add_to_keys(step, 1); }
    virtual void subtract(VEX2_COLOUR const &step) { add_to_keys(step, -1); }
    virtual void scale(VEX2_COLOUR const &factors);  // field by field
    virtual void scale(float factor) { scale_keys(factor); }
};

// Both rotation kinds; a rotation field takes either.
class SCENE_API VEX2_ROTATION_CHANNEL : public VEX2_KEYED_CHANNEL<VEX2_QUATERNION> {
public:
    // Every key becomes key * factor: factor is applied first.
    virtual void multiply(VEX2_QUATERNION const &factor);
    // Turns the signs of keys so that no key lies on the far side of the one before it.
    virtual void make_continuous();
};

class SCENE_API VEX2_LERP_ROTATION_CHANNEL : public VEX2_ROTATION_CHANNEL {
public:
    static constexpr std::uint32_t kind = 5;
    std::uint32_t subtype() const override { return kind; }
    VEX2_LERP_ROTATION_CHANNEL *clone() const override { return new VEX2_LERP_ROTATION_CHANNEL(*this); }
    using VEX2_KEYED_CHANNEL::value;
    void value(VEX2_QUATERNION &out) const override;  // not normalised
};

class SCENE_API VEX2_SLERP_ROTATION_CHANNEL : public VEX2_ROTATION_CHANNEL {
public:
    static constexpr std::uint32_t kind = 6;
    std::uint32_t subtype() const override { return kind; }
    VEX2_SLERP_ROTATION_CHANNEL *clone() const override { return new VEX2_SLERP_ROTATION_CHANNEL(*this); }
    using VEX2_KEYED_CHANNEL::value;
    void value(VEX2_QUATERNION &out) const override;  // along the keys' signs as they stand
};

// Steps: the value of the key before, that of the next key only when it is reached.
class SCENE_API VEX2_INT_CHANNEL : public VEX2_KEYED_CHANNEL<std::uint32_t> {
public:
    static constexpr std::uint32_t kind = 8;
    std::uint32_t subtype() const override { return kind; }
    VEX2_INT_CHANNEL *clone() const override { return new VEX2_INT_CHANNEL(*this); }
    using VEX2_KEYED_CHANNEL::value;
    void value(std::uint32_t &out) const override;
    virtual void add(std::uint32_t) {}
    virtual void subtract(std::uint32_t) {}
    virtual void scale(float) {}
    virtual void divide(float) {}
};

class SCENE_API VEX2_TANGENT_FRAME_CHANNEL : public VEX2_LINEAR_CHANNEL<VEX2_TANGENT_FRAME> {
public:
    static constexpr std::uint32_t kind = 10;
    std::uint32_t subtype() const override { return kind; }
    VEX2_TANGENT_FRAME_CHANNEL *clone() const override { return new VEX2_TANGENT_FRAME_CHANNEL(*this); }
};

// For makers of scenes: a channel that never changes, and one from keys.
template <class CHANNEL, class VALUE>
CHANNEL *constant_channel(VALUE const &value)
{
    CHANNEL *const channel = new CHANNEL;
    channel->times.append(0.0f);
    channel->values.append(value);
    return channel;
}

template <class CHANNEL>
void append_key(CHANNEL &channel, float time, decltype(channel.value()) const &value)
{
    channel.times.append(time);
    channel.values.append(value);
}

}  // namespace VEX2_LOADER
