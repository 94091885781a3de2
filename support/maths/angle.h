// ANGLE16: angles of 16 bits, 65536 units to a full turn, so that sums and differences wrap by themselves. Read as a
// signed number of units, the pattern 0x8000 is half a turn in the positive sense: +32768, never -32768. The constants
// belong to stored data; all arithmetic is in 32-bit floats.
#pragma once

#include <cmath>
#include <cstdint>

namespace SUPPORT {

using ANGLE16 = std::uint16_t;

inline constexpr float radians_per_angle16 = 9.58738e-5f;  // pi / 32768
inline constexpr float angle16_per_radian = 10430.378f;    // 32768 / pi

// -32767 to 32768 units.
constexpr int angle16_units(ANGLE16 angle) { return angle <= 0x8000 ? angle : angle - 0x10000; }

// Above -pi, up to pi.
constexpr float angle16_to_radians(ANGLE16 angle) { return float(angle16_units(angle)) * radians_per_angle16; }

// The low 16 bits of `number`, which holds a whole number. No number, and infinities: 0.
inline ANGLE16 angle16_from_whole(float number)
{
    return std::abs(number) < 0x1p62f ? ANGLE16(std::int64_t(number)) : ANGLE16(0);  // beyond, all 16 bits are 0
}

// The nearest unit, half away from zero, modulo a full turn.
inline ANGLE16 radians_to_angle16(float radians)
{
    return angle16_from_whole(std::round(radians * angle16_per_radian));
}

// The short way from `from` to `to`, -32767 to 32768 units.
constexpr int angle16_difference(ANGLE16 to, ANGLE16 from) { return angle16_units(ANGLE16(to - from)); }

}  // namespace SUPPORT
