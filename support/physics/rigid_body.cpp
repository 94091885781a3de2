#include "support/physics/rigid_body.h"

namespace SUPPORT {

void RIGID_BODY::on_step_begin(float, VECTOR3 &, VECTOR3 &) {}

void RIGID_BODY::on_forces_used() {}

void RIGID_BODY::on_rotated(QUATERNION const &) {}

void RIGID_BODY::step(float dt)
{
    on_step_begin(dt, velocity, angular_velocity);
    position += dt * velocity;

    QUATERNION const turning = {angular_velocity.x, angular_velocity.y, angular_velocity.z, 0};
    QUATERNION const turned = normalised(orientation + turning * orientation * (dt / 2));
    QUATERNION const delta = normalised(turned * on_side_of(conjugate(orientation), turned));
    on_rotated(delta);
    orientation = delta * orientation;

    VECTOR3 const used_force = force, used_torque = torque;
    MATRIX33 const inverse_inertia = world_inverse_inertia(*this);
    on_forces_used();
    velocity += used_force * (1 / mass) * dt;
    angular_velocity += inverse_inertia * used_torque * dt;
}

void set_box_mass(RIGID_BODY &body, float mass, float side)
{
    body.mass = mass;
    body.inverse_mass = 1 / mass;
    float const point_mass = mass * 0.008f;
    auto const coordinate = [side](int i) { return -side / 2 + float(i) * side * 0.25f; };
    MATRIX33 sum;
    sum[0][0] = sum[1][1] = sum[2][2] = 0;
    for (int x = 0; x < 5; ++x)
        for (int y = 0; y < 5; ++y)
            for (int z = 0; z < 5; ++z) {
                float const p[3] = {coordinate(x), coordinate(y), coordinate(z)};
                float const squared = p[0] * p[0] + p[1] * p[1] + p[2] * p[2];
                for (unsigned i = 0; i < 3; ++i)
                    for (unsigned j = 0; j < 3; ++j)
                        sum[i][j] += point_mass * ((i == j ? squared : 0) - p[i] * p[j]);
            }
    body.inertia = sum;
    body.body_inverse_inertia = inverse_or_itself(sum);
}

MATRIX33 world_inverse_inertia(RIGID_BODY const &body)
{
    if (body.inverse_mass == 0)
        return body.body_inverse_inertia;
    MATRIX33 const rotation = rotation_matrix(body.orientation);
    return rotation * body.body_inverse_inertia * transposed(rotation);
}

VECTOR3 velocity_at(RIGID_BODY const &body, VECTOR3 const &point)
{
    return body.velocity + cross(body.angular_velocity, point - body.position);
}

void apply_impulse(RIGID_BODY &body, VECTOR3 const &impulse, VECTOR3 const &point)
{
    body.velocity += body.inverse_mass * impulse;
    apply_angular_impulse(body, cross(point - body.position, impulse));
}

void apply_angular_impulse(RIGID_BODY &body, VECTOR3 const &impulse)
{
    body.angular_velocity += world_inverse_inertia(body) * impulse;
}

}  // namespace SUPPORT
