// The asset database as actions use it: rows are written in place, removals wait until a first new row of their key
// comes. Calls come from any worker thread; the store orders them. A false result comes with one line in `fault`.
#pragma once

#include "Plugins/Vx2/host/database.h"
#include "platform/build_host/api.h"

#include <cstdint>

class ASSET_STORE {
public:
    virtual ~ASSET_STORE() = default;

    // Driver and place of the database: rows in another one are out of date.
    virtual std::uint64_t identity() const = 0;

    // Remembers, under `key`, that the rows of `table` whose `column` equals `value` have to go. `folded`: without
    // regard to case; `dry_run`: remembers nothing. `found` becomes true if there are such rows and they would stay
    // (dry run), and is never set to false.
    virtual bool stage_removal(QString const &key, QString const &table, QString const &column, QString const &value,
                               bool folded, bool dry_run, bool &found, QString &fault) = 0;

    // Writes the rows of `table` for the asset `key` in one transaction, together with what is staged under `key`.
    // `in_place`: a present row is changed, else it is removed and entered anew. Repeating it changes nothing.
    virtual bool write_rows(QString const &key, UPDATE_DB_TABLE const &table, bool in_place, QString &fault) = 0;

    // The table is to be written as text at the end of the run, if it has changed.
    virtual void export_table(QString const &table) = 0;
};

// The database of the current project, for actions that run; null: rows cannot be written, and such actions fail.
// Gives the store that stood before. One thread, while no action runs.
BUILD_HOST_API ASSET_STORE *set_asset_store(ASSET_STORE *store);
BUILD_HOST_API ASSET_STORE *asset_store();
