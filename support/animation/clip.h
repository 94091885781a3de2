// ANIMATION_CLIP: an animation as it is played: frames at a fixed rate, and a summary of how the root moves.
//
// An object is made by its constructor and does not change. A file below version 5 leaves `valid` false; so does one
// without a whole frame, as there is nothing to play. Neither is reported. No count is trusted beyond the bytes that
// follow. Several threads may load at once, each from a file of its own, and any may read.
#pragma once

#include "support/animation/allocator.h"
#include "support/animation/frame.h"

namespace KN {
class BufferedStream;
class FileIn;
}  // namespace KN

namespace SUPPORT {

struct ANIMATION_FILE_TABLES;
class SKELETON;

// What a clip is loaded from.
struct CLIP_SOURCE {
    KN::String name;            // for messages
    bool single_frame = false;  // only the first frame is wanted
};

class ANIMATION_CLIP {
public:
    // `skeleton` may be null; the clip then keeps the bone table of its file. Otherwise it outlives the clip, and its
    // bones are what the file's maps count. `options`: ANIMATION_OPTION values.
    ANIMATION_CLIP(KN::FileIn &file, SKELETON const *skeleton, std::uint32_t options, CLIP_SOURCE const &source,
                   ALLOCATOR &allocator);
    ANIMATION_CLIP(KN::BufferedStream &file, SKELETON const *skeleton, std::uint32_t options, CLIP_SOURCE const &source,
                   ALLOCATOR &allocator);
    ANIMATION_CLIP(ANIMATION_CLIP const &) = delete;
    ANIMATION_CLIP &operator=(ANIMATION_CLIP const &) = delete;
    ~ANIMATION_CLIP();

    // Tells, in one message, which rotations do not have the length 1 (0.99 to 1.01 is in order) in some frame; says
    // nothing if all do. Always true.
    bool check_bone_orientations() const;

    // The skeleton's bones, or the clip's own.
    BONE_TABLE bone_table() const;
    bool loops() const { return (options & ANIMATION_LOOPS) != 0; }

    ALLOCATOR &allocator;
    std::uint32_t version = 0;
    float fps = 0;
    float duration = 0;  // seconds
    KN::String name, source_name;
    SKELETON const *skeleton;
    ALLOCATED_ARRAY<BONE_RECORD> bones;  // empty with a skeleton
    ALLOCATED_ARRAY<std::int32_t> translation_map, rotation_map;
    ALLOCATED_ARRAY<ANIMATION_FRAME *> frames;
    std::uint32_t options;
    bool valid = false;

    // The summary; all 0 if only a single frame was wanted. What is divided by the duration is not finite if that is 0.
    ANGLE16 first_heading = 0;
    VECTOR2 move_direction;         // x and z, of length 1, or zeros
    float move_length = 0;          // metres in the plane, from the first to the last frame
    float first_second_length = 0;  // metres in the plane, from the first frame to that of one second
    float speed = 0;                // metres a second
    float height_change = 0;        // metres
    float height_rate = 0;          // metres a second
    float turn = 0;                 // radians, the way round that the frames take
    float turn_rate = 0;            // radians a second

private:
    template <class SOURCE>
    void load(SOURCE &file, bool single_frame);
    template <class SOURCE>
    void load_frames(SOURCE &file, ANIMATION_FILE_TABLES const &tables, bool single_frame);
    void summarise();
};

}  // namespace SUPPORT
