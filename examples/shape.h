// SHAPE: a surface under construction, put together from polygons, boxes, extrusions and lofts, each with its normals
// and texture coordinates. Metres, y up, triangles counter-clockwise as seen from outside, v upwards.
#pragma once

#include "examples/vectors.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace EXAMPLES {

struct CORNER {
    VEX2_VECTOR position;
    VEX2_VECTOR normal;  // unit length
    float u, v;
};

// How a texture lies on a shape: it repeats every `metres`, and v runs along the direction `up` as far as a face
// allows.
struct TEXTURE_FIT {
    float metres = 1;
    VEX2_VECTOR up = {0, 1, 0};
};

// One cross section of a loft: a level ellipse.
struct RING {
    VEX2_VECTOR centre;
    float radius_x, radius_z;
};

enum class EDGES { HARD, SMOOTH };

class SHAPE {
public:
    std::vector<CORNER> corners;
    std::vector<std::uint32_t> indices;  // three a triangle

    // A flat convex polygon, fanned out from its first point. One without area is left out.
    void polygon(std::span<const VEX2_VECTOR> points, TEXTURE_FIT const &fit);
    void polygon(std::initializer_list<VEX2_VECTOR> points, TEXTURE_FIT const &fit)
    {
        polygon(std::span(points.begin(), points.size()), fit);
    }

    // The body between a flat convex outline and the same outline moved by `step`, which points away from the side on
    // which the outline runs counter-clockwise.
    void extrude(std::span<const VEX2_VECTOR> outline, VEX2_VECTOR const &step, TEXTURE_FIT const &fit);
    void box(VEX2_VECTOR const &low, VEX2_VECTOR const &high, TEXTURE_FIT const &fit);

    // The skin around rings from bottom to top; rings of radius 0 close it. HARD edges give each band normals of its
    // own. The texture goes a whole number of times around, and upwards by the rings' distances.
    void loft(std::span<const RING> rings, unsigned sides, EDGES edges, TEXTURE_FIT const &fit);

    // `other` at another place; `placement` turns and moves only.
    void append(SHAPE const &other, VEX2_MATRIX const &placement = {});
};

// A turn about the y axis, then a move.
VEX2_MATRIX placed(float degrees, VEX2_VECTOR const &place);
// A turn about the x axis, then a move.
VEX2_MATRIX tipped(float degrees, VEX2_VECTOR const &place);

}  // namespace EXAMPLES
