#include "support/camera/camera.h"
#include "tests/support/slot.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>

using namespace SUPPORT;

static void expect_near(VECTOR3 const &is, VECTOR3 const &expected, float distance = 1e-5f)
{
    EXPECT_LE(length(is - expected), distance) << is.x << " " << is.y << " " << is.z;
}

static CAMERA camera_at(VECTOR3 const &eye, VECTOR3 const &target)
{
    CAMERA camera;
    camera.set_eye(eye);
    camera.set_target(target);
    return camera;
}

static CAMERA orthographic(float view_height)
{
    CAMERA camera;
    camera.set_orthographic(true);
    camera.set_view_height(view_height);
    return camera;
}

#if defined(HAS_SLOT_OF)
TEST(Camera, OperationsKeepTheirSlots)
{
    EXPECT_EQ(slot_of(&CAMERA::eye), 2);
    EXPECT_EQ(slot_of(&CAMERA::far), 9);
    EXPECT_EQ(slot_of(&CAMERA::min_pitch), 11);
    EXPECT_EQ(slot_of(&CAMERA::set_aspect), 15);
    EXPECT_EQ(slot_of(&CAMERA::move), 16);
    EXPECT_EQ(slot_of(&CAMERA::set_target), 19);
    EXPECT_EQ(slot_of(&CAMERA::set_field_of_view), 22);
    EXPECT_EQ(slot_of(&CAMERA::move_forward), 30);
    EXPECT_EQ(slot_of(&CAMERA::orbit_pitch), 41);
    EXPECT_EQ(slot_of(&CAMERA::move_target_with_heading), 45);
    EXPECT_EQ(slot_of(static_cast<MATRIX44 (CAMERA::*)() const>(&CAMERA::projection)), 47);
    EXPECT_EQ(slot_of(&CAMERA::view_volume), 48);
    EXPECT_EQ(slot_of(static_cast<MATRIX44 (CAMERA::*)(float, float, float) const>(&CAMERA::projection)), 49);
    EXPECT_EQ(slot_of(&CAMERA::set_off_centre), 51);
    EXPECT_EQ(slot_of(&CAMERA::offset_after_yaw), 56);
    EXPECT_EQ(slot_of(&CAMERA::update_axes), 58);
}
#endif

TEST(CameraAxes, AreRepairedWhereTheyMeanNothing)
{
    CAMERA on_itself = camera_at({1, 2, 3}, {1, 2, 3});
    expect_near(on_itself.target(), {1, 2, 4}, 0);
    expect_near(on_itself.forward(), {0, 0, 1}, 1e-9f);

    CAMERA downwards = camera_at({0, 5, 0}, {0, 0, 0});
    EXPECT_EQ(downwards.flat_forward(), (VECTOR3{0, 0, 0}));
    EXPECT_EQ(downwards.up(), (VECTOR3{0, 0, -1}));

    // A level up vector is replaced, and the flat direction keeps its length this once.
    downwards.set_target({3, 1, 0});
    EXPECT_EQ(downwards.up(), (VECTOR3{0, 1, 0}));
    expect_near(downwards.flat_forward(), {0.6f, 0, 0});
    downwards.update_axes();
    expect_near(downwards.flat_forward(), {1, 0, 0});
    expect_near(downwards.flat_right(), {0, 0, -1});

    // A target on the old eye is moved away before the eye follows.
    CAMERA both = camera_at({0, 0, -5}, {0, 0, 0});
    both.set_target_and_eye({0, 0, -5}, {0, 0, -9});
    EXPECT_EQ(both.target(), (VECTOR3{0, 0, -4}));
}

