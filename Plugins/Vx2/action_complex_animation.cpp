#include "Plugins/Vx2/action_complex_animation.h"

#include "Plugins/Vx2/host/animation.h"
#include "Plugins/Vx2/host/rule_values.h"
#include "Plugins/Vx2/host/vex2_filter.h"
#include "Plugins/Vx2/text.h"
#include "foundation/file.h"
#include "scene/buffer.h"
#include "scene/scene.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMap>

#include <algorithm>

using TOOLDATABUILDER::BONE_NAME_TABLE;
using VEX2_LOADER::VEX2;

static constexpr float frames_a_second = 20;

static QStringList skeletons_to_try(KN_STD::VECTOR<BONE_NAME_TABLE> const &tables)
{
    QStringList preferred, others;
    for (BONE_NAME_TABLE const &table : tables) {
        if (table.preferred)
            preferred.append(QString::fromLocal8Bit(table.name.c_str()));
        else if (table.name != "cloth")
            others.append(QString::fromLocal8Bit(table.name.c_str()));
    }
    return preferred + others + QStringList(QStringLiteral("generic"));
}

ACTION_COMPLEX_ANIMATION::ACTION_COMPLEX_ANIMATION(PHYSICAL_PATH const &physical,
                                                   KN_STD::VECTOR<BONE_NAME_TABLE> const &bone_tables,
                                                   PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor), skeletons(skeletons_to_try(bone_tables))
{
    set_target_extension(QString());  // a folder
}

static QString animation_name(std::size_t number) { return QStringLiteral("animation%1.anim").arg(number); }

void ACTION_COMPLEX_ANIMATION::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets,
                                                  qint64 &time, FILE_TABLE const &files, RULE_CACHE const &) const
{
    get_source_files(sources, files);
    // Which skeletons there are decides which one fits first. The work reads only those that it tries.
    time = std::max(time, qint64(qHash(skeletons.join('\n'), 0)));

    PHYSICAL_PATH const folder(get_target() + "/");
    LOGICAL_PATH const prefix(PATHS::logical_path(get_target()) + "/");
    QMap<LOGICAL_PATH, PHYSICAL_PATH> animations;
    for (auto entry = files.lowerBound(prefix); entry != files.end() && entry.key().startsWith(prefix); ++entry)
        if (entry.key().endsWith(QLatin1String(".anim")))
            animations.insert(entry.key(), entry.value()->physical);
    // The walk does not meet what has come while actions run: the animations of this action itself.
    for (std::size_t number = 1;; ++number) {
        LOGICAL_PATH const file(prefix + animation_name(number));
        FILE_ENTRY const *const entry = files.peek(file);
        if (entry == nullptr)
            break;
        animations.insert(file, entry->physical);
    }
    if (animations.isEmpty())
        animations.insert(LOGICAL_PATH(prefix + animation_name(1)), PHYSICAL_PATH(folder + animation_name(1)));
    for (auto animation = animations.begin(); animation != animations.end(); ++animation)
        targets.append(TARGET_FILE(animation.value(), animation.key(), false));
    for (char const *const spec : {"tool_spec.xml", "user_spec.xml"})
        targets.append(TARGET_FILE(PHYSICAL_PATH(folder + spec), LOGICAL_PATH(prefix + spec), false));
}

bool ACTION_COMPLEX_ANIMATION::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                                       FILE_TABLE const &files)
{
    VEX2 scene;
    {
        VEX2_LOADER::VEX2_READ_BUFFER buffer(KN::must_fix_string_widen(local_8_bit(from)));
        if (buffer.cursor >= buffer.end) {
            output_line("Failed to open vex2 file (" + from + ")!", 2);
            return false;
        }
        if (!scene.load(buffer, true)) {
            output_line(QStringLiteral("Failed to read vex2 file!"), 2);
            return false;
        }
    }
    scene.seek(0.0f);

    ACTORS actors;
    if (!find_actors(scene.hierarchy.nodes, skeletons, *this, actors))
        return false;
    if (actors.empty()) {
        output_line(
            QStringLiteral("No actors have been found in the vex2 file!\nHave you exported it with namespaces?"), 2);
        return false;
    }
    bool const debug = should_output_debug_animation_info(rules);
    if (!write_tool_spec(to, actors, scene, debug, files) || !write_user_spec(to, actors, files))
        return false;
    name_leftovers(to, actors.size());
    return true;
}

