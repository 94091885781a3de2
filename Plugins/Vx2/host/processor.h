// What a plug-in gives the host: a PLUGIN_INTERFACE that hands out processors, each of which plans actions for the
// files of its kind.
#pragma once

#include "Plugins/Vx2/host/database.h"
#include "Plugins/Vx2/host/file_table.h"
#include "Plugins/Vx2/host/rules.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QVector>

class ACTION_INTERFACE;

// The host may ask any number of times between planning runs and uses a processor on one thread only. Processors and
// the actions that they plan belong to the host, which deletes the actions first.
class HOST_API PROCESSOR_INTERFACE {
public:
    PROCESSOR_INTERFACE() = default;
    virtual ~PROCESSOR_INTERFACE();
    PROCESSOR_INTERFACE(PROCESSOR_INTERFACE const &) = delete;
    PROCESSOR_INTERFACE &operator=(PROCESSOR_INTERFACE const &) = delete;

    virtual QString get_name() const = 0;
    // Processors plan in ascending order; those of equal priority in the order in which their plug-in gives them. Each
    // sees the targets of those before it as files. 0 unless overridden.
    virtual int priority() const;
    // Folders, as logical paths, in which the files of this processor lie, for people; empty: the whole tree.
    virtual QStringList get_affected_directories() const;
    // Logical paths of files that stand for something not on disk and are to be in the table all the same.
    virtual QStringList get_virtual_files() const;
    // New actions, linked with each other; they belong to the host from then on.
    virtual QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) = 0;

    // A number that no other call of the process has given; never 0.
    static int allocate_action_group();

    // Name and version of the converter behind this processor's actions; products of another version are out of date.
    QString const &converter_name() const { return converter_text; }
    int converter_version() const { return converter_number; }

protected:
    void setup_dc(char const *converter, int converter_version);

private:
    QString converter_text;
    int converter_number = 0;
};

// A processor whose actions also keep rows of the asset database.
class HOST_API COMPLEX_ASSET_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    // In front of the key of an asset: keys of different processors do not meet.
    virtual QString processor_prefix() const = 0;

protected:
    // Plans the rows of one asset. `actions` receives one action a table, in the tables' order, which write its rows in
    // this order; waiting_actions receives one action, which the caller makes wait for the asset's product: rows are
    // written only behind it. `enabled`: a row that is there is changed in place, else it is removed and entered anew.
    // `export_tables`: tables that change are written out as text at the end of the run.
    void create_db_actions(QVector<UPDATE_DB_TABLE> const &tables, QString const &key, bool enabled,
                           QVector<ACTION_INTERFACE *> &actions, FILE_TABLE const &files, bool export_tables);

    // To be emptied by the caller once it has taken them. What an earlier asset left is dropped.
    QVector<ACTION_INTERFACE *> waiting_actions;

private:
    QString waiting_key;  // that of waiting_actions
};

// Found through Qt's plug-in loader, and never deleted through this face.
class PLUGIN_INTERFACE {
public:
    // New processors on each call; they belong to the caller.
    virtual QVector<PROCESSOR_INTERFACE *> get_processors() = 0;

protected:
    ~PLUGIN_INTERFACE() = default;
};
Q_DECLARE_INTERFACE(PLUGIN_INTERFACE, "PLUGIN_INTERFACE")