TEST(CameraMoves, GoAlongTheirAxes)
{
    VECTOR3 const eye = {1, 2, 3}, target = {1, 6, 6};  // forward (0, 0.8, 0.6), flat (0, 0, 1)
    const struct {
        void (CAMERA::*move)(float);
        VECTOR3 step;
    } cases[] = {
        {&CAMERA::move_forward, {0, 0, 2}}, {&CAMERA::move_back, {0, 0, -2}}, {&CAMERA::move_right, {2, 0, 0}},
        {&CAMERA::move_left, {-2, 0, 0}},   {&CAMERA::move_up, {0, 2, 0}},    {&CAMERA::move_down, {0, -2, 0}},
        {&CAMERA::dolly, {0, 1.6f, 1.2f}},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(&c - cases);
        CAMERA camera = camera_at(eye, target);
        (camera.*c.move)(2);
        expect_near(camera.eye(), eye + c.step);
        expect_near(camera.target(), target + c.step);
    }
    CAMERA camera = camera_at(eye, target);
    camera.set_position_keeping_view({0, 0, 0});
    expect_near(camera.target(), {0, 4, 3});
}

TEST(CameraMoves, HeightOfAnOrthographicViewTakesTheY)
{
    CAMERA camera = orthographic(1);
    camera.move({2, 0.5f, 3});
    EXPECT_FLOAT_EQ(camera.view_height(), 1.5f);
    EXPECT_EQ(camera.eye(), (VECTOR3{2, 0, 3}));
    camera.move({0, -2, 0});
    EXPECT_FLOAT_EQ(camera.view_height(), 0.001f);
    camera.move_up(1);
    EXPECT_EQ(camera.eye(), (VECTOR3{2, 1, 3}));
}

TEST(CameraTurns, KeepTheirDistanceAndTheLimitsOfPitch)
{
    float const quarter = 1.5707963f;
    CAMERA camera = camera_at({0, 0, 0}, {0, 0, 2});
    camera.turn_yaw(quarter);
    expect_near(camera.target(), {2, 0, 0});
    camera.orbit_yaw(5 * quarter);  // one more than a whole turn
    expect_near(camera.target(), {2, 0, 0});
    expect_near(camera.eye(), {2, 0, 2});

    camera.turn_pitch(2);
    expect_near(camera.target(), VECTOR3{2, 2 * std::sin(0.6f), 2 - 2 * std::cos(0.6f)});
    CAMERA steep = camera_at({0, 0, 0}, {0, 3, 4});
    steep.orbit_pitch(0);  // steeper than the limit from the start
    expect_near(steep.eye(), VECTOR3{0, 3, 4} - VECTOR3{0, 5 * std::sin(0.6f), 5 * std::cos(0.6f)});
    steep.set_pitch_limits(-1, 1);
    steep.orbit_pitch(-0.1f);
    EXPECT_NEAR(std::asin(steep.forward().y), 0.5f, 1e-5f);
}

TEST(CameraTurns, TargetsMoveWithTheirOffsetOrANewHeading)
{
    CAMERA camera = camera_at({0, 3, -4}, {0, 0, 0});
    camera.move_target_keeping_offset({10, 1, 0});
    expect_near(camera.eye(), {10, 4, -4});
    camera.move_target_with_heading({0, 0, 0}, 0x4000);  // a quarter turn: looks along x
    expect_near(camera.eye(), {-4, 3, 0}, 1e-4f);
    camera.move_target_with_heading({0, 0, 0}, 0x8000);
    expect_near(camera.eye(), {0, 3, 4}, 1e-4f);
}

// A platform that turns: its camera space is the world's with x and z exchanged, and eyes stay above the ground.
class PLATFORM_CAMERA : public CAMERA {
    VECTOR3 constrained(VECTOR3 const &p) const override { return {p.x, std::max(p.y, 0.0f), p.z}; }
    VECTOR3 to_camera_space(VECTOR3 const &p) const override { return {p.z, p.y, p.x}; }
    VECTOR3 to_world_space(VECTOR3 const &p) const override { return {p.z, p.y, p.x}; }
};

