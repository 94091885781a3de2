#include "Plugins/Vx2/action_process_tech.h"

#include "Plugins/Vx2/host/asset_fragment_builder.h"
#include "Plugins/Vx2/host/building_description.h"
#include "Plugins/Vx2/host/rigid_model_tech_processor.h"
#include "Plugins/Vx2/mesh_filters.h"
#include "Plugins/Vx2/rule_reading.h"
#include "Plugins/Vx2/text.h"
#include "mesh/duplicate_vertices.h"
#include "scene/scene.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStringBuilder>

#include <algorithm>

// The file name without its last "."-section.
static QString stem_of(PHYSICAL_PATH const &path)
{
    int const start = path.lastIndexOf('/') + 1;
    return path.mid(start, std::max(path.lastIndexOf('.') - start, 0));
}

ACTION_PROCESS_TECH::ACTION_PROCESS_TECH(VEX2_LOADER::VEX2 *&shared_scene, PHYSICAL_PATH const &physical,
                                         PROCESSOR_INTERFACE *processor, float radius, QString const &target_folder)
    : ACTION_TDB(processor), incendiary_radius(radius), scene(shared_scene), source(physical),
      design_folder(QStringLiteral("CorvaneDesignData")), folder(target_folder), stem(stem_of(physical))
{
    QString const target = PATHS::target_working_data(source) % '/' % folder % '/' % stem;
    parsed_path = PHYSICAL_PATH(target % "_tech.vx2.parsed");
    old_source_path = PHYSICAL_PATH(PATHS::raw_data() % '/' % design_folder % '/' % stem % "_tech.vx2");
    agf_path = PHYSICAL_PATH(target % "_tech.agf");
    set_progress_max(1000);
}

QString ACTION_PROCESS_TECH::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Process tech");
    return with_source ? name + " (" + source + ")" : name;
}

void ACTION_PROCESS_TECH::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &,
                                             FILE_TABLE const &, RULE_CACHE const &) const
{
    sources.append(PATHS::logical_path(source));
    for (PHYSICAL_PATH const &path : {parsed_path, old_source_path, agf_path})
        targets.append(TARGET_FILE(path, PATHS::logical_path(path), false));
}

// Tech meshes are shapes only: whatever stands at one place is one vertex.
void ACTION_PROCESS_TECH::merge_tech_vertices()
{
    VEX2_LOADER::DUPLICATE_OPTIONS options;
    options.compare_normals = false;
    options.compare_colours = false;
    options.compare_uvws = false;
    options.split_by_frames = false;
    options.frame_cosine = 0;

    TECH_FILTER const filter;
    for (VEX2_LOADER::VEX2_STATIC_MESH *const mesh : scene->static_meshes) {
        if (filter.mesh(*mesh))
            VEX2_LOADER::remove_duplicates_from_mesh(*mesh, options);
    }
}

ACTION_INTERFACE::STATUS ACTION_PROCESS_TECH::run(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    set_up_tdb_output();
    if (!scene) {
        output_line("No scene has been prepared from '" + source + "'!", 2);
        return FAILED;
    }
    add_output_line(QStringLiteral("Parsing tech vx2..."));
    add_output_line(QStringLiteral("  Removing duplicate vertices..."));
    merge_tech_vertices();

    QString const scratch = source + ".parsed";  // between the two converters, beside the source
    QFile::remove(scratch);
    QDir().mkpath(parsed_path.section('/', 0, -2));
    if (!add_progress(300))
        return FAILED;

    add_output_line(QStringLiteral("  Converting vex2..."));
    KN_STD::SET<KN::String> references;
    if (!TOOLDATABUILDER::MESH::RIGID_MODEL_TECH_PROCESSOR::convert_vex(*scene, wide(source), wide(scratch), true,
                                                                        TECH_FILTER(), references)) {
        output_line(QStringLiteral("Failed to convert tech.vx2!"), 2);
        QFile::remove(scratch);
        return FAILED;
    }
    add_progress(300);

    add_output_line(QStringLiteral("  Converting vex2..."));
    RULE const node_rule = rules.get(PATHS::logical_path(source), QStringLiteral("RigidNodeV2"));
    bool const can_burn = flag_text(node_rule.value(QStringLiteral("CanBurn")));
    KN::String const parsed = local_8_bit(parsed_path);
    CORVANEUTILITY::BUILDING_DESCRIPTION const description(local_8_bit(scratch), local_8_bit(source + ".collision"),
                                                           parsed, parsed, can_burn, this, incendiary_radius);
    QFile::remove(scratch);
    add_progress(300);

    add_to_perforce(parsed_path, files, false, QString());
    remove_from_perforce(old_source_path, files);
    bool const stored = enter_fragment(references, files, rules);
    add_progress(100);
    return stored ? get_status_by_output() : FAILED;
}

bool ACTION_PROCESS_TECH::enter_fragment(KN_STD::SET<KN::String> const &references, FILE_TABLE const &files,
                                         RULE_CACHE const &rules)
{
    QString const below = "battle/" + folder + "/";
    QString const id = (below + stem + "/tech").toLower();
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(agf_path);
    builder.add_fragment(id, parsed_path, QString());
    for (KN::String const &reference : references)
        builder.add_dependency(id, below + QString::fromLocal8Bit(reference.c_str()), QStringLiteral("all"), QString());
    return add_to_asset_graph_and_save(builder, files, rules);
}
