// POSE: where every bone of a skeleton stands against its parent, and the arithmetic that makes poses from the frames
// of animations: blends of two frames or poses, the pose of a clip at a time, world matrices, headings.
//
// The loops work on several bones at once and give the same bits as the single operations on a bone. Everything here
// is safe with any content of frames: maps that lead nowhere, parents that do not exist, times and rates that are
// negative or no number. Any thread may call; a SCRATCH_ALLOCATOR belongs to one.
#pragma once

#include "support/animation/frame.h"
#include "support/animation/scratch_allocator.h"
#include "support/maths/matrix.h"

namespace SUPPORT {

class ANIMATION_CLIP;
class SKELETON;

// How two frames become one. Any other value fills nothing, unless one of the two is taken as it is.
enum BLEND_MODE : std::uint32_t { BLEND_NEAREST = 0, BLEND_LINEAR = 1, BLEND_SPHERICAL = 2 };

struct POSE {
    POSE() = default;
    POSE(POSE &&other) noexcept;
    POSE &operator=(POSE &&other) noexcept;
    ~POSE();

    // Gives the pose arrays for the bones of `table`, contents undefined: blocks of `scratch`, which then has to live
    // as long, or, without one, blocks of the general allocator, which the pose frees.
    void make_arrays(BONE_TABLE table, SCRATCH_ALLOCATOR *scratch);

    std::span<VECTOR3> bone_translations() const { return {translations, bone_count}; }
    std::span<QUATERNION> bone_rotations() const { return {rotations, bone_count}; }

    BONE_TABLE skeleton;  // not owned
    std::uint32_t bone_count = 0;
    bool from_scratch = false;
    VECTOR3 *translations = nullptr;
    QUATERNION *rotations = nullptr;

private:
    void free_arrays();
};

// The pose between two frames. `weight` exactly 0 gives a, exactly 1 gives b, in any mode; mode 0 gives b from 0.5 on.
// Modes 1 and 2 blend translations linearly; rotations linearly on the shorter way, without normalising, or by slerp.
// `skeleton` gives the bones and stands in where the frames do not animate a bone; null: the bones of frame a, and
// where these are not animated, the identity.
void blend_frames(POSE &pose, ANIMATION_FRAME const &frame_a, ANIMATION_FRAME const &frame_b, float weight,
                  std::uint32_t mode, SKELETON const *skeleton, SCRATCH_ALLOCATOR *scratch);
// The same between two poses other than `pose`, for the bones that both have.
void blend_poses(POSE &pose, POSE const &pose_a, POSE const &pose_b, float weight, std::uint32_t mode,
                 SCRATCH_ALLOCATOR *scratch);

// Two frames of a clip and how far it is from the one to the other.
struct FRAME_SELECTION {
    std::uint32_t a = 0, b = 0;
    float fraction = 0;
};

// Of a clip with at least one frame. Times before 0 and beyond the end of a clip that does not loop hold the first and
// the last frame. In one that loops, the last frame stands for the first.
FRAME_SELECTION select_frames(ANIMATION_CLIP const &clip, float time);

// `skeleton` null: the clip's own. A clip without frames gives the skeleton's bind frame.
POSE pose_at(ANIMATION_CLIP const &clip, float time, std::uint32_t mode, SKELETON const *skeleton,
             SCRATCH_ALLOCATOR *scratch);
// The rotation that one bone has in the spherical blend, without building a pose.
QUATERNION rotation_at(std::uint32_t bone, ANIMATION_CLIP const &clip, float time);
// The rotation by which the bone's local rotation changes from `time` to `time + span`, over the end of the loop if
// that lies between. Not normalised.
QUATERNION rotation_delta(std::uint32_t bone, ANIMATION_CLIP const &clip, float time, float span);

// One matrix a bone, from the bone's space to that of the model; `root_matrix` goes in front of bones without parent.
// Of the bones only the first `bone_limit`, if that is not 0. The matrices are blocks of `scratch`.
std::span<MATRIX34> world_matrices(POSE const &pose, std::uint32_t bone_limit, MATRIX34 const &root_matrix,
                                   SCRATCH_ALLOCATOR &scratch);
// The matrices at a time, from the clip's own skeleton. Mode 0 builds them from the nearer frame.
std::span<MATRIX34> world_matrices_at(ANIMATION_CLIP const &clip, float time, std::uint32_t mode,
                                      std::uint32_t bone_limit, MATRIX34 const &root_matrix,
                                      SCRATCH_ALLOCATOR &scratch);

// The heading of a rotation: where its z axis points, seen from above; near the vertical, and unless `simple`, more and
// more that of its y axis. With a reference frame, against the rotation that bone `bone` has in it.
ANGLE16 heading_of(QUATERNION const &rotation, ANIMATION_FRAME const *reference_frame, std::uint32_t bone, bool simple);

}  // namespace SUPPORT
