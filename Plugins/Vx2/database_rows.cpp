// The rows of models in the asset database. A rigid model stands in kestrel_rigid and kestrel_rigid_lod, an animated
// one in kestrel_animated and kestrel_animated_lod; the columns of the two pairs differ in names and types.

#include "Plugins/Vx2/action_remove_rigid_lods.h"
#include "Plugins/Vx2/vx2_processor.h"

static DB_COLUMN_VALUE column(QVariant const &value, bool flag1 = false, bool flag2 = false)
{
    return {value, flag1, flag2};
}

static UPDATE_DB_TABLE table(QString const &name, DB_ROW const &row) { return {name, {row}, {true, true, true, true}}; }

void VX2_PROCESSOR::add_database_actions(QString const &db_path, QString const &texture_path, bool animated,
                                         QString const &category, bool enabled, QVector<ACTION_INTERFACE *> &actions,
                                         FILE_TABLE const &files)
{
    // Up to the first dot: variants of one model share its rows.
    QString const key = db_path.section('/', -1).section('.', 0, 0).toLower();

    DB_ROW main;
    main[QStringLiteral("key")] = column(key, true);
    main[animated ? QStringLiteral("texture_filename_base") : QStringLiteral("texture_directory")] =
        column(texture_path);
    main[QStringLiteral("category")] = column(category);

    DB_ROW lod;
    if (enabled)
        lod[QStringLiteral("key")] = column(QStringLiteral("0"), true, true);
    lod[QStringLiteral("filename")] = column(db_path);
    lod[QStringLiteral("range")] = animated ? column(0) : column(QStringLiteral("1_1"));
    lod[animated ? QStringLiteral("animated") : QStringLiteral("rigid")] = column(key);

    QVector<UPDATE_DB_TABLE> tables;
    tables.append(table(animated ? QStringLiteral("kestrel_animated") : QStringLiteral("kestrel_rigid"), main));
    tables.append(table(animated ? QStringLiteral("kestrel_animated_lod") : QStringLiteral("kestrel_rigid_lod"), lod));
    create_db_actions(tables, key, enabled, actions, files, true);

    if (!enabled) {
        auto *const remove = new ACTION_REMOVE_RIGID_LODS(key, this);
        actions.append(remove);
        if (actions[0] != remove) {
            actions[0]->add_dependency(remove, false);
            actions[0]->pull(remove);
        }
    }
}
