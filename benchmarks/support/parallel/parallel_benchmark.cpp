// What handing over a part of a range costs, beside tasks of oneTBB; and extremes of many floats on one thread, beside
// a memory copy of them.
#include "support/parallel/parallel_range.h"
#include "support/parallel/value_ranges.h"

#include <benchmark/benchmark.h>
#include <tbb/task_group.h>

#include <cstring>
#include <vector>

namespace {

using namespace SUPPORT;

// Parts of one index each.
constexpr std::uint32_t some_parts = 40;

void EmptyParts(benchmark::State &state)
{
    std::atomic<std::uint32_t> runs = 0;
    for (auto _ : state) {
        runs = 0;
        parallel_for({0, some_parts, 1}, [&](INDEX_RANGE const &) { runs.fetch_add(1, std::memory_order_relaxed); });
        if (runs != some_parts)
            state.SkipWithError("not all parts ran");
    }
    state.SetItemsProcessed(state.iterations() * some_parts);
}
BENCHMARK(EmptyParts)->UseRealTime();

void TbbTasks(benchmark::State &state)
{
    std::atomic<std::uint32_t> runs = 0;
    for (auto _ : state) {
        runs = 0;
        tbb::task_group group;
        for (std::uint32_t i = 0; i < some_parts; ++i)
            group.run([&] { runs.fetch_add(1, std::memory_order_relaxed); });
        group.wait();
        if (runs != some_parts)
            state.SkipWithError("not all tasks ran");
    }
    state.SetItemsProcessed(state.iterations() * some_parts);
}
BENCHMARK(TbbTasks)->UseRealTime();

constexpr std::size_t some_values = 1 << 22;

void MinMax(benchmark::State &state)
{
    task::query::set_number_of_worker_threads(0);
    std::vector<float> values(some_values, 1.0f);
    values[some_values / 3] = -2;
    values[some_values / 2] = 3;
    for (auto _ : state) {
        VALUE_RANGE const range = parallel_min_max(values);
        if (range.least != -2 || range.greatest != 3)
            state.SkipWithError("wrong extremes");
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * some_values * sizeof(float)));
}
BENCHMARK(MinMax)->UseRealTime();

void MemoryCopy(benchmark::State &state)
{
    std::vector<float> const values(some_values, 1.0f);
    std::vector<float> copy(some_values);
    for (auto _ : state) {
        std::memcpy(copy.data(), values.data(), some_values * sizeof(float));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * some_values * sizeof(float)));
}
BENCHMARK(MemoryCopy)->UseRealTime();

}  // namespace
