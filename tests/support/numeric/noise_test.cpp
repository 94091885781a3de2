#include "support/maths/lanes.h"
#include "support/numeric/gradient_noise.h"
#include "support/numeric/hash_noise.h"
#include "support/numeric/random_state.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace SUPPORT {

namespace {

// The same noise once more, corner by corner with one number at a time.
class PLAIN_NOISE {
public:
    explicit PLAIN_NOISE(GRADIENT_NOISE const &given) : shape(given)
    {
        std::uint32_t state = 25492;
        for (unsigned &entry : table) {
            state = state * 214013 + 2531011;
            entry = (state >> 16) & 255;
        }
    }

    float operator()(float x, float y, float z) const
    {
        float const p[3] = {x * shape.scale.x, y * shape.scale.y, z * shape.scale.z};
        float offset[3][2], weight[3];
        unsigned line[3][2];
        for (int axis = 0; axis < 3; ++axis) {
            auto const whole = std::int64_t(std::floor(p[axis]));
            for (int side = 0; side < 2; ++side) {
                offset[axis][side] = p[axis] - float(whole + side);
                line[axis][side] = std::uint32_t(whole + side) % shape.period[axis];
            }
            float const t = offset[axis][0];
            weight[axis] = std::fmin(std::fmax(((6 * t - 15) * t + 10) * (t * t * t), 0.0f), 1.0f);
        }
        float corner[2][2][2];
        for (int k = 0; k < 2; ++k)
            for (int j = 0; j < 2; ++j)
                for (int i = 0; i < 2; ++i) {
                    unsigned const a = table[line[0][i] & 255], b = table[(a + line[1][j]) & 255];
                    int const *const g = edges[table[(b + line[2][k]) & 255] & 15];
                    corner[k][j][i] = offset[0][i] * g[0] + offset[1][j] * g[1] + offset[2][k] * g[2];
                }
        auto const blend = [](float a, float b, float by) { return a + (b - a) * by; };
        float face[2];
        for (int k = 0; k < 2; ++k)
            face[k] = blend(blend(corner[k][0][0], corner[k][0][1], weight[0]),
                            blend(corner[k][1][0], corner[k][1][1], weight[0]), weight[1]);
        return blend(face[0], face[1], weight[2]);
    }

private:
    static constexpr int edges[16][3] = {{1, 1, 0},  {-1, 1, 0},  {1, -1, 0}, {-1, -1, 0}, {1, 0, 1},  {-1, 0, 1},
                                         {1, 0, -1}, {-1, 0, -1}, {0, 1, 1},  {0, -1, 1},  {0, 1, -1}, {0, -1, -1},
                                         {1, 1, 0},  {-1, 1, 0},  {0, -1, 1}, {0, -1, -1}};
    GRADIENT_NOISE const &shape;
    unsigned table[256];
};

float random_in(RANDOM_STATE &random, float size) { return (float(next_random(random)) / 65535 * 2 - 1) * size; }

struct NOISE_CASE {
    char const *name;
    GRADIENT_NOISE noise;
};

std::vector<NOISE_CASE> noise_cases()
{
    return {
        {"the whole lattice", GRADIENT_NOISE()},
        {"short periods, not all of them powers of two", GRADIENT_NOISE({1, 1, 1}, 3, 8, 100)},
        {"long periods and an uneven scale, one of it mirrored", GRADIENT_NOISE({0.37f, -2, 11}, 1000, 1, 0xfffffffd)}};
}

}  // namespace

TEST(GradientNoise, PointsAndRowsAreThePlainComputationBitForBit)
{
    for (NOISE_CASE const &c : noise_cases()) {
        PLAIN_NOISE const plain(c.noise);
        RANDOM_STATE random{1};
        for (float step : {0.01f, 0.7f, -0.4f, 1.0f, 5.3f, 700.0f})
            for (int row = 0; row < 20; ++row) {
                std::vector<float> xs;
                for (int i = 0; i < 203; ++i)
                    xs.push_back(random_in(random, 0.1f) + step * float(i - 100));
                float const y = random_in(random, 50), z = random_in(random, 50);
                std::vector<float> values = xs;
                allow_eight_lanes(row % 2 == 0);
                c.noise.noise_row(values, y, z, values);
                allow_eight_lanes(true);
                for (std::size_t i = 0; i < xs.size(); ++i) {
                    float const expected = plain(xs[i], y, z);
                    ASSERT_EQ(values[i], expected) << c.name << ", step " << step << ", point " << i;
                    ASSERT_EQ(c.noise.noise(xs[i], y, z), expected) << c.name << ", step " << step << ", point " << i;
                }
            }
    }
}

TEST(GradientNoise, RepeatsAtThePeriodAndIsZeroOnTheLattice)
{
    GRADIENT_NOISE const whole, mixed({1, 1, 1}, 4, 6, 10);
    RANDOM_STATE random{3};
    for (int i = 0; i < 1000; ++i) {
        // Sixteenths, so that adding a period is exact.
        float const x = float(next_random(random) % 800) / 16, y = float(next_random(random) % 800) / 16,
                    z = float(next_random(random) % 800) / 16;
        EXPECT_EQ(whole.noise(x, y, z), whole.noise(x + 256, y + 512, z - 256));
        EXPECT_EQ(mixed.noise(x, y, z), mixed.noise(x + 4, y + 6, z + 10));
        EXPECT_EQ(whole.noise(std::floor(x), std::floor(y), -std::floor(z)), 0);
    }
    for (float odd : {NAN, INFINITY, -INFINITY, 3e38f, -3e9f})
        EXPECT_TRUE(std::abs(whole.noise(odd, 0.3f, odd)) < 2) << odd;
}

