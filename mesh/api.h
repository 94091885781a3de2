// What the mesh library shows to others.
#pragma once

#include "foundation/api.h"

#if defined(mesh_EXPORTS)
#define MESH_API HOUSE_EXPORT
#else
#define MESH_API HOUSE_IMPORT
#endif
