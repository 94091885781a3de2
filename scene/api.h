// Mark of what the scene library shows to others.
#pragma once

#include "foundation/api.h"

#if defined(scene_EXPORTS)
#define SCENE_API HOUSE_EXPORT
#else
#define SCENE_API HOUSE_IMPORT
#endif
