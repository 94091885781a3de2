// PACKED_QUATERNION: a rotation in 8 bytes, each component a signed 16-bit number, as animation files hold it. A step
// is 2 / 65535; the arithmetic is part of the format. The forms over arrays give the same bits as the single ones,
// several components at a time. Any thread may call.
#pragma once

#include "support/maths/quaternion.h"

#include <cstdint>
#include <span>

namespace SUPPORT {

struct PACKED_QUATERNION {
    std::int16_t x = 0, y = 0, z = 0, w = 0;

    bool operator==(PACKED_QUATERNION const &) const = default;
};

inline constexpr float packed_step = 3.0518044e-5f;  // 2 / 65535
inline constexpr float packed_scale = 32767.5f;

inline QUATERNION unpack_quaternion(PACKED_QUATERNION const &p)
{
    return {float(p.x) * packed_step, float(p.y) * packed_step, float(p.z) * packed_step, float(p.w) * packed_step};
}

// Each component times 32767.5 as a 32-bit product, to the nearest whole number, ties to even, then -32768 to 32767;
// what is no number becomes -32768. (0, 0, 0, 1) is stored as 0, 0, 0, 32767 and comes back with w = 0.99998474.
MATHS_API PACKED_QUATERNION pack_quaternion(QUATERNION const &q);

// As many results as there are sources.
MATHS_API void unpack_quaternions(std::span<PACKED_QUATERNION const> sources, QUATERNION *results);
MATHS_API void pack_quaternions(std::span<QUATERNION const> sources, PACKED_QUATERNION *results);

}  // namespace SUPPORT
