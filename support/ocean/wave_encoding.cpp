#include "support/ocean/wave_encoding.h"

#include <algorithm>
#include <cassert>
#include <emmintrin.h>

namespace SUPPORT {

namespace {

// What becomes of values on their way to bytes.
class TO_BYTES {
public:
    TO_BYTES(float min, float max, float scale_of_range)
        : least(_mm_set1_ps(min)), greatest(_mm_set1_ps(max)), scale(_mm_set1_ps(scale_of_range))
    {}

    // 16 values, as 16-bit numbers.
    void convert(__m128i (&eights)[2], float const *values) const
    {
        eights[0] = _mm_packs_epi32(whole(_mm_loadu_ps(values)), whole(_mm_loadu_ps(values + 4)));
        eights[1] = _mm_packs_epi32(whole(_mm_loadu_ps(values + 8)), whole(_mm_loadu_ps(values + 12)));
    }
    __m128i whole(__m128 four) const
    {
        // In this order, what is no number gives the second argument.
        __m128 const within = _mm_min_ps(_mm_max_ps(four, least), greatest);
        __m128 const scaled = _mm_mul_ps(_mm_sub_ps(within, least), scale);
        return _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(scaled, _mm_setzero_ps()), _mm_set1_ps(255)));
    }

private:
    __m128 least, greatest, scale;
};

void encode_heights(std::uint8_t *bytes, KN::DynamicArray<float> const &heights, TO_BYTES const &to_bytes)
{
    for (std::uint32_t i = 0; i < heights.count; i += 16) {
        __m128i eights[2];
        to_bytes.convert(eights, heights.data + i);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i), _mm_packus_epi16(eights[0], eights[1]));
    }
}

void encode_displacements(BYTE_PAIR *pairs, WAVE_INSTANT const &instant, TO_BYTES const &x_to_bytes,
                          TO_BYTES const &y_to_bytes)
{
    for (std::uint32_t i = 0; i < instant.displacements_x.count; i += 16) {
        __m128i xs[2], ys[2];
        x_to_bytes.convert(xs, instant.displacements_x.data + i);
        y_to_bytes.convert(ys, instant.displacements_y.data + i);
        for (unsigned half = 0; half < 2; ++half)
            _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs + i + 8 * half),
                             _mm_or_si128(xs[half], _mm_slli_epi16(ys[half], 8)));
    }
}

void encode_slopes(BYTE_PAIR *pairs, KN::DynamicArray<std::uint32_t> const &words, TO_BYTES const &x_to_bytes,
                   TO_BYTES const &y_to_bytes)
{
    for (std::uint32_t i = 0; i < words.count; i += 8) {
        __m128i fours[2];
        for (unsigned half = 0; half < 2; ++half) {
            __m128i const four = _mm_loadu_si128(reinterpret_cast<__m128i const *>(words.data + i + 4 * half));
            __m128i const x = x_to_bytes.whole(_mm_cvtepi32_ps(_mm_and_si128(four, _mm_set1_epi32(0xffff))));
            __m128i const y = y_to_bytes.whole(_mm_cvtepi32_ps(_mm_srli_epi32(four, 16)));
            fours[half] = _mm_or_si128(x, _mm_slli_epi32(y, 16));
        }
        // Each 16-bit number becomes a byte: x and y by turns already.
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs + i), _mm_packus_epi16(fours[0], fours[1]));
    }
}

void set_scale(float &scale, float &unit, float span)
{
    scale = span != 0 ? 255 / span : 0;
    unit = span * 0.003921569f;
}

}  // namespace

void WAVE_SCALES::set(WAVE_RANGES const &ranges)
{
    set_scale(height_scale, height_unit, ranges.height_max - ranges.height_min);
    set_scale(slope_scale_x, slope_unit_x, float(ranges.slope_max_x - ranges.slope_min_x));
    set_scale(slope_scale_y, slope_unit_y, float(ranges.slope_max_y - ranges.slope_min_y));
    if (ranges.displacement_min_x < ranges.displacement_max_x &&
        ranges.displacement_max_y > ranges.displacement_min_y) {
        set_scale(displacement_scale_x, displacement_unit_x, ranges.displacement_max_x - ranges.displacement_min_x);
        set_scale(displacement_scale_y, displacement_unit_y, ranges.displacement_max_y - ranges.displacement_min_y);
    }
}

void encode_frame(WAVE_FRAME &frame, WAVE_INSTANT const &instant, WAVE_RANGES const &ranges, WAVE_SCALES const &scales)
{
    assert(instant.heights.count % 16 == 0 && frame.heights.cells.count == instant.heights.count);
    encode_heights(frame.heights.cells.data, instant.heights,
                   {ranges.height_min, ranges.height_max, scales.height_scale});
    encode_slopes(frame.slopes.cells.data, instant.slopes,
                  {float(ranges.slope_min_x), float(ranges.slope_max_x), scales.slope_scale_x},
                  {float(ranges.slope_min_y), float(ranges.slope_max_y), scales.slope_scale_y});
    encode_displacements(frame.displacements.cells.data, instant,
                         {ranges.displacement_min_x, ranges.displacement_max_x, scales.displacement_scale_x},
                         {ranges.displacement_min_y, ranges.displacement_max_y, scales.displacement_scale_y});
}

}  // namespace SUPPORT
