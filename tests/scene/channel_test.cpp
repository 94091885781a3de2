#include "tests/scene/make_scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace TEST_SCENE;

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();

// Keys at 0, 1, 3 and 7.
template <class CHANNEL, class VALUE>
CHANNEL keyed(VALUE a, VALUE b, VALUE c, VALUE d)
{
    CHANNEL channel;
    append_key(channel, 0, a);
    append_key(channel, 1, b);
    append_key(channel, 3, c);
    append_key(channel, 7, d);
    return channel;
}

VEX2_FLOAT_CHANNEL floats() { return keyed<VEX2_FLOAT_CHANNEL>(10.0f, 20.0f, 40.0f, 80.0f); }

TEST(Channel, SeekFindsTheGapAndItsFraction)
{
    const struct {
        char const *what;
        float start, time;
        std::uint32_t key;
        float fraction, value;
    } cases[] = {
        {"before the first key", 2, -5, 0, 0, 10},
        {"at the first key", 2, 0, 0, 0, 10},
        {"within the first gap", 2, 0.25f, 0, 0.25f, 12.5f},
        {"forward onto an inner key: the end of the gap before", 0, 3, 1, 1, 40},
        {"backward onto an inner key: the start of the gap behind", 6, 3, 2, 0, 40},
        {"forward over several keys", 0.5f, 5, 2, 0.5f, 60},
        {"backward over several keys", 6, 0.5f, 0, 0.5f, 15},
        {"at the last key", 0, 7, 2, 1, 80},
        {"past the last key", 0, 70, 2, 1, 80},
        {"no number: stays", 5, nan_value, 2, 0.5f, 60},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        VEX2_FLOAT_CHANNEL channel = floats();
        channel.seek(c.start);
        channel.seek(c.time);
        EXPECT_EQ(channel.key, c.key);
        EXPECT_FLOAT_EQ(channel.fraction, c.fraction);
        EXPECT_FLOAT_EQ(channel.value(), c.value);
    }
}

TEST(Channel, AdvanceWrapsAtTheEndOnly)
{
    const struct {
        float start, delta, value;
    } cases[] = {
        {0, 2, 30},    {2, 5, 80},                     // exactly the last key: no wrap
        {6, 2, 20},                                    // one past the end is one past the start
        {7, 3.5f, 45}, {7, 17.5f, 45}, {2, -100, 10},  // backward stops at the first key
    };
    for (auto const &c : cases) {
        VEX2_FLOAT_CHANNEL channel = floats();
        channel.seek(c.start);
        channel.advance(c.delta);
        EXPECT_FLOAT_EQ(channel.value(), c.value) << c.start << " + " << c.delta;
    }
}

TEST(Channel, AConstantAndAnEmptyChannelStayAsTheyAre)
{
    VEX2_FLOAT_CHANNEL constant;
    append_key(constant, 4, 5.0f);
    constant.key = 77;
    constant.seek(100);
    constant.advance(3);
    EXPECT_EQ(constant.key, 77u);
    EXPECT_EQ(constant.value(), 5);
    VEX2_FLOAT_CHANNEL empty;
    empty.seek(1);
    empty.advance(1);
    EXPECT_EQ(empty.value(), 0);
    EXPECT_EQ(VEX2_SLERP_ROTATION_CHANNEL().value().w, 1);
}

// Positions and array lengths come from files.
TEST(Channel, APositionOutsideTheKeysIsSafe)
{
    for (std::uint32_t const key : {3u, 4u, 0xfffffffeu, 0xffffffffu}) {
        VEX2_FLOAT_CHANNEL channel = floats();
        channel.key = key;
        channel.fraction = 0.5f;
        EXPECT_EQ(channel.value(), 80);
        channel.seek(0.5f);
        EXPECT_EQ(channel.value(), 15);
    }
    VEX2_FLOAT_CHANNEL more_times = floats();
    more_times.values.resize(2);
    more_times.seek(0.5f);
    EXPECT_EQ(more_times.value(), 15);
    more_times.seek(5);
    EXPECT_EQ(more_times.value(), 20);
    VEX2_FLOAT_CHANNEL unordered = floats();
    unordered.times[1] = nan_value;
    for (float const time : {0.5f, 2.0f, 6.0f, -1.0f, 0.1f})
        unordered.seek(time);
    unordered.advance(1000);
}

TEST(Channel, IntegersStep)
{
    VEX2_INT_CHANNEL channel = keyed<VEX2_INT_CHANNEL>(1u, 2u, 3u, 4u);
    channel.seek(2.999f);
    EXPECT_EQ(channel.value(), 2u);
    channel.seek(3);  // forward: the end of the gap, which is the next key's value
    EXPECT_EQ(channel.value(), 3u);
    channel.seek(6.9f);
    EXPECT_EQ(channel.value(), 3u);
    channel.seek(3);
    EXPECT_EQ(channel.value(), 3u);
    channel.seek(7);
    EXPECT_EQ(channel.value(), 4u);
    channel.scale(5);
    EXPECT_EQ(channel.value(), 4u);
}

