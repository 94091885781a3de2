// Running a plan: which of its actions have to run, and running them on worker threads in an order that keeps all
// edges and groups.
#pragma once

#include "platform/build_host/plan.h"
#include "platform/build_host/run_hooks.h"

#include <functional>

// Why each action of a plan runs; an empty text: it does not. Actions run because they carry an error, because the
// state calls them stale, because one that runs pulls them or needs what they hold in memory, or because one that runs
// writes a file that they read.
BUILD_HOST_API std::vector<QString> choose_actions(PLAN const &plan, RUN_STATE &state);

struct RUN_OPTIONS {
    int jobs = 0;             // worker threads; 0: one a core. With 1, actions run in list order among those ready
    bool keep_going = false;  // go on with what does not depend on it when an action has failed
    std::function<bool()> interrupted;  // asked now and then; true ends the run early
};

struct RUN_RESULT {
    int done = 0;
    int failed = 0;    // ran and failed, or carried an error
    int left_out = 0;  // did not run, because of a failure or an interruption
    bool interrupted = false;
    bool books_kept = true;  // false: the state could not be recorded, and has said so
    // By index in the plan. IDLE: not chosen. FAILED: also what did not run because a dependency has failed.
    std::vector<ACTION_INTERFACE::STATUS> statuses;

    bool good() const { return failed == 0 && left_out == 0 && !interrupted && books_kept; }
};

// `reasons` as choose_actions gives them. `display` may be null.
BUILD_HOST_API RUN_RESULT run_plan(PLAN const &plan, std::vector<QString> const &reasons, FILE_TREE &files,
                                   RULE_STORE &rules, RUN_OPTIONS const &options, RUN_STATE &state,
                                   RUN_DISPLAY *display);

// Runs one action on this thread as a worker does: what libraries say becomes its lines, no exception comes out, and a
// failure without a line gets one. For run_plan and for tests of single actions.
BUILD_HOST_API ACTION_INTERFACE::STATUS run_action(ACTION_INTERFACE &action, FILE_TABLE const &files,
                                                   RULE_CACHE const &rules);
