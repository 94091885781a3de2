// A function over an index range on the worker threads of task::, as a flat loop or as a reduction that divides and
// combines. Both return when all of it is done, may be nested, and may be called from any thread; the calling thread
// works too. The function runs on several threads at once, each time for a part of the range that is its own. It must
// not throw. What runs as a task has the floating-point state of KN::set_fp_state; a single part of a loop and the left
// halves of a reduction run in that of the calling thread.
#pragma once

#include "foundation/task.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace SUPPORT {

struct INDEX_RANGE {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t grain = 1;  // parts begin at multiples of it, counted from `begin`

    std::uint32_t size() const { return end > begin ? end - begin : 0; }
};

// Lengths for a range of `n` if nobody knows better. A chunk: 20 of them a thread, of at least 2. A grain: 64 of them
// in the range, of at least 64.
std::uint32_t default_chunk(std::uint32_t n);
std::uint32_t default_grain(std::uint32_t n);

// The parts of a loop: equally long but for the last.
class RANGE_PARTS {
public:
    explicit RANGE_PARTS(INDEX_RANGE const &range);

    std::uint32_t count() const { return number; }
    INDEX_RANGE part(std::uint32_t k) const
    {
        std::uint64_t const begin = whole.begin + std::uint64_t(k) * length;
        return {std::uint32_t(begin), std::uint32_t(std::min<std::uint64_t>(begin + length, whole.end)), whole.grain};
    }

private:
    INDEX_RANGE whole;
    std::uint32_t length, number;
};

// body(part) for parts that together are the range; the result is their number. A single part runs on the calling
// thread, and with `inline_flag` the whole range does as one.
template <class BODY>
std::uint32_t parallel_for(INDEX_RANGE const &range, BODY const &body, bool inline_flag = false)
{
    RANGE_PARTS const parts(range);
    if (parts.count() == 0)
        return 0;
    if (inline_flag || parts.count() == 1) {
        body(range);
        return 1;
    }
    struct LOOP {
        RANGE_PARTS const &parts;
        BODY const &body;
        task::Counter running;
        std::atomic<std::uint32_t> next = 0;

        // Which part a task runs is settled when it starts, so that all tasks are alike.
        static void run(void *data)
        {
            LOOP &loop = *static_cast<LOOP *>(data);
            loop.body(loop.parts.part(loop.next.fetch_add(1, std::memory_order_relaxed)));
            loop.running.internal_decrement();
        }
    } loop{parts, body, {}, {}};
    task::Batch batch;
    for (std::uint32_t k = 0; k < parts.count(); ++k) {
        loop.running.internal_increment();
        batch.do_spawn(0, LOOP::run, &loop);
    }
    batch.submit();
    loop.running.wait();
    return parts.count();
}

// Halves [begin, end) until a part is no longer than `chunk`; `state.run(begin, end)` for each part, with copies of
// `state` for the right halves, and `state.join(copy)` where halves meet. The order of joining follows from the range
// and `chunk` alone: sums of floats are the same on each run. A range with nothing in it is one part. `grain` has no
// meaning of its own.
template <class STATE>
void parallel_reduce(std::uint32_t begin, std::uint32_t end, std::uint32_t grain, std::uint32_t chunk, STATE &state)
{
    if (end <= begin || end - begin <= std::max(chunk, 1u)) {
        state.run(begin, end);
        return;
    }
    struct HALF {
        std::uint32_t begin, end, grain, chunk;
        STATE state;
        task::Counter running;

        static void run(void *data)
        {
            HALF &half = *static_cast<HALF *>(data);
            parallel_reduce(half.begin, half.end, half.grain, half.chunk, half.state);
            half.running.internal_decrement();
        }
    };
    std::uint32_t const middle = begin + (end - begin) / 2;
    HALF right{middle, end, grain, chunk, state, {}};
    right.running.internal_increment();
    task::detail::spawn_back(0, 0, 0, HALF::run, &right);
    parallel_reduce(begin, middle, grain, chunk, state);
    right.running.wait();
    state.join(std::as_const(right.state));
}

}  // namespace SUPPORT
