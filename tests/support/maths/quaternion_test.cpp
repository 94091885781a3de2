#include "support/maths/packed_quaternion.h"
#include "support/maths/quaternion_kernel.h"

#include <bit>
#include <cfloat>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

using namespace SUPPORT;

namespace {

constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

bool same_bits(QUATERNION const &a, QUATERNION const &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

QUATERNION about(float x, float y, float z, double angle)
{
    float const s = float(std::sin(angle / 2));
    return {x * s, y * s, z * s, float(std::cos(angle / 2))};
}

double distance(QUATERNION const &a, QUATERNION const &b)
{
    return std::max(std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)),
                    std::max(std::abs(a.z - b.z), std::abs(a.w - b.w)));
}

class RANDOM_QUATERNIONS {
public:
    QUATERNION unit()
    {
        QUATERNION const q = {normal(engine), normal(engine), normal(engine), normal(engine)};
        return normalised(q);
    }

private:
    std::mt19937 engine{1};
    std::normal_distribution<float> normal;
};

}  // namespace

TEST(PackedQuaternion, PackingRoundsTiesToEvenAndClamps)
{
    struct {
        float component;
        std::int16_t packed;
    } const cases[] = {
        {1, 32767},                        // 32767.5 becomes 32768, then the highest
        {-1, -32768},                      // -32767.5 to even
        {0, 0},           {3e30f, 32767},  // far outside, both ways
        {-3e30f, -32768}, {infinity, 32767}, {-infinity, -32768}, {not_a_number, -32768},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.component);
        EXPECT_EQ(c.packed, pack_quaternion({c.component, 0, 0, 0}).x);
        QUATERNION const two[] = {{0, c.component, 0, 0}, {0, 0, 0, c.component}};
        PACKED_QUATERNION results[2];
        pack_quaternions(two, results);
        EXPECT_EQ(c.packed, results[0].y);
        EXPECT_EQ(c.packed, results[1].w);
    }

    // Components whose product with 32767.5 is a half exactly, found by search.
    unsigned ties = 0;
    for (int whole = -32767; whole < 32767; ++whole) {
        float const component = (float(whole) + 0.5f) / 32767.5f;
        if (component * 32767.5f != float(whole) + 0.5f)
            continue;
        ++ties;
        int const even = whole % 2 == 0 ? whole : whole + 1;
        EXPECT_EQ(even, pack_quaternion({component, 0, 0, 0}).x);
    }
    EXPECT_GT(ties, 10000u);
}

TEST(PackedQuaternion, UnpacksByTheStepOfItsFormat)
{
    QUATERNION const q = unpack_quaternion(pack_quaternion({0, 0, 0, 1}));
    EXPECT_EQ(0.99998474f, q.w);
    EXPECT_EQ(-1.0000153f, unpack_quaternion({-32768, 0, 0, 0}).x);
}

