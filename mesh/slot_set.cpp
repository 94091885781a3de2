#include "mesh/slot_set.h"

namespace VEX2_LOADER {

SLOT_SET::SLOT_SET(std::uint64_t capacity)
{
    for (std::uint64_t bits = capacity;; bits = levels.back().size()) {
        levels.emplace_back((bits + 63) / 64, 0);
        if (bits % 64 != 0)
            levels.back().back() = ~std::uint64_t(0) << bits % 64;
        if (levels.back().size() == 1)
            return;
    }
}

std::uint64_t SLOT_SET::occupy_next(std::uint64_t start)
{
    std::uint64_t slot = first_free(start);
    if (slot == none)
        slot = first_free(0);

    std::uint64_t bit = slot;
    for (std::vector<std::uint64_t> &level : levels) {
        std::uint64_t &word = level[bit / 64];
        word |= std::uint64_t(1) << bit % 64;
        if (word != ~std::uint64_t(0))
            break;
        bit /= 64;
    }
    return slot;
}

std::uint64_t SLOT_SET::first_free(std::uint64_t start) const
{
    // Up, until a word shows room at or behind the bit looked at; then down to the first free slot of that room.
    std::uint64_t bit = start;
    for (std::size_t level = 0; level < levels.size(); ++level) {
        std::uint64_t const word = bit / 64;
        if (word >= levels[level].size())
            return none;
        std::uint64_t room = ~levels[level][word] & ~std::uint64_t(0) << bit % 64;
        if (room != 0) {
            bit = word * 64 + unsigned(std::countr_zero(room));
            while (level-- > 0)
                bit = bit * 64 + unsigned(std::countr_zero(~levels[level][bit]));
            return bit;
        }
        bit = word + 1;
    }
    return none;
}

void SLOT_SET::count()
{
    counts.resize(levels[0].size());
    std::uint32_t sum = 0;
    for (std::size_t word = 0; word < counts.size(); ++word) {
        counts[word] = sum;
        sum += std::uint32_t(std::popcount(levels[0][word]));
    }
}

}  // namespace VEX2_LOADER
