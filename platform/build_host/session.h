// A command's work on one project: what mox.toml describes, the plug-ins, the rules, the files, the plan and the
// up-to-date state, each made when a command first needs it. The programs above only read arguments and print.
#pragma once

#include "platform/build_host/build_lock.h"
#include "platform/build_host/build_state.h"
#include "platform/build_host/file_tree.h"
#include "platform/build_host/plan.h"
#include "platform/build_host/plug_ins.h"
#include "platform/build_host/project.h"
#include "platform/build_host/rule_store.h"
#include "platform/build_host/run.h"

#include <QtCore/QTemporaryDir>

#include <memory>

class BUILD_HOST_API SESSION {
public:
    SESSION();
    ~SESSION();
    // Gives back what others wait for: the lock, the record, the database. All that a program needs to do before it
    // ends: taking a large tree's memory apart would only cost time.
    void close();
    SESSION(SESSION const &) = delete;
    SESSION &operator=(SESSION const &) = delete;

    // Each step says in faults() what is wrong when it answers false; a step takes those before it for granted.

    // `folder`: the project's, or empty for the nearest at or above the working directory. `plug_ins`: modules to load,
    // and folders of such.
    bool open(QString const &folder, QStringList const &plug_ins);
    bool load_plug_ins(QStringList const &plug_ins);  // part of `open`
    bool list_files();                                // and reads the rules
    bool take_lock();                                 // of the tree, until the session ends
    bool open_record();                               // under the lock
    bool open_record_to_read();  // instead, without the lock: as the record stood then; nothing is written
    void make_plan() { make_plan(modules.processors()); }  // list_files has been called
    void make_plan(std::vector<PROCESSOR_INTERFACE *> const &processors);
    void make_state();  // the record is open, make_plan has been called

    // Takes off the disk what the record says the build wrote, and its rows out of the record. `removed` gets the
    // paths. `only_gone`: only what belongs to actions that are no longer planned; there is a state then.
    bool clean(bool only_gone, QStringList &removed);

    PROJECT const &project() const { return current; }
    FILE_TREE &files() { return tree; }
    RULE_STORE &rules() { return *rule_files; }
    PLAN &plan() { return *actions; }
    BUILD_STATE &state() { return *up_to_date; }
    BUILD_RECORD &record() { return rows; }
    ASSET_DATABASE &database() { return *rows_of_assets; }
    std::vector<PROCESSOR_INTERFACE *> processors() const { return modules.processors(); }

    // In the order in which they came; warnings do not end a command.
    QStringList const &faults() const { return fault_lines; }
    QStringList const &warnings() const { return warning_lines; }

    // A path as people give it, physical or logical, as a logical one.
    LOGICAL_PATH logical_path(QString const &told) const;

private:
    PROJECT current;
    PLUG_INS modules;  // outlives the actions
    std::unique_ptr<RULE_STORE> rule_files;
    FILE_TREE tree;
    BUILD_LOCK lock;
    bool has_lock = false;
    std::unique_ptr<QTemporaryDir> record_copy;  // where the record that is only read stands
    BUILD_RECORD rows;
    std::unique_ptr<ASSET_DATABASE> rows_of_assets;
    std::unique_ptr<DEPOT> depot;
    std::unique_ptr<PLAN> actions;
    std::unique_ptr<BUILD_STATE> up_to_date;
    QStringList fault_lines;
    QStringList warning_lines;
};

// Makes a project in `folder`: mox.toml, the folders, a rules.toml to begin with. False with a line in `fault` if there
// is one already or something cannot be written.
BUILD_HOST_API bool init_project(QString const &folder, QString &fault);
