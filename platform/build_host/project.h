// A project: the tree of one game, described by the file mox.toml in its folder. Its [paths], [plug_ins], [database]
// and [depot] are read here; everything else in that file is rules (rule_store.h).
#pragma once

#include "platform/build_host/api.h"
#include "platform/build_host/asset_database.h"
#include "platform/build_host/depot.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

// Absolute paths without a slash at their end; none lies in another, so that a file belongs to one of them.
struct TREE_ROOTS {
    QString raw, old_raw, working, old_working;
};

struct PROJECT {
    QString folder;  // absolute
    TREE_ROOTS roots;
    QString state_folder;  // <working>/.mox: what the host itself keeps; hidden, so no part of the tree
    QStringList plug_ins;  // modules, and folders of such, besides those of the program; physical
    DATABASE_SETTINGS database;
    DEPOT_SETTINGS depot;
};

// The roots under `folder` as they are called unless mox.toml says otherwise.
BUILD_HOST_API TREE_ROOTS usual_roots(QString const &folder);

// Reads `folder`/mox.toml. False, with one line a fault ("mox.toml:3: ..."), if there is none or if it is wrong.
BUILD_HOST_API bool read_project(QString const &folder, PROJECT &project, QStringList &faults);

// The nearest folder at or above `folder` that holds a mox.toml; empty if there is none.
BUILD_HOST_API QString find_project(QString const &folder);

// What PATHS answers from now on. While actions exist, it stays as it is.
BUILD_HOST_API void set_current_roots(TREE_ROOTS const &roots);
