#include "support/animation/pose.h"

#include <algorithm>
#include <cmath>

namespace SUPPORT {

ANGLE16 heading_of(QUATERNION const &rotation, ANIMATION_FRAME const *reference_frame, std::uint32_t bone, bool simple)
{
    MATRIX33 m = rotation_matrix(rotation);
    if (reference_frame != nullptr)
        m = m * transposed(rotation_matrix(unpack_quaternion(reference_frame->rotation_of(bone))));
    ANGLE16 const of_z = radians_to_angle16(std::atan2(m[0][2], m[2][2]));
    if (simple)
        return of_z;
    ANGLE16 of_y = radians_to_angle16(std::atan2(m[0][1], m[2][1]));
    if (m[1][2] >= 0)
        of_y = ANGLE16(of_y + 0x8000);
    // From 60 to 10 degrees off the vertical the y axis takes over.
    float const begin = std::cos(1.0471976f), end = std::cos(0.17453292f);
    float const share = std::clamp((std::abs(m[1][2]) - begin) / (end - begin), 0.0f, 1.0f);
    return ANGLE16(of_z + angle16_from_whole(std::round(share * float(angle16_difference(of_y, of_z)))));
}

}  // namespace SUPPORT