TEST(CameraTurns, PassThroughTheSpaceAndConstraintOfADerivedClass)
{
    PLATFORM_CAMERA camera;
    camera.set_target_and_eye({0, -1, 2}, {0, -7, 0});
    EXPECT_EQ(camera.eye(), (VECTOR3{0, 0, 0}));
    camera.turn_yaw(1.5707963f);  // the other way round than without the exchange
    expect_near(camera.target(), {-2, 0, 0});
}

TEST(CameraView, MapsToTheRightUpAndForward)
{
    CAMERA camera = camera_at({1, 2, 3}, {1, 2, 7});
    expect_near(transformed_point(camera.view(), {1, 2, 7}), {0, 0, 4});
    expect_near(transformed_point(camera.view(), {2, 4, 3}), {1, 2, 0});
    camera.set_roll(1.5707963f);
    expect_near(transformed_point(camera.view(), {2, 4, 3}), {-2, 1, 0});

    MATRIX44 standing;
    standing[0][3] = 5;
    camera.set_fixed_view(true, standing);
    EXPECT_EQ(camera.view(), standing);
    camera.set_fixed_view(false, standing);
    camera.set_fixed_projection(true, standing, MATRIX44());
    EXPECT_EQ(camera.view(), standing);
    EXPECT_EQ(camera.projection(), MATRIX44());

    MATRIX44 placed;  // eye (4, 5, 6), looking along x, up along -z
    float const rows[3][4] = {{0, 0, 1, 4}, {1, 0, 0, 5}, {0, -1, 0, 6}};
    std::memcpy(placed.m, rows, sizeof(rows));
    camera.set_from_matrix(placed);
    expect_near(camera.eye(), {4, 5, 6});
    expect_near(camera.target(), {5, 5, 6});
    EXPECT_EQ(camera.up(), (VECTOR3{0, 0, -1}));
}

// Where a point of camera space comes out in clip space, divided by w.
static VECTOR3 clip(MATRIX44 const &projection, VECTOR3 const &point)
{
    VECTOR4 const out = projection * VECTOR4{point.x, point.y, point.z, 1};
    return VECTOR3{out.x, out.y, out.z} / out.w;
}

TEST(CameraProjection, TakesTheCornersOfTheViewToThoseOfTheClipBox)
{
    CAMERA perspective;
    perspective.set_near(1);
    perspective.set_far(5);
    perspective.set_field_of_view(2 * std::atan(0.5f));
    perspective.set_aspect(2);
    expect_near(clip(perspective.projection(), {1, 0.5f, 1}), {1, 1, 0});
    expect_near(clip(perspective.projection(), {-5, 2.5f, 5}), {-1, 1, 1});
    EXPECT_FLOAT_EQ(perspective.tan_scale(), 1);

    perspective.set_aspect_override(true, 4);
    perspective.set_field_of_view_override(true, 2 * std::atan(1.0f));
    expect_near(clip(perspective.projection(), {4, 1, 1}), {1, 1, 0});
    EXPECT_FLOAT_EQ(perspective.tan_scale(), 1);

    CAMERA flat = orthographic(4);
    flat.set_aspect(2);
    flat.set_near(1);
    flat.set_far(5);
    expect_near(clip(flat.projection(), {4, 2, 1}), {1, 1, 0});
    expect_near(clip(flat.projection(), {-4, -2, 5}), {-1, -1, 1});

    flat.set_off_centre(true, -1, 3, 2, -4);  // left, right, top, bottom; stands before the orthographic one
    expect_near(clip(flat.projection(), {3, 2, 1}), {1, 1, 0});
    expect_near(clip(flat.projection(), {-5, -20, 5}), {-1, -1, 1});

    // Planes that fall together are taken 0.1 apart.
    perspective.set_far(1);
    expect_near(clip(perspective.projection(), {0, 0, 1.1f}), {0, 0, 1}, 1e-4f);
    // A wider scale sees more.
    expect_near(clip(perspective.projection(1, 5, 0.5f), {0, std::tan(0.3926991f), 1}), {0, 1, 0});
}
