// What a run asks of those around it: the up-to-date state says which actions are stale and keeps the books while they
// run, the display shows them. The scheduler knows only these interfaces, so that it can be tested without a disk.
#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

class LOGICAL_PATH;
class PHYSICAL_PATH;
struct PLANNED_ACTION;  // an action of the plan with its class name, declared sources and targets

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
    virtual void action_begins(PLANNED_ACTION const &action) = 0;
    virtual int action_ends(PLANNED_ACTION const &action, int status) = 0;

    // An action that was scheduled and did not run because of another's failure, or because the run was broken off.
    virtual void action_left_out(PLANNED_ACTION const &action) = 0;

    // After the last action, on the caller's thread. False if the books could not be finished.
    virtual bool run_ends() = 0;
};

// What the running action looks at, told on its own thread. The file table and the rules report to the watch of the
// thread that asks; a thread without a watch costs them one test of a pointer.
class RUN_WATCH {
public:
    virtual void file_looked_up(LOGICAL_PATH const &path, bool found) = 0;
    // `path` is empty for a global rule. `rule` identifies the rule's values as RULE_CACHE knows them.
    virtual void file_booked(PHYSICAL_PATH const &path, bool removed) = 0;

protected:
    ~RUN_WATCH() = default;
};

// The display. Calls come from any worker thread, one at a time.
class RUN_DISPLAY {
public:
    virtual ~RUN_DISPLAY() = default;
    virtual void run_begins(int scheduled, int planned) = 0;
    virtual void action_begins(PLANNED_ACTION const &action, QString const &reason) = 0;
    virtual void action_ends(PLANNED_ACTION const &action, int status) = 0;
    virtual void line(PLANNED_ACTION const &action, QString const &text, int level) = 0;
};
