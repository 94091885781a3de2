#include "support/image/samples16.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <emmintrin.h>

namespace SUPPORT {

namespace {

constexpr float sample_step = 1.5259022e-5f;
constexpr std::uint32_t abreast = 8;

__m128i samples_of_four(__m128 values, SAMPLE_SCALE const &scale)
{
    __m128 v = _mm_mul_ps(_mm_sub_ps(values, _mm_set1_ps(scale.base)), _mm_set1_ps(scale.scale));
    v = _mm_max_ps(v, _mm_setzero_ps());  // in this order 0 comes of what is no number
    v = _mm_min_ps(v, _mm_set1_ps(1));
    v = _mm_add_ps(_mm_mul_ps(v, _mm_set1_ps(65535)), _mm_set1_ps(scale.added));
    return _mm_cvttps_epi32(v);
}

// Packing knows signed numbers only, so that the samples are shifted down by 32768 and back.
__m128i samples_of_eight(__m128 low, __m128 high, SAMPLE_SCALE const &scale)
{
    __m128i const half = _mm_set1_epi32(32768);
    __m128i const packed = _mm_packs_epi32(_mm_sub_epi32(samples_of_four(low, scale), half),
                                           _mm_sub_epi32(samples_of_four(high, scale), half));
    return _mm_xor_si128(packed, _mm_set1_epi16(-32768));
}

__m128 values_of_four(__m128i samples) { return _mm_mul_ps(_mm_cvtepi32_ps(samples), _mm_set1_ps(sample_step)); }

}  // namespace

SAMPLE_SCALE::SAMPLE_SCALE(float min, float max, float to_be_added) : base(min), scale(1), added(to_be_added)
{
    float const range = max - min;
    if (std::fabs(range) > 0.0001f)
        scale = 1 / range;
}

void samples_of_values(float const *values, std::uint32_t count, SAMPLE_SCALE const &scale, std::uint16_t *samples)
{
    std::uint32_t i = 0;
    for (; count - i >= abreast; i += abreast)
        _mm_storeu_si128(reinterpret_cast<__m128i *>(samples + i),
                         samples_of_eight(_mm_loadu_ps(values + i), _mm_loadu_ps(values + i + 4), scale));
    if (i == count)
        return;
    float last[abreast] = {};
    std::uint16_t last_samples[abreast];
    std::memcpy(last, values + i, (count - i) * sizeof(float));
    samples_of_values(last, abreast, scale, last_samples);
    std::memcpy(samples + i, last_samples, (count - i) * sizeof(std::uint16_t));
}

void values_of_samples(std::uint16_t const *samples, std::uint32_t count, float *values)
{
    std::uint32_t i = 0;
    for (; count - i >= abreast; i += abreast) {
        __m128i const eight = _mm_loadu_si128(reinterpret_cast<__m128i const *>(samples + i));
        _mm_storeu_ps(values + i, values_of_four(_mm_unpacklo_epi16(eight, _mm_setzero_si128())));
        _mm_storeu_ps(values + i + 4, values_of_four(_mm_unpackhi_epi16(eight, _mm_setzero_si128())));
    }
    for (; i < count; ++i)
        values[i] = float(samples[i]) * sample_step;
}

}  // namespace SUPPORT
