#include "support/parallel/value_ranges.h"

#include "support/parallel/parallel_range.h"

#include <xmmintrin.h>

namespace SUPPORT {

namespace {

struct SUM {
    float const *values;
    float sum = 0;

    void run(std::uint32_t begin, std::uint32_t end)
    {
        std::uint32_t i = begin;
        for (; end - i >= 4 && i < end; i += 4) {
            sum += values[i];
            sum += values[i + 1];
            sum += values[i + 2];
            sum += values[i + 3];
        }
        for (; i < end; ++i)
            sum += values[i];
    }
    void join(SUM const &other) { sum += other.sum; }
};

// Four extremes side by side; which of them a value meets makes no difference to the result.
struct EXTREMES {
    static constexpr std::uint32_t step = 16;

    float const *values;
    VALUE_RANGE range = {};

    void run(std::uint32_t begin, std::uint32_t end)
    {
        __m128 least[4], greatest[4];
        for (int k = 0; k < 4; ++k) {
            least[k] = _mm_set1_ps(range.least);
            greatest[k] = _mm_set1_ps(range.greatest);
        }
        std::uint32_t i = begin;
        for (; end - i >= step && i < end; i += step)
            for (unsigned k = 0; k < 4; ++k) {
                // In this order the extreme stays where the value is no number.
                __m128 const four = _mm_loadu_ps(values + i + 4 * k);
                least[k] = _mm_min_ps(four, least[k]);
                greatest[k] = _mm_max_ps(four, greatest[k]);
            }
        for (int k = 0; k < 4; ++k) {
            float lanes[4];
            _mm_storeu_ps(lanes, least[k]);
            for (float const lane : lanes)
                range.least = std::min(range.least, lane);
            _mm_storeu_ps(lanes, greatest[k]);
            for (float const lane : lanes)
                range.greatest = std::max(range.greatest, lane);
        }
        for (; i < end; ++i) {
            range.least = values[i] < range.least ? values[i] : range.least;
            range.greatest = values[i] > range.greatest ? values[i] : range.greatest;
        }
    }
    void join(EXTREMES const &other)
    {
        range.least = std::min(range.least, other.range.least);
        range.greatest = std::max(range.greatest, other.range.greatest);
    }
};

}  // namespace

float parallel_sum(std::span<float const> values)
{
    std::uint32_t const n = std::uint32_t(values.size());
    SUM state{values.data()};
    parallel_reduce(0, n, default_grain(n), default_chunk(n), state);
    return state.sum;
}

VALUE_RANGE parallel_min_max(std::span<float const> values)
{
    std::uint32_t const n = std::uint32_t(values.size());
    EXTREMES state{values.data()};
    parallel_reduce(0, n, default_grain(n), default_chunk(n), state);
    return state.range;
}

}  // namespace SUPPORT
