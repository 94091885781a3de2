// Two loops make every pose: one that copies, one that blends. They take their values from frames or from poses, four
// bones at a time where four stand in a row, and the way of blending is a template's argument.

#include "support/animation/pose.h"
#include "support/animation/skeleton.h"
#include "support/maths/quaternion_kernel.h"

#include <algorithm>
#include <emmintrin.h>

namespace SUPPORT {

namespace {

// Translations of four bones as they lie in memory, twelve numbers.
struct FOUR_TRANSLATIONS {
    FOUR_FLOATS part[3];
};

FOUR_TRANSLATIONS load_translations(VECTOR3 const *from)
{
    float const *const numbers = &from->x;
    return {{_mm_loadu_ps(numbers), _mm_loadu_ps(numbers + 4), _mm_loadu_ps(numbers + 8)}};
}

void store(FOUR_TRANSLATIONS const &values, VECTOR3 *to)
{
    float *const numbers = &to->x;
    for (unsigned i = 0; i < 3; ++i)
        _mm_storeu_ps(numbers + 4 * i, values.part[i].lanes);
}

using FOUR_ROTATIONS = COMPONENTS<FOUR_FLOATS>;

FOUR_ROTATIONS load_rotations(QUATERNION const *from)
{
    __m128 x = _mm_loadu_ps(&from[0].x), y = _mm_loadu_ps(&from[1].x);
    __m128 z = _mm_loadu_ps(&from[2].x), w = _mm_loadu_ps(&from[3].x);
    _MM_TRANSPOSE4_PS(x, y, z, w);
    return {x, y, z, w};
}

FOUR_ROTATIONS load_rotations(PACKED_QUATERNION const *from)
{
    // Two rotations a register; after two rounds of interleaving, x and y, and z and w.
    __m128i const q01 = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from));
    __m128i const q23 = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from + 2));
    __m128i const q02 = _mm_unpacklo_epi16(q01, q23);
    __m128i const q13 = _mm_unpackhi_epi16(q01, q23);
    __m128i const xy = _mm_unpacklo_epi16(q02, q13);
    __m128i const zw = _mm_unpackhi_epi16(q02, q13);
    auto const unpacked = [](__m128i doubled) {
        return FOUR_FLOATS(_mm_cvtepi32_ps(_mm_srai_epi32(doubled, 16))) * FOUR_FLOATS(packed_step);
    };
    return {unpacked(_mm_unpacklo_epi16(xy, xy)), unpacked(_mm_unpackhi_epi16(xy, xy)),
            unpacked(_mm_unpacklo_epi16(zw, zw)), unpacked(_mm_unpackhi_epi16(zw, zw))};
}

void store(FOUR_ROTATIONS const &values, QUATERNION *to)
{
    __m128 x = values.x.lanes, y = values.y.lanes, z = values.z.lanes, w = values.w.lanes;
    _MM_TRANSPOSE4_PS(x, y, z, w);
    _mm_storeu_ps(&to[0].x, x);
    _mm_storeu_ps(&to[1].x, y);
    _mm_storeu_ps(&to[2].x, z);
    _mm_storeu_ps(&to[3].x, w);
}

COMPONENTS<float> components(QUATERNION const &q) { return {q.x, q.y, q.z, q.w}; }

class POSE_SOURCE {
public:
    explicit POSE_SOURCE(POSE const &given) : pose(given) {}

    FOUR_TRANSLATIONS four_translations(std::size_t bone) const { return load_translations(pose.translations + bone); }
    FOUR_ROTATIONS four_rotations(std::size_t bone) const { return load_rotations(pose.rotations + bone); }
    VECTOR3 translation(std::size_t bone) const { return pose.translations[bone]; }
    QUATERNION rotation(std::size_t bone) const { return pose.rotations[bone]; }

private:
    POSE const &pose;
};

