#include "Plugins/Vx2/database_rows.h"

static UPDATE_DB_TABLE table(QString const &name, DB_ROW const &row) { return {name, {row}, {true, true, true, true}}; }

static DB_COLUMN_VALUE column(QVariant const &value) { return {value, false, false}; }

QVector<UPDATE_DB_TABLE> model_tables(MODEL_ROWS const &rows)
{
    DB_ROW main;
    main[QStringLiteral("key")] = {rows.key, true, false};
    main[rows.animated ? QStringLiteral("texture_filename_base") : QStringLiteral("texture_directory")] =
        column(rows.texture_path);
    main[QStringLiteral("category")] = column(rows.category);

    DB_ROW lod;
    if (rows.enabled)
        lod[QStringLiteral("key")] = {QStringLiteral("0"), true, true};
    lod[QStringLiteral("filename")] = column(rows.db_path);
    lod[QStringLiteral("range")] = rows.animated ? column(0) : column(QStringLiteral("1_1"));
    lod[rows.animated ? QStringLiteral("animated") : QStringLiteral("rigid")] = column(rows.key);

    QString const main_name = rows.animated ? QStringLiteral("kestrel_animated") : QStringLiteral("kestrel_rigid");
    return {table(main_name, main), table(main_name + "_lod", lod)};
}
