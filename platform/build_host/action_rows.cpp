#include "platform/build_host/action_rows.h"

#include "Plugins/Vx2/host/action_remove_from_db.h"
#include "Plugins/Vx2/host/processor.h"
#include "platform/build_host/asset_store.h"
#include "platform/build_host/mix.h"

#include <utility>

namespace {

ASSET_STORE *store = nullptr;

// Assets of different processors keep their removals apart. A plain processor has no prefix.
QString staging_key(ACTION_INTERFACE const &action, QString const &key)
{
    auto const *const rows_of = dynamic_cast<COMPLEX_ASSET_PROCESSOR const *>(action.processor());
    return rows_of ? rows_of->processor_prefix() + key : key;
}

QString const no_database = QStringLiteral("there is no asset database to write to");

}  // namespace

ASSET_STORE *set_asset_store(ASSET_STORE *next) { return std::exchange(store, next); }

ASSET_STORE *asset_store() { return store; }

QString ACTION_DB_GATE::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Wait for the asset of its rows");
    return with_source ? name + QStringLiteral(" (") + key + QLatin1Char(')') : name;
}

QString ACTION_UPDATE_DB::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Update ") + table.name;
    return with_source ? name + QStringLiteral(" (") + key + QLatin1Char(')') : name;
}

ACTION_INTERFACE::STATUS ACTION_UPDATE_DB::run(FILE_TABLE const &, RULE_CACHE const &)
{
    set_up_tdb_output();
    QString line = no_database;
    if (!store || !store->apply(table, staging_key(*this, key), is_patching, line))
        output_line(line, 2);
    else if (is_exporting && table.flags[2])
        store->want_export(table.name, table.flags[3]);
    return get_status_by_output();
}

std::uint64_t ACTION_UPDATE_DB::signature() const
{
    std::uint64_t all = mix_text(mix_text(std::uint64_t(is_patching), table.name), key);
    for (bool const flag : table.flags)
        all = mix(all, flag);
    for (DB_ROW const &row : table.rows) {
        for (auto column = row.begin(); column != row.end(); ++column) {
            all = mix_text(all, column.key());
            all = mix_value(all, column->value);
            all = mix(all, std::uint64_t(column->flag1) * 2 + std::uint64_t(column->flag2));
        }
    }
    return all;
}

ACTION_REMOVE_FROM_DB::ACTION_REMOVE_FROM_DB(QString const &asset_key, QVector<QString> const &tables,
                                             bool export_tables, PROCESSOR_INTERFACE *planned_by)
    : ACTION_TDB(planned_by), key(asset_key), exported_tables(tables), is_exporting(export_tables)
{}

void ACTION_REMOVE_FROM_DB::add_table_name_for_export(QString const &table) { exported_tables.append(table); }

bool ACTION_REMOVE_FROM_DB::remove(QString const &table, QString const &column, QString const &value, bool folded,
                                   bool dry_run, bool &found)
{
    QString line = no_database;
    if (store && store->remove(staging_key(*this, key), table, column, value, folded, dry_run, found, line))
        return true;
    output_line(line, 2);
    return false;
}

QString ACTION_REMOVE_FROM_DB::get_name(bool with_source) const
{
    QString const name = QStringLiteral("Remove rows");
    return with_source ? name + QStringLiteral(" (") + key + QLatin1Char(')') : name;
}

ACTION_INTERFACE::STATUS ACTION_REMOVE_FROM_DB::run(FILE_TABLE const &, RULE_CACHE const &)
{
    set_up_tdb_output();
    if (!remove_rows()) {
        output_line(QStringLiteral("rows of '%1' stay").arg(key), 2);
        return FAILED;
    }
    if (is_exporting && store)
        for (QString const &table : exported_tables)
            store->want_export(table, true);
    return get_status_by_output();
}
