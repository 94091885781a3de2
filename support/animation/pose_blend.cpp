// Two loops make every pose: one that copies, one that blends. They take their values from frames or from poses, eight
// or four bones at a time where that many stand in a row, and the way of blending is a template's argument.

#include "support/animation/pose.h"
#include "support/animation/pose_lanes.h"
#include "support/animation/skeleton.h"

#include <algorithm>

namespace SUPPORT {

namespace {

class POSE_SOURCE {
public:
    explicit POSE_SOURCE(POSE const &given) : pose(given) {}

    template <class F>
    KERNEL void translations(std::size_t bone, TRANSLATIONS<F> &to) const
    {
        load_translations(pose.translations + bone, to);
    }
    template <class F>
    KERNEL void rotations(std::size_t bone, COMPONENTS<F> &to) const
    {
        load_rotations(pose.rotations + bone, to);
    }
    VECTOR3 translation(std::size_t bone) const { return pose.translations[bone]; }
    QUATERNION rotation(std::size_t bone) const { return pose.rotations[bone]; }

private:
    POSE const &pose;
};

// Where the values of `count` bones from `bone` on lie in a row, in the frame or in the bind frame; null if they do
// not.
template <class T>
T const *in_a_row(std::span<T> values, std::span<std::int32_t const> map, std::span<T> bind, std::size_t bone,
                  std::size_t count)
{
    std::size_t const mapped_count = std::min(map.size() - std::min(map.size(), bone), count);
    std::int32_t const first = mapped_count != 0 ? map[bone] : -1;
    bool ascend = mapped_count == count, absent = true;
    for (std::size_t i = 0; i < mapped_count; ++i) {
        ascend &= std::uint32_t(map[bone + i]) == std::uint32_t(first) + std::uint32_t(i);
        absent &= map[bone + i] < 0;
    }
    if (absent)
        return bone + count <= bind.size() ? bind.data() + bone : nullptr;
    return ascend && first >= 0 && std::size_t(first) + count <= values.size() ? values.data() + first : nullptr;
}

class FRAME_SOURCE {
public:
    FRAME_SOURCE(ANIMATION_FRAME const &given, SKELETON const *skeleton) : frame(given)
    {
        if (skeleton != nullptr)
            frame.bind_frame = &skeleton->bind_frame;
        if (frame.bind_frame != nullptr) {
            bind_translations = frame.bind_frame->translations;
            bind_rotations = frame.bind_frame->rotations;
        }
    }

    template <class F>
    KERNEL void translations(std::size_t bone, TRANSLATIONS<F> &to) const
    {
        load_translations(bone + lanes_of<F> <= frame.translations_in_order ? frame.translations.data() + bone
                                                                            : translations_elsewhere(bone, lanes_of<F>),
                          to);
    }
    template <class F>
    KERNEL void rotations(std::size_t bone, COMPONENTS<F> &to) const
    {
        load_rotations(bone + lanes_of<F> <= frame.rotations_in_order ? frame.rotations.data() + bone
                                                                      : rotations_elsewhere(bone, lanes_of<F>),
                       to);
    }
    VECTOR3 translation(std::size_t bone) const { return frame.translation_of(bone); }
    QUATERNION rotation(std::size_t bone) const { return unpack_quaternion(frame.rotation_of(bone)); }

private:
    // In a row, if only by gathering them.
    VECTOR3 const *translations_elsewhere(std::size_t bone, std::size_t count) const
    {
        if (VECTOR3 const *row = in_a_row(frame.translations, frame.translation_map, bind_translations, bone, count))
            return row;
        for (std::size_t i = 0; i < count; ++i)
            gathered_translations[i] = frame.translation_of(bone + i);
        return gathered_translations;
    }
    PACKED_QUATERNION const *rotations_elsewhere(std::size_t bone, std::size_t count) const
    {
        if (PACKED_QUATERNION const *row = in_a_row(frame.rotations, frame.rotation_map, bind_rotations, bone, count))
            return row;
        for (std::size_t i = 0; i < count; ++i)
            gathered_rotations[i] = frame.rotation_of(bone + i);
        return gathered_rotations;
    }

