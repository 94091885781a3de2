#include "apps/vx2/commands.h"

#include "foundation/file.h"
#include "foundation/messages.h"
#include "support/animation/clip.h"

#include <cstdio>
#include <numbers>

using namespace SUPPORT;

namespace {

// Keeps what the check of the rotations says, which is for standard output here.
struct KEPT_LINES final : KN::MessageSink {
    void message(KN::String const &line, int) override { lines.push_back(line); }
    KN_STD::VECTOR<KN::String> lines;
};

double degrees(double radians) { return radians * 180 / std::numbers::pi; }

void print_header(ANIMATION_CLIP const &clip)
{
    std::printf("%-18s %u\n", "version", clip.version);
    std::printf("%-18s %s\n", "name", KN::printable(clip.name).c_str());
    std::printf("%-18s %g frames a second\n", "rate", double(clip.fps));
    std::printf("%-18s %g s\n", "duration", double(clip.duration));
    std::printf("%-18s %zu (%zu translations, %zu rotations each)\n", "frames", clip.frames.size(),
                clip.frames[0]->translations.size(), clip.frames[0]->rotations.size());
}

// Number, name, parent, and what the frames hold of each bone.
void print_bones(ANIMATION_CLIP const &clip)
{
    std::printf("%-18s %zu\n", "bones", clip.bones.size());
    ANIMATION_FRAME const &frame = *clip.frames[0];
    for (std::size_t i = 0; i < clip.bones.size(); ++i) {
        bool const moves = mapped(frame.translations, frame.translation_map, i) != nullptr;
        bool const turns = mapped(frame.rotations, frame.rotation_map, i) != nullptr;
        std::printf("%6zu %-32s parent %4d%s%s%s\n", i, KN::printable(clip.bones[i].name).c_str(), clip.bones[i].parent,
                    moves ? ", translation" : "", turns ? ", rotation" : "", moves || turns ? "" : ", not animated");
    }
}

void print_summary(ANIMATION_CLIP const &clip)
{
    std::printf("%-18s %.2f degrees\n", "first heading", degrees(double(angle16_to_radians(clip.first_heading))));
    std::printf("%-18s %g m towards x %g, z %g\n", "way", double(clip.move_length), double(clip.move_direction.x),
                double(clip.move_direction.y));
    std::printf("%-18s %g m\n", "way in 1 s", double(clip.first_second_length));
    std::printf("%-18s %g m/s\n", "speed", double(clip.speed));
    std::printf("%-18s %g m, %g m/s\n", "rise", double(clip.height_change), double(clip.height_rate));
    std::printf("%-18s %.2f degrees, %.2f degrees/s\n", "turn", degrees(double(clip.turn)),
                degrees(double(clip.turn_rate)));
}

void print_orientations(ANIMATION_CLIP const &clip)
{
    KEPT_LINES kept;
    KN::MessageSink *const before = KN::set_thread_message_sink(&kept);
    clip.check_bone_orientations();
    KN::set_thread_message_sink(before);
    std::printf("%-18s %s\n", "orientations", kept.lines.empty() ? "in order" : "faulty");
    for (KN::String const &line : kept.lines)
        std::printf("%s\n", KN::printable(line).c_str());
}

}  // namespace

int show_animation(KN::String const &file)
{
    KN::FileIn in;
    if (!in.open(file, true)) {
        std::fprintf(stderr, "%s: cannot be opened; is the path right?\n", KN::printable(file).c_str());
        return 1;
    }
    ANIMATION_CLIP const clip(in, nullptr, 0, CLIP_SOURCE{file}, animation_heap());
    if (!clip.valid) {
        std::fprintf(stderr, "%s: holds no animation of version 5 or later, or was cut off; convert it again\n",
                     KN::printable(file).c_str());
        return 1;
    }
    print_header(clip);
    print_bones(clip);
    print_summary(clip);
    print_orientations(clip);
    return 0;
}