static std::vector<ACTOR_SPEC> specs_of(ACTORS const &actors)
{
    std::vector<ACTOR_SPEC> specs;
    for (auto const &[key, actor] : actors)
        specs.push_back({actor.name, animation_name(specs.size() + 1), actor.skeleton});
    return specs;
}

bool ACTION_COMPLEX_ANIMATION::write_tool_spec(QString const &target, ACTORS &actors, VEX2 const &scene, bool debug,
                                               FILE_TABLE const &files)
{
    QDir().mkpath(target);
    std::size_t number = 0;
    for (auto &[key, actor] : actors) {
        add_output_line("Processing actor '" + actor.name + "'...");
        if (!write_animation(target + "/" + animation_name(++number), actor, scene, debug, files) ||
            !add_progress(progress_max() / int(actors.size())))
            return false;
    }
    PHYSICAL_PATH const path(target + "/tool_spec.xml");
    if (!save_document(tool_spec(specs_of(actors)), path))
        return false;
    add_to_perforce(path, files, false, QString());
    return true;
}

// A camera has any nodes; an actor of a namespace is of the skeleton that the namespace names.
static QStringList candidates_for(ACTOR const &actor, QStringList const &skeletons)
{
    if (actor.name == QLatin1String("camera"))
        return {QStringLiteral("all")};
    return actor.name.contains(':') ? QStringList(actor.name.section(':', -1)) : skeletons;
}

bool ACTION_COMPLEX_ANIMATION::write_animation(QString const &path, ACTOR &actor, VEX2 const &scene, bool debug,
                                               FILE_TABLE const &files)
{
    KN::FileOut out;
    if (!out.open(local_8_bit(path), false, true)) {
        output_line("Failed to open target file (" + path + ")!", 2);
        return false;
    }
    VEX2 actor_scene;
    actor_scene.info.start_time = scene.info.start_time;
    actor_scene.info.end_time = scene.info.end_time;
    actor_scene.hierarchy.nodes = std::move(actor.nodes);

    QStringList faults;
    for (QString const &candidate : candidates_for(actor, skeletons)) {
        BONE_NAME_TABLE const table(local_8_bit(candidate));
        if (!table.valid) {
            output_line("Unrecognised skeleton type: " + candidate, 2);
            return false;
        }
        TOOLDATABUILDER::ANIMATION const animation(actor_scene, table, "", "", frames_a_second, false,
                                                   TOOLDATABUILDER::VEX2_FILTER(), false, debug);
        if (!animation.valid) {
            faults.append(QString::fromUtf8(animation.fault.c_str()));
            continue;
        }
        static constexpr char no_matrices[4] = {};
        out << animation;
        out.write(no_matrices, sizeof no_matrices);
        if (!out.close()) {
            output_line("Failed to write target file (" + path + ")!", 2);
            return false;
        }
        add_to_perforce(PHYSICAL_PATH(path), files, true, QString());
        actor.skeleton = candidate;
        return true;
    }
    output_line(QStringLiteral("Skeleton not found for the animation!"), 2);
    for (QString const &fault : faults)
        output_line(fault, 1);
    return false;
}

bool ACTION_COMPLEX_ANIMATION::write_user_spec(QString const &target, ACTORS const &actors, FILE_TABLE const &files)
{
    PHYSICAL_PATH const path(target + "/user_spec.xml");
    if (QFile::exists(path))
        add_output_line(QStringLiteral("User_Spec already exists, Skipping"));
    else if (!save_document(user_spec(specs_of(actors)), path))
        return false;
    add_to_perforce(path, files, false, QString());
    return true;
}

// Animations of an earlier run with more actors stay where they are.
void ACTION_COMPLEX_ANIMATION::name_leftovers(QString const &target, std::size_t actor_count)
{
    for (std::size_t number = actor_count + 1;; ++number) {
        QString const path = target + "/" + animation_name(number);
        if (!QFile::exists(path))
            return;
        output_line(path + ": no actor is left of this animation; remove the file", 1);
    }
}
