// An instant of a wave field cut down to bytes.
#pragma once

#include "support/ocean/wave_frame.h"
#include "support/ocean/wave_instant.h"

namespace SUPPORT {

// Values outside the ranges are taken for their ends; what is no number becomes 0. The planes of `frame` stand.
void encode_frame(WAVE_FRAME &frame, WAVE_INSTANT const &instant, WAVE_RANGES const &ranges, WAVE_SCALES const &scales);

}  // namespace SUPPORT
