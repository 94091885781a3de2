// Marks what the programs and tests above this library call; what the plug-in calls is marked by the host interface.
#pragma once

#include "Plugins/Vx2/host/api.h"

#define BUILD_HOST_API HOST_API
