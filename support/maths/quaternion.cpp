#include "support/maths/quaternion.h"

#include "support/maths/quaternion_kernel.h"

namespace SUPPORT {

VECTOR3 rotated(VECTOR3 const &v, QUATERNION const &q)
{
    QUATERNION const turned = q * QUATERNION{v.x, v.y, v.z, 0} * conjugate(q);
    return {turned.x, turned.y, turned.z};
}

QUATERNION quaternion_from_angle_y(ANGLE16 angle)
{
    float const half = float(std::int16_t(angle)) * radians_per_angle16 * 0.5f;
    return {0, std::sin(half), 0, std::cos(half)};
}

QUATERNION slerp(QUATERNION const &a, QUATERNION const &b, float t, float threshold)
{
    COMPONENTS<float> blended;
    spherical_blend({a.x, a.y, a.z, a.w}, COMPONENTS<float>{b.x, b.y, b.z, b.w}, t, threshold, blended);
    return {blended.x, blended.y, blended.z, blended.w};
}

void slerp_in_place(QUATERNION &a, QUATERNION const &b, float t, float threshold)
{
    if (t <= 0)
        return;
    a = t >= 1 ? b : slerp(a, b, t, threshold);
}

}  // namespace SUPPORT
