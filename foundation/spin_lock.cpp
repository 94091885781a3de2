#include "foundation/spin_lock.h"

#include <emmintrin.h>
#include <thread>

namespace KN {

void SpinLock::wait()
{
    for (int tries = 1; is_held.load(std::memory_order_relaxed) || is_held.exchange(true, std::memory_order_acquire);
         ++tries) {
        if (tries % 64 == 0)
            std::this_thread::yield();  // its holder has lost the core
        else
            _mm_pause();
    }
}

}  // namespace KN
