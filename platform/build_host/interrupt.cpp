#include "platform/build_host/interrupt.h"

#include <atomic>
#include <csignal>

namespace {

std::atomic<bool> requested = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // what a signal handler may touch

void on_signal(int number)
{
    requested.store(true);
    std::signal(number, SIG_DFL);
}

}  // namespace

void install_interrupt_handlers()
{
    std::signal(SIGINT, on_signal);
    std::signal(SIGTERM, on_signal);
}

bool interrupt_requested() { return requested.load(std::memory_order_relaxed); }
