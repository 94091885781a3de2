#include "support/report/game_clock.h"

#include "support/report/milliseconds.h"

#include <chrono>
#include <cmath>
#include <iterator>

namespace SUPPORT {

namespace {

constexpr float in_seconds = 0.001f;
constexpr float to_milliseconds = 999.99994f;  // the float below 1000

}  // namespace

GAME_CLOCK::GAME_CLOCK()
    : start_ms(milliseconds_now()), real_now(start_ms), previous_now(start_ms), base_now(start_ms),
      base_offset(start_ms)
{
    using PERIOD = std::chrono::steady_clock::period;
    performance_frequency = float(PERIOD::den) / float(PERIOD::num);
    performance_period = 1 / performance_frequency;
}

float GAME_CLOCK::frame_seconds() const { return frame_ms * in_seconds; }

float GAME_CLOCK::average_frame_seconds() const { return window_sum * 0.015625f * in_seconds; }

float GAME_CLOCK::scaled_frame_seconds() const { return time_scale * frame_ms * in_seconds; }

std::int64_t GAME_CLOCK::scaled_frame_milliseconds() const
{
    return std::llround(time_scale * frame_ms * to_milliseconds);
}

float GAME_CLOCK::game_time() const { return float(real_now - base_now) * time_scale + float(base_now - base_offset); }

float GAME_CLOCK::game_seconds() const { return game_time() * in_seconds; }

std::uint32_t GAME_CLOCK::game_milliseconds() const
{
    float const time = game_time();
    return std::abs(time) < 0x1p63f ? std::uint32_t(std::int64_t(time)) : 0;  // beyond, the low 32 bits are 0
}

void GAME_CLOCK::set_game_milliseconds(std::uint32_t milliseconds)
{
    base_now = real_now;
    base_offset = real_now - milliseconds;
}

void GAME_CLOCK::tick()
{
    real_now = milliseconds_now();
    end_frame();
}

void GAME_CLOCK::advance(std::uint32_t milliseconds)
{
    real_now += milliseconds;
    end_frame();
}

void GAME_CLOCK::reset_window()
{
    std::fill(std::begin(ring), std::end(ring), 0u);
    ring_index = 0;
    window_sum = 0;
}

void GAME_CLOCK::end_frame()
{
    std::uint32_t const length = real_now - previous_now;
    previous_now = real_now;
    frame_ms = float(length);

    accumulated_ms += length;
    if (stats_period_ms >= 2 && accumulated_ms > stats_period_ms) {
        statistics.minimum = CLOCK_STATISTICS::no_minimum;
        accumulated_ms = 0;
    }

    window_sum += frame_ms - float(ring[ring_index]);
    ring[ring_index] = length;
    ++frame_number;
    ring_index = (ring_index + 1) & (ring_size - 1);
}

}  // namespace SUPPORT
