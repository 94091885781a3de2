#include "support/parallel/parallel_range.h"

namespace SUPPORT {

namespace {

constexpr std::uint32_t parts_a_thread = 20;

std::uint32_t a_part_of(std::uint32_t n)
{
    return n / ((task::query::number_of_worker_threads() + 1) * parts_a_thread);
}

}  // namespace

std::uint32_t default_chunk(std::uint32_t n) { return std::max(a_part_of(n), 2u); }

std::uint32_t default_grain(std::uint32_t n) { return std::max(n / 64, 64u); }

RANGE_PARTS::RANGE_PARTS(INDEX_RANGE const &range) : whole(range)
{
    std::uint32_t const n = range.size(), grain = std::max(range.grain, 1u);
    std::uint32_t const least = std::max(grain, a_part_of(n));
    length = least - least % grain;
    number = n / length + (n % length != 0);
}

}  // namespace SUPPORT
