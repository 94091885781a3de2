#include "support/maths/lanes.h"

#include <atomic>

namespace SUPPORT {

namespace {

std::atomic<bool> eight_lanes_allowed = true;

}  // namespace

bool eight_lanes()
{
    static bool const present = __builtin_cpu_supports("avx2");
    return present && eight_lanes_allowed.load(std::memory_order_relaxed);
}

void allow_eight_lanes(bool allowed) { eight_lanes_allowed = allowed; }

}  // namespace SUPPORT
