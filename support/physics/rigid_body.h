// RIGID_BODY: a body that moves and turns under forces and impulses, one step at a time. All of world space is
// right-handed; lengths, masses and times are in units of the caller's choice that go together; angular velocities are
// radians a unit of time about an axis, counter-clockwise seen against it. A body belongs to one thread at a time.
#pragma once

#include "support/maths/matrix.h"

namespace SUPPORT {

class RIGID_BODY {
public:
    virtual ~RIGID_BODY() = default;

    // For bodies that know more of their world; `step` calls each once, and they do nothing here.
    // First of all: both velocities may be changed before they are used.
    virtual void on_step_begin(float dt, VECTOR3 &body_velocity, VECTOR3 &body_angular_velocity);
    // Last: `force` and `torque` have been taken, the place to clear or gather them.
    virtual void on_forces_used();
    // In between: the body has moved, and `delta` is about to be put in front of its orientation.
    virtual void on_rotated(QUATERNION const &delta);

    // Moves by the velocities, turns, then lets the forces change the velocities, by 1 / mass whatever `inverse_mass`
    // is. The orientation is not normalised.
    void step(float dt);

    float mass = 1;
    float inverse_mass = 1;  // 0: impulses do not move the body
    MATRIX33 inertia;
    MATRIX33 body_inverse_inertia;  // in the body's own frame
    VECTOR3 position, velocity, angular_velocity;
    VECTOR3 force, torque;  // sums for the coming step
    QUATERNION orientation;
};

// The mass properties of a cube, as a lattice of 5 x 5 x 5 point masses between its faces; not those of the closed
// form. Without an inverse, as for a side of 0, the inertia stands in for it.
void set_box_mass(RIGID_BODY &body, float mass, float side);

// Turned into world space; that of a body which does not move, as it is.
MATRIX33 world_inverse_inertia(RIGID_BODY const &body);
VECTOR3 velocity_at(RIGID_BODY const &body, VECTOR3 const &point);
void apply_impulse(RIGID_BODY &body, VECTOR3 const &impulse, VECTOR3 const &point);
void apply_angular_impulse(RIGID_BODY &body, VECTOR3 const &impulse);

}  // namespace SUPPORT
