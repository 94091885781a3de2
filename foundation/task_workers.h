// The threads behind task::, those of oneTBB, which other libraries in the process share. Nothing else of task:: knows
// of it.
#pragma once

#include "foundation/task.h"

#include <memory>

namespace task {

class WORKERS {
public:
    explicit WORKERS(unsigned number);
    WORKERS();  // one less than the machine has cores
    ~WORKERS();

    // Not while one is at work. There may be 0; then nobody is ever called.
    void set_number(unsigned wanted);
    unsigned number() const { return count; }

    // `function` is called with `data` on `times` workers, as soon as they are free.
    void call(unsigned times, FUNCTION function, void *data);

private:
    struct THREADS;
    std::unique_ptr<THREADS> threads;
    unsigned count = 0;
};

}  // namespace task
