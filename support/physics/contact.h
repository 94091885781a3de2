// What bodies do where they touch: impulses along the normal with restitution, spin about the normal, friction up to
// Coulomb's limit, rolling, and a last correction. Where bodies touch is for the caller to find. Each contact is a
// point in world space and a normal of length 1 that points from b to a, or from the ground to the body.
//
// The pair form is for two bodies; the single form stands for one against ground that never moves and treats spin and
// rolling more carefully.
#pragma once

#include "support/physics/rigid_body.h"

namespace SUPPORT {

// The strength of the impulse along `normal` that takes `velocity`, of a against b at the point, to 0 along it.
float contact_impulse(RIGID_BODY const &a, RIGID_BODY const &b, VECTOR3 const &velocity, VECTOR3 const &point,
                      VECTOR3 const &normal);
float contact_impulse_single(RIGID_BODY const &body, VECTOR3 const &velocity, VECTOR3 const &point,
                             VECTOR3 const &normal);

// The coefficients count from 0. True if the contact still closes afterwards. One that opens, or closes more slowly
// than 1e-5, changes nothing and gives false. In the pair form spin has no limit, rolling slows `a` alone, and the last
// correction looks at how `a` moves, not at both.
bool resolve_contact(RIGID_BODY &a, RIGID_BODY &b, float restitution, float friction, float rolling,
                     VECTOR3 const &point, VECTOR3 const &normal);
bool resolve_contact_single(RIGID_BODY &body, float restitution, float friction, float spin, float rolling,
                            VECTOR3 const &point, VECTOR3 const &normal);

}  // namespace SUPPORT
