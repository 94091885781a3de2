// FLAT_BOX: the box around a run of edges in the plane, by which searches leave out what is far away.
#pragma once

#include "support/maths/vector.h"

#include <cmath>
#include <emmintrin.h>

namespace SUPPORT {

struct FLAT_BOX {
    __m128 bounds;  // least x and y, greatest x and y with the sign turned: adding to a box is one minimum

    FLAT_BOX(VECTOR2 const &a, VECTOR2 const &b) : bounds(bounds_of(a)) { add(b); }

    void add(VECTOR2 const &point) { bounds = _mm_min_ps(bounds, bounds_of(point)); }
    void add(FLAT_BOX const &other) { bounds = _mm_min_ps(bounds, other.bounds); }

    // Whether the boxes are at most `margin` apart in x and in y.
    bool within(float margin, FLAT_BOX const &other) const
    {
        __m128 const turned = _mm_shuffle_ps(other.bounds, other.bounds, _MM_SHUFFLE(1, 0, 3, 2));
        __m128 const gaps = _mm_add_ps(bounds, turned);
        return _mm_movemask_ps(_mm_cmpgt_ps(gaps, _mm_set1_ps(margin))) == 0;
    }

    // Whether all four sides are at most `margin` apart.
    bool agrees(FLAT_BOX const &other, float margin) const
    {
        __m128 const gaps = _mm_sub_ps(bounds, other.bounds), turned = _mm_sub_ps(other.bounds, bounds);
        return _mm_movemask_ps(_mm_cmpgt_ps(_mm_max_ps(gaps, turned), _mm_set1_ps(margin))) == 0;
    }

    // Whether a point of the box is on the right of (x, y), at the same height.
    bool reaches_right_of(float x, float y) const
    {
        // least x is free, least y <= y, greatest x >= x, greatest y >= y
        __m128 const limits = _mm_setr_ps(INFINITY, y, -x, -y);
        return _mm_movemask_ps(_mm_cmpgt_ps(bounds, limits)) == 0;
    }

    // Whether the line through p with direction e comes to the box, or nearly so.
    bool meets_line(VECTOR2 const &p, VECTOR2 const &e) const
    {
        alignas(16) float b[4];
        _mm_store_ps(b, bounds);
        float const way_x = (b[0] - b[2]) * 0.5f - p.x, way_y = (b[1] - b[3]) * 0.5f - p.y;  // to the middle
        float const half_x = (-b[2] - b[0]) * 0.5f, half_y = (-b[3] - b[1]) * 0.5f;
        float const ex = std::abs(e.x), ey = std::abs(e.y);
        float const rounding = 1e-6f * (ex * std::abs(way_y) + ey * std::abs(way_x));
        return !(std::abs(e.x * way_y - e.y * way_x) > (ex * half_y + ey * half_x) * 1.00001f + rounding);
    }

private:
    static __m128 bounds_of(VECTOR2 const &point) { return _mm_setr_ps(point.x, point.y, -point.x, -point.y); }
};

}  // namespace SUPPORT
