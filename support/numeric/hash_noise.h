// Noise along a line, hashed from whole numbers: no table, no state. For flicker, sway and other signals over time.
// Values lie within -1 and 1. Numbers beyond +-2^31 wrap around; what is no number counts as 0.
#pragma once

#include <cstdint>

namespace SUPPORT {

// The raw value of a whole number, -1 to 1; neighbours have nothing in common.
float hash_noise(std::uint32_t number);

// The mean of the raw values at x - 1, x (twice) and x + 1, where x is cut off to a whole number.
float smooth_hash_noise(float x);

// The sum of `octaves` continuous signals signal(x * f) * a, with f and a starting at `frequency` and `amplitude` and
// multiplied by `lacunarity` and `gain` after each octave. The signal runs through the smooth values of the whole
// numbers, with a half wave of the cosine from each to the next.
float fractal_hash_noise(float x, unsigned octaves, float frequency, float amplitude, float gain, float lacunarity);

}  // namespace SUPPORT
