#include "support/physics/rigid_body.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace SUPPORT;

namespace {

void expect_near(VECTOR3 const &a, VECTOR3 const &b, float tolerance = 1e-5f)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

}  // namespace

// Five points a side at distances 0, s/4 and s/2 from the middle: 50 times (s/4)^2 + 50 times (s/2)^2 about an axis,
// twice, each with 0.008 of the mass: m s^2 / 4, where a solid cube has m s^2 / 6.
TEST(RigidBody, ABoxHasTheMassOfItsLattice)
{
    RIGID_BODY body;
    set_box_mass(body, 12, 2);
    EXPECT_EQ(body.mass, 12);
    EXPECT_FLOAT_EQ(body.inverse_mass, 1 / 12.0f);
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j) {
            EXPECT_NEAR(body.inertia[i][j], i == j ? 12.0f : 0.0f, 1e-4f);
            EXPECT_NEAR(body.body_inverse_inertia[i][j], i == j ? 1 / 12.0f : 0.0f, 1e-5f);
        }
    set_box_mass(body, 12, 0);
    EXPECT_EQ(body.inertia[1][1], 0);
    EXPECT_EQ(body.body_inverse_inertia[1][1], 0);
}

TEST(RigidBody, TheInverseInertiaTurnsWithTheBody)
{
    RIGID_BODY body;
    body.body_inverse_inertia[0][0] = 2;
    body.body_inverse_inertia[1][1] = 3;
    body.body_inverse_inertia[2][2] = 5;
    body.orientation = {0, 0, std::sqrt(0.5f), std::sqrt(0.5f)};  // x becomes y
    MATRIX33 const turned = world_inverse_inertia(body);
    EXPECT_NEAR(turned[0][0], 3, 1e-5f);
    EXPECT_NEAR(turned[1][1], 2, 1e-5f);
    EXPECT_NEAR(turned[2][2], 5, 1e-5f);
    body.inverse_mass = 0;
    EXPECT_EQ(world_inverse_inertia(body), body.body_inverse_inertia);
    apply_impulse(body, {10, 0, 0}, {0, 1, 0});
    EXPECT_EQ(body.velocity, VECTOR3());
}

TEST(RigidBody, ImpulsesMoveAndTurn)
{
    RIGID_BODY body;
    set_box_mass(body, 4, 1);  // inertia 1
    body.position = {1, 0, 0};
    apply_impulse(body, {0, 8, 0}, {3, 0, 0});
    expect_near(body.velocity, {0, 2, 0});
    expect_near(body.angular_velocity, {0, 0, 16});
    expect_near(velocity_at(body, {1, 0.5f, 0}), {-8, 2, 0});
}

TEST(RigidBody, AStepMovesThenTurnsThenTakesTheForces)
{
    struct WATCHED : RIGID_BODY {
        void on_step_begin(float dt, VECTOR3 &v, VECTOR3 &) override
        {
            calls += "begin ";
            v.z += dt;
        }
        void on_forces_used() override
        {
            calls += "used ";
            force = torque = {};
        }
        void on_rotated(QUATERNION const &given) override
        {
            calls += "rotated ";
            delta = given;
        }
        std::string calls;
        QUATERNION delta;
    } body;
    set_box_mass(body, 2, 1);  // inertia 0.5
    body.velocity = {3, 0, 0};
    body.angular_velocity = {0, 0.4f, 0};
    body.force = {0, 6, 0};
    body.torque = {0, 0, 1};
    body.step(0.5f);
    EXPECT_EQ(body.calls, "begin rotated used ");
    expect_near(body.position, {1.5f, 0, 0.25f});  // with the velocity before the forces
    expect_near(body.velocity, {3, 1.5f, 0.5f});
    expect_near(body.angular_velocity, {0, 0.4f, 1});
    EXPECT_EQ(body.force, VECTOR3());
    // An angle of 2 atan(0.1) about y.
    EXPECT_NEAR(body.orientation.y, std::sin(std::atan(0.1f)), 1e-6f);
    EXPECT_NEAR(body.orientation.w, std::cos(std::atan(0.1f)), 1e-6f);
    EXPECT_NEAR(body.delta.y, body.orientation.y, 1e-6f);

    // Past a quarter of a turn the same rotation comes out with the other sign.
    body.orientation = {0, 0.8f, 0, 0.6f};
    body.angular_velocity = {};
    body.step(0.5f);
    EXPECT_NEAR(body.delta.w, -1, 1e-6f);
    EXPECT_NEAR(body.orientation.y, -0.8f, 1e-6f);
}
