#include "support/animation/file_reader.h"
#include "support/animation/pose.h"

namespace SUPPORT {

void handle_root(ANIMATION_FRAME &frame, std::uint32_t root_bone, std::uint32_t options,
                 ANIMATION_FRAME const *reference)
{
    bool const relative_height = (options & ANIMATION_RELATIVE_XYZ) != 0;
    bool const relative = relative_height || (options & ANIMATION_RELATIVE_XZ) != 0;
    for (std::uint32_t bone = 0; bone < frame.skeleton.size(); ++bone) {
        bool const is_root = bone == root_bone;
        if (!is_root && frame.skeleton[bone].parent >= 0)
            continue;
        VECTOR3 place = frame.translation_of(bone);
        if (relative && reference != nullptr) {
            place.x -= reference->root_position.x;
            place.z -= reference->root_position.z;
            if (relative_height)
                place.y -= reference->root_position.y;
        }
        if (is_root) {
            frame.root_position = place;
            frame.heading = heading_of(unpack_quaternion(frame.rotation_of(bone)), nullptr, bone, false);
        }
        // Bones behind the root in the table keep their places against it; the position in front of it is still 0.
        if ((options & ANIMATION_ROOT_AT_ZERO) != 0)
            place = is_root ? VECTOR3{} : place - frame.root_position;
        if (VECTOR3 *const stored = mapped(frame.translations, frame.translation_map, bone))
            *stored = place;
    }
}

}  // namespace SUPPORT
