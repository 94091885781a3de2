#include "support/camera/view_volume.h"

#include "support/camera/camera.h"

#include <cmath>
#include <gmock/gmock.h>

using namespace SUPPORT;

static float above(VECTOR4 const &plane, VECTOR3 const &point)
{
    return dot(VECTOR3{plane.x, plane.y, plane.z}, point) + plane.w;
}

static VIEW_VOLUME volume_of(CAMERA const &camera)
{
    VIEW_VOLUME volume;
    camera.view_volume(volume);
    return volume;
}

// Every camera looks from (10, 0, 0) along -x, near 1, far 5: y stays y, and what is right of it lies along z.
static CAMERA looking_back()
{
    CAMERA camera;
    camera.set_eye({10, 0, 0});
    camera.set_target({0, 0, 0});
    camera.set_near(1);
    camera.set_far(5);
    camera.set_aspect(2);
    return camera;
}

// Points a little inside and outside of each plane, in its order, by hand from the size of the view.
TEST(ViewVolume, PlanesPointInwards)
{
    CAMERA flat = looking_back();
    flat.set_orthographic(true);
    flat.set_view_height(4);
    CAMERA perspective = looking_back();
    perspective.set_field_of_view(2 * std::atan(0.5f));

    const struct {
        char const *what;
        CAMERA camera;
        float half_width, half_height;  // at a distance of 3
    } cases[] = {{"orthographic", flat, 4, 2}, {"perspective", perspective, 3, 1.5f}};
    for (auto const &c : cases) {
        SCOPED_TRACE(c.what);
        VIEW_VOLUME const volume = volume_of(c.camera);
        VECTOR3 const on_plane[] = {{9, 0, 0},
                                    {5, 0, 0},
                                    {7, 0, -c.half_width},
                                    {7, 0, c.half_width},
                                    {7, -c.half_height, 0},
                                    {7, c.half_height, 0}};
        for (unsigned i = 0; i < VIEW_VOLUME::PLANE_COUNT; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NEAR(above(volume.planes[i], on_plane[i]), 0, 1e-4f);
            EXPECT_GT(above(volume.planes[i], {7, 0, 0}), 0.5f);
            EXPECT_NEAR(length({volume.planes[i].x, volume.planes[i].y, volume.planes[i].z}), 1, 1e-5f);
        }
    }
}

TEST(ViewVolume, VectorsLeadToTheCornersOfTheView)
{
    CAMERA perspective = looking_back();
    perspective.set_field_of_view(2 * std::atan(0.5f));
    VIEW_VOLUME const volume = volume_of(perspective);
    auto const near_to = [](VECTOR3 const &is, VECTOR3 const &expected) { return length(is - expected) < 1e-5f; };
    EXPECT_PRED2(near_to, volume.position, (VECTOR3{10, 0, 0}));
    EXPECT_PRED2(near_to, volume.near_x, (VECTOR3{0, 0, 1}));
    EXPECT_PRED2(near_to, volume.near_y, (VECTOR3{0, 0.5f, 0}));
    EXPECT_PRED2(near_to, volume.near_z, (VECTOR3{-1, 0, 0}));
    EXPECT_PRED2(near_to, volume.far_x, (VECTOR3{0, 0, 5}));
    EXPECT_PRED2(near_to, volume.far_y, (VECTOR3{0, 2.5f, 0}));
    EXPECT_PRED2(near_to, volume.far_z, (VECTOR3{-5, 0, 0}));
    EXPECT_PRED2(near_to, volume.right_unit, (VECTOR3{0, 0, 1}));
    EXPECT_PRED2(near_to, volume.up_unit, (VECTOR3{0, 1, 0}));
    EXPECT_FLOAT_EQ(volume.aspect, 2);
    EXPECT_NEAR(volume.field_of_view, 0.9272952f, 1e-6f);

    VECTOR4 const corner = volume.view_projection * VECTOR4{5, 2.5f, 5, 1};
    EXPECT_PRED2(near_to, (VECTOR3{corner.x, corner.y, corner.z} / corner.w), (VECTOR3{1, 1, 1}));

    CAMERA flat = looking_back();
    flat.set_orthographic(true);
    flat.set_view_height(4);
    VIEW_VOLUME const box = volume_of(flat);
    EXPECT_PRED2(near_to, box.near_x, (VECTOR3{0, 0, 4}));
    EXPECT_PRED2(near_to, box.far_x, (VECTOR3{0, 0, 4}));
    EXPECT_PRED2(near_to, box.far_z, (VECTOR3{-5, 0, 0}));
    EXPECT_FLOAT_EQ(box.aspect, 2);
    EXPECT_EQ(box.field_of_view, 0);
}

// A flat view matrix has no inverse; it stands for it, and nothing becomes infinite that need not.
TEST(ViewVolume, AViewWithoutInverseStandsForIt)
{
    CAMERA camera = looking_back();
    MATRIX44 flat;
    flat[0][0] = 0;
    flat[0][3] = 7;
    camera.set_fixed_view(true, flat);
    EXPECT_EQ(volume_of(camera).position, (VECTOR3{7, 0, 0}));
}
