#include "support/physics/contact.h"

#include <cmath>

namespace SUPPORT {

namespace {

constexpr float least_closing = -1e-5f;  // along the normal
constexpr float least_sliding = 0.01f;   // tangential speed squared; what is not above it rolls

// How far an impulse along the normal turns the point away, through the body's rotation.
VECTOR3 turning_term(RIGID_BODY const &body, VECTOR3 const &point, VECTOR3 const &normal)
{
    VECTOR3 const arm = point - body.position;
    return cross(world_inverse_inertia(body) * cross(arm, normal), arm);
}

float impulse_strength(VECTOR3 const &velocity, VECTOR3 const &normal, float inverse_mass, VECTOR3 const &turning)
{
    return -dot(normal, velocity) / (dot(normal, normal) * inverse_mass + dot(normal, turning));
}

VECTOR3 along_plane(VECTOR3 const &v, VECTOR3 const &normal) { return v - dot(v, normal) * normal; }

// `strength`: of the impulse that would stop the sliding, along `direction`; below 0 if there is sliding to stop.
VECTOR3 friction_impulse(float strength, float most, VECTOR3 const &direction)
{
    if (strength >= 0)
        return {};
    return (-strength >= most ? -most : strength) * direction;
}

float spin_strength(RIGID_BODY const &body, VECTOR3 const &normal)
{
    return -0.5f * dot(normal, body.inertia * body.angular_velocity);
}

bool can_stop(RIGID_BODY const &body, float impulse, VECTOR3 const &velocity)
{
    return body.inverse_mass * body.inverse_mass * (impulse * impulse) >= dot(velocity, velocity);
}

void slow_down(RIGID_BODY &body, float impulse)
{
    body.velocity += -impulse * body.inverse_mass * normalised(body.velocity);
}

// Of a body on the ground that rolls without sliding.
void resist_rolling(RIGID_BODY &body, float impulse, VECTOR3 const &point, VECTOR3 const &normal)
{
    VECTOR3 const along = along_plane(body.velocity, normal);
    if (!(dot(along, along) > least_sliding))
        return;
    VECTOR3 const axis = cross(normalised(along), normal);
    float const turning = dot(axis, body.angular_velocity);
    if (can_stop(body, impulse, along)) {
        body.velocity -= along;
        body.angular_velocity -= turning * axis;
        return;
    }
    slow_down(body, impulse);
    float const distance = length(point - body.position);
    if (distance > 0)
        body.angular_velocity += axis * (turning * impulse * body.inverse_mass / distance);
}

}  // namespace

float contact_impulse(RIGID_BODY const &a, RIGID_BODY const &b, VECTOR3 const &velocity, VECTOR3 const &point,
                      VECTOR3 const &normal)
{
    return impulse_strength(velocity, normal, a.inverse_mass + b.inverse_mass,
                            turning_term(a, point, normal) + turning_term(b, point, normal));
}

float contact_impulse_single(RIGID_BODY const &body, VECTOR3 const &velocity, VECTOR3 const &point,
                             VECTOR3 const &normal)
{
    return impulse_strength(velocity, normal, body.inverse_mass, turning_term(body, point, normal));
}

bool resolve_contact(RIGID_BODY &a, RIGID_BODY &b, float restitution, float friction, float rolling,
                     VECTOR3 const &point, VECTOR3 const &normal)
{
    auto const closing = [&] { return velocity_at(a, point) - velocity_at(b, point); };
    auto const apply = [&](VECTOR3 const &impulse) {
        apply_impulse(a, impulse, point);
        apply_impulse(b, -impulse, point);
    };
    VECTOR3 const before = closing();
    if (dot(before, normal) >= least_closing)
        return false;
    float const strength = contact_impulse(a, b, before, point, normal) * (restitution + 1);
    apply(strength * normal);

    float const spin = spin_strength(a, normal);
    apply_angular_impulse(a, spin * normal);
    apply_angular_impulse(b, -spin * normal);

    VECTOR3 const sliding = along_plane(closing(), normal);
    if (dot(sliding, sliding) > least_sliding) {
        VECTOR3 const direction = normalised(along_plane(sliding, normal));
        apply(friction_impulse(contact_impulse(a, b, sliding, point, direction), strength * friction, direction));
    } else if (rolling > 0) {
        float const impulse = strength * rolling;
        if (can_stop(a, impulse, a.velocity))
            a.velocity = a.angular_velocity = {};
        else
            slow_down(a, impulse);
    }

    VECTOR3 const after = velocity_at(a, point);
    if (dot(after, normal) >= 0)
        return false;
    apply(contact_impulse(a, b, after, point, normal) * normal);
    return dot(closing(), normal) < 0;
}

bool resolve_contact_single(RIGID_BODY &body, float restitution, float friction, float spin, float rolling,
                            VECTOR3 const &point, VECTOR3 const &normal)
{
    VECTOR3 const before = velocity_at(body, point);
    if (dot(before, normal) >= least_closing)
        return false;
    float const strength = contact_impulse_single(body, before, point, normal) * (restitution + 1);
    apply_impulse(body, strength * normal, point);

    float const most_spin = strength * spin, wanted_spin = spin_strength(body, normal);
    float const held_spin = most_spin > std::abs(wanted_spin) ? wanted_spin : wanted_spin >= 0 ? most_spin : -most_spin;
    apply_angular_impulse(body, held_spin * normal);

    VECTOR3 const sliding = along_plane(velocity_at(body, point), normal);
    if (dot(sliding, sliding) > least_sliding) {
        VECTOR3 const direction = normalised(along_plane(sliding, normal));
        float const stopping = contact_impulse_single(body, sliding, point, direction);
        apply_impulse(body, friction_impulse(stopping, strength * friction, direction), point);
    } else if (rolling > 0) {
        resist_rolling(body, strength * rolling, point, normal);
    }

    VECTOR3 const after = velocity_at(body, point);
    if (dot(after, normal) >= 0)
        return false;
    apply_impulse(body, contact_impulse_single(body, after, point, normal) * normal, point);
    return dot(velocity_at(body, point), normal) < 0;
}

}  // namespace SUPPORT