    ANIMATION_FRAME frame;
    std::span<VECTOR3> bind_translations;
    std::span<PACKED_QUATERNION> bind_rotations;
    mutable VECTOR3 gathered_translations[8];
    mutable PACKED_QUATERNION gathered_rotations[8];
};

struct LINEAR {
    template <class F>
    KERNEL static void blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float weight, COMPONENTS<F> &blended)
    {
        linear_blend(a, b, weight, blended);
    }
};

struct SPHERICAL {
    template <class F>
    KERNEL static void blend(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float weight, COMPONENTS<F> &blended)
    {
        spherical_blend(a, b, weight, usual_slerp_threshold, blended);
    }
};

// The loops over groups of bones go from bone `begin` on and give the first bone that is left.

template <class F, class SOURCE>
KERNEL std::size_t copy_groups(POSE &pose, std::size_t begin, SOURCE const &from)
{
    std::size_t bone = begin;
    for (; bone + lanes_of<F> <= pose.bone_count; bone += lanes_of<F>) {
        TRANSLATIONS<F> places;
        from.translations(bone, places);
        store_translations(places, pose.translations + bone);
        COMPONENTS<F> turns;
        from.rotations(bone, turns);
        store_rows(turns, &pose.rotations[bone].x, 4);
    }
    return bone;
}

template <class F, class ROTATION, class SOURCE>
KERNEL std::size_t blend_groups(POSE &pose, std::size_t begin, SOURCE const &a, SOURCE const &b, float weight)
{
    std::size_t bone = begin;
    for (; bone + lanes_of<F> <= pose.bone_count; bone += lanes_of<F>) {
        TRANSLATIONS<F> place, to;
        a.translations(bone, place);
        b.translations(bone, to);
        for (unsigned i = 0; i < 3; ++i)
            place.part[i] = place.part[i] + (to.part[i] - place.part[i]) * weight;
        store_translations(place, pose.translations + bone);

        COMPONENTS<F> turn_a, turn_b, blended;
        a.rotations(bone, turn_a);
        b.rotations(bone, turn_b);
        ROTATION::blend(turn_a, turn_b, weight, blended);
        store_rows(blended, &pose.rotations[bone].x, 4);
    }
    return bone;
}

template <bool EIGHT, class SOURCE>
KERNEL void copy(POSE &pose, SOURCE const &from)
{
    std::size_t bone = EIGHT ? copy_groups<EIGHT_FLOATS>(pose, 0, from) : 0;
    bone = copy_groups<FOUR_FLOATS>(pose, bone, from);
    for (; bone < pose.bone_count; ++bone) {
        pose.translations[bone] = from.translation(bone);
        pose.rotations[bone] = from.rotation(bone);
    }
}

template <bool EIGHT, class ROTATION, class SOURCE>
KERNEL void blend(POSE &pose, SOURCE const &a, SOURCE const &b, float weight)
{
    std::size_t bone = EIGHT ? blend_groups<EIGHT_FLOATS, ROTATION>(pose, 0, a, b, weight) : 0;
    bone = blend_groups<FOUR_FLOATS, ROTATION>(pose, bone, a, b, weight);
    for (; bone < pose.bone_count; ++bone) {
        pose.translations[bone] = interpolated(a.translation(bone), b.translation(bone), weight);
        QUATERNION const from = a.rotation(bone), to = b.rotation(bone);
        COMPONENTS<float> blended;
        ROTATION::blend({from.x, from.y, from.z, from.w}, COMPONENTS<float>{to.x, to.y, to.z, to.w}, weight, blended);
        pose.rotations[bone] = {blended.x, blended.y, blended.z, blended.w};
    }
}

template <bool EIGHT, class SOURCE>
KERNEL void fill(POSE &pose, SOURCE const &a, SOURCE const &b, float weight, std::uint32_t mode)
{
    bool const nearest = weight == 0 || weight == 1 || mode == BLEND_NEAREST;
    if (nearest)
        copy<EIGHT>(pose, weight >= 0.5f ? b : a);
    else if (mode == BLEND_LINEAR)
        blend<EIGHT, LINEAR>(pose, a, b, weight);
    else if (mode == BLEND_SPHERICAL)
        blend<EIGHT, SPHERICAL>(pose, a, b, weight);
}

template <class SOURCE>
void fill_by_four(POSE &pose, SOURCE const &a, SOURCE const &b, float weight, std::uint32_t mode)
{
    fill<false>(pose, a, b, weight, mode);
}

template <class SOURCE>
WITH_EIGHT_LANES void fill_by_eight(POSE &pose, SOURCE const &a, SOURCE const &b, float weight, std::uint32_t mode)
{
    fill<true>(pose, a, b, weight, mode);
}

template <class SOURCE>
void fill_pose(POSE &pose, SOURCE const &a, SOURCE const &b, float weight, std::uint32_t mode)
{
    (eight_lanes() ? fill_by_eight<SOURCE> : fill_by_four<SOURCE>)(pose, a, b, weight, mode);
}

}  // namespace

void blend_frames(POSE &pose, ANIMATION_FRAME const &frame_a, ANIMATION_FRAME const &frame_b, float weight,
                  std::uint32_t mode, SKELETON const *skeleton, SCRATCH_ALLOCATOR *scratch)
{
    pose.make_arrays(skeleton != nullptr ? BONE_TABLE(skeleton->bones) : frame_a.skeleton, scratch);
    fill_pose(pose, FRAME_SOURCE(frame_a, skeleton), FRAME_SOURCE(frame_b, skeleton), weight, mode);
}

void blend_poses(POSE &pose, POSE const &pose_a, POSE const &pose_b, float weight, std::uint32_t mode,
                 SCRATCH_ALLOCATOR *scratch)
{
    std::size_t const shared = std::min(pose_a.bone_count, pose_b.bone_count);
    pose.make_arrays(pose_a.skeleton.first(shared), scratch);
    fill_pose(pose, POSE_SOURCE(pose_a), POSE_SOURCE(pose_b), weight, mode);
}

}  // namespace SUPPORT
