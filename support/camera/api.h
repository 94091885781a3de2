// What the camera library shows to others.
#pragma once

#include "foundation/api.h"

#if defined(support_camera_EXPORTS)
#define CAMERA_API HOUSE_EXPORT
#else
#define CAMERA_API HOUSE_IMPORT
#endif
