// SCHEDULER: which action of a plan a worker does next, so that all edges and groups are kept. Workers meet as seldom
// as they can: each keeps what its own actions made ready, in list order, and helps itself from the others only when it
// has nothing left. So what belongs to one file stays with one worker, and scenes in memory are few.
//
// A worker goes on with the group that it has just served. Otherwise it takes the first in list order of what it has
// made ready itself and of what was ready from the start; with a single worker that is list order among all that are
// ready.
#pragma once

#include "foundation/spin_lock.h"
#include "platform/build_host/plan.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <queue>

class SCHEDULER {
public:
    // `chosen`: in list order. Edges of actions that are not chosen count for nothing.
    SCHEDULER(PLAN const &plan, QVector<PLANNED_ACTION const *> const &chosen, int workers);

    int worker_count() const { return int(workers.size()); }

    // For the thread of worker number `worker`. `next` waits until there is an action for it; -1: all have ended. What
    // a worker did before `end` is seen by those that are given an action which depends on the ended one.
    int next(int worker);
    void end(int worker, int action);

    // For one more thread: whether all have ended, after waiting for it no longer than `time`.
    bool wait_for_all(std::chrono::milliseconds time);

private:
    // Actions by index in the plan, the smallest first.
    using LIST_ORDER = std::priority_queue<int, std::vector<int>, std::greater<int>>;

    struct TURN {
        std::atomic<int> open = 0;  // dependencies that have not ended
        int group = 0;              // place in `groups`; 0: none
        bool is_chosen = false;
    };

    struct GROUP {
        KN::SpinLock lock;
        bool is_busy = false;
        LIST_ORDER waiting;  // ready but for the group
    };

    struct alignas(64) WORKER {
        KN::SpinLock lock;
        LIST_ORDER ready;  // under the lock
        // The worker's own:
        int preferred = -1;  // next of the group that it has just served, which it still holds
        int ended = 0;       // not yet taken off `left`
    };

    void number_groups(QVector<PLANNED_ACTION const *> const &chosen);
    int take(WORKER &from);
    void claim_roots(WORKER &to);
    bool enter_group(int action);
    int leave_group(int group);
    bool sleep(WORKER &own);
    bool is_anything_ready();
    void wake_one();

    PLAN const &plan;
    std::vector<TURN> turns;    // by index in the plan
    std::vector<GROUP> groups;  // the first is not used
    std::vector<WORKER> workers;
    std::vector<int> roots;  // ready from the start, ascending
    alignas(64) std::atomic<std::size_t> next_root = 0;
    alignas(64) std::atomic<int> sleeping = 0;

    std::mutex lock;
    std::condition_variable changed, all_ended;
    int left;  // actions that have not ended, under the lock
};
