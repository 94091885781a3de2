// What an ocean is made from. Plain values of the caller's; nothing is normalised or limited here.
#pragma once

#include "foundation/dynamic_array.h"

#include <cstdint>

namespace SUPPORT {

struct WAVE_PARAMETERS {
    float wind_x = 0, wind_y = 0;  // direction
    float wind_speed = 0;          // metres a second
    float amplitude = 0;           // of the spectrum; 0 is flat water
    std::uint32_t carried = 0;     // the caller's own

    bool operator==(WAVE_PARAMETERS const &) const = default;
};

struct CREST_PARAMETERS {
    std::uint8_t crests_enabled = 0;
    std::uint8_t unused[3] = {};
    std::uint32_t carried = 0;  // the caller's own
    float fade_time = 0;        // seconds that foam comes up before its crest
    float crest_threshold = 0;  // how sharply water has to be pushed together, metres from cell to cell
};

struct OCEAN_SETTINGS {
    WAVE_PARAMETERS sea, swell;
    CREST_PARAMETERS crests;
    KN::DynamicArray<std::uint32_t> carried;  // the caller's own
};

}  // namespace SUPPORT
