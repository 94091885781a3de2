#include "support/numeric/random_state.h"

#include <cmath>

namespace SUPPORT {

// -1 to 1, both reached. None of the 65536 values is 0, so that a square sum of 0 does not come up.
static float signed_random(RANDOM_STATE &state) { return float(next_random(state)) * 1.5259022e-5f * 2.0f - 1.0f; }

void gaussian_pair(RANDOM_STATE &state, float &a, float &b)
{
    float u, v, squared;
    do {
        u = signed_random(state);
        v = signed_random(state);
        squared = u * u + v * v;
    } while (squared >= 1.0f);

    float const factor = std::sqrt(-2.0f * std::log(squared) / squared);
    a = u * factor;
    b = v * factor;
}

}  // namespace SUPPORT
