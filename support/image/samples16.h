// Heights as 16-bit samples and back, whole rows at a time.
#pragma once

#include <cstdint>

namespace SUPPORT {

// Which floats become the samples 0 and 65535: v = (value - base) * scale, clamped to 0 and 1; what is no number
// becomes 0.
struct SAMPLE_SCALE {
    static constexpr float rounding = 0.5f, truncating = 0;

    SAMPLE_SCALE(float min, float max, float added);

    float base, scale;
    float added;  // to v * 65535, before it is truncated
};

void samples_of_values(float const *values, std::uint32_t count, SAMPLE_SCALE const &scale, std::uint16_t *samples);

// Each sample times 1.5259022e-5, which is 1 / 65535.
// The samples stand in a file's bytes, at any address. `past_caches`: the values are more than the caches hold.
void values_of_samples(unsigned char const *samples, std::uint32_t count, float *values, bool past_caches);

}  // namespace SUPPORT
