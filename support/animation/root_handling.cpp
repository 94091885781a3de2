#include "support/animation/file_reader.h"
#include "support/animation/pose.h"

namespace SUPPORT {

// Bones without parent change a frame only if it holds their translation. No more of them are touched than there are
// translations, so that a frame costs no more than its bytes also where many bones share one.
ROOT_HANDLING::ROOT_HANDLING(ANIMATION_FRAME const &frame, std::uint32_t root_bone, std::uint32_t options)
    : root(root_bone), flags(options)
{
    std::size_t left = frame.translations.size();
    for (std::uint32_t bone = 0; bone < frame.skeleton.size(); ++bone) {
        if (bone == root) {
            touched.append(bone);
        } else if (left != 0 && frame.skeleton[bone].parent < 0 &&
                   mapped(frame.translations, frame.translation_map, bone) != nullptr) {
            touched.append(bone);
            --left;
        }
    }
}

void ROOT_HANDLING::apply(ANIMATION_FRAME &frame, ANIMATION_FRAME const *reference) const
{
    bool const relative_height = (flags & ANIMATION_RELATIVE_XYZ) != 0;
    bool const relative = relative_height || (flags & ANIMATION_RELATIVE_XZ) != 0;
    for (std::uint32_t const bone : touched) {
        VECTOR3 place = frame.translation_of(bone);
        if (relative && reference != nullptr) {
            place.x -= reference->root_position.x;
            place.z -= reference->root_position.z;
            if (relative_height)
                place.y -= reference->root_position.y;
        }
        if (bone == root) {
            frame.root_position = place;
            frame.heading = heading_of(unpack_quaternion(frame.rotation_of(bone)), nullptr, bone, false);
        }
        // Bones behind the root in the table keep their places against it; the position in front of it is still 0.
        if ((flags & ANIMATION_ROOT_AT_ZERO) != 0)
            place = bone == root ? VECTOR3{} : place - frame.root_position;
        if (VECTOR3 *const stored = mapped(frame.translations, frame.translation_map, bone))
            *stored = place;
    }
}

}  // namespace SUPPORT
