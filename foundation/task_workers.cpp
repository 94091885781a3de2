#include "foundation/task_workers.h"

#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/task_arena.h>

namespace task {

struct WORKERS::THREADS {
    explicit THREADS(unsigned number)
        // Else oneTBB has no more threads than cores.
        : limit(tbb::global_control::max_allowed_parallelism, number + 1),
          // One place is for threads that are not oneTBB's own; none of them ever enters.
          arena(int(number) + 1, 1)
    {}

    tbb::global_control limit;
    tbb::task_arena arena;
};

WORKERS::WORKERS(unsigned number) { set_number(number); }

WORKERS::WORKERS() : WORKERS(unsigned(tbb::info::default_concurrency()) - 1) {}

WORKERS::~WORKERS() = default;

void WORKERS::set_number(unsigned wanted)
{
    threads = std::make_unique<THREADS>(wanted);
    count = wanted;
}

void WORKERS::call(unsigned times, FUNCTION function, void *data)
{
    for (; times > 0; --times)
        threads->arena.enqueue([function, data] { function(data); });
}

}  // namespace task
