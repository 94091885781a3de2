#include "Plugins/Vx2/model_agf_processor.h"

#include "Plugins/Vx2/action_klmodel_agf.h"
#include "Plugins/Vx2/action_material_agf.h"
#include "Plugins/Vx2/action_rigid_agf.h"
#include "Plugins/Vx2/host/action_engine.h"

QString MODEL_AGF_PROCESSOR::get_name() const { return QStringLiteral("ModelAGF"); }

QVector<ACTION_INTERFACE *> MODEL_AGF_PROCESSOR::plan_actions(FILE_TABLE const &files, RULE_CACHE const &)
{
    // One engine for all rigid models; they do not overlap on it. It starts only if one of them has to run.
    auto *const init = new ACTION_INIT_KESTREL(this, true, true, false);
    auto *const cleanup = new ACTION_CLEANUP_KESTREL(init, this);
    int const group = allocate_action_group();
    init->group = cleanup->group = group;
    QVector<ACTION_INTERFACE *> result{init, cleanup};

    LOGICAL_PATH const root = PATHS::logical_path(PHYSICAL_PATH(PATHS::working_data()));
    for (auto entry = files.lowerBound(root); entry != files.end() && entry.key().startsWith(root); ++entry) {
        LOGICAL_PATH const &key = entry.key();
        PHYSICAL_PATH const &physical = entry.value()->physical;
        bool const is_rigid = key.endsWith(QLatin1String(".rigid_model_v2"));
        bool const is_klmodel = key.endsWith(QLatin1String(".klmodel"));
        bool const is_material = key.endsWith(QLatin1String(".xml.material"));
        if (!(is_rigid || is_klmodel || is_material) ||
            physical.contains(QLatin1String("old_working_data"), Qt::CaseInsensitive))
            continue;
        if (is_rigid) {
            auto *const action = new ACTION_RIGID_AGF(key, init, this);
            action->add_dependency(init, true);
            cleanup->add_dependency(action, false);
            action->group = group;
            result.append(action);
        } else if (is_klmodel) {
            result.append(new ACTION_KLMODEL_AGF(physical, this));
        } else {
            result.append(new ACTION_MATERIAL_AGF(physical, this));
        }
    }
    return result;
}
