// BONE_RECORD and ANIMATION_FRAME: a bone table and one frame of an animation, as skeletons and clips hold them.
// Lengths are metres, y is up; rotations and translations are those of a bone against its parent.
#pragma once

#include "foundation/string.h"
#include "support/maths/angle.h"
#include "support/maths/packed_quaternion.h"

#include <span>

namespace SUPPORT {

struct BONE_RECORD {
    KN::String name;           // in lower case
    std::int32_t parent = -1;  // index in the bone table, below the bone's own; -1: none
};

using BONE_TABLE = std::span<BONE_RECORD const>;

// A frame is a view: all it refers to belongs to the skeleton or clip that holds it. The maps have one entry a bone:
// its place in `translations` or `rotations`. A negative entry, or a bone behind the end of the map, means that the
// frame does not animate that bone; its value is that of the skeleton's bind frame, at the place of the bone's number.
// A skeleton's bind frame is its own.
struct ANIMATION_FRAME {
    std::span<VECTOR3> translations;
    std::span<PACKED_QUATERNION> rotations;
    std::span<std::int32_t const> translation_map, rotation_map;
    VECTOR3 root_position;  // of the root bone, as the options of the load leave it
    VECTOR3 root_offset;    // zero: for the user of the frame
    ANGLE16 heading = 0;    // of the root bone, about y; see heading_of
    BONE_TABLE skeleton;
    ANIMATION_FRAME const *bind_frame = nullptr;  // null: what is not animated is at the identity
    // So many bones from the first on stand in the arrays at their own numbers; loops over these need no map.
    std::uint32_t translations_in_order = 0, rotations_in_order = 0;

    // Gives a frame that has its arrays the tables that all frames share.
    void set_tables(std::span<std::int32_t const> of_translations, std::span<std::int32_t const> of_rotations,
                    BONE_TABLE bones, ANIMATION_FRAME const *bind);
    // Those of another frame, whose arrays are as long.
    void set_tables(ANIMATION_FRAME const &like);

    // What the frame has for a bone: from its own arrays, or from the bind frame.
    VECTOR3 translation_of(std::size_t bone) const;
    PACKED_QUATERNION rotation_of(std::size_t bone) const;
};

// The value that `map` gives a bone, or null.
template <class T>
T *mapped(std::span<T> values, std::span<std::int32_t const> map, std::size_t bone)
{
    bool const animated = bone < map.size() && map[bone] >= 0 && std::size_t(map[bone]) < values.size();
    return animated ? &values[std::size_t(map[bone])] : nullptr;
}

// The options of a load that this library knows.
enum ANIMATION_OPTION : std::uint32_t {
    ANIMATION_LOOPS = 2,                // the last frame stands for the first
    ANIMATION_ROOT_AT_ZERO = 4,         // the root stands still, its motion is only in root_position
    ANIMATION_RELATIVE_XYZ = 8,         // root positions of later frames count from that of frame 0
    ANIMATION_RELATIVE_XZ = 16,         // the same, but for the height
    ANIMATION_SPEED_OF_SECOND = 16384,  // `speed` of a clip is the way of its first second
};

}  // namespace SUPPORT
