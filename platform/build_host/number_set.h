// NUMBER_SET: a set of numbers below a bound, from which the smallest is taken again and again. A number is a bit; a
// bit of each level above tells whether a word below it holds any, so that every call costs a word a level.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

class NUMBER_SET {
public:
    explicit NUMBER_SET(std::size_t bound)
    {
        do {
            bound = (bound + 63) / 64;
            levels.emplace_back(bound, 0);
        } while (bound > 1);
    }

    bool empty() const { return levels.back().empty() || levels.back()[0] == 0; }

    void insert(std::size_t number)
    {
        for (std::vector<std::uint64_t> &words : levels) {
            words[number / 64] |= std::uint64_t(1) << number % 64;
            number /= 64;
        }
    }

    // Takes the smallest out; the set is not empty.
    std::size_t take_first()
    {
        std::size_t number = 0;
        for (std::size_t level = levels.size(); level-- > 0;)
            number = number * 64 + std::size_t(std::countr_zero(levels[level][number]));
        std::size_t bit = number;
        for (std::vector<std::uint64_t> &words : levels) {
            words[bit / 64] &= ~(std::uint64_t(1) << bit % 64);
            if (words[bit / 64] != 0)
                break;
            bit /= 64;
        }
        return number;
    }

private:
    std::vector<std::vector<std::uint64_t>> levels;  // from the numbers themselves up to a single word
};
