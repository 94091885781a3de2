#include "support/physics/contact.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace SUPPORT;

namespace {

RIGID_BODY box(VECTOR3 const &position, VECTOR3 const &velocity)
{
    RIGID_BODY body;
    set_box_mass(body, 4, 1);  // inertia 1
    body.position = position;
    body.velocity = velocity;
    return body;
}

VECTOR3 momentum(RIGID_BODY const &a, RIGID_BODY const &b) { return a.mass * a.velocity + b.mass * b.velocity; }

constexpr VECTOR3 up = {0, 1, 0};
constexpr VECTOR3 ground = {0, 0, 0};  // the point below the middle of a body at (0, 0.5, 0)

}  // namespace

TEST(Contact, WhatOpensOrHardlyClosesChangesNothing)
{
    for (float const speed : {1.0f, 0.0f, -0.9e-5f}) {
        RIGID_BODY body = box({0, 0.5f, 0}, {2, speed, 0}), other = box({0, -0.5f, 0}, {});
        EXPECT_FALSE(resolve_contact_single(body, 1, 1, 1, 1, ground, up));
        EXPECT_FALSE(resolve_contact(body, other, 1, 1, 1, ground, up));
        EXPECT_EQ(body.velocity, (VECTOR3{2, speed, 0}));
        EXPECT_EQ(body.angular_velocity, VECTOR3());
        EXPECT_EQ(other.velocity, VECTOR3());
    }
}

TEST(Contact, RestitutionAlongTheNormal)
{
    for (float const restitution : {0.0f, 0.5f, 1.0f}) {
        RIGID_BODY body = box({0, 0.5f, 0}, {0, -2, 0});
        resolve_contact_single(body, restitution, 0, 0, 0, ground, up);
        EXPECT_NEAR(velocity_at(body, ground).y, 2 * restitution, 1e-5f);

        RIGID_BODY a = box({0, 0.5f, 0}, {0, -1, 0}), b = box({0.2f, -0.5f, 0.1f}, {0, 2, 0});
        VECTOR3 const before = momentum(a, b);
        resolve_contact(a, b, restitution, 0, 0, ground, up);
        EXPECT_NEAR((velocity_at(a, ground) - velocity_at(b, ground)).y, 3 * restitution, 1e-4f);
        EXPECT_NEAR(length(momentum(a, b) - before), 0, 1e-4f);
    }
}

// Straight above the point, an impulse of j stops a fall of j / 4; one of f / (1/4 + 1/4) stops sliding at f.
TEST(Contact, FrictionStopsSlidingUpToItsLimit)
{
    struct {
        float speed, friction, left;  // left: the body's speed along x
    } const cases[] = {
        {3, 0, 3},
        {3, 0.1f, 3 - 0.1f * 2},  // j = 8, of which a tenth
        {0.3f, 0.5f, 0.15f},      // enough to stop the point; the body goes on turning
        {0.1f, 5, 0.05f},         // the square of 0.1f is above 0.01f
    };
    for (auto const &c : cases) {
        RIGID_BODY body = box({0, 0.5f, 0}, {c.speed, -2, 0});
        resolve_contact_single(body, 0, c.friction, 0, 0, ground, up);
        EXPECT_NEAR(body.velocity.x, c.left, 1e-5f);
        RIGID_BODY slow = box({0, 0.5f, 0}, {0.0999f, -2, 0});  // not sliding any more
        resolve_contact_single(slow, 0, 5, 0, 0, ground, up);
        EXPECT_EQ(slow.velocity.x, 0.0999f);
    }
    std::mt19937 random(5);
    std::uniform_real_distribution<float> any(-3, 3);
    for (int i = 0; i < 500; ++i) {
        RIGID_BODY body = box({any(random) * 0.1f, 0.5f, any(random) * 0.1f}, {any(random), -2, any(random)});
        body.angular_velocity = {any(random), any(random), any(random)};
        VECTOR3 const before = body.velocity;
        float const j = contact_impulse_single(body, velocity_at(body, ground), ground, up);
        if (resolve_contact_single(body, 0, 0.25f, 0, 0, ground, up) || j < 0)
            continue;  // the last correction has an impulse of its own
        VECTOR3 const change = body.mass * (body.velocity - before);
        EXPECT_LE(std::hypot(change.x, change.z), j * 0.25f * 1.001f + 1e-4f);
    }
}

TEST(Contact, SpinIsHalvedWithinItsLimit)
{
    struct {
        float spin_velocity, coefficient, left;
    } const cases[] = {{4, 0, 4}, {4, 1, 2}, {4, 0.125f, 3}, {-4, 0.125f, -3}};  // j = 8
    for (auto const &c : cases) {
        RIGID_BODY body = box({0, 0.5f, 0}, {0, -2, 0});
        body.angular_velocity = {0, c.spin_velocity, 0};
        resolve_contact_single(body, 0, 0, c.coefficient, 0, ground, up);
        EXPECT_NEAR(body.angular_velocity.y, c.left, 1e-4f);
    }
    RIGID_BODY a = box({0, 0.5f, 0}, {0, -2, 0}), b = box({0, -0.5f, 0}, {});
    a.angular_velocity = {0, 4, 0};
    resolve_contact(a, b, 0, 0, 0, ground, up);
    EXPECT_NEAR(a.angular_velocity.y, 2, 1e-4f);
    EXPECT_NEAR(b.angular_velocity.y, 2, 1e-4f);
}

// A body that rolls along x: the point of contact stands.
TEST(Contact, RollingIsSlowedOrStopped)
{
    auto const rolling_body = [] {
        RIGID_BODY body = box({0, 0.5f, 0}, {1, -2, 0});
        body.angular_velocity = {0, 0, -2};
        return body;
    };
    for (float const coefficient : {0.0f, 0.1f, 10.0f}) {
        RIGID_BODY body = rolling_body();
        resolve_contact_single(body, 0, 1, 0, coefficient, ground, up);
        float const m = 8 * coefficient;  // takes m / 4 off the speed
        float const left = coefficient == 10 ? 0 : 1 - m / 4;
        EXPECT_NEAR(body.velocity.x, left, 1e-4f);
        // axis = x cross y = z; -2 of it, of which the share m / 4 over the distance of 0.5 is added or all taken.
        float const turning = coefficient == 10 ? 0 : -2 + -2 * (m / 4) / 0.5f;
        EXPECT_NEAR(body.angular_velocity.z, turning, 1e-4f);
    }
    RIGID_BODY a = rolling_body(), b = box({0, -0.5f, 0}, {});
    b.inverse_mass = 0;
    for (unsigned i = 0; i < 3; ++i)
        b.body_inverse_inertia[i][i] = 0;
    resolve_contact(a, b, 0, 1, 10, ground, up);
    EXPECT_EQ(a.velocity, VECTOR3());
    EXPECT_EQ(a.angular_velocity, VECTOR3());
    EXPECT_EQ(b.velocity, VECTOR3());

    RIGID_BODY at_point = box(ground, {1, -2, 0});  // no arm to roll by
    resolve_contact_single(at_point, 0, 0, 0, 0.01f, ground, up);
    EXPECT_TRUE(std::isfinite(at_point.angular_velocity.x));
}
