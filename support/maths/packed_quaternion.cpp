#include "support/maths/packed_quaternion.h"

#include "support/maths/lanes.h"

#include <cmath>
#include <immintrin.h>

namespace SUPPORT {

namespace {

constexpr float lowest = -32768, highest = 32767;

// Clamped before it is rounded, which gives the same number, since the ends are whole: a conversion of what does not
// fit would give the lowest number for large values too.
std::int16_t pack_component(float component)
{
    float const scaled = component * packed_scale;
    float const above = scaled > lowest ? scaled : lowest;
    return std::int16_t(std::nearbyint(above < highest ? above : highest));
}

// Four components as whole numbers, in each 32-bit lane.
__m128i pack_four(__m128 components)
{
    __m128 const scaled = _mm_mul_ps(components, _mm_set1_ps(packed_scale));
    __m128 const above = _mm_max_ps(scaled, _mm_set1_ps(lowest));
    return _mm_cvtps_epi32(_mm_min_ps(above, _mm_set1_ps(highest)));
}

}  // namespace

PACKED_QUATERNION pack_quaternion(QUATERNION const &q)
{
    return {pack_component(q.x), pack_component(q.y), pack_component(q.z), pack_component(q.w)};
}

void pack_quaternions(std::span<QUATERNION const> sources, PACKED_QUATERNION *results)
{
    if (sources.empty())
        return;
    std::size_t const pairs = sources.size() & ~std::size_t(1);
    float const *from = &sources.data()->x;
    for (std::size_t i = 0; i < pairs; i += 2, from += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i *>(results + i),
                         _mm_packs_epi32(pack_four(_mm_loadu_ps(from)), pack_four(_mm_loadu_ps(from + 4))));
    if (pairs < sources.size())
        results[pairs] = pack_quaternion(sources[pairs]);
}

namespace {

void unpack_by_four(PACKED_QUATERNION const *sources, std::size_t pairs, float *to)
{
    __m128 const step = _mm_set1_ps(packed_step);
    for (std::size_t i = 0; i < pairs; ++i, sources += 2, to += 8) {
        __m128i const packed = _mm_loadu_si128(reinterpret_cast<__m128i const *>(sources));
        __m128i const first = _mm_srai_epi32(_mm_unpacklo_epi16(packed, packed), 16);
        __m128i const second = _mm_srai_epi32(_mm_unpackhi_epi16(packed, packed), 16);
        _mm_storeu_ps(to, _mm_mul_ps(_mm_cvtepi32_ps(first), step));
        _mm_storeu_ps(to + 4, _mm_mul_ps(_mm_cvtepi32_ps(second), step));
    }
}

WITH_EIGHT_LANES void unpack_by_eight(PACKED_QUATERNION const *sources, std::size_t pairs, float *to)
{
    __m256 const step = _mm256_set1_ps(packed_step);
    for (std::size_t i = 0; i < pairs; ++i, sources += 2, to += 8) {
        __m256i const both = _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const *>(sources)));
        _mm256_storeu_ps(to, _mm256_mul_ps(_mm256_cvtepi32_ps(both), step));
    }
}

}  // namespace

void unpack_quaternions(std::span<PACKED_QUATERNION const> sources, QUATERNION *results)
{
    if (sources.empty())
        return;
    std::size_t const pairs = sources.size() / 2;
    (eight_lanes() ? unpack_by_eight : unpack_by_four)(sources.data(), pairs, &results->x);
    if (sources.size() % 2 != 0)
        results[2 * pairs] = unpack_quaternion(sources[2 * pairs]);
}

}  // namespace SUPPORT
