#include "support/numeric/disc_points.h"

#include "support/maths/angle_table.h"

#include <cmath>

namespace SUPPORT {

KN::DynamicArray<VECTOR2> disc_points(DISC const &disc, unsigned count)
{
    constexpr unsigned golden_angle = 25033;  // in units of ANGLE16

    KN::DynamicArray<VECTOR2> points;
    points.resize(count);
    for (unsigned i = 0; i < count; ++i) {
        float const radius = std::sqrt(float(i) / float(count)) * disc.radius;
        SINE_COSINE const &direction = ANGLE_TABLE.sin_cos[ANGLE16(i * golden_angle)];
        points[i] = {disc.centre.x + radius * direction.cosine, disc.centre.y + radius * direction.sine};
    }
    return points;
}

}  // namespace SUPPORT
