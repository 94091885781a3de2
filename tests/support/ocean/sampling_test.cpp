#include "foundation/image.h"
#include "made_field.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace SUPPORT;

namespace {

struct MADE : OCEAN_WAVE_FIELD {
    MADE() { EXPECT_TRUE(read_bytes(*this, made_file())); }
};

constexpr double near = 1e-3;

}  // namespace

// The cells are 10 20 / 40 80 metres high, in the second frame each 10 more.
TEST(WaveSampling, HeightsLieOnTwoTrianglesACell)
{
    MADE const field;
    FRAME_BLEND const first(0, 1, 0), between(0, 1, 0.25f);
    struct {
        float x, y;
        double height;
    } const cases[] = {
        {0, 0, 10},
        {1, 1, 80},
        {0.5f, 0.25f, 10 + 10 * 0.5 + 60 * 0.25},  // below the diagonal: by way of (1, 0)
        {0.25f, 0.5f, 10 + 40 * 0.25 + 30 * 0.5},  // above it: by way of (0, 1)
        {0.5f, 0.5f, 10 + 40 * 0.5 + 30 * 0.5},    // on it
        {1.5f, 0.25f, 20 - 10 * 0.5 + 30 * 0.25},  // between columns 1 and 0
        {-1.5f, 2.25f, 10 + 10 * 0.5 + 60 * 0.25},
    };
    for (auto const &c : cases) {
        EXPECT_NEAR(field.height_at(first, c.x, c.y), c.height, near) << c.x << ", " << c.y;
        EXPECT_NEAR(field.height_at(between, c.x, c.y), c.height + 2.5, near) << c.x << ", " << c.y;
    }
}

// Along x the cells are drawn aside by -10 -9 / -8 -6, in the second frame 1 more; along y by 0 1 / 2 2.7 in both.
TEST(WaveSampling, DisplacementsAreBlendedAlongTheirOwnAxis)
{
    MADE const field;
    struct {
        float x, y, t;
        double aside_x, aside_y;
    } const cases[] = {
        {0, 0, 0.5f, -9.5, 0},
        {0.5f, 0.25f, 0, -10 + 1 * 0.5, 1 + 1.7 * 0.25},  // the edges (0, 0) (1, 0) and (1, 0) (1, 1)
        {0.25f, 0.5f, 0, -8 + 2 * 0.25, 0 + 2 * 0.5},     // the edges (0, 1) (1, 1) and (0, 0) (0, 1)
        {0.25f, 0.25f, 1, -7 + 2 * 0.25, 0 + 2 * 0.25},
    };
    for (auto const &c : cases) {
        VECTOR3 const aside = field.displacement_at({0, 1, c.t}, c.x, c.y);
        EXPECT_NEAR(aside.x, c.aside_x, near) << c.x << ", " << c.y;
        EXPECT_EQ(aside.y, 0);
        EXPECT_NEAR(aside.z, c.aside_y, near) << c.x << ", " << c.y;
        VECTOR3 const moved = field.displaced_point({0, 1, c.t}, {c.x, 3, c.y}, 0.5f);
        EXPECT_NEAR(moved.x, c.x - c.aside_x / 2, near);
        EXPECT_EQ(moved.y, 3);
        EXPECT_NEAR(moved.z, c.y - c.aside_y / 2, near);
    }
    OCEAN_WAVE_FIELD calm;
    ASSERT_TRUE(read_bytes(calm, made_header(1) + made_frame("abcd", "abcdefgh", "")));
    EXPECT_EQ(calm.displacement_at({0, 0, 0}, 0.5f, 0.5f), VECTOR3());
}

// A byte along x is 16 units above 30720, along y 32 above 28672; units of 15.99 or so end up one below.
TEST(WaveSampling, SlopesAreBlendedInWholeAngles)
{
    MADE const field;
    FRAME_BLEND const between(0, 1, 0.3f);
    EXPECT_EQ(between.weight_b, 76u);
    EXPECT_EQ(between.weight_a, 180u);
    std::uint32_t words[4];
    field.fill_slope_image(between, {words, 2, 2, 8, 7});
    struct {
        std::uint32_t x, y;
        double angle_x, angle_y;
    } const cases[] = {
        {0, 0, 30720, 28672},
        {1, 2, 30720 + 64 * 16, 28672},
        {0, 1, 30720, 28672 + 64 * 32},
        {3, 1, 30720 + 16 * (64 * 180 + 127 * 76) / 256.0, 28672 + 32 * (64 * 180 + 127 * 76) / 256.0},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(testing::Message() << c.x << ", " << c.y);
        SLOPE_ANGLES const angles = field.slope_angles_at(between, c.x, c.y);
        EXPECT_NEAR(angles.x, c.angle_x, 1.01);
        EXPECT_NEAR(angles.y, c.angle_y, 1.01);
        std::uint32_t const word = words[c.y % 2 * 2 + c.x % 2];
        EXPECT_NEAR(word & 0xffff, c.angle_x, 1.01);
        EXPECT_NEAR(word >> 16, c.angle_y, 1.01);

        VECTOR3 const normal = field.normal_at(between, c.x, c.y);
        EXPECT_NEAR(length(normal), 1, 1e-6);
        EXPECT_NEAR(std::atan2(normal.x, normal.z), (c.angle_x / 65535 * 2 - 1) * M_PI, 2e-4);
        EXPECT_NEAR(std::atan2(normal.y, normal.z), (c.angle_y / 65535 * 2 - 1) * M_PI, 2e-4);
    }
}

TEST(WaveSampling, TimesAndTiles)
{
    MADE const field;  // 2 frames in 2 seconds, tiles of 2 metres
    struct {
        float time;
        std::uint32_t a, b;
        float t;
    } const cases[] = {
        {0, 0, 1, 0}, {0.75f, 0, 1, 0.75f}, {1.5f, 1, 0, 0.5f}, {7.25f, 1, 0, 0.25f}, {-0.25f, 1, 0, 0.75f}};
    for (auto const &c : cases) {
        FRAME_BLEND const blend = field.frame_blend(c.time);
        EXPECT_EQ(blend.frame_a, c.a) << c.time;
        EXPECT_EQ(blend.frame_b, c.b) << c.time;
        EXPECT_NEAR(blend.t, c.t, 1e-5) << c.time;
    }
    EXPECT_EQ(field.tile_origin(-0.5f, 5), (VECTOR2{-2, 4}));
    EXPECT_EQ(field.cell_position({-2, 4}, 1, 3), (VECTOR2{-1, 7}));
}
