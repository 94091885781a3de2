// task::, the worker threads of the process. A task is a function and a pointer for it; tasks wait in one queue, from
// which the workers take the oldest. Who waits for a Counter works too, from the newest end: so nested work never
// dead-locks, even without a single worker.
//
// Every call may be made from any thread, tasks included. A task runs with the floating-point state of KN::set_fp_state
// and lets no exception out. `mode`, `mask` and `priority` have no meaning here; 0 is to be given.
#pragma once

#include "foundation/dynamic_array.h"

#include <atomic>

namespace task {

using FUNCTION = void (*)(void *);

namespace query {

// Without the calling thread; perhaps 0. One less than the machine has cores unless it has been set.
FOUNDATION_API unsigned number_of_worker_threads();
// For a program that leaves cores to others. Not while tasks run.
FOUNDATION_API void set_number_of_worker_threads(unsigned number);

}  // namespace query

// How many tasks have not ended: raised by who spawns one, lowered by the task as the last thing it does.
class FOUNDATION_API Counter {
public:
    Counter() = default;
    Counter(Counter const &) = delete;
    Counter &operator=(Counter const &) = delete;

    void internal_increment() { count.fetch_add(1, std::memory_order_relaxed); }
    void internal_decrement();
    // Until it is 0. What the tasks have done is seen then, and the counter may go.
    void wait();

private:
    std::atomic<unsigned> count = 0;
};

namespace detail {

struct TASK {
    FUNCTION function;
    void *data;
};

}  // namespace detail

// Tasks that are handed over together.
class FOUNDATION_API Batch {
public:
    void do_spawn(int mode, FUNCTION function, void *data);
    void submit();

private:
    KN::DynamicArray<detail::TASK> tasks;
};

namespace detail {

// One task at the back of the queue.
FOUNDATION_API void spawn_back(int mode, unsigned mask, int priority, FUNCTION function, void *data);

}  // namespace detail

}  // namespace task