VEX2_QUATERNION about_z(float angle) { return {0, 0, std::sin(angle / 2), std::cos(angle / 2)}; }

template <class CHANNEL>
VEX2_QUATERNION between(VEX2_QUATERNION const &a, VEX2_QUATERNION const &b, float t)
{
    CHANNEL channel;
    append_key(channel, 0, a);
    append_key(channel, 1, b);
    channel.seek(t);
    return channel.value();
}

TEST(Channel, RotationsSphericalAndLinear)
{
    constexpr float quarter = 1.5707963f;
    VEX2_QUATERNION const third = between<VEX2_SLERP_ROTATION_CHANNEL>({}, about_z(quarter), 1 / 3.0f);
    EXPECT_NEAR(third.z, about_z(quarter / 3).z, 1e-6);
    EXPECT_NEAR(third.w, about_z(quarter / 3).w, 1e-6);
    // Close keys are mixed linearly and not normalised.
    VEX2_QUATERNION const close = between<VEX2_SLERP_ROTATION_CHANNEL>({}, about_z(0.2f), 0.5f);
    EXPECT_FLOAT_EQ(close.z, about_z(0.2f).z / 2);
    EXPECT_FLOAT_EQ(close.w, (1 + about_z(0.2f).w) / 2);
    VEX2_QUATERNION const linear = between<VEX2_LERP_ROTATION_CHANNEL>({}, about_z(quarter), 0.25f);
    EXPECT_FLOAT_EQ(linear.z, about_z(quarter).z / 4);
    // Keys on opposite sides go the long way, until they are made continuous.
    VEX2_QUATERNION const end = about_z(quarter);
    VEX2_SLERP_ROTATION_CHANNEL far_side;
    append_key(far_side, 0, VEX2_QUATERNION{});
    append_key(far_side, 1, VEX2_QUATERNION{-end.x, -end.y, -end.z, -end.w});
    append_key(far_side, 2, end);
    far_side.seek(0.5f);
    EXPECT_LT(far_side.value().w, 0.5f);
    far_side.make_continuous();
    EXPECT_GT(far_side.value().w, 0.9f);
    EXPECT_EQ(far_side.values[1].z, end.z);
    EXPECT_EQ(far_side.values[2].z, end.z);
}

TEST(Channel, MultiplyAppliesTheFactorFirst)
{
    VEX2_SLERP_ROTATION_CHANNEL channel;
    append_key(channel, 0, VEX2_QUATERNION{1, 0, 0, 0});  // i * j = k
    channel.multiply({0, 1, 0, 0});
    EXPECT_EQ(channel.values[0].z, 1);
    EXPECT_EQ(channel.values[0].w, 0);
}

TEST(Channel, ArithmeticOnKeys)
{
    VEX2_VECTOR_CHANNEL vectors;
    append_key(vectors, 0, VEX2_VECTOR{1, 2, 3});
    vectors.add({1, 1, 1});
    vectors.scale(2);
    vectors.subtract({0, 0, 2});
    vectors.divide(4);
    EXPECT_EQ(vectors.values[0].x, 1);
    EXPECT_EQ(vectors.values[0].z, 1.5f);
    VEX2_COLOUR_CHANNEL colours;
    append_key(colours, 0, VEX2_COLOUR{1, 2, 3, 4});
    colours.scale(VEX2_COLOUR{1, 2, 3, 0});
    colours.scale(0.5f);
    EXPECT_EQ(colours.values[0].blue, 4.5f);
    EXPECT_EQ(colours.values[0].alpha, 0);
}

TEST(Channel, EqualIsWhatIsNeitherLessNorGreater)
{
    VEX2_FLOAT_CHANNEL const a = floats();
    VEX2_FLOAT_CHANNEL b = a;
    b.seek(5);
    EXPECT_TRUE(a.equals(b)) << "the position does not count";
    b.values[1] = nan_value;
    EXPECT_TRUE(a.equals(b));
    b.values[1] = 21;
    EXPECT_FALSE(a.equals(b));
    b = a;
    b.times[2] = 3.5f;
    EXPECT_FALSE(a.equals(b));
    VEX2_VECTOR_CHANNEL vectors;
    EXPECT_FALSE(vectors.equals(VEX2_FLOAT_CHANNEL()));
    VEX2_OWNED<VEX2_CHANNEL> const copy(a.clone());
    EXPECT_TRUE(a.equals(*copy));
}

}  // namespace
