// The files of a project, listed once at the start of a command: the table that planners walk, and the rule files.
#pragma once

#include "Plugins/Vx2/host/file_table.h"
#include "platform/build_host/project.h"

// A rules.toml below a raw root.
struct RULE_FILE {
    QString physical;
    LOGICAL_PATH folder;  // "<raw>/props"
};

class BUILD_HOST_API FILE_TREE {
public:
    FILE_TREE() = default;
    ~FILE_TREE();
    FILE_TREE(FILE_TREE const &) = delete;
    FILE_TREE &operator=(FILE_TREE const &) = delete;

    // Lists all regular files below the four roots. Hidden ones (".name"), rule files and unfinished files are left
    // out, links to folders are not followed. Of a path that stands in both the current and the old tree, the current
    // one counts. A root that does not exist is empty; a folder that cannot be read gives a line in `faults`.
    void scan(TREE_ROOTS const &roots, QStringList &faults);

    // Replaces everything by these files, for trees that exist nowhere. Takes their entries; paths occur once.
    void assign(std::vector<FILE_TABLE::ITEM> entries);

    // Its entries are deleted with the tree, also those that actions inserted.
    FILE_TABLE table;
    std::vector<RULE_FILE> rule_files;  // root first, then in order of their folders
    QStringList unfinished;             // unfinished files (KN::FinishedFile), physical

private:
    void clear();
};
