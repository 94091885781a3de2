// The occupied slots of an open-addressing table, without the table: which slot a new key gets when it is probed from
// its start, and how many occupied slots lie below a given one. A slot is a bit; a bit of each level above tells
// whether a word below it is full. So a probe costs a few words, however long the run of occupied slots is.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

namespace VEX2_LOADER {

class SLOT_SET {
public:
    // All `capacity` slots are free. `capacity` is at least 1.
    explicit SLOT_SET(std::uint64_t capacity);

    // Occupies the first free slot at or behind `start`, going on from slot 0 behind the last one, and returns it.
    // `start` is below the capacity; at least one slot is free.
    std::uint64_t occupy(std::uint64_t start)
    {
        std::uint64_t &word = levels[0][start / 64];
        std::uint64_t const taken = word | std::uint64_t(1) << start % 64;
        if (taken == word || taken == ~std::uint64_t(0))
            return occupy_next(start);
        word = taken;
        return start;
    }

    // To be called once no more slots are taken, before `rank`.
    void count();
    // The number of occupied slots below `slot`.
    std::uint32_t rank(std::uint64_t slot) const
    {
        std::uint64_t const below = levels[0][slot / 64] & ((std::uint64_t(1) << slot % 64) - 1);
        return counts[slot / 64] + std::uint32_t(std::popcount(below));
    }

private:
    static constexpr std::uint64_t none = ~std::uint64_t(0);

    // The same where the slot itself, or the last room of its word, is taken.
    std::uint64_t occupy_next(std::uint64_t start);
    std::uint64_t first_free(std::uint64_t start) const;

    // levels[0] has a bit a slot, 1 = occupied; levels[k + 1] a bit a word of levels[k], 1 = full; the last has one
    // word. Bits behind the end are set, as if occupied.
    std::vector<std::vector<std::uint64_t>> levels;
    std::vector<std::uint32_t> counts;  // occupied slots in the words of levels[0] before this one
};

}  // namespace VEX2_LOADER
