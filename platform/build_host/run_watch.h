// The watch of the calling thread, for the parts of the host that report to it.
#pragma once

#include "platform/build_host/run_hooks.h"

// Null: nobody watches.
RUN_WATCH *run_watch();
