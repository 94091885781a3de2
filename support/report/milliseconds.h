// The clock of the reports: milliseconds since some moment before the process, modulo 2^32.
#pragma once

#include <chrono>
#include <cstdint>

namespace SUPPORT {

inline std::uint32_t milliseconds_now()
{
    auto const now = std::chrono::steady_clock::now().time_since_epoch();
    return std::uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace SUPPORT
