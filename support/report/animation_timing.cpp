#include "support/report/animation_timing.h"

#include "foundation/containers.h"
#include "foundation/dynamic_array.h"
#include "foundation/file.h"
#include "foundation/heap.h"
#include "foundation/messages.h"
#include "support/report/milliseconds.h"
#include "support/report/text_form.h"

#include <memory>

namespace SUPPORT {

namespace {

struct STEP {
    char const *name;  // of `names`
    std::uint32_t milliseconds;
};

struct TIMING {
    KN::String section_name = KN::String("NO SECTIONS STARTED - USE ANIMATION_TIMING_INIT");
    std::unique_ptr<KN::FileOut> log_file;
    std::uint32_t start_time = 0, last_time = 0;
    std::int64_t start_memory = 0, last_memory = 0;
    unsigned top_capacity = 0;
    KN::DynamicArray<STEP> top_list;  // the slowest first
    KN_STD::SET<KN::String> names;    // of all steps so far, so that the list may point to them
};
thread_local TIMING timing;

std::int64_t memory() { return KN::MEMORY_TRACKING::current_alloc_size(KN::HEAP_ANIMATION); }

// What a step takes the place of moves on to the next one that it beats; what beats none goes to the end.
void enter(STEP step)
{
    KN::DynamicArray<STEP> &list = timing.top_list;
    if (list.count == timing.top_capacity && step.milliseconds <= list.back().milliseconds)
        return;
    for (STEP &entry : list)
        if (step.milliseconds > entry.milliseconds)
            std::swap(step, entry);
    if (list.count < timing.top_capacity)
        list.append(step);
}

}  // namespace

void ANIMATION_TIMING_INIT(char const *section_name, unsigned top_capacity)
{
    timing.section_name = section_name;
    timing.top_capacity = top_capacity;
    timing.top_list.clear();
    timing.top_list.reserve(top_capacity);
}

bool animation_timing_open_log(KN::String const &path)
{
    animation_timing_close_log();
    auto file = std::make_unique<KN::FileOut>();
    if (!file->open(path, false, true))
        return false;
    timing.log_file = std::move(file);
    return true;
}

void animation_timing_close_log() { timing.log_file.reset(); }

void animation_timing_start()
{
    if (!timing.log_file)
        return;
    timing.start_memory = timing.last_memory = memory();
    timing.start_time = timing.last_time = milliseconds_now();
    KN::MEMORY_TRACKING::report_size("");
}

void animation_timing_step(char const *step_name)
{
    if (!timing.log_file)
        return;
    std::int64_t const allocated = memory();
    std::int64_t const change = allocated - timing.last_memory;
    KN::String const line = text_form("%s,%d,%d,%lld,%lld\r\n", step_name, 0, 0, static_cast<long long>(change),
                                      static_cast<long long>(allocated));
    timing.log_file->write(line.c_str(), unsigned(line.size()) + 1);

    std::uint32_t const now = milliseconds_now();
    std::uint32_t const taken = now - timing.last_time;
    if (timing.top_capacity != 0)
        enter({timing.names.insert(KN::String(step_name)).first->c_str(), taken});
    KN::message_txt(text_form("%s: %s (%ums delta, %ums total, %lldMB allocated total, %lld bytes delta allocated, "
                              "total UniStrings:%d)\n",
                              timing.section_name.c_str(), step_name, taken, now - timing.start_time,
                              static_cast<long long>(allocated >> 20), static_cast<long long>(change), 0));
    timing.last_time = now;
    timing.last_memory = memory();
}

void animation_timing_report()
{
    std::uint32_t const total = milliseconds_now() - timing.start_time;
    if (timing.top_list.empty() || total == 0)
        return;
    std::uint32_t sum = 0;
    for (STEP const &step : timing.top_list)
        sum += step.milliseconds;
    auto const share = [total](std::uint32_t part) { return 100.0 * part / total; };
    KN::message_txt(text_form("%s: Top %u took %u ms (%.1f%%)\n", timing.section_name.c_str(), timing.top_list.count,
                              sum, share(sum)));
    for (unsigned i = 0; i < timing.top_list.count; ++i) {
        STEP const &step = timing.top_list[i];
        KN::message_txt(
            text_form("  %u: %s, %u ms (%.1f%%)\n", i, step.name, step.milliseconds, share(step.milliseconds)));
    }
}

}  // namespace SUPPORT
