// Sums and extremes of many floats, on the worker threads. The results are the same on each run with as many workers.
#pragma once

#include <cstdint>
#include <span>

namespace SUPPORT {

// Each part is added up in the order of its indices by one accumulator; 0 for no values. At most 2^32 - 1 values.
float parallel_sum(std::span<float const> values);

struct VALUE_RANGE {
    float least = 3.4028235e38f;
    float greatest = -3.4028235e38f;
};

// What is no number is passed over. At most 2^32 - 1 values.
VALUE_RANGE parallel_min_max(std::span<float const> values);

}  // namespace SUPPORT
