#include "foundation/task.h"

#include "foundation/fp_state.h"
#include "foundation/spin_lock.h"
#include "foundation/task_workers.h"

#include <condition_variable>
#include <deque>
#include <emmintrin.h>
#include <mutex>

namespace task {

namespace {

using detail::TASK;

// Tasks that wait, and the workers: each is called when there is something to do and goes when nothing is left.
class QUEUE {
public:
    static QUEUE &of_process()
    {
        static QUEUE *const queue = new QUEUE;  // never destroyed: threads may leave it very late
        return *queue;
    }

    unsigned worker_count() const { return workers.number(); }
    void set_worker_count(unsigned number) { workers.set_number(number); }

    void add(TASK const *first, unsigned count)
    {
        unsigned fresh = 0;
        {
            std::lock_guard const guard(lock);
            waiting.insert(waiting.end(), first, first + count);
            unsigned const wanted = active + count < worker_count() ? active + count : worker_count();
            fresh = wanted > active ? wanted - active : 0;
            active += fresh;
        }
        workers.call(
            fresh, [](void *queue) { static_cast<QUEUE *>(queue)->work(); }, this);
        wake_sleepers();
    }

    // The newest task, by a thread that waits. False if there is none.
    bool run_newest()
    {
        TASK task;
        {
            std::lock_guard const guard(lock);
            if (waiting.empty())
                return false;
            task = waiting.back();
            waiting.pop_back();
        }
        run(task);
        return true;
    }

    // Until `count` is 0 or there is work.
    void sleep(std::atomic<unsigned> const &count)
    {
        std::unique_lock guard(sleep_lock);
        sleepers.fetch_add(1, std::memory_order_seq_cst);
        changed.wait(guard, [&] {
            if (count.load(std::memory_order_seq_cst) == 0)
                return true;
            std::lock_guard const queue_guard(lock);
            return !waiting.empty();
        });
        sleepers.fetch_sub(1, std::memory_order_relaxed);
    }

    void wake_sleepers()
    {
        if (sleepers.load(std::memory_order_seq_cst) == 0)
            return;
        std::lock_guard const guard(sleep_lock);
        changed.notify_all();
    }

private:
    static void run(TASK const &task)
    {
        KN::FpStateScope const state;
        task.function(task.data);
    }

    // A worker, until nothing is left to do.
    void work()
    {
        for (;;) {
            TASK task;
            {
                std::lock_guard const guard(lock);
                if (waiting.empty()) {
                    --active;
                    return;
                }
                task = waiting.front();
                waiting.pop_front();
            }
            run(task);
        }
    }

    KN::SpinLock lock;
    std::deque<TASK> waiting;  // the oldest first
    unsigned active = 0;       // workers that have come, or are on their way

    WORKERS workers;

    std::mutex sleep_lock;
    std::condition_variable changed;
    std::atomic<unsigned> sleepers = 0;
};

}  // namespace

unsigned query::number_of_worker_threads() { return QUEUE::of_process().worker_count(); }

void query::set_number_of_worker_threads(unsigned number) { QUEUE::of_process().set_worker_count(number); }

void Counter::internal_decrement()
{
    // The last one must not touch the counter any more: who waits for it may be gone with it.
    if (count.fetch_sub(1, std::memory_order_seq_cst) == 1)
        QUEUE::of_process().wake_sleepers();
}

void Counter::wait()
{
    QUEUE &queue = QUEUE::of_process();
    constexpr int tries_before_sleep = 2000;
    for (int tries = 0; count.load(std::memory_order_acquire) != 0; ++tries) {
        if (queue.run_newest())
            tries = 0;
        else if (tries < tries_before_sleep)
            _mm_pause();
        else
            queue.sleep(count);
    }
}

void Batch::do_spawn(int, FUNCTION function, void *data) { tasks.append(TASK{function, data}); }

void Batch::submit()
{
    if (!tasks.empty())
        QUEUE::of_process().add(tasks.data, tasks.count);
    tasks.clear();
}

void detail::spawn_back(int, unsigned, int, FUNCTION function, void *data)
{
    TASK const task{function, data};
    QUEUE::of_process().add(&task, 1);
}

}  // namespace task
