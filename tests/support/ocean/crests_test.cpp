#include "made_field.h"
#include "support/ocean/wave_crests.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace SUPPORT;

namespace {

// Bytes are displacements in centimetres above -1 metre: 100 is still water.
WAVE_RANGES made_ranges()
{
    WAVE_RANGES ranges;
    ranges.displacement_min_x = ranges.displacement_min_y = -1;
    return ranges;
}

WAVE_SCALES made_scales()
{
    WAVE_SCALES scales;
    scales.displacement_unit_x = scales.displacement_unit_y = 0.01f;
    return scales;
}

CREST_POINT const *find(WAVE_FRAME const &frame, std::uint32_t x, std::uint32_t y)
{
    auto const at = std::find_if(frame.crests.begin(), frame.crests.end(),
                                 [&](CREST_POINT const &crest) { return crest.x == x && crest.y == y; });
    return at == frame.crests.end() ? nullptr : at;
}

}  // namespace

TEST(Crests, AreWhereWaterIsPushedTogether)
{
    WAVE_FRAME frame;
    frame.displacements.allocate(8, 8);
    for (BYTE_PAIR &pair : frame.displacements.cells)
        pair = {100, 100};
    auto const push = [&](unsigned x, unsigned y, int right, int down) {
        frame.displacements.cells[y * 8 + x] = {std::uint8_t(100 - right), std::uint8_t(100 - down)};
    };
    push(0, 0, -10, 0);  // against each other over the edge: 0.3 metres
    push(7, 0, 20, 0);
    push(3, 0, 0, -5);  // the same along y: 0.1 metres
    push(3, 7, 0, 5);
    push(2, 3, -10, 0);  // away from each other
    push(3, 3, 10, 0);
    push(5, 5, 41, 0);  // rolled over; what meets it is still a crest, of 0.51 metres
    push(6, 5, -10, 0);
    push(5, 2, 10, 15);  // the sharper of both axes: 0.35 against 0.2
    push(6, 2, -10, 0);
    push(5, 3, 0, -20);

    collect_crests(frame, made_ranges(), made_scales(), 0.15f);
    struct {
        std::uint32_t x, y;
        double strength;
    } const expected[] = {
        {0, 0, 0.3}, {5, 2, 0.35}, {5, 3, 0.35}, {6, 2, 0.2}, {6, 5, 0.51}, {7, 0, 0.3},
    };
    ASSERT_EQ(frame.crests.count, std::size(expected));
    for (unsigned i = 0; i < frame.crests.count; ++i) {  // column by column
        EXPECT_EQ(frame.crests[i].x, expected[i].x);
        EXPECT_EQ(frame.crests[i].y, expected[i].y);
        EXPECT_NEAR(frame.crests[i].strength, (expected[i].strength - 0.2) / (0.51 - 0.2), 1e-4);
    }

    frame.crests.clear();
    collect_crests(frame, made_ranges(), made_scales(), 0.4f);
    ASSERT_EQ(frame.crests.count, 1u);
    EXPECT_NEAR(frame.crests[0].strength, 0.51, 1e-4) << "one alone stays as it is";
}

// Of the strengths 0.5 0.5 0.3 1.0 the most frequent falls into the bin at 0.45; 0.25 to 0.65 become 0.5 to 1.
TEST(Crests, StrengthsAreSpreadAroundTheMostFrequent)
{
    KN::DynamicArray<WAVE_FRAME> frames;
    frames.resize(2);
    float const strengths[] = {0.5f, 0.5f, 0.3f, 1.0f};
    for (std::uint32_t i = 0; i < 4; ++i)
        frames[0].crests.append(CREST_POINT{i % 2, i / 2, strengths[i], 0});
    fade_crests(frames, 2, 0);
    double const expected[] = {0.8125, 0.8125, 0.5625, 1};
    for (unsigned i = 0; i < 4; ++i)
        EXPECT_NEAR(frames[0].crests[i].strength, expected[i], 1e-5);
    EXPECT_TRUE(frames[1].crests.empty());

    // Far above 1, as a list of equal crests may be.
    frames[0].crests.clear();
    frames[0].crests.append(CREST_POINT{0, 0, 50, 0});
    fade_crests(frames, 2, 0);
    EXPECT_EQ(frames[0].crests[0].strength, 1);
}

TEST(Crests, AreLedUpToAroundTheLoop)
{
    KN::DynamicArray<WAVE_FRAME> frames;
    frames.resize(4);
    frames[2].crests.append(CREST_POINT{1, 0, 0.5f, 0});  // becomes 0.8125
    frames[0].crests.append(CREST_POINT{0, 1, 0.5f, 0});  // its way leads over the beginning
    fade_crests(frames, 2, 2);
    struct {
        std::uint32_t frame, x, y;
        float strength, next;
    } const expected[] = {
        {0, 1, 0, 0, 0.40625f},       {1, 1, 0, 0.40625f, 0.8125f}, {2, 1, 0, 0.8125f, 0}, {0, 0, 1, 0.8125f, 0},
        {3, 0, 1, 0.40625f, 0.8125f}, {2, 0, 1, 0, 0.40625f},       {1, 0, 1, 0, 0},  // what leads up to the weakest,
                                                                                      // met later on
    };
    unsigned count = 0;
    for (auto const &e : expected) {
        SCOPED_TRACE(testing::Message() << "frame " << e.frame << " at " << e.x << ", " << e.y);
        CREST_POINT const *const crest = find(frames[e.frame], e.x, e.y);
        ASSERT_NE(crest, nullptr);
        EXPECT_NEAR(crest->strength, e.strength, 1e-5);
        EXPECT_NEAR(crest->next_strength, e.next, 1e-5);
    }
    for (WAVE_FRAME const &frame : frames)
        count += frame.crests.count;
    EXPECT_EQ(count, std::size(expected));

    // A longer way than the loop ends at the crest itself.
    KN::DynamicArray<WAVE_FRAME> round;
    round.resize(3);
    round[1].crests.append(CREST_POINT{0, 0, 0.5f, 0});
    fade_crests(round, 2, 1000);
    for (WAVE_FRAME const &frame : round)
        EXPECT_EQ(frame.crests.count, 1u);
    EXPECT_NEAR(round[1].crests[0].next_strength, 0.8125f * 0.998f, 1e-5);
}
