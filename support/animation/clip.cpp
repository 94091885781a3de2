#include "support/animation/clip.h"

#include "foundation/messages.h"
#include "support/animation/file_reader.h"
#include "support/animation/skeleton.h"
#include "support/report/animation_timing.h"

namespace SUPPORT {

ANIMATION_CLIP::ANIMATION_CLIP(KN::FileIn &file, SKELETON const *given, std::uint32_t flags, CLIP_SOURCE const &source,
                               ALLOCATOR &home)
    : allocator(home), source_name(source.name), skeleton(given), options(flags)
{
    FILE_SOURCE from(file);
    load(from, source.single_frame);
}

ANIMATION_CLIP::ANIMATION_CLIP(KN::BufferedStream &file, SKELETON const *given, std::uint32_t flags,
                               CLIP_SOURCE const &source, ALLOCATOR &home)
    : allocator(home), source_name(source.name), skeleton(given), options(flags)
{
    STREAM_SOURCE from(file);
    load(from, source.single_frame);
}

ANIMATION_CLIP::~ANIMATION_CLIP()
{
    for (ANIMATION_FRAME *frame : frames)
        allocator.free(frame);
}

BONE_TABLE ANIMATION_CLIP::bone_table() const { return skeleton != nullptr ? skeleton->bones : bones; }

template <class SOURCE>
void ANIMATION_CLIP::load(SOURCE &file, bool single_frame)
{
    ANIMATION_FILE_TABLES tables;
    bool const whole = read_record(file, tables);
    version = tables.version;
    if (version < first_animation_version)
        return;
    fps = tables.fps;
    name = std::move(tables.name);
    duration = tables.duration;
    if (skeleton == nullptr)
        bones = moved_to(allocator, std::move(tables.bones));
    translation_map = moved_to(allocator, std::move(tables.translation_map));
    rotation_map = moved_to(allocator, std::move(tables.rotation_map));
    if (whole)
        load_frames(file, tables, single_frame);
    valid = !frames.empty();
    if (valid && !single_frame)
        summarise();
    animation_timing_step("animation clip");
}

template <class SOURCE>
void ANIMATION_CLIP::load_frames(SOURCE &file, ANIMATION_FILE_TABLES const &tables, bool single_frame)
{
    FRAME_READER<SOURCE> reader(file, tables, allocator);
    // Frames without any bytes would be free for the file and not for us; they are all the same.
    constexpr std::uint32_t most_empty_frames = 65536;
    std::uint32_t const stored =
        reader.frames_are_empty() ? std::min(tables.frame_count, most_empty_frames) : tables.frame_count;
    std::uint32_t const count = single_frame ? 1 : stored;
    KN::DynamicArray<ANIMATION_FRAME *> read;
    ANIMATION_FRAME *frame = count != 0 ? reader.read() : nullptr;
    if (frame == nullptr)
        return;
    frame->set_tables(translation_map, rotation_map, bone_table(),
                      skeleton != nullptr ? &skeleton->bind_frame : nullptr);
    ROOT_HANDLING const root(*frame, skeleton != nullptr ? skeleton->root_bone : 0, options);
    root.apply(*frame, nullptr);
    read.append(frame);
    while (read.count < count && (frame = reader.read()) != nullptr) {
        frame->set_tables(*read[0]);
        root.apply(*frame, read[0]);
        read.append(frame);
    }
    frames = moved_to(allocator, std::move(read));
}

bool ANIMATION_CLIP::check_bone_orientations() const
{
    KN_STD::VECTOR<std::uint32_t> faulty;
    KN_STD::VECTOR<bool> known(frames.empty() ? 0 : frames[0]->rotations.size());
    for (ANIMATION_FRAME const *frame : frames)
        for (std::uint32_t i = 0; i < frame->rotations.size(); ++i) {
            QUATERNION const q = unpack_quaternion(frame->rotations[i]);
            float const length = std::sqrt(dot(q, q));
            if ((length >= 0.99f && length <= 1.01f) || known[i])
                continue;
            known[i] = true;
            faulty.push_back(i);
        }
    if (faulty.empty())
        return true;

    BONE_TABLE const names = skeleton != nullptr ? bone_table() : BONE_TABLE();
    KN::String text = "The following file (" + source_name + ") has issues with the following " +
                      (skeleton != nullptr ? "" : "indexed ") +
                      "bones orientations (quaternions). This is probably due to spurious scaling data in "
                      "MotionBuilder or Max. Please fix these problems and re-export : ";
    for (std::uint32_t const index : faulty)
        text += (index < names.size() ? names[index].name : KN::String(std::to_string(index))) + " ; ";
    KN::message_txt(text);
    return true;
}

}  // namespace SUPPORT
