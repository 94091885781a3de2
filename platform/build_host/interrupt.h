// Ctrl-C and a polite end from outside: the first one asks the build to stop after the running actions, a second one
// ends the process, which the build record survives.
#pragma once

#include "Plugins/Vx2/host/api.h"

HOST_API void install_interrupt_handlers();
HOST_API bool interrupt_requested();  // from any thread
