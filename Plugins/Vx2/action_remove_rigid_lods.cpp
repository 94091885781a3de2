#include "Plugins/Vx2/action_remove_rigid_lods.h"

ACTION_REMOVE_RIGID_LODS::ACTION_REMOVE_RIGID_LODS(QString const &model_key, PROCESSOR_INTERFACE *processor)
    : ACTION_REMOVE_FROM_DB(model_key, QVector<QString>(), true, processor)
{
    set_progress_max(200);
    add_table_name_for_export(QStringLiteral("kestrel_animated_lod"));
    add_table_name_for_export(QStringLiteral("kestrel_rigid_lod"));
}

bool ACTION_REMOVE_RIGID_LODS::remove_rows()
{
    bool found = false;  // rows that stay
    if (!remove(QStringLiteral("kestrel_animated_lod"), QStringLiteral("animated"), key, true, false, found))
        return false;
    add_progress(100);
    if (!remove(QStringLiteral("kestrel_rigid_lod"), QStringLiteral("rigid"), key, true, false, found))
        return false;
    add_progress(100);
    return !found;
}
