// What the plug-in shows beside its two entry points: operations of some action classes, for libraries that derive
// from them. The classes themselves carry no mark, so that nothing else of them leaves the library; the linker's list
// exports.map says the same once more for what the compiler emits into every library.
#pragma once

#include "foundation/api.h"

#define VX2_EXPORT HOUSE_EXPORT
