#include "support/report/game_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace SUPPORT;

TEST(GameClock, FramesAndTheirMean)
{
    GAME_CLOCK clock;
    clock.advance(16);
    EXPECT_FLOAT_EQ(clock.frame_seconds(), 0.016f);
    EXPECT_FLOAT_EQ(clock.average_frame_seconds(), 0.016f / 64);
    for (int i = 0; i < 64; ++i)
        clock.advance(32);
    EXPECT_FLOAT_EQ(clock.average_frame_seconds(), 0.032f);  // the first has left the ring
    EXPECT_EQ(clock.frame_number, 65u);
    clock.reset_window();
    clock.advance(64);
    EXPECT_FLOAT_EQ(clock.average_frame_seconds(), 0.001f);

    clock.time_scale = 0.5f;
    EXPECT_FLOAT_EQ(clock.scaled_frame_seconds(), 0.032f);
    EXPECT_EQ(clock.scaled_frame_milliseconds(), 32000);  // as if the frame were counted in seconds
}

TEST(GameClock, GameTimeRunsAtItsScaleFromWhereItWasSet)
{
    GAME_CLOCK clock;
    clock.advance(100);
    EXPECT_EQ(clock.game_milliseconds(), 100u);
    clock.set_game_milliseconds(5000);
    clock.time_scale = 2;
    clock.advance(250);
    EXPECT_EQ(clock.game_milliseconds(), 5500u);
    EXPECT_FLOAT_EQ(clock.game_seconds(), 5.5f);
    clock.base_now = clock.real_now - 0x10;  // across the wrap of the counter
    clock.base_offset = clock.base_now - 7;
    EXPECT_EQ(clock.game_milliseconds(), 0x20u + 7);
}

TEST(GameClock, StatisticsBeginAnewAfterTheirPeriod)
{
    GAME_CLOCK clock;
    clock.statistics.minimum = 3;
    clock.advance(10);
    EXPECT_EQ(clock.statistics.minimum, 3);  // not above the period yet
    clock.advance(1);
    EXPECT_EQ(clock.statistics.minimum, 1e7f);
    EXPECT_EQ(clock.accumulated_ms, 0u);
    clock.stats_period_ms = 1;
    clock.statistics.minimum = 3;
    clock.advance(1000);
    EXPECT_EQ(clock.statistics.minimum, 3);
}

TEST(GameClock, TicksFollowTheSystem)
{
    GAME_CLOCK clock;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    clock.tick();
    EXPECT_GE(clock.frame_seconds(), 0.029f);
    EXPECT_LT(clock.frame_seconds(), 5.0f);
    EXPECT_FLOAT_EQ(clock.performance_frequency * clock.performance_period, 1);
}
