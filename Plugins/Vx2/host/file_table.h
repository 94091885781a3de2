// The table of all files of a tree: what stands below its roots and what the planned actions will write there, in the
// ascending order of logical paths.
#pragma once

#include "Plugins/Vx2/host/lockable_map.h"
#include "Plugins/Vx2/host/paths.h"

#include <QtCore/QVector>

class ACTION_INTERFACE;

struct FILE_ENTRY {
    enum STATE : int {
        PRESENT = 0,
        DELETED = 1,  // known from earlier builds or from the depot, not on disk: planners pass it by
        PLANNED = 2,  // not on disk; an action of the plan has it as a target
    };

    PHYSICAL_PATH physical;
    int state = PRESENT;
    QVector<ACTION_INTERFACE *> actions;  // those that write it, in the order of the plan
    qint64 size = -1;                     // bytes, when the tree was listed; -1: not on disk; -2: on disk, not asked
    qint64 time = 0;                      // last change, nanoseconds since 1970, when the tree was listed

    static constexpr qint64 not_asked = -2;
    bool is_on_disk() const { return size != -1; }
};

using FILE_TABLE = LOCKABLE_MAP<LOGICAL_PATH, FILE_ENTRY *>;

// A look-up of the table by the action that runs on this thread: the host keeps what was asked for, found or not, and
// runs the action again when the answer changes. The file's contents do not count, unless it is opened too.
HOST_API void note_look_up(LOGICAL_PATH const &path, bool found);
// The same for a path that was not found in any case of its letters.
HOST_API void note_folded_look_up(LOGICAL_PATH const &path);
