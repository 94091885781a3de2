#include "support/numeric/disc_points.h"
#include "support/numeric/random_state.h"
#include "support/numeric/string_map.h"
#include "support/numeric/unit_suffix.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace SUPPORT {

TEST(RandomState, FollowsTheCongruence)
{
    for (auto const &[seed, values] : {std::pair{25492u, std::array{17748u, 79u, 37801u, 7470u, 50322u}},
                                       std::pair{0u, std::array{38u, 7719u, 54006u, 2437u, 41623u}}}) {
        RANDOM_STATE random{seed};
        for (unsigned value : values)
            EXPECT_EQ(next_random(random), value) << "seed " << seed;
    }
}

TEST(RandomState, GaussianPairsAreNormal)
{
    double const first[3][2] = {{0.7396289362226036, -0.6576001181331947},
                                {-1.2776450821167564, -0.2046140430465813},
                                {-0.23763695329675383, 1.0014072033060035}};
    RANDOM_STATE random{1};
    float a, b;
    for (auto const &pair : first) {
        gaussian_pair(random, a, b);
        EXPECT_NEAR(a, pair[0], 1e-5);
        EXPECT_NEAR(b, pair[1], 1e-5);
    }
    double sum = 0, squares = 0;
    int within_one = 0;
    for (int i = 0; i < 50000; ++i) {
        gaussian_pair(random, a, b);
        sum += a + b;
        squares += double(a) * a + double(b) * b;
        within_one += (std::abs(a) < 1) + (std::abs(b) < 1);
    }
    EXPECT_NEAR(sum / 1e5, 0, 0.02);
    EXPECT_NEAR(squares / 1e5, 1, 0.02);
    EXPECT_NEAR(within_one / 1e5, std::erf(1 / std::sqrt(2.0)), 0.01);
}

TEST(DiscPoints, SpreadEvenlyFromTheCentre)
{
    auto const one = disc_points({{3, -2}, 5}, 1);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0], (VECTOR2{3, -2}));
    EXPECT_TRUE(disc_points({{0, 0}, 1}, 0).empty());

    constexpr unsigned count = 4000;
    auto const points = disc_points({{10, 20}, 8}, count);
    double const turn = 2 * 3.14159265358979, golden = turn * 25033 / 65536;
    unsigned sectors[8] = {}, inner = 0;
    for (unsigned i = 0; i < count; ++i) {
        double const r = 8 * std::sqrt(double(i) / count), a = golden * i;
        ASSERT_NEAR(points[i].x, 10 + r * std::cos(a), 1e-3) << i;
        ASSERT_NEAR(points[i].y, 20 + r * std::sin(a), 1e-3) << i;
        double const direction = std::atan2(points[i].y - 20, points[i].x - 10);
        ++sectors[int((direction / turn + 0.5) * 8) & 7];
        inner += std::hypot(points[i].x - 10, points[i].y - 20) < 4;
    }
    for (unsigned sector : sectors)
        EXPECT_NEAR(sector, count / 8, 10);
    EXPECT_NEAR(inner, count / 4, 2);  // half the radius, a quarter of the area
}

TEST(StringMap, HashIsThatOfStoredTables)
{
    EXPECT_EQ(string_hash(""), 0xF73A51C9u);
    EXPECT_EQ(string_hash("a"), 0xF73A51A8u);
    EXPECT_EQ(string_hash("ab"), 0xF73A30ABu);
    EXPECT_EQ(string_hash("abcde"), 0x955935CDu);
    EXPECT_EQ(string_hash("\x80"), 0x08C5AE49u);  // bytes are signed
    EXPECT_EQ(string_hash("\xc3\xa9!"), 0xF706F8E8u);
}

TEST(StringMap, FindsWhatWasInsertedUntilItIsFull)
{
    STRING_MAP<int> map;
    auto const key = [](int i) { return KN::String("key " + std::to_string(i)); };
    EXPECT_EQ(map.find("absent"), nullptr);
    EXPECT_FALSE(map.insert("unused_key", 1));
    for (int i = 0; i < 256; ++i) {
        ASSERT_TRUE(map.insert(key(i), i)) << i;
        ASSERT_EQ(map.find(key(i + 1)), nullptr) << i;
    }
    EXPECT_FALSE(map.insert("one too many", 0));
    EXPECT_EQ(map.find("one too many"), nullptr);  // no unused slot ends the search
    EXPECT_TRUE(map.insert(key(7), 700));
    for (int i = 0; i < 256; ++i) {
        int const *const value = map.find(key(i));
        ASSERT_NE(value, nullptr) << i;
        EXPECT_EQ(*value, i == 7 ? 700 : i);
    }
    // 256 slots tell keys apart by their last letter and three more: these start at one slot and wrap around the end.
    STRING_MAP<int> crowded(4, "");
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(crowded.insert(KN::String(1, char('d' + 4 * i)), i));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(*crowded.find(KN::String(1, char('d' + 4 * i))), i);
    EXPECT_FALSE(STRING_MAP<int>(0).insert("a", 1));
}

TEST(UnitSuffix, IsComparedAsAWhole)
{
    struct {
        char const *text;
        unsigned code;
    } const cases[] = {{"px", 1},  {"%", 2},   {"C", 4},  {"c", 4},   {"in", 6},  {"miles", 8}, {"nm", 9},
                       {"mm", 10}, {"cm", 11}, {"m", 12}, {"km", 13}, {"Mm", 14}, {"ly", 17},   {"pt", 18},
                       {"fl", 19}, {"", 0},    {"MM", 0}, {"p", 0},   {"pxx", 0}, {" m", 0},    {"mile", 0}};
    for (auto const &c : cases)
        EXPECT_EQ(unit_from_suffix(c.text), c.code) << c.text;
}

}  // namespace SUPPORT
