#include "support/animation/clip.h"
#include "support/animation/pose.h"
#include "support/animation/skeleton.h"

#include <algorithm>

namespace SUPPORT {

FRAME_SELECTION select_frames(ANIMATION_CLIP const &clip, float time)
{
    std::uint32_t const last = std::uint32_t(clip.frames.size()) - 1;
    // No number, and what lies before the clip, count as its begin; 2^31 lies beyond the end of every clip.
    float const place = std::clamp(time * clip.fps, 0.0f, 2147483648.0f);
    std::uint32_t const whole = place >= 0 ? std::uint32_t(place) : 0;
    FRAME_SELECTION selected;
    selected.a = !clip.loops() ? std::min(whole, last) : last != 0 ? whole % last : 0;
    selected.b = std::min(selected.a + 1, last);
    selected.fraction = selected.a == selected.b || !(place >= 0) ? 0 : place - float(whole);
    return selected;
}

POSE pose_at(ANIMATION_CLIP const &clip, float time, std::uint32_t mode, SKELETON const *skeleton,
             SCRATCH_ALLOCATOR *scratch)
{
    if (skeleton == nullptr)
        skeleton = clip.skeleton;
    POSE pose;
    if (clip.frames.empty()) {
        ANIMATION_FRAME empty;
        empty.skeleton = clip.bone_table();
        blend_frames(pose, empty, empty, 0, mode, skeleton, scratch);
        return pose;
    }
    FRAME_SELECTION const at = select_frames(clip, time);
    blend_frames(pose, *clip.frames[at.a], *clip.frames[at.b], at.fraction, mode, skeleton, scratch);
    return pose;
}

namespace {

QUATERNION rotation_between(std::uint32_t bone, ANIMATION_CLIP const &clip, FRAME_SELECTION const &at)
{
    QUATERNION const a = unpack_quaternion(clip.frames[at.a]->rotation_of(bone));
    if (at.fraction == 0)
        return a;
    return slerp(a, unpack_quaternion(clip.frames[at.b]->rotation_of(bone)), at.fraction);
}

// What turns `from` into `to`: to * conj(from), each factor taken on the side of the other.
QUATERNION turn_between(QUATERNION const &from, QUATERNION const &to)
{
    QUATERNION const left = on_side_of(to, from);
    return left * on_side_of(conjugate(from), left);
}

}  // namespace

QUATERNION rotation_at(std::uint32_t bone, ANIMATION_CLIP const &clip, float time)
{
    return clip.frames.empty() ? QUATERNION{} : rotation_between(bone, clip, select_frames(clip, time));
}

QUATERNION rotation_delta(std::uint32_t bone, ANIMATION_CLIP const &clip, float time, float span)
{
    if (clip.frames.empty())
        return {};
    FRAME_SELECTION const from = select_frames(clip, time), to = select_frames(clip, time + span);
    QUATERNION const q1 = rotation_between(bone, clip, from), q2 = rotation_between(bone, clip, to);
    bool const over_the_end = from.a > to.a || (from.a == to.a && from.fraction > to.fraction);
    if (!over_the_end)
        return turn_between(q1, q2);
    QUATERNION const first = unpack_quaternion(clip.frames[0]->rotation_of(bone));
    QUATERNION const last = unpack_quaternion(clip.frames[clip.frames.size() - 1]->rotation_of(bone));
    return turn_between(q1, last) * turn_between(first, q2);
}

}  // namespace SUPPORT
