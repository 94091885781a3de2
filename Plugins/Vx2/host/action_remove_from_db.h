// ACTION_REMOVE_FROM_DB: base of the actions that take an asset's old rows out of the asset database. Removals are
// staged under the asset's key and take place together with the first new row of that key; those that no row follows
// are dropped at the end of the run, so a failed model keeps its old rows.
#pragma once

#include "Plugins/Vx2/host/action.h"

class HOST_API ACTION_REMOVE_FROM_DB : public ACTION_TDB {
public:
    // `tables` are exported as text after the run if `export_tables`, together with those of add_table_name_for_export.
    ACTION_REMOVE_FROM_DB(QString const &asset_key, QVector<QString> const &tables, bool export_tables,
                          PROCESSOR_INTERFACE *planned_by);
    void add_table_name_for_export(QString const &table);

    // Stages the removal of the rows whose `column` equals `value`. `folded`: without regard to case; `dry_run`: only
    // counts. `found` becomes true if matching rows would stay; it is never set to false. False, with an error line, if
    // the table cannot be read; a table that does not exist yet has no rows.
    bool remove(QString const &table, QString const &column, QString const &value, bool folded, bool dry_run,
                bool &found);

    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

protected:
    QString key;

    // Calls `remove` for what has to go. True if nothing of it stays.
    virtual bool remove_rows() = 0;

private:
    QVector<QString> exported_tables;
    bool is_exporting;
};
