#include "support/camera/view_volume.h"

namespace SUPPORT {

static VECTOR4 plane_through(VECTOR3 const &normal, VECTOR3 const &point)
{
    return {normal.x, normal.y, normal.z, -dot(normal, point)};
}

// The plane of three points, with the normal on the side of `inside`.
static VECTOR4 side_plane(VECTOR3 const &a, VECTOR3 const &b, VECTOR3 const &c, VECTOR3 const &inside)
{
    VECTOR3 const normal = normalised(cross(b - a, c - a));
    return plane_through(dot(normal, inside - a) < 0 ? -normal : normal, a);
}

void VIEW_VOLUME::set(MATRIX44 const &world_to_camera, MATRIX44 const &camera_to_clip, VECTOR3 const &near_extent,
                      VECTOR3 const &far_extent)
{
    view = world_to_camera;
    projection = camera_to_clip;
    view_projection = projection * view;

    MATRIX44 const to_world = inverse_or_itself(view);
    VECTOR3 const axes[3] = {{to_world[0][0], to_world[1][0], to_world[2][0]},
                             {to_world[0][1], to_world[1][1], to_world[2][1]},
                             {to_world[0][2], to_world[1][2], to_world[2][2]}};
    position = {to_world[0][3], to_world[1][3], to_world[2][3]};
    near_x = axes[0] * near_extent.x;
    near_y = axes[1] * near_extent.y;
    near_z = axes[2] * near_extent.z;
    far_x = axes[0] * far_extent.x;
    far_y = axes[1] * far_extent.y;
    far_z = axes[2] * far_extent.z;
    right_unit = normalised(near_x);
    up_unit = normalised(near_y);

    // Corner i of the clip box: bit 0 is x, bit 1 is y, bit 2 is depth.
    MATRIX44 const from_clip = inverse_or_itself(view_projection);
    VECTOR3 corners[8], middle;
    for (unsigned i = 0; i < 8; ++i) {
        VECTOR4 const clip = {i & 1 ? 1.0f : -1.0f, i & 2 ? 1.0f : -1.0f, i & 4 ? 1.0f : 0.0f, 1};
        VECTOR4 const world = from_clip * clip;
        corners[i] = VECTOR3{world.x, world.y, world.z} / world.w;
        middle += corners[i] * 0.125f;
    }
    planes[NEAR_PLANE] = plane_through(normalised(near_z), corners[0]);
    planes[FAR_PLANE] = plane_through(-normalised(far_z), corners[4]);
    // From far corners, which stand apart even where the near rectangle is a point.
    planes[LEFT_PLANE] = side_plane(corners[4], corners[6], corners[0], middle);
    planes[RIGHT_PLANE] = side_plane(corners[5], corners[7], corners[1], middle);
    planes[BOTTOM_PLANE] = side_plane(corners[4], corners[5], corners[0], middle);
    planes[TOP_PLANE] = side_plane(corners[6], corners[7], corners[2], middle);
}

}  // namespace SUPPORT
