// Frame times as a text for people: mean, extremes and spread of five clocks, and every single time. Any thread may
// call.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>

namespace SUPPORT {

struct FRAME_SAMPLES {
    std::uint32_t count = 0;
    std::uint32_t sum = 0;                    // microseconds
    KN::DynamicArray<std::uint32_t> samples;  // microseconds each

    void add(std::uint32_t microseconds)
    {
        samples.append(microseconds);
        ++count;
        sum += microseconds;
    }
};

struct FRAME_REPORT {
    FRAME_SAMPLES frame, main_thread, render_thread, threads_and_sync, gpu;
};

// Samples without a count are left out. The standard deviation takes sample - mean as an unsigned 32-bit number, so
// that samples below the mean count as ones far above it: numbers from earlier reports stay comparable.
KN::String frame_report_text(FRAME_REPORT const &report);

// Into a new file, with the system's line ends. Nothing happens if it cannot be opened.
void write_frame_report(FRAME_REPORT const &report, KN::String const &file_name);

}  // namespace SUPPORT
