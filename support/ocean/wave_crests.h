// The crests of choppy water: cells into which the water is pushed from one side, where foam appears. In a loop they
// fade in before they appear.
#pragma once

#include "support/ocean/wave_frame.h"

namespace SUPPORT {

// Appends the crests of a frame, column by column, with strengths from 0 to 1 between the weakest and the strongest;
// as they are if all are alike. The width is a multiple of 4.
void collect_crests(WAVE_FRAME &frame, WAVE_RANGES const &ranges, WAVE_SCALES const &scales, float threshold);

// Over the collected crests of a whole loop: strengths are spread around the most frequent one, 0.5 to 1; each crest
// is led up to by weaker ones in up to `fade_frames` frames before, and knows its strength in the frame after.
void fade_crests(KN::DynamicArray<WAVE_FRAME> &frames, std::uint32_t grid, std::uint32_t fade_frames);

}  // namespace SUPPORT
