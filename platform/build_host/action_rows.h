// The host's own actions for database rows: a gate that waits for the product of an asset, and behind it one action a
// table. They have no files, so they are never out of date by themselves; the product's action pulls the gate.
#pragma once

#include "Plugins/Vx2/host/action.h"
#include "Plugins/Vx2/host/database.h"

#include <cstdint>

class ACTION_DB_GATE final : public ACTION_INTERFACE {
public:
    ACTION_DB_GATE(QString const &asset_key, PROCESSOR_INTERFACE *planned_by)
        : ACTION_INTERFACE(planned_by), key(asset_key)
    {}
    QString get_name(bool with_source) const override;

private:
    QString key;
};

// Writes the rows of one table for an asset; what is staged for removal under its key goes in the same transaction.
class ACTION_UPDATE_DB final : public ACTION_TDB {
public:
    ACTION_UPDATE_DB(UPDATE_DB_TABLE const &rows, QString const &asset_key, bool in_place, bool export_table,
                     PROCESSOR_INTERFACE *planned_by)
        : ACTION_TDB(planned_by), table(rows), key(asset_key), is_patching(in_place), is_exporting(export_table)
    {}
    QString get_name(bool with_source) const override;
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

    UPDATE_DB_TABLE const &table_rows() const { return table; }
    // Of the rows and of the database that they go to.
    std::uint64_t signature() const;

private:
    UPDATE_DB_TABLE table;
    QString key;
    bool is_patching;
    bool is_exporting;
};
