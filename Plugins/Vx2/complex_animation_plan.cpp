#include "Plugins/Vx2/action_complex_animation.h"
#include "Plugins/Vx2/host/host_messages.h"
#include "Plugins/Vx2/text.h"
#include "Plugins/Vx2/vx2_planning.h"

#include <QtCore/QDir>

using TOOLDATABUILDER::BONE_NAME_TABLE;

// The skeletons of the tree. Listed once a process, as soon as one is valid: one that is added later is not seen. While
// none is, each call lists them and warns again.
static KN_STD::VECTOR<BONE_NAME_TABLE> const &bone_tables()
{
    static KN_STD::VECTOR<BONE_NAME_TABLE> bone_table_cache;
    if (!bone_table_cache.empty())
        return bone_table_cache;
    QString const extension = QStringLiteral(".bone_table");
    QDir const folder(PATHS::raw_data() + "/animations/skeletons/");
    for (QString const &entry : folder.entryList({"*" + extension})) {
        BONE_NAME_TABLE const table(local_8_bit(entry.chopped(extension.size())));
        if (table.valid)
            bone_table_cache.push_back(table);
        else
            HOST_MESSAGES::warning(QStringLiteral("Complex Animations"), QStringLiteral("%1 is invalid!").arg(entry));
    }
    return bone_table_cache;
}

void VX2_PROCESSOR::plan_complex_animation(PLANNING &planning, SCENE_FILE const &file)
{
    RULE const rule = planning.rules.get(file.logical, QStringLiteral("ComplexAnimation"));
    if (!rule.exists)
        return;
    auto *const complex = new ACTION_COMPLEX_ANIMATION(file.physical, bone_tables(), this);
    file.set_target_from_rule(*complex, rule, false);
    planning.result.append(complex);
}
