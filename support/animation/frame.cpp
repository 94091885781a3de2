#include "support/animation/frame.h"

namespace SUPPORT {

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