TEST(GradientNoise, TheDerivativeIsTheSlope)
{
    for (NOISE_CASE const &c : noise_cases()) {
        SCOPED_TRACE(c.name);
        RANDOM_STATE random{4};
        for (int i = 0; i < 500; ++i) {
            float const p[3] = {random_in(random, 4), random_in(random, 4), random_in(random, 4)};
            VECTOR3 derivative;
            EXPECT_EQ(c.noise.noise_with_derivative(derivative, p[0], p[1], p[2]), c.noise.noise(p[0], p[1], p[2]));
            float const slopes[3] = {derivative.x, derivative.y, derivative.z};
            float const scales[3] = {c.noise.scale.x, c.noise.scale.y, c.noise.scale.z};
            for (int axis = 0; axis < 3; ++axis) {
                float low[3] = {p[0], p[1], p[2]}, high[3] = {p[0], p[1], p[2]};
                low[axis] -= 0.004f / scales[axis];
                high[axis] += 0.004f / scales[axis];
                float const slope = (c.noise.noise(high[0], high[1], high[2]) - c.noise.noise(low[0], low[1], low[2])) /
                                    (high[axis] - low[axis]);
                EXPECT_NEAR(slopes[axis] / scales[axis], slope / scales[axis], 4e-3f) << "axis " << axis;
            }
        }
    }
}

TEST(FractalNoise, SumsItsOctaves)
{
    GRADIENT_NOISE const noise;
    VECTOR3 const p = {0.3f, 1.7f, -2.4f};
    auto const octave = [&](float f, float offset) {
        return noise.noise(p.x * f + offset, p.y * f + offset, p.z * f + offset);
    };
    EXPECT_EQ(noise.fractal_noise(p, 0, 1, 1, 0, 1, 1), 0);
    EXPECT_EQ(noise.fractal_noise(p, 3, 0.75f, 2, 9.1f, 0.5f, 3),
              2 * octave(0.75f, 9.1f) + octave(2.25f, 9.1f) + 0.5f * octave(6.75f, 9.1f));

    struct CALLBACK final : NOISE_CALLBACK {
        std::vector<VECTOR3> sums;
        std::vector<float> values;
        float operator()(VECTOR3 const &derivative_sum, float value) override
        {
            sums.push_back(derivative_sum);
            values.push_back(value);
            return float(sums.size());
        }
    } callback;
    EXPECT_EQ(noise.fractal_noise_with_callback(p, 3, callback), 1 * 0.5f + 2 * 0.25f + 3 * 0.125f);
    VECTOR3 first, second;
    noise.noise_with_derivative(first, p.x, p.y, p.z);
    EXPECT_EQ(callback.values[1], noise.noise_with_derivative(second, p.x * 2, p.y * 2, p.z * 2));
    EXPECT_EQ(callback.sums[0], first);
    EXPECT_EQ(callback.sums[1], first + second);
}

TEST(HashNoise, FollowsTheHash)
{
    // From the same formula in whole numbers without a limit.
    EXPECT_NEAR(hash_noise(0), -0.2817909838631749, 1e-7);
    EXPECT_NEAR(hash_noise(1), -0.2263730512931943, 1e-7);
    EXPECT_NEAR(hash_noise(0xffffffff), 0.9001262886449695, 1e-7);
    EXPECT_NEAR(hash_noise(12345), -0.8928926484659314, 1e-7);
    double const smooth_at_0 = 0.25 * 0.9001262886449695 + 0.5 * -0.2817909838631749 + 0.25 * -0.2263730512931943;
    for (float x : {0.0f, 0.9f, -0.9f})
        EXPECT_NEAR(smooth_hash_noise(x), smooth_at_0, 1e-7) << x;

    // The signal: through the smooth values, half way between them in the middle, without jumps also below 0.
    for (float whole : {-3.0f, -1.0f, 0.0f, 7.0f}) {
        float const here = smooth_hash_noise(whole), next = smooth_hash_noise(whole + 1);
        EXPECT_FLOAT_EQ(fractal_hash_noise(whole, 1, 1, 1, 1, 1), here);
        EXPECT_FLOAT_EQ(fractal_hash_noise(whole + 0.5f, 1, 1, 1, 1, 1), (here + next) / 2);
        EXPECT_NEAR(fractal_hash_noise(whole - 0.001f, 1, 1, 1, 1, 1), here, 1e-4);
    }
    EXPECT_FLOAT_EQ(fractal_hash_noise(1.5f, 2, 2, 3, 0.5f, 4),
                    3 * smooth_hash_noise(3) + 1.5f * smooth_hash_noise(12));
    EXPECT_EQ(fractal_hash_noise(NAN, 0, 1, 1, 1, 1), 0);
    for (float x : {NAN, INFINITY, -INFINITY, 1e30f})
        EXPECT_NEAR(fractal_hash_noise(x, 1, 1, 1, 1, 1), smooth_at_0, 1e-7) << x;
}

}  // namespace SUPPORT
