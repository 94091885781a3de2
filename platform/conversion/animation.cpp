#include "Plugins/Vx2/host/animation.h"

#include "Plugins/Vx2/host/bone_name_table.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "platform/conversion/animation_sampler.h"
#include "platform/conversion/name_list.h"
#include "scene/scene.h"
#include "support/animation/animation_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

constexpr float usual_rate = 20;
// Nodes times frames: ten minutes of 600 nodes at 20 frames a second.
constexpr double most_samples = 1 << 23;

KN::String number_text(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

// The times of the frames: a whole number of steps, so that frames, rate and duration agree; the number that comes
// nearest to the scene's own time. The last frame shows the scene's end.
struct PERIOD {
    double begin = 0, end = 0;  // seconds
    double rate = usual_rate;
    std::uint32_t steps = 0;  // frames but one

    double time_of(std::uint32_t frame) const
    {
        return frame == steps && steps != 0 ? end : begin + double(frame) / rate;
    }
};

bool find_period(VEX2 const &scene, float rate, bool reference_pose, PERIOD &period, KN::String &fault)
{
    double const start = double(scene.info.start_time);
    period.begin = reference_pose ? start : std::max(start, 0.0);
    period.end = double(scene.info.end_time);
    period.rate = double(rate == 0 ? usual_rate : rate);
    if (!std::isfinite(period.begin) || !std::isfinite(period.end)) {
        fault = "the scene's start or end time is no number; export it again";
        return false;
    }
    if (!(period.rate > 0) || !std::isfinite(period.rate)) {
        fault = number_text(period.rate) + " frames a second are no rate; check the rule's FPS";
        return false;
    }
    if (reference_pose || !(period.end > period.begin))
        return true;
    double const duration = period.end - period.begin;
    double const steps = std::max(1.0, std::round(duration * period.rate));
    if ((steps + 1) * double(scene.hierarchy.nodes.count) > most_samples) {
        fault = number_text(duration) + " s at " + number_text(period.rate) + " frames a second, with " +
                std::to_string(scene.hierarchy.nodes.count) +
                " nodes, are too long an animation; check the scene's end time and the rule's FPS";
        return false;
    }
    period.steps = std::uint32_t(steps);
    return true;
}

using PARTS = KN_STD::VECTOR<ANIMATION_SAMPLER::PARTS>;

PARTS wanted_parts(KN_STD::VECTOR<ANIMATION_BONE> const &bones, KN::String const &strip_translations,
                   KN::String const &strip_rotations)
{
    NAME_LIST const without_translation(strip_translations), without_rotation(strip_rotations);
    PARTS parts;
    for (ANIMATION_BONE const &bone : bones)
        parts.push_back({!without_translation.contains(bone.name), !without_rotation.contains(bone.name)});
    return parts;
}

SUPPORT::ANIMATION_FILE_TABLES file_tables(KN::String const &skeleton, PERIOD const &period,
                                           KN_STD::VECTOR<ANIMATION_BONE> const &bones, PARTS const &parts)
{
    SUPPORT::ANIMATION_FILE_TABLES tables;
    tables.name = skeleton;
    tables.fps = float(period.rate);
    tables.duration = float(double(period.steps) / period.rate);
    tables.bone_count = std::uint32_t(bones.size());
    tables.frame_count = period.steps + 1;
    for (std::size_t i = 0; i < bones.size(); ++i) {
        tables.bones.append(SUPPORT::BONE_RECORD{bones[i].name, bones[i].parent});
        tables.translation_map.append(parts[i].translation ? std::int32_t(tables.translation_count++) : -1);
        tables.rotation_map.append(parts[i].rotation ? std::int32_t(tables.rotation_count++) : -1);
    }
    return tables;
}

}  // namespace

ANIMATION::ANIMATION(VEX2 &scene, BONE_NAME_TABLE const &table, KN::String const &strip_translations,
                     KN::String const &strip_rotations, float rate, bool reference_pose, VEX2_FILTER const &filter,
                     bool rigid_reference, bool debug)
{
    KN_STD::VECTOR<ANIMATION_BONE> bones;
    PERIOD period;
    if (!find_bones(scene, table, filter, rigid_reference, bones, fault) ||
        !find_period(scene, rate, reference_pose, period, fault)) {
        if (debug)
            KN::message_txt(fault);
        return;
    }

    PARTS const parts = wanted_parts(bones, strip_translations, strip_rotations);
    SUPPORT::ANIMATION_FILE_TABLES const tables = file_tables(table.name, period, bones, parts);
    ANIMATION_SAMPLER sampler(scene, bones, parts);
    sampler.translations.reserve(std::size_t(tables.frame_count) * tables.translation_count);
    sampler.rotations.reserve(std::size_t(tables.frame_count) * tables.rotation_count);
    for (std::uint32_t frame = 0; frame < tables.frame_count; ++frame) {
        if (!KN::goes_on()) {
            fault = "interrupted";
            return;
        }
        if (!sampler.take_frame(period.time_of(frame), fault))
            return;
    }

    valid = true;
    file = SUPPORT::animation_file_bytes(tables, sampler.translations, sampler.rotations);
    if (reference_pose)
        matrices = SUPPORT::matrix_block_bytes(sampler.inverse_matrices());
    if (sampler.resized_bone() >= 0)
        KN::message(KN::MESSAGE_WARNING, "bone '" + KN::printable(bones[std::size_t(sampler.resized_bone())].name) +
                                             "' changes its size; animations hold none");
    if (debug)
        KN::message_txt("skeleton '" + KN::printable(table.name) + "': " + std::to_string(bones.size()) + " bones, " +
                        std::to_string(tables.translation_count) + " with translations, " +
                        std::to_string(tables.rotation_count) + " with rotations; " +
                        std::to_string(tables.frame_count) + " frames from " + number_text(period.begin) + " s on, " +
                        number_text(period.rate) + " a second");
}

KN::FileOut &operator<<(KN::FileOut &out, ANIMATION const &animation)
{
    out.write(animation.file.data(), animation.file.length());
    return out;
}

}  // namespace TOOLDATABUILDER