// Where the values of four bones from `bone` on lie in a row, in the frame or in the bind frame; null if they do not.
template <class T>
T const *four_in_a_row(std::span<T> values, std::span<std::int32_t const> map, std::span<T> bind, std::size_t bone)
{
    if (bone + 4 <= map.size()) {
        std::int32_t const first = map[bone];
        __m128i const places = _mm_loadu_si128(reinterpret_cast<__m128i const *>(map.data() + bone));
        __m128i const ascending = _mm_add_epi32(_mm_set1_epi32(first), _mm_setr_epi32(0, 1, 2, 3));
        if (_mm_movemask_epi8(_mm_cmpeq_epi32(places, ascending)) == 0xffff && first >= 0)
            return std::size_t(first) + 4 <= values.size() ? values.data() + first : nullptr;
        if (_mm_movemask_ps(_mm_castsi128_ps(places)) != 0xf)
            return nullptr;
    } else if (bone < map.size()) {
        return nullptr;
    }
    return bone + 4 <= bind.size() ? bind.data() + bone : nullptr;
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

    FOUR_TRANSLATIONS four_translations(std::size_t bone) const
    {
        if (VECTOR3 const *row = four_in_a_row(frame.translations, frame.translation_map, bind_translations, bone))
            return load_translations(row);
        VECTOR3 gathered[4];
        for (unsigned i = 0; i < 4; ++i)
            gathered[i] = frame.translation_of(bone + i);
        return load_translations(gathered);
    }
    FOUR_ROTATIONS four_rotations(std::size_t bone) const
    {
        if (PACKED_QUATERNION const *row = four_in_a_row(frame.rotations, frame.rotation_map, bind_rotations, bone))
            return load_rotations(row);
        PACKED_QUATERNION gathered[4];
        for (unsigned i = 0; i < 4; ++i)
            gathered[i] = frame.rotation_of(bone + i);
        return load_rotations(gathered);
    }
    VECTOR3 translation(std::size_t bone) const { return frame.translation_of(bone); }
    QUATERNION rotation(std::size_t bone) const { return unpack_quaternion(frame.rotation_of(bone)); }

private:
    ANIMATION_FRAME frame;
    std::span<VECTOR3> bind_translations;
    std::span<PACKED_QUATERNION> bind_rotations;
};

struct LINEAR {
    template <class F>
    static COMPONENTS<F> rotation(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float weight)
    {
        return linear_blend(a, b, weight);
    }
};

struct SPHERICAL {
    template <class F>
    static COMPONENTS<F> rotation(COMPONENTS<F> const &a, COMPONENTS<F> const &b, float weight)
    {
        return spherical_blend(a, b, weight, usual_slerp_threshold);
    }
};

template <class SOURCE>
void copy(POSE &pose, SOURCE const &from)
{
    std::size_t bone = 0;
    for (; bone + 4 <= pose.bone_count; bone += 4) {
        store(from.four_translations(bone), pose.translations + bone);
        store(from.four_rotations(bone), pose.rotations + bone);
    }
    for (; bone < pose.bone_count; ++bone) {
        pose.translations[bone] = from.translation(bone);
        pose.rotations[bone] = from.rotation(bone);
    }
}

template <class ROTATION, class SOURCE>
void blend(POSE &pose, SOURCE const &a, SOURCE const &b, float weight)
{
    std::size_t bone = 0;
    for (; bone + 4 <= pose.bone_count; bone += 4) {
        FOUR_TRANSLATIONS from = a.four_translations(bone);
        FOUR_TRANSLATIONS const to = b.four_translations(bone);
        for (unsigned i = 0; i < 3; ++i)
            from.part[i] = from.part[i] + (to.part[i] - from.part[i]) * FOUR_FLOATS(weight);
        store(from, pose.translations + bone);
        store(ROTATION::rotation(a.four_rotations(bone), b.four_rotations(bone), weight), pose.rotations + bone);
    }
    for (; bone < pose.bone_count; ++bone) {
        pose.translations[bone] = interpolated(a.translation(bone), b.translation(bone), weight);
        COMPONENTS<float> const blended =
            ROTATION::rotation(components(a.rotation(bone)), components(b.rotation(bone)), weight);
        pose.rotations[bone] = {blended.x, blended.y, blended.z, blended.w};
    }
}

template <class SOURCE>
void fill(POSE &pose, SOURCE const &a, SOURCE const &b, float weight, std::uint32_t mode)
{
    if (weight == 0)
        copy(pose, a);
    else if (weight == 1)
        copy(pose, b);
    else if (mode == BLEND_NEAREST)
        copy(pose, weight >= 0.5f ? b : a);
    else if (mode == BLEND_LINEAR)
        blend<LINEAR>(pose, a, b, weight);
    else if (mode == BLEND_SPHERICAL)
        blend<SPHERICAL>(pose, a, b, weight);
}

}  // namespace

void blend_frames(POSE &pose, ANIMATION_FRAME const &frame_a, ANIMATION_FRAME const &frame_b, float weight,
                  std::uint32_t mode, SKELETON const *skeleton, SCRATCH_ALLOCATOR *scratch)
{
    pose.make_arrays(skeleton != nullptr ? BONE_TABLE(skeleton->bones) : frame_a.skeleton, scratch);
    fill(pose, FRAME_SOURCE(frame_a, skeleton), FRAME_SOURCE(frame_b, skeleton), weight, mode);
}

void blend_poses(POSE &pose, POSE const &pose_a, POSE const &pose_b, float weight, std::uint32_t mode,
                 SCRATCH_ALLOCATOR *scratch)
{
    std::size_t const shared = std::min(pose_a.bone_count, pose_b.bone_count);
    pose.make_arrays(pose_a.skeleton.first(shared), scratch);
    fill(pose, POSE_SOURCE(pose_a), POSE_SOURCE(pose_b), weight, mode);
}

}  // namespace SUPPORT
