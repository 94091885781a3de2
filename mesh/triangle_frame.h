// The tangent frame of one triangle: the directions in which v and u grow across it.
#pragma once

#include "scene/values.h"

#include <cmath>

namespace VEX2_LOADER {

struct FRAME_CORNER {
    VEX2_VECTOR position;
    float u = 0, v = 0;
};

struct TRIANGLE_FRAME {
    double binormal[3];
    double tangent[3];

    VEX2_TANGENT_FRAME narrow() const
    {
        return {{float(binormal[0]), float(binormal[1]), float(binormal[2])},
                {float(tangent[0]), float(tangent[1]), float(tangent[2])}};
    }
};

// Corners in the triangle's stored order. Positions are subtracted as 32-bit floats and widened then; UVWs are widened
// first. Neither vector has unit length: both are per unit of u and v, or unscaled where the UVWs have no area.
inline TRIANGLE_FRAME triangle_frame_of(FRAME_CORNER const &a, FRAME_CORNER const &b, FRAME_CORNER const &c)
{
    double const e1[3] = {b.position.x - a.position.x, b.position.y - a.position.y, b.position.z - a.position.z};
    double const e2[3] = {c.position.x - a.position.x, c.position.y - a.position.y, c.position.z - a.position.z};
    double const s1 = double(b.u) - double(a.u);
    double const t1 = double(b.v) - double(a.v);
    double const s2 = double(c.u) - double(a.u);
    double const t2 = double(c.v) - double(a.v);
    double const det = t2 * s1 - s2 * t1;
    double const inverse = std::abs(det) > 0.000001 ? 1.0 / det : 1.0;
    TRIANGLE_FRAME frame;
    for (int axis = 0; axis < 3; ++axis) {
        frame.binormal[axis] = (e2[axis] * s1 - e1[axis] * s2) * inverse;
        frame.tangent[axis] = (e1[axis] * t2 - e2[axis] * t1) * inverse;
    }
    return frame;
}

}  // namespace VEX2_LOADER