// The forms over arrays must give what the single forms give: on every value of a component in every place, on 10
// million random ones, and whatever the number of elements.
TEST(PackedQuaternion, ArrayFormsGiveTheSameBits)
{
    auto const check = [](std::vector<PACKED_QUATERNION> const &packed) {
        std::vector<QUATERNION> unpacked(packed.size()), by_four(packed.size());
        unpack_quaternions(packed, unpacked.data());
        allow_eight_lanes(false);
        unpack_quaternions(packed, by_four.data());
        allow_eight_lanes(true);
        ASSERT_EQ(0, std::memcmp(unpacked.data(), by_four.data(), packed.size() * sizeof(QUATERNION)));
        std::vector<PACKED_QUATERNION> again(packed.size());
        pack_quaternions(unpacked, again.data());
        for (std::size_t i = 0; i < packed.size(); ++i) {
            ASSERT_TRUE(same_bits(unpack_quaternion(packed[i]), unpacked[i])) << i;
            ASSERT_EQ(pack_quaternion(unpacked[i]), again[i]) << i;
            ASSERT_EQ(packed[i], again[i]) << i;  // what was packed comes back
        }
    };
    std::vector<PACKED_QUATERNION> all;
    for (int i = -32768; i < 32768; ++i)
        all.push_back({std::int16_t(i), std::int16_t(~i), std::int16_t(i * 3), std::int16_t(i * 5)});
    check(all);

    std::mt19937_64 random(2);
    std::vector<PACKED_QUATERNION> some(100'000);
    for (unsigned round = 0; round < 100; ++round) {
        for (PACKED_QUATERNION &p : some)
            p = std::bit_cast<PACKED_QUATERNION>(random());
        check(some);
    }

    for (std::size_t size = 0; size <= 9; ++size) {
        std::vector<QUATERNION> const from(size, QUATERNION{0.5f, -0.25f, 2, 1e-5f});
        std::vector<PACKED_QUATERNION> to(size + 1);
        pack_quaternions(from, to.data());
        for (std::size_t i = 0; i < size; ++i)
            EXPECT_EQ(pack_quaternion(from[i]), to[i]);
        EXPECT_EQ(PACKED_QUATERNION{}, to[size]);
    }
}

TEST(Quaternion, ProductDoesTheRightFactorFirst)
{
    double const quarter = std::numbers::pi / 2;
    QUATERNION const both = about(0, 1, 0, quarter) * about(1, 0, 0, quarter);
    VECTOR3 const turned = rotated({0, 1, 0}, both);  // y to z by the right factor, z to x by the left one
    EXPECT_NEAR(1, turned.x, 1e-6);
    EXPECT_NEAR(0, turned.y, 1e-6);
    EXPECT_NEAR(0, turned.z, 1e-6);
    VECTOR3 const by_angle = rotated({0, 0, 1}, quaternion_from_angle_y(0x4000));
    EXPECT_NEAR(1, by_angle.x, 1e-6);
    EXPECT_LT(quaternion_from_angle_y(0xc000).y, 0);  // a signed angle
}

TEST(Quaternion, NormalisingStoredOnesReplacesTheShort)
{
    struct {
        QUATERNION given, normal;
    } const cases[] = {
        {{0, 0, 0, 0}, {0, 0, 0, 1}},
        {{0, 0.0009f, 0, 0}, {0, 0, 0, 1}},
        {{0, 0.0011f, 0, 0}, {0, 1, 0, 0}},
        {{3, 0, 0, -4}, {0.6f, 0, 0, -0.8f}},
        {{not_a_number, 0, 0, 1}, {0, 0, 0, 1}},
    };
    for (auto const &c : cases) {
        QUATERNION q = c.given;
        normalise_quaternion(q);
        EXPECT_LT(distance(c.normal, q), 1e-6);
    }
}

TEST(Slerp, FollowsTheShorterArc)
{
    QUATERNION const a = about(0, 1, 0, 0.2), b = about(0, 1, 0, 1.4);
    for (float t : {0.0f, 0.25f, 0.5f, 1.0f, 1.5f, -0.5f}) {
        QUATERNION const expected = about(0, 1, 0, 0.2 + 1.2 * double(t));
        EXPECT_LT(distance(expected, slerp(a, b, t)), 1e-6) << t;
        EXPECT_LT(distance(expected, slerp(a, -b, t)), 1e-6) << t;
    }
    EXPECT_EQ(a, slerp(a, a, 0.3f));
    EXPECT_EQ(a, slerp(a, -a, 0.3f));  // no turn

    // In place, the ends are the quaternions themselves; out of place, the near side of b.
    QUATERNION in_place = a;
    slerp_in_place(in_place, -b, 0);
    EXPECT_EQ(a, in_place);
    slerp_in_place(in_place, -b, 1);
    EXPECT_EQ(-b, in_place);
    EXPECT_LT(distance(b, slerp(a, -b, 1)), 1e-6);
}

TEST(Slerp, IsLinearBelowTheThreshold)
{
    // Angles of quaternions whose dot products lie on both sides of 1 - 0.007.
    for (double angle : {0.1, 0.118, 0.1185, 0.13}) {
        QUATERNION const a = {0, 0, 0, 1}, b = about(1, 0, 0, 2 * angle);
        QUATERNION const linear = {b.x * 0.25f, 0, 0, 1 + (b.w - 1) * 0.25f};
        QUATERNION const arc = about(1, 0, 0, 0.5 * angle);
        bool const spherical = 1 - b.w >= 0.007f;
        EXPECT_EQ(spherical, angle > 0.1184);
        EXPECT_LT(distance(spherical ? arc : linear, slerp(a, b, 0.25f)), 1.2e-7) << angle;
        EXPECT_LT(distance(arc, slerp(a, b, 0.25f, 0.001f)), 1.2e-7) << angle;
    }
    EXPECT_TRUE(std::isnan(slerp({0, 0, 0, not_a_number}, {0, 0, 0, 1}, 0.5f).w));
    // No number in the dot product: b counts as lying on the other side.
    EXPECT_EQ(-0.5f, slerp({0, 0, 0, not_a_number}, {0, 1, 0, 0}, 0.5f).y);
}

TEST(QuaternionKernel, SineAndArcCosineAreClose)
{
    for (int i = -200'000; i <= 200'000; ++i) {
        float const any = float(i) * 0.05f;  // up to 10,000 radians
        float const quarter = float(i) * 7.85e-6f;
        float const d = float(std::abs(i)) / 200'001;
        float sine, cosine_angle;
        sine_of_any(any, sine);
        ASSERT_NEAR(std::sin(double(any)), sine, 6e-7) << any;
        sine_of_quarter(quarter, sine);
        ASSERT_NEAR(std::sin(double(quarter)), sine, 2e-7) << quarter;
        arc_cosine(d, cosine_angle);
        ASSERT_NEAR(std::acos(double(d)), cosine_angle, 4e-7) << d;
    }
}
