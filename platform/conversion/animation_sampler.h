// Frames of an animation, from the world matrices that the nodes of a scene have at each frame's time.
//
// An animation holds rotations and translations only, so a bone's place is the rigid part of its node's matrix: where
// the node stands and how it is turned. Played, each bone stands where its node stood; sizes are left out. Against its
// parent a bone is placed as the bones are linked, whatever nodes lie between the two in the scene.
#pragma once

#include "platform/conversion/animation_bones.h"
#include "platform/conversion/node_pose.h"
#include "support/maths/matrix.h"
#include "support/maths/packed_quaternion.h"

namespace TOOLDATABUILDER {

class ANIMATION_SAMPLER {
public:
    // Which of each bone's values the animation holds.
    struct PARTS {
        bool translation = true, rotation = true;
    };

    // Scene and bones outlive the sampler; `bone_parts` has one element a bone.
    ANIMATION_SAMPLER(VEX2_LOADER::VEX2 &sampled, KN_STD::VECTOR<ANIMATION_BONE> const &its_bones,
                      KN_STD::VECTOR<PARTS> bone_parts);

    // Moves the scene to the time and appends a frame: the wanted translations in the bones' order, and the rotations.
    // False, with a line in `fault`, if a bone has no finite place then.
    bool take_frame(double time, KN::String &fault);

    // From the scene's space into that of each bone, as they stand in the last frame.
    KN_STD::VECTOR<SUPPORT::MATRIX34> inverse_matrices() const;

    // The first bone whose size changed by more than a twentieth (blended rotations are not exact); negative: none.
    std::int32_t resized_bone() const { return resized; }

    KN_STD::VECTOR<SUPPORT::VECTOR3> translations;
    KN_STD::VECTOR<SUPPORT::PACKED_QUATERNION> rotations;

private:
    bool take_world(std::size_t bone, double time, KN::String &fault);
    NODE_POSE local_pose(std::size_t bone) const;

    VEX2_LOADER::VEX2 &scene;
    KN_STD::VECTOR<ANIMATION_BONE> const &bones;
    KN_STD::VECTOR<PARTS> parts;
    // Of each bone in the last frame; its rotation against its parent, and its size in the first one.
    KN_STD::VECTOR<NODE_POSE> world;
    KN_STD::VECTOR<SUPPORT::QUATERNION> turns;
    KN_STD::VECTOR<double> sizes;
    std::int32_t resized = -1;
};

}  // namespace TOOLDATABUILDER
