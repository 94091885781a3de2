// RANDOM_STATE: the generator behind seeded content, a linear congruence modulo 2^32. The same seed gives the same
// numbers on every machine, so stored seeds stay good. One thread steps a state at a time.
#pragma once

#include <cstdint>

namespace SUPPORT {

struct RANDOM_STATE {
    std::uint32_t number = 0;  // a new state is its seed
};

// Steps the state; the value is its upper half, 0 to 65535.
inline std::uint32_t next_random(RANDOM_STATE &state)
{
    state.number = state.number * 214013u + 2531011u;
    return state.number >> 16;
}

// Two independent numbers of the normal distribution with mean 0 and deviation 1, by Marsaglia's polar method. Takes
// two values of the generator per try; about 5 tries serve 4 calls.
void gaussian_pair(RANDOM_STATE &state, float &a, float &b);

}  // namespace SUPPORT
