#include "scene/channel.h"

#include "scene/define_record.h"
#include "scene/equal_fields.h"

#include <cmath>

namespace VEX2_LOADER {

namespace {

// The value structures are runs of floats; arithmetic on keys goes float by float.
template <class VALUE>
constexpr std::size_t float_count = sizeof(VALUE) / sizeof(float);

template <class VALUE>
float *floats(VALUE &value)
{
    return reinterpret_cast<float *>(&value);
}
template <class VALUE>
float const *floats(VALUE const &value)
{
    return reinterpret_cast<float const *>(&value);
}

template <class VALUE>
VALUE mix(VALUE const &a, VALUE const &b, float fraction)
{
    VALUE result;
    for (std::size_t i = 0; i < float_count<VALUE>; ++i)
        floats(result)[i] = floats(a)[i] + (floats(b)[i] - floats(a)[i]) * fraction;
    return result;
}

// The two keys around the position, as far as there are values for them: the nearest ones else. Null without values.
template <class VALUE>
struct KEY_PAIR {
    VALUE const *before = nullptr;
    VALUE const *after = nullptr;
    float fraction = 0;

    explicit KEY_PAIR(VEX2_KEYED_CHANNEL<VALUE> const &channel)
    {
        unsigned const count = channel.values.count;
        if (count == 0)
            return;
        before = after = &channel.values.data[count - 1];
        if (channel.key < count - 1) {
            before = &channel.values.data[channel.key];
            after = before + 1;
            fraction = channel.fraction;
        }
    }
};

}  // namespace

float VEX2_CHANNEL::current_time() const
{
    if (key >= times.count - 1)
        return times.back();
    return times[key] + (times[key + 1] - times[key]) * fraction;
}

void VEX2_CHANNEL::seek(float time)
{
    if (times.count < 2)
        return;
    unsigned const last_gap = times.count - 2;
    if (time >= times.back()) {
        key = last_gap;
        fraction = 1;
        return;
    }
    if (time <= times[0]) {
        key = 0;
        fraction = 0;
        return;
    }
    // Both ends of a gap belong to it: a key that is met exactly is kept as the end of the gap that the search comes
    // from.
    unsigned i = key < last_gap ? key : last_gap;
    if (time - current_time() >= 0) {
        while (i <= last_gap && !(time >= times[i] && time <= times[i + 1]))
            ++i;
        if (i > last_gap)
            return;
    } else {
        while (!(time >= times[i] && time <= times[i + 1])) {
            if (i == 0)
                return;  // the time is no number, or the keys do not ascend
            --i;
        }
    }
    key = i;
    fraction = (time - times[i]) / (times[i + 1] - times[i]);
}

void VEX2_CHANNEL::advance(float delta)
{
    if (times.count < 2)
        return;
    float const first = times[0];
    float const last = times.back();
    float const time = current_time() + delta;
    if (!(time > last)) {
        seek(time);
        return;
    }
    float const span = last - first;
    float const rounds = (time - last) / span;
    seek((rounds - std::trunc(rounds)) * span + first);
}

template <class VALUE>
bool VEX2_KEYED_CHANNEL<VALUE>::read(VEX2_READ_BUFFER &buffer, float version)
{
    return read_record(buffer, version, *this);
}

template <class VALUE>
bool VEX2_KEYED_CHANNEL<VALUE>::write(VEX2_CHUNK_WRITER &writer) const
{
    return write_item(writer, *this);
}

template <class VALUE>
bool VEX2_KEYED_CHANNEL<VALUE>::equals(VEX2_CHANNEL const &other) const
{
    if (other.subtype() != subtype())
        return false;
    auto const &same_kind = static_cast<VEX2_KEYED_CHANNEL const &>(other);
    return equal_items(times, same_kind.times) && equal_items(values, same_kind.values);
}

template <class VALUE>
void VEX2_LINEAR_CHANNEL<VALUE>::value(VALUE &out) const
{
    KEY_PAIR<VALUE> const keys(*this);
    if (!keys.before)
        out = VALUE{};
    else if (keys.before == keys.after)
        out = *keys.before;
    else
        out = mix(*keys.before, *keys.after, keys.fraction);
}

template <class VALUE>
void VEX2_LINEAR_CHANNEL<VALUE>::add_to_keys(VALUE const &step, float sign)
{
    for (VALUE &value : this->values)
        for (std::size_t i = 0; i < float_count<VALUE>; ++i)
            floats(value)[i] += sign * floats(step)[i];
}

template <class VALUE>
void VEX2_LINEAR_CHANNEL<VALUE>::scale_keys(float factor)
{
    for (VALUE &value : this->values)
        for (std::size_t i = 0; i < float_count<VALUE>; ++i)
            floats(value)[i] *= factor;
}

template class VEX2_KEYED_CHANNEL<float>;
template class VEX2_KEYED_CHANNEL<std::uint32_t>;
template class VEX2_KEYED_CHANNEL<VEX2_RANGE>;
template class VEX2_KEYED_CHANNEL<VEX2_COLOUR>;
template class VEX2_KEYED_CHANNEL<VEX2_VECTOR>;
template class VEX2_KEYED_CHANNEL<VEX2_VECTOR2>;
template class VEX2_KEYED_CHANNEL<VEX2_QUATERNION>;
template class VEX2_KEYED_CHANNEL<VEX2_RECTANGLE>;
template class VEX2_KEYED_CHANNEL<VEX2_VECTOR4>;
template class VEX2_KEYED_CHANNEL<VEX2_TANGENT_FRAME>;
template class VEX2_KEYED_CHANNEL<VEX2_VECTOR_PAIR>;
template class VEX2_LINEAR_CHANNEL<float>;
template class VEX2_LINEAR_CHANNEL<VEX2_RANGE>;
template class VEX2_LINEAR_CHANNEL<VEX2_COLOUR>;
template class VEX2_LINEAR_CHANNEL<VEX2_VECTOR>;
template class VEX2_LINEAR_CHANNEL<VEX2_VECTOR2>;
template class VEX2_LINEAR_CHANNEL<VEX2_RECTANGLE>;
template class VEX2_LINEAR_CHANNEL<VEX2_VECTOR4>;
template class VEX2_LINEAR_CHANNEL<VEX2_TANGENT_FRAME>;
template class VEX2_LINEAR_CHANNEL<VEX2_VECTOR_PAIR>;

void VEX2_COLOUR_CHANNEL::scale(VEX2_COLOUR const &factors)
{
    for (VEX2_COLOUR &value : values)
        for (std::size_t i = 0; i < float_count<VEX2_COLOUR>; ++i)
            floats(value)[i] *= floats(factors)[i];
}

void VEX2_ROTATION_CHANNEL::multiply(VEX2_QUATERNION const &factor)
{
    for (VEX2_QUATERNION &q : values) {
        VEX2_QUATERNION const &f = factor;
        q = {q.w * f.x + q.x * f.w + q.y * f.z - q.z * f.y, q.w * f.y - q.x * f.z + q.y * f.w + q.z * f.x,
             q.w * f.z + q.x * f.y - q.y * f.x + q.z * f.w, q.w * f.w - q.x * f.x - q.y * f.y - q.z * f.z};
    }
}

namespace {

float dot(VEX2_QUATERNION const &a, VEX2_QUATERNION const &b) { return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w; }

}  // namespace

void VEX2_ROTATION_CHANNEL::make_continuous()
{
    for (unsigned i = 1; i < values.count; ++i) {
        VEX2_QUATERNION &q = values[i];
        if (dot(values[i - 1], q) < 0)
            q = {-q.x, -q.y, -q.z, -q.w};
    }
}

void VEX2_LERP_ROTATION_CHANNEL::value(VEX2_QUATERNION &out) const
{
    KEY_PAIR<VEX2_QUATERNION> const keys(*this);
    if (!keys.before)
        out = VEX2_QUATERNION{};
    else if (keys.before == keys.after)
        out = *keys.before;
    else
        out = mix(*keys.before, *keys.after, keys.fraction);
}

void VEX2_SLERP_ROTATION_CHANNEL::value(VEX2_QUATERNION &out) const
{
    KEY_PAIR<VEX2_QUATERNION> const keys(*this);
    if (!keys.before) {
        out = VEX2_QUATERNION{};
        return;
    }
    if (keys.before == keys.after) {
        out = *keys.before;
        return;
    }
    VEX2_QUATERNION const &a = *keys.before;
    VEX2_QUATERNION const &b = *keys.after;
    float const t = keys.fraction;
    constexpr float nearly_equal = 0.99f;
    float const cosine = dot(a, b);
    if (cosine > nearly_equal) {
        out = mix(a, b, t);
        return;
    }
    float const angle = std::acos(cosine);
    float const s = 1 / std::sin(angle);
    float const share_a = std::sin((1 - t) * angle) * s;
    float const share_b = std::sin(t * angle) * s;
    out = {a.x * share_a + b.x * share_b, a.y * share_a + b.y * share_b, a.z * share_a + b.z * share_b,
           a.w * share_a + b.w * share_b};
}

void VEX2_INT_CHANNEL::value(std::uint32_t &out) const
{
    KEY_PAIR<std::uint32_t> const keys(*this);
    if (!keys.before)
        out = 0;
    else
        out = keys.fraction == 1 ? *keys.after : *keys.before;
}

}  // namespace VEX2_LOADER
