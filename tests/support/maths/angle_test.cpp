#include "support/maths/angle_table.h"

#include <gtest/gtest.h>
#include <limits>
#include <numbers>

using namespace SUPPORT;

TEST(Angle16, ReadsAsSignedUnitsWithHalfATurnPositive)
{
    EXPECT_FLOAT_EQ(std::numbers::pi_v<float>, angle16_to_radians(0x8000));
    EXPECT_FLOAT_EQ(-std::numbers::pi_v<float>, angle16_to_radians(0x8001) - std::numbers::pi_v<float> / 32768);
    EXPECT_EQ(0.5f * angle16_to_radians(0x8000), angle16_to_radians(0x4000));
    EXPECT_EQ(-angle16_to_radians(0x4000), angle16_to_radians(0xc000));
    // Differences go the short way, across the wrap too; half a turn is positive both ways.
    EXPECT_EQ(2, angle16_difference(1, 0xffff));
    EXPECT_EQ(-2, angle16_difference(0xffff, 1));
    EXPECT_EQ(32768, angle16_difference(0x8000, 0));
    EXPECT_EQ(32768, angle16_difference(0, 0x8000));
}

TEST(Angle16, RadiansRoundHalfAwayFromZeroAndWrap)
{
    float const unit = 1 / 10430.378f;
    struct {
        float radians;
        ANGLE16 angle;
    } const cases[] = {
        {2.25f * unit, 2},
        {2.75f * unit, 3},
        {-2.75f * unit, 0xfffd},
        {std::numbers::pi_v<float>, 0x8000},
        {-std::numbers::pi_v<float>, 0x8000},
        {3 * std::numbers::pi_v<float>, 0x8000},
        {1e30f, 0},
        {std::numeric_limits<float>::quiet_NaN(), 0},
        {-std::numeric_limits<float>::infinity(), 0},
    };
    for (auto const &c : cases)
        EXPECT_EQ(c.angle, radians_to_angle16(c.radians)) << c.radians;

    // The floats whose product with the constant is a half exactly.
    unsigned halves = 0;
    for (float units = 0.5f; units < 3000; units += 1) {
        float const radians = units / 10430.378f;
        if (radians * 10430.378f != units)
            continue;
        ++halves;
        EXPECT_EQ(ANGLE16(units + 0.5f), radians_to_angle16(radians)) << units;
        EXPECT_EQ(ANGLE16(-int(units + 0.5f)), radians_to_angle16(-radians)) << -units;
    }
    EXPECT_GT(halves, 1000u);
    // The largest float below a half is nearer to 0.
    EXPECT_EQ(0, radians_to_angle16(std::nextafter(0.5f / 10430.378f, 0.0f)));

    for (unsigned angle = 0; angle < 65536; ++angle)
        ASSERT_EQ(angle, radians_to_angle16(angle16_to_radians(ANGLE16(angle))));
}

TEST(AngleTable, HoldsTheFunctionsOfEveryAngle)
{
    for (int i = -32768; i < 32768; ++i) {
        double const radians = double(float(i) * 9.58738e-5f);
        ANGLE16 const angle = ANGLE16(i);
        ASSERT_EQ(float(std::sin(radians)), ANGLE_TABLE.sin_cos[angle].sine) << i;
        ASSERT_EQ(float(std::cos(radians)), ANGLE_TABLE.sin_cos[angle].cosine) << i;
        ASSERT_FLOAT_EQ(float(std::tan(radians)), ANGLE_TABLE.tan[angle]) << i;
    }
}
