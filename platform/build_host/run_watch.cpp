#include "platform/build_host/run_watch.h"

#include <utility>

namespace {
thread_local RUN_WATCH *thread_watch = nullptr;
}

RUN_WATCH *run_watch() { return thread_watch; }

RUN_WATCH *set_run_watch(RUN_WATCH *watch) { return std::exchange(thread_watch, watch); }

void note_look_up(LOGICAL_PATH const &path, bool found)
{
    if (thread_watch)
        thread_watch->file_looked_up(path, found ? LOOK_UP::FOUND : LOOK_UP::ABSENT);
}

void note_folded_look_up(LOGICAL_PATH const &path)
{
    if (thread_watch)
        thread_watch->file_looked_up(LOGICAL_PATH(path.toLower()), LOOK_UP::ABSENT_FOLDED);
}
