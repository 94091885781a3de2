#include "Plugins/Vx2/vx2_processor.h"

#include "Plugins/Vx2/host/action_convert.h"
#include "Plugins/Vx2/vx2_planning.h"

#include <QtCore/QStringBuilder>

VX2_PROCESSOR::VX2_PROCESSOR() { setup_dc("MOX_Vx2", 4); }

VX2_PROCESSOR::~VX2_PROCESSOR() = default;

QString VX2_PROCESSOR::get_name() const { return QStringLiteral("Vx2"); }

QStringList VX2_PROCESSOR::get_affected_directories() const { return {}; }

QString VX2_PROCESSOR::processor_prefix() const { return QStringLiteral("mox_rigid_"); }

static bool is_patching_enabled(RULE_CACHE const &rules)
{
    RULE const rule = rules.get_global(QStringLiteral("RigidDatabasePatching"));
    QString const text = rule.value(QStringLiteral("Enabled")).toString().toLower();
    return text != QLatin1String("false") && text != QLatin1String("0");
}

QVector<ACTION_INTERFACE *> VX2_PROCESSOR::plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules)
{
    PLANNING planning{files, rules, is_patching_enabled(rules)};
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        if (!entry.key().endsWith(QLatin1String(".vx2")) || entry.value()->state == FILE_ENTRY::DELETED)
            continue;
        PHYSICAL_PATH const &physical = entry.value()->physical;
        SCENE_FILE const file{entry.key(), physical, PATHS::target_working_data(physical)};
        plan_rigid_model(planning, file);
        plan_generic_mesh(planning, file);
        plan_animation(planning, file);
        plan_complex_animation(planning, file);
    }
    return planning.result;
}

void VX2_PROCESSOR::SCENE_FILE::set_target_from_rule(ACTION_CONVERT &action, RULE const &rule, bool optional) const
{
    QString const property = QStringLiteral("TargetPath");
    if (!rule.value(property).isNull())
        action.set_target_path(working_root % '/' % relative_folder(rule, property));
    else if (!optional)
        action.set_error(QStringLiteral("No target path has been specified in the rule!"));
}
