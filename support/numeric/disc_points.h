// Points spread evenly over a disc, without rings or spokes: for scattering and for sampling an area. Point i of n is a
// golden angle on from point i - 1 and at sqrt(i / n) of the radius, so each covers the same area (Vogel's spiral).
#pragma once

#include "foundation/dynamic_array.h"
#include "support/maths/vector.h"

namespace SUPPORT {

struct DISC {
    VECTOR2 centre;
    float radius = 0;
};

// `count` points, the centre first. The same on every machine.
KN::DynamicArray<VECTOR2> disc_points(DISC const &disc, unsigned count);

}  // namespace SUPPORT
