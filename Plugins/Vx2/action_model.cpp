#include "Plugins/Vx2/action_model.h"

#include "Plugins/Vx2/host/model_processor.h"
#include "Plugins/Vx2/host/model_statistics.h"
#include "Plugins/Vx2/host/rule_values.h"
#include "Plugins/Vx2/mesh_filters.h"
#include "Plugins/Vx2/rule_reading.h"
#include "Plugins/Vx2/text.h"

// What actions without a prepared scene refer to. Nobody writes it.
static VEX2_LOADER::VEX2 *no_scene = nullptr;

ACTION_MODEL::ACTION_MODEL(VEX2_LOADER::VEX2 *&scene, PHYSICAL_PATH const &physical, LOGICAL_PATH const &textures,
                           QString const &type, bool one_lod, PROCESSOR_INTERFACE *processor)
    : ACTION_VEX2(physical, processor), texture_folder(textures), animation_type(type), single_lod(one_lod),
      scene_slot(scene)
{
    set_target_extension(QStringLiteral(".rigid_model_v2"));
}

ACTION_MODEL::ACTION_MODEL(PHYSICAL_PATH const &physical, LOGICAL_PATH const &textures, QString const &type,
                           bool one_lod, PROCESSOR_INTERFACE *processor)
    : ACTION_MODEL(no_scene, physical, textures, type, one_lod, processor)
{}

ACTION_MODEL::ACTION_MODEL(ACTION_MODEL const &other) = default;
ACTION_MODEL::~ACTION_MODEL() = default;

void ACTION_MODEL::set_final_target_path(PHYSICAL_PATH const &folder) { final_target_path = folder; }

QString ACTION_MODEL::final_folder() const { return final_target_path.isEmpty() ? target_path() : final_target_path; }

// With a backslash, as the description's readers expect the text; what touches the disk takes it for a slash.
PHYSICAL_PATH ACTION_MODEL::description_path() const
{
    return PHYSICAL_PATH(final_folder() + "\\" + target_stem() + "_tech.vx2.parsed");
}

static bool is_tile(QString const &path) { return path.contains(QLatin1String("tiles"), Qt::CaseInsensitive); }

static RULE model_rule(PHYSICAL_PATH const &source, RULE_CACHE const &rules)
{
    return rules.get(PATHS::logical_path(source), QStringLiteral("RigidModelV2"));
}

static bool wants_description(RULE const &rule)
{
    return rule.exists && rule.value(QStringLiteral("CreateRigidModelDescriptionFile")).toBool();
}

void ACTION_MODEL::get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                                      FILE_TABLE const &files, RULE_CACHE const &rules) const
{
    ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);

    QString const folder = final_folder();
    auto const add_target = [&](PHYSICAL_PATH const &file, bool flag) {
        targets.append(TARGET_FILE(file, PATHS::logical_path(file), flag));
    };
    add_target(PHYSICAL_PATH(folder + "/" + target_stem() + target_extension() + ".model_statistics"), false);
    if (wants_description(model_rule(source(), rules)))
        add_target(description_path(), true);

    sources.append(LOGICAL_PATH(QStringLiteral("<raw>/lighting/rigid_materials.xml")));
    sources.append(LOGICAL_PATH(QStringLiteral("<raw>/lighting/lod_types_table.xml")));

    if (is_tile(folder)) {
        for (char const *const name :
             {"/hf_height_map.data", "/hf_height_map_mesh_delta.data", "/terrain_outlines.xml"})
            add_target(PHYSICAL_PATH(folder + name), true);
    }
}

bool ACTION_MODEL::convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                           FILE_TABLE const &files)
{
    KN_STD::VECTOR<float> distances;
    KN_STD::VECTOR<unsigned char> qualities;
    get_lod_distances_and_qualities(distances, qualities, rules, from);

    MODEL_STATISTICS statistics;
    statistics.set_filename(PATHS::logical_path(from).toLatin1().constData());
    QString const folder = texture_folder.section('/', 1);
    statistics.set_texture_folder(wide(folder));
    add_output_line("Texture folder: " + folder);

    QString const lighting =
        PATHS::raw_data() + "/" + TOOLDATABUILDER::MODEL_PROCESSOR::get_lighting_materials_xml().c_str();
    TOOLDATABUILDER::MODEL_PROCESSOR converter(local_8_bit(folder), !animation_type.isEmpty(),
                                               local_8_bit(animation_type.toLower()), single_lod, local_8_bit(lighting),
                                               distances, qualities);
    PHYSICAL_PATH description;
    RULE const rule = model_rule(from, rules);
    if (rule.exists) {
        if (rule.value(QStringLiteral("DisableAlphaTest")).toString().toLower() == QLatin1String("true"))
            converter.disable_alpha_test = true;
        if (rule.value(QStringLiteral("Tree")).toBool())
            converter.tree = true;
        if (rule.value(QStringLiteral("VariableBonesPerVert")).toBool())
            converter.variable_bones_per_vert = true;
        if (wants_description(rule)) {
            description = description_path();
            converter.description_file = local_8_bit(description);
            QVariant const radius = rule.value(QStringLiteral("IncendiaryRadius"));
            converter.incendiary_radius = radius.isNull() ? default_incendiary_radius : radius.toFloat();
        }
    }

    KN::String const target = local_8_bit(to);
    converter.target = target;
    if (!final_target_path.isEmpty())
        converter.final_target = local_8_bit(final_target_path + "/" + target_stem() + target_extension());
    bool const debug = should_output_debug_animation_info(rules);
    KN::String const source_name = local_8_bit(from);
    bool const opened = scene_slot
                            ? converter.load_from_vex2(*scene_slot, DISPLAY_FILTER(), &statistics, source_name, debug)
                            : converter.open_vex2(source_name, &statistics, debug);
    if (!opened || !converter.write(target, &statistics))
        return false;

    if (!description.isEmpty())
        add_to_perforce(description, files, true, QString());
    add_output_line(QStringLiteral("Attempting to write XML file..."));
    // The local encoding rather than Latin-1: the statistics are to be named as the model is on disk.
    if (statistics.save(target))
        add_to_perforce(PHYSICAL_PATH(to + ".model_statistics"), files, false, QString());
    else
        output_line(QStringLiteral("Failed to write statistics XML file."), 1);

    if (is_tile(to)) {
        QString const tile_folder = to.section('/', 0, -2);
        auto const in_tile = [&](char const *name) { return PHYSICAL_PATH(tile_folder + name); };
        add_to_perforce(in_tile("/hf_height_map.data"), files, false, QString());
        add_to_perforce(in_tile("/hf_height_map_mesh_delta.data"), files, false, QString());
        remove_from_perforce(in_tile("/hf_height_map_meshes.data"), files);
        add_to_perforce(in_tile("/terrain_outlines.xml"), files, false, QString());
    }
    return true;
}
