// The life of a skeleton file on hostile bytes: loaded from a file and from a stream, with equal results, the matrix
// block behind the frame; attached to itself; its pose put into world space. Seeds: any animation files.
#include "loaded_twice.h"
#include "support/animation/skeleton.h"

using namespace SUPPORT;

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    if (size < 2)
        return 0;
    // The first two bytes choose the options and the size of the windows.
    std::uint32_t const options = bytes[0];
    unsigned const window = 1 + bytes[1];
    bytes += 2;
    size -= 2;

    FILE_OF_BYTES on_disk(bytes, size);
    KN::BufferedMemory stream(bytes, size, window);
    SKELETON const a(on_disk.file, on_disk.file, options, "hips", "spine", animation_heap());
    SKELETON const b(stream, stream, options, "hips", "spine", animation_heap());
    require(a.version == b.version && a.name == b.name && a.root_bone == b.root_bone &&
                a.second_bone == b.second_bone && same_bones(a.bones, b.bones) &&
                same_frames(a.bind_frame, b.bind_frame),
            "a file and a stream give one skeleton");
    require(same_bytes(std::span(a.inverse_bind_matrices), std::span(b.inverse_bind_matrices)), "and one matrix block");
    require(same_bytes(a.bind_pose.bone_rotations(), b.bind_pose.bone_rotations()), "and one pose");

    SCRATCH_ALLOCATOR scratch;
    require(world_matrices(a.bind_pose, options, {}, scratch).size() <= a.bones.size(), "a matrix a bone");
    KN::BufferedMemory again(bytes, size, window);
    ATTACHED_SKELETON const attached(again, again, a, options, animation_heap());
    require(attached.attach_points.size() <= ATTACHED_SKELETON::most_attach_points, "at most 32 points");
    return 0;
}
