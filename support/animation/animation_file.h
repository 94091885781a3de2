// The file of a built animation, as values: a header, a bone table with two maps, and frames of packed rotations and
// translations; behind it, or in a file of its own, a skeleton's matrix block. The layout, little-endian, is described
// once, by `fields`, and read and written from that; docs/formats.md has it as a table.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"
#include "support/animation/frame.h"
#include "support/maths/matrix.h"

namespace KN {
class BufferedStream;
class FileIn;
}  // namespace KN

namespace SUPPORT {

// Files of a smaller version hold nothing that this library reads.
inline constexpr std::uint32_t first_animation_version = 5;

struct ANIMATION_FILE_HEADER {
    std::uint32_t version = first_animation_version;
    std::uint32_t reserved = 0;
    float fps = 0;  // frames per second
    KN::String name;
    float duration = 0;  // seconds
    std::uint32_t bone_count = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v.version(&ANIMATION_FILE_HEADER::version);  // an old one ends the reading here
        v(&ANIMATION_FILE_HEADER::reserved);
        v(&ANIMATION_FILE_HEADER::fps);
        v(&ANIMATION_FILE_HEADER::name);
        v(&ANIMATION_FILE_HEADER::duration);
        v(&ANIMATION_FILE_HEADER::bone_count);
    }
};

// All of the file but its frames. A frame is `translation_count` translations, then `rotation_count` rotations.
struct ANIMATION_FILE_TABLES : ANIMATION_FILE_HEADER {
    KN::DynamicArray<BONE_RECORD> bones;                           // bone_count of each
    KN::DynamicArray<std::int32_t> translation_map, rotation_map;  // see ANIMATION_FRAME
    std::uint32_t translation_count = 0;
    std::uint32_t rotation_count = 0;
    std::uint32_t frame_count = 0;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        ANIMATION_FILE_HEADER::fields(v);
        v.array(&ANIMATION_FILE_TABLES::bones, &ANIMATION_FILE_TABLES::bone_count);
        v.array(&ANIMATION_FILE_TABLES::translation_map, &ANIMATION_FILE_TABLES::bone_count);
        v.array(&ANIMATION_FILE_TABLES::rotation_map, &ANIMATION_FILE_TABLES::bone_count);
        v(&ANIMATION_FILE_TABLES::translation_count);
        v(&ANIMATION_FILE_TABLES::rotation_count);
        v(&ANIMATION_FILE_TABLES::frame_count);
    }
};

// The header of the file at the source's place; the source stands behind it then. Of a version that is too old, and of
// a source that ends early, only what was there is set.
ANIMATION_FILE_HEADER read_header(KN::FileIn &file);
ANIMATION_FILE_HEADER read_header(KN::BufferedStream &stream);

// The bytes of a file up to the end of its frames, which stand one behind the other in the two arrays. The counts of
// `tables` are taken as they are, and the arrays have to agree with them. Texts are cut at 65,535 bytes.
KN::String animation_file_bytes(ANIMATION_FILE_TABLES const &tables, std::span<VECTOR3 const> translations,
                                std::span<PACKED_QUATERNION const> rotations);

// The bytes of a matrix block: one matrix a bone, from the space of the reference pose to that of the bone.
KN::String matrix_block_bytes(std::span<MATRIX34 const> matrices);
// The block of a file that has no matrices.
KN::String no_matrices_bytes();

}  // namespace SUPPORT
