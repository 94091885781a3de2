// VIEW_VOLUME: what a camera sees, as six clip planes and the vectors to the corners of the view. Points x with
// dot(normal, x) + d >= 0 for all planes are inside. Matrices act on column vectors; clip space has x and y from -1 to
// 1 and depth from 0 at the near plane to 1 at the far one. Everything but `view` and `projection` is in world space.
#pragma once

#include "support/camera/api.h"
#include "support/maths/matrix.h"

namespace SUPPORT {

struct CAMERA_API VIEW_VOLUME {
    enum PLANE { NEAR_PLANE, FAR_PLANE, LEFT_PLANE, RIGHT_PLANE, BOTTOM_PLANE, TOP_PLANE, PLANE_COUNT };

    // Normal and d; the sides by the clip space: LEFT_PLANE is where x is -1, BOTTOM_PLANE where y is.
    VECTOR4 planes[PLANE_COUNT] = {{0, 1, 0, 0}, {0, 1, 0, 0}, {0, 1, 0, 0}, {0, 1, 0, 0}, {0, 1, 0, 0}, {0, 1, 0, 0}};
    VECTOR3 position;           // of the eye
    MATRIX44 view_projection;   // the product projection * view
    MATRIX44 view, projection;  // world to camera space, camera to clip space
    VECTOR3 right_unit, up_unit;
    // Half the width, half the height and the distance of the near and of the far rectangle: from `position`, the
    // corners are at z plus or minus x plus or minus y.
    VECTOR3 near_x, near_y, near_z;
    VECTOR3 far_x, far_y, far_z;
    float aspect = 1;          // width / height
    float field_of_view = 50;  // vertical, radians; 0 for an orthographic volume

    // Everything but `aspect` and `field_of_view`. The two extents have half the width, half the height and the
    // distance of a rectangle. A matrix that has no inverse stands for it.
    void set(MATRIX44 const &world_to_camera, MATRIX44 const &camera_to_clip, VECTOR3 const &near_extent,
             VECTOR3 const &far_extent);
};

}  // namespace SUPPORT
