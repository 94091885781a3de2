// What a run asks of those around it: the up-to-date state says which actions are stale and keeps the books while they
// run, the display shows them. The scheduler knows only these interfaces, so that it can be tested without a disk.
#pragma once

#include "platform/build_host/api.h"
#include "platform/build_host/planned_action.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <cstdint>

// The up-to-date state as the scheduler sees it. `status` values are those of ACTION_INTERFACE::STATUS.
class RUN_STATE {
public:
    virtual ~RUN_STATE() = default;

    // Why the action must run, as one line; empty if it is up to date. Asked after planning, from one thread.
    virtual QString stale_reason(PLANNED_ACTION const &action) = 0;

    // The actions chosen to run, in list order. False: the books cannot be kept and the run must not begin; the line
    // that says why has been output.
    virtual bool run_begins(QVector<PLANNED_ACTION const *> const &scheduled) = 0;

    // On the worker's thread, right before and right after ACTION_INTERFACE::run. What comes back from `ran` is the
    // status that counts: a success without its main target is none. On failure the targets have been put back.
    // False: the action must not run, and the line that says why is among its lines.
    virtual bool action_begins(PLANNED_ACTION const &action) = 0;
    virtual int action_ends(PLANNED_ACTION const &action, int status) = 0;

    // An action that was scheduled and did not run because of another's failure, or because the run was broken off.
    virtual void action_left_out(PLANNED_ACTION const &action) = 0;

    // Once all chosen actions have ended well: why this one must run again in the same run, as stale_reason. Of an
    // action that ran before another one made what it was looking for.
    virtual QString late_reason(PLANNED_ACTION const &) { return {}; }

    // After the last action, on the caller's thread. False if the books could not be finished.
    virtual bool run_ends() = 0;
};

// What came of a look-up of the file table. The last: no path of the table is this one in lower case.
enum class LOOK_UP { FOUND, ABSENT, ABSENT_FOLDED };

// What the running action looks at, told on its own thread. The file table, the rules and the depot calls report to the
// watch of the thread that asks; a thread without a watch costs them one test of a pointer.
class RUN_WATCH {
public:
    virtual void file_looked_up(LOGICAL_PATH const &path, LOOK_UP answer) = 0;
    // A rule was asked for. `path` is empty for that of the whole tree. Whether it exists counts as read.
    virtual void rule_asked(LOGICAL_PATH const &path, QString const &kind, RULE const &rule) = 0;
    // A property of a rule that was asked for, perhaps while planning, and that exists. Its value: rule_answer.
    virtual void property_read(RULE_DATA const &rule, QString const &property) = 0;
    // `present`: the file was on disk before this action (as the table has it).
    virtual void file_booked(PHYSICAL_PATH const &path, bool present) = 0;
    virtual void file_removed(PHYSICAL_PATH const &path) = 0;

protected:
    ~RUN_WATCH() = default;
};

// For the calling thread. Gives the watch that stood before; null takes it away.
BUILD_HOST_API RUN_WATCH *set_run_watch(RUN_WATCH *watch);

// What an action gets for a property, or for the existence of the rule if `property` is empty, as a number: equal for
// equal values of equal type, with absent, null and empty told apart.
BUILD_HOST_API std::uint64_t rule_answer(RULE const &rule, QString const &property);

// The display. Calls come from any worker thread, one at a time.
class RUN_DISPLAY {
public:
    virtual ~RUN_DISPLAY() = default;
    virtual void run_begins(int scheduled, int planned) = 0;
    virtual void action_begins(PLANNED_ACTION const &action, QString const &reason) = 0;
    virtual void action_ends(PLANNED_ACTION const &action, int status) = 0;
    virtual void line(PLANNED_ACTION const &action, QString const &text, int level) = 0;
};
