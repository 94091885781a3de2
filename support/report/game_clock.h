// GAME_CLOCK: the time of a game, frame by frame: how long the last frame took, the mean of the last 64, and a game
// time that may run faster or slower than the real one. Milliseconds are whole numbers modulo 2^32; a clock is used by
// one thread. Derived clocks may take the time from elsewhere (`advance`) or override what is asked.
#pragma once

#include <cstdint>

namespace SUPPORT {

// What a statistics page shows of a value over a period. The clock only begins it anew; whoever measures lowers the
// minimum.
struct CLOCK_STATISTICS {
    static constexpr float no_minimum = 1e7f;

    char const *name = "Root";
    float minimum = no_minimum;  // of the frame times of the period, milliseconds
};

class GAME_CLOCK {
public:
    static constexpr std::uint32_t ring_size = 64;

    GAME_CLOCK();
    virtual ~GAME_CLOCK() = default;

    virtual float frame_seconds() const;          // of the last frame
    virtual float average_frame_seconds() const;  // over 64 frames; those that have not been count as 0
    virtual float scaled_frame_seconds() const;
    // 1000 times what the name says: the factor is one for seconds. Callers are built on it.
    virtual std::int64_t scaled_frame_milliseconds() const;
    virtual float game_seconds() const;
    virtual std::uint32_t game_milliseconds() const;
    // The game time becomes `milliseconds` and runs on from there.
    virtual void set_game_milliseconds(std::uint32_t milliseconds);
    // A frame has ended, now by the system's clock.
    virtual void tick();
    // A frame of `milliseconds` has ended, whatever the system's clock says.
    virtual void advance(std::uint32_t milliseconds);
    // Empties the ring of frame times.
    virtual void reset_window();

    std::uint32_t start_ms = 0, real_now = 0, previous_now = 0;
    float frame_ms = 0;
    float window_sum = 0;  // of the ring
    std::uint32_t frame_number = 0;
    std::uint32_t accumulated_ms = 0;    // since the statistics began
    std::uint32_t stats_period_ms = 10;  // statistics begin anew after as long; below 2: never
    std::uint32_t ring[ring_size] = {};  // whole milliseconds of each frame
    std::uint32_t ring_index = 0;
    float performance_frequency;  // of the system's clock, ticks a second
    float performance_period;     // its reciprocal
    CLOCK_STATISTICS statistics;
    float time_scale = 1;  // game time to real time
    std::uint32_t base_now = 0, base_offset = 0;

private:
    void end_frame();
    float game_time() const;  // milliseconds
};

}  // namespace SUPPORT
