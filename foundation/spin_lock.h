// KN::SpinLock: for a few instructions at a time, where going to sleep would take longer than waiting. To be used with
// std::lock_guard.
#pragma once

#include "foundation/api.h"

#include <atomic>

namespace KN {

class FOUNDATION_API SpinLock {
public:
    void lock()
    {
        if (is_held.exchange(true, std::memory_order_acquire))
            wait();
    }
    // Sequentially consistent: whoever has left work behind the lock may then look for sleepers, without missing one
    // that has looked for work under the lock before it went to sleep.
    void unlock() { is_held.store(false, std::memory_order_seq_cst); }

private:
    void wait();

    std::atomic<bool> is_held = false;
};

}  // namespace KN
