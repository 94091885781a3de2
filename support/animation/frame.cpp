#include "support/animation/frame.h"

#include <algorithm>

namespace SUPPORT {

namespace {

std::uint32_t count_in_order(std::span<std::int32_t const> map, std::size_t values)
{
    std::size_t const limit = std::min(map.size(), values);
    std::uint32_t count = 0;
    while (count < limit && map[count] == std::int32_t(count))
        ++count;
    return count;
}

}  // namespace

void ANIMATION_FRAME::set_tables(std::span<std::int32_t const> of_translations,
                                 std::span<std::int32_t const> of_rotations, BONE_TABLE bones,
                                 ANIMATION_FRAME const *bind)
{
    skeleton = bones;
    bind_frame = bind;
    translation_map = of_translations;
    rotation_map = of_rotations;
    translations_in_order = count_in_order(translation_map, translations.size());
    rotations_in_order = count_in_order(rotation_map, rotations.size());
}

void ANIMATION_FRAME::set_tables(ANIMATION_FRAME const &like)
{
    skeleton = like.skeleton;
    bind_frame = like.bind_frame;
    translation_map = like.translation_map;
    rotation_map = like.rotation_map;
    translations_in_order = like.translations_in_order;
    rotations_in_order = like.rotations_in_order;
}

VECTOR3 ANIMATION_FRAME::translation_of(std::size_t bone) const
{
    if (VECTOR3 const *const own = mapped(translations, translation_map, bone))
        return *own;
    return bind_frame != nullptr && bone < bind_frame->translations.size() ? bind_frame->translations[bone] : VECTOR3{};
}

PACKED_QUATERNION ANIMATION_FRAME::rotation_of(std::size_t bone) const
{
    if (PACKED_QUATERNION const *const own = mapped(rotations, rotation_map, bone))
        return *own;
    return bind_frame != nullptr && bone < bind_frame->rotations.size() ? bind_frame->rotations[bone]
                                                                        : PACKED_QUATERNION{0, 0, 0, 32767};
}

}  // namespace SUPPORT
