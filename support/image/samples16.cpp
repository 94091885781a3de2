// Plain loops, which the compiler makes run abreast: four values at a time, or eight where the processor can. Each
// value takes the same steps either way.

#include "support/image/samples16.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <immintrin.h>

namespace SUPPORT {

namespace {

constexpr float sample_step = 1.5259022e-5f;

bool has_avx2()
{
    static bool const present = __builtin_cpu_supports("avx2");
    return present;
}

// Whole groups of eight; the result is the number of values done.
std::uint32_t to_samples(float const *values, std::uint32_t count, SAMPLE_SCALE const &scale, std::uint16_t *samples)
{
    auto const four = [&](float const *from) {
        __m128 v = _mm_mul_ps(_mm_sub_ps(_mm_loadu_ps(from), _mm_set1_ps(scale.base)), _mm_set1_ps(scale.scale));
        v = _mm_max_ps(v, _mm_setzero_ps());  // in this order 0 comes of what is no number
        v = _mm_min_ps(v, _mm_set1_ps(1));
        v = _mm_add_ps(_mm_mul_ps(v, _mm_set1_ps(65535)), _mm_set1_ps(scale.added));
        // Packing knows signed numbers only: down by 32768 before, and up again afterwards.
        return _mm_sub_epi32(_mm_cvttps_epi32(v), _mm_set1_epi32(32768));
    };
    std::uint32_t i = 0;
    for (; count - i >= 8; i += 8) {
        __m128i const packed = _mm_packs_epi32(four(values + i), four(values + i + 4));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(samples + i), _mm_xor_si128(packed, _mm_set1_epi16(-32768)));
    }
    return i;
}

[[gnu::target("avx2")]] __m256i eight_avx2(float const *from, SAMPLE_SCALE const &scale)
{
    __m256 v =
        _mm256_mul_ps(_mm256_sub_ps(_mm256_loadu_ps(from), _mm256_set1_ps(scale.base)), _mm256_set1_ps(scale.scale));
    v = _mm256_max_ps(v, _mm256_setzero_ps());
    v = _mm256_min_ps(v, _mm256_set1_ps(1));
    v = _mm256_add_ps(_mm256_mul_ps(v, _mm256_set1_ps(65535)), _mm256_set1_ps(scale.added));
    return _mm256_cvttps_epi32(v);
}

// Whole groups of sixteen.
[[gnu::target("avx2")]] std::uint32_t to_samples_avx2(float const *values, std::uint32_t count,
                                                      SAMPLE_SCALE const &scale, std::uint16_t *samples)
{
    std::uint32_t i = 0;
    for (; count - i >= 16; i += 16) {
        // Packs halves of registers by turns, which the permutation puts in order.
        __m256i const packed = _mm256_packus_epi32(eight_avx2(values + i, scale), eight_avx2(values + i + 8, scale));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(samples + i), _mm256_permute4x64_epi64(packed, 0b11011000));
    }
    return i;
}

[[gnu::always_inline]] inline void to_values(unsigned char const *__restrict samples, std::uint32_t count,
                                             float *__restrict values)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, samples + std::size_t(i) * sizeof(sample), sizeof(sample));
        values[i] = float(int(sample)) * sample_step;
    }
}

[[gnu::target("avx2")]] void to_values_avx2(unsigned char const *samples, std::uint32_t count, float *values)
{
    to_values(samples, count, values);
}

// Past the caches, for values that would push each other out of them before anyone reads them: memory then only takes
// what is written and need not give first what stood there. `values` are at a multiple of 16 bytes. Whole groups of
// eight; the result is the number of values done.
std::uint32_t to_values_past_caches(unsigned char const *samples, std::uint32_t count, float *values)
{
    auto const store = [&](__m128i four, float *to) {
        _mm_stream_ps(to, _mm_mul_ps(_mm_cvtepi32_ps(four), _mm_set1_ps(sample_step)));
    };
    std::uint32_t i = 0;
    for (; count - i >= 8; i += 8) {
        __m128i const eight = _mm_loadu_si128(reinterpret_cast<__m128i const *>(samples + std::size_t(i) * 2));
        store(_mm_unpacklo_epi16(eight, _mm_setzero_si128()), values + i);
        store(_mm_unpackhi_epi16(eight, _mm_setzero_si128()), values + i + 4);
    }
    _mm_sfence();  // such stores are not in order with those that hand the row to another thread
    return i;
}

}  // namespace

SAMPLE_SCALE::SAMPLE_SCALE(float min, float max, float to_be_added) : base(min), scale(1), added(to_be_added)
{
    float const range = max - min;
    if (std::fabs(range) > 0.0001f)
        scale = 1 / range;
}

void samples_of_values(float const *values, std::uint32_t count, SAMPLE_SCALE const &scale, std::uint16_t *samples)
{
    std::uint32_t i = has_avx2() ? to_samples_avx2(values, count, scale, samples) : 0;
    i += to_samples(values + i, count - i, scale, samples + i);
    if (i == count)
        return;
    float last[8] = {};
    std::uint16_t last_samples[8];
    std::memcpy(last, values + i, (count - i) * sizeof(float));
    to_samples(last, 8, scale, last_samples);
    std::memcpy(samples + i, last_samples, (count - i) * sizeof(std::uint16_t));
}

void values_of_samples(unsigned char const *samples, std::uint32_t count, float *values, bool past_caches)
{
    auto const plain = has_avx2() ? to_values_avx2 : to_values;
    std::uint32_t done = 0;
    if (past_caches) {
        std::size_t const over = reinterpret_cast<std::uintptr_t>(values) / sizeof(float) % 4;
        done = std::min(std::uint32_t((4 - over) % 4), count);
        plain(samples, done, values);
        done += to_values_past_caches(samples + std::size_t(done) * 2, count - done, values + done);
    }
    plain(samples + std::size_t(done) * 2, count - done, values + done);
}

}  // namespace SUPPORT
