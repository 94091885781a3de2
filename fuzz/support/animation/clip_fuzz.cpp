// The life of a clip file on hostile bytes: loaded from a file and from a stream, with equal results, then checked and
// played at usual and unusual times. Seeds: any animation files.
#include "loaded_twice.h"
#include "support/animation/animation_file.h"
#include "support/animation/clip.h"
#include "support/animation/pose.h"
#include "support/animation/skeleton.h"

#include <limits>
#include <vector>

using namespace SUPPORT;

namespace {

// Three bones in their bind pose, without matrices.
SKELETON const &bind_skeleton()
{
    static SKELETON const *const skeleton = [] {
        ANIMATION_FILE_TABLES tables;
        tables.bone_count = tables.translation_count = tables.rotation_count = 3;
        tables.frame_count = 1;
        for (int bone = 0; bone < 3; ++bone) {
            tables.bones.append(BONE_RECORD{"bone", bone - 1});
            tables.translation_map.append(bone);
            tables.rotation_map.append(bone);
        }
        KN::String const bytes = animation_file_bytes(tables, std::vector<VECTOR3>(3),
                                                      std::vector<PACKED_QUATERNION>(3, PACKED_QUATERNION{0, 0, 0, 1}));
        KN::BufferedMemory stream(bytes.data(), bytes.size());
        return new SKELETON(stream, stream, 0, "bone", "", animation_heap());
    }();
    return *skeleton;
}

void play(ANIMATION_CLIP const &clip, SCRATCH_ALLOCATOR &scratch)
{
    for (float time : {0.0f, 0.3f, clip.duration, -1.0f, 1e30f, std::numeric_limits<float>::quiet_NaN()}) {
        for (std::uint32_t mode : {BLEND_NEAREST, BLEND_LINEAR, BLEND_SPHERICAL})
            require(world_matrices_at(clip, time, mode, 0, {}, scratch).size() == clip.bone_table().size(),
                    "a matrix a bone");
        rotation_delta(1, clip, time, 0.5f);
        scratch.reset();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    static NO_MESSAGES no_messages;
    KN::set_thread_message_sink(&no_messages);
    if (size < 3)
        return 0;
    // The first three bytes choose the options, the size of the windows, and the rest.
    std::uint32_t const options = bytes[0];
    unsigned const window = 1 + bytes[1];
    SKELETON const *const skeleton = bytes[2] % 2 != 0 ? &bind_skeleton() : nullptr;
    CLIP_SOURCE const source = {"fuzz", bytes[2] % 8 == 7};
    bytes += 3;
    size -= 3;

    FILE_OF_BYTES on_disk(bytes, size);
    KN::BufferedMemory stream(bytes, size, window);
    ANIMATION_CLIP const a(on_disk.file, skeleton, options, source, animation_heap());
    ANIMATION_CLIP const b(stream, skeleton, options, source, animation_heap());
    require(a.version == b.version && a.valid == b.valid && a.name == b.name && same_bones(a.bones, b.bones) &&
                a.frames.size() == b.frames.size(),
            "a file and a stream give one clip");
    for (std::size_t i = 0; i < a.frames.size(); ++i)
        require(same_frames(*a.frames[i], *b.frames[i]), "with the same frames");

    a.check_bone_orientations();
    SCRATCH_ALLOCATOR scratch;
    play(a, scratch);
    return 0;
}
