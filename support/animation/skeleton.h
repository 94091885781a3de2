// SKELETON: a bone table with the pose in which meshes are bound to it, loaded from an animation file of one frame.
// ATTACHED_SKELETON: one that hangs on another skeleton, such as a weapon or a rider, with the points that further
// things are attached to.
//
// An object is made by its constructor and does not change. A file below version 5 leaves it empty; one that ends
// early leaves it with the whole elements that were there; neither is reported. No count is trusted beyond the bytes
// that follow. Several threads may load at once, each from a file of its own, and any may read.
#pragma once

#include "support/animation/allocator.h"
#include "support/animation/frame.h"
#include "support/animation/pose.h"
#include "support/maths/matrix.h"

namespace KN {
class BufferedStream;
class FileIn;
}  // namespace KN

namespace SUPPORT {

class SKELETON {
public:
    // `matrix_file` holds the matrix block from its place on; it may be `file` itself, where the block follows the
    // frame. `options`: ANIMATION_OPTION values for the bind frame. The two names are compared without case; an empty
    // one names no bone, and of several bones with the name the last one counts.
    SKELETON(KN::FileIn &file, KN::FileIn &matrix_file, std::uint32_t options, KN::String const &root_name,
             KN::String const &second_name, ALLOCATOR &allocator);
    SKELETON(KN::BufferedStream &file, KN::BufferedStream &matrix_file, std::uint32_t options,
             KN::String const &root_name, KN::String const &second_name, ALLOCATOR &allocator);
    SKELETON(SKELETON const &) = delete;
    SKELETON &operator=(SKELETON const &) = delete;
    ~SKELETON();

    KN::String name;
    ALLOCATED_ARRAY<BONE_RECORD> bones;
    std::uint32_t root_bone = 0;
    std::int32_t second_bone = -1;  // -1: no bone has the name
    ALLOCATED_ARRAY<std::int32_t> translation_map, rotation_map;
    ANIMATION_FRAME bind_frame;
    ALLOCATED_ARRAY<MATRIX44> inverse_bind_matrices;  // empty if there is no matrix block
    POSE bind_pose;
    std::uint32_t version = 0;
    float fps = 0;
    bool has_animroot = false;  // the root bone is named "animroot"

private:
    template <class SOURCE>
    void load(SOURCE &file, SOURCE &matrix_file, std::uint32_t options, KN::String const &root_name,
              KN::String const &second_name);

    ALLOCATOR &home;
    ANIMATION_FRAME *bind_block = nullptr;  // as it was read; holds the arrays of bind_frame
};

struct ATTACH_POINT {
    KN::String name;
    VECTOR3 translation;
    QUATERNION rotation;
    ANGLE16 heading = 0;
};

class ATTACHED_SKELETON : public SKELETON {
public:
    // `parent` is read while the object is made and not kept. The bones looked for are those of its root and its
    // second bone; the first bone of `bind_pose` stands where the parent's first bone does.
    ATTACHED_SKELETON(KN::FileIn &file, KN::FileIn &matrix_file, SKELETON const &parent, std::uint32_t options,
                      ALLOCATOR &allocator);
    ATTACHED_SKELETON(KN::BufferedStream &file, KN::BufferedStream &matrix_file, SKELETON const &parent,
                      std::uint32_t options, ALLOCATOR &allocator);

    static constexpr std::size_t most_attach_points = 32;
    ALLOCATED_ARRAY<ATTACH_POINT> attach_points;  // of the first bones whose names begin with "ap_", in their order

private:
    void attach(SKELETON const &parent, ALLOCATOR &allocator);
};

}  // namespace SUPPORT
