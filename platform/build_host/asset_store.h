// The asset database as actions use it: rows are written at once, removals wait until the first new row of their key
// comes. Calls come from any worker thread. A false result comes with one line in `fault`.
#pragma once

#include "Plugins/Vx2/host/database.h"
#include "platform/build_host/api.h"

class ASSET_STORE {
public:
    virtual ~ASSET_STORE() = default;

    // Which database this is: rows in another one are out of date.
    virtual QString identity() = 0;

    // The file that holds it, physical; empty if none does. No product may take its place.
    virtual QString file() const { return {}; }

    // Enters the rows of one table, in one transaction with the removals that are staged under `key`. `patch`: a row
    // that is there is changed in place; otherwise it is removed and entered anew. Doing it twice does no harm.
    virtual bool apply(UPDATE_DB_TABLE const &table, QString const &key, bool patch, QString &fault) = 0;

    // Stages, under `key`, the removal of the rows of `table` whose `column` equals `value`; `folded`: without regard
    // to case. `dry_run` stages nothing. `found` becomes true if matching rows would stay, and is never set to false.
    virtual bool remove(QString const &key, QString const &table, QString const &column, QString const &value,
                        bool folded, bool dry_run, bool &found, QString &fault) = 0;

    // Has `table` written as text at the end of the run if it has changed since its last export. `book`: and booked.
    virtual void want_export(QString const &table, bool book) = 0;
};

// The database of the current project, for actions that run; null: there is none, and such actions fail. The setter
// gives the store that stood before, and is called while no action runs.
BUILD_HOST_API ASSET_STORE *set_asset_store(ASSET_STORE *store);
BUILD_HOST_API ASSET_STORE *asset_store();
