#include "support/numeric/hash_noise.h"

#include <cmath>
#include <numbers>

namespace SUPPORT {

// Numbers are taken modulo 2^32, so beyond 2^63 all are 0; so is what is no number.
static float counted(float x) { return std::abs(x) < 0x1p63f ? x : 0; }

// The whole part of x modulo 2^32.
static std::uint32_t whole_part(float x) { return std::uint32_t(std::int64_t(x)); }

static float smooth_hash_noise_at(std::uint32_t whole)
{
    return hash_noise(whole - 1) * 0.25f + hash_noise(whole) * 0.5f + hash_noise(whole + 1) * 0.25f;
}

static float continuous_hash_noise(float number)
{
    float const x = counted(number);
    float const below = std::floor(x);
    std::uint32_t const whole = whole_part(below);
    float const from = smooth_hash_noise_at(whole), to = smooth_hash_noise_at(whole + 1);
    float const weight = 0.5f - 0.5f * std::cos(std::numbers::pi_v<float> * (x - below));
    return from + (to - from) * weight;
}

float hash_noise(std::uint32_t number)
{
    std::uint32_t const n = (number << 13) ^ number;
    std::uint32_t const hash = ((n * n * 15731u + 789221u) * n + 1376312589u) & 0x7fffffffu;
    return 1.0f - float(hash) * 9.313226e-10f;
}

float smooth_hash_noise(float x) { return smooth_hash_noise_at(whole_part(counted(x))); }

float fractal_hash_noise(float x, unsigned octaves, float frequency, float amplitude, float gain, float lacunarity)
{
    float sum = 0;
    for (unsigned octave = 0; octave < octaves; ++octave) {
        sum += continuous_hash_noise(x * frequency) * amplitude;
        frequency *= lacunarity;
        amplitude *= gain;
    }
    return sum;
}

}  // namespace SUPPORT
