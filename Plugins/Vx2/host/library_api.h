// Marks of what the libraries that the plug-in calls, other than the build host, show to others. Their declarations
// stand in this folder; each is implemented by the library of the mark's name.
#pragma once

#include "foundation/api.h"

#if defined(platform_conversion_EXPORTS)
#define CONVERSION_API HOUSE_EXPORT
#else
#define CONVERSION_API HOUSE_IMPORT
#endif

#if defined(platform_building_EXPORTS)
#define BUILDING_API HOUSE_EXPORT
#else
#define BUILDING_API HOUSE_IMPORT
#endif

#if defined(platform_asset_graph_EXPORTS)
#define ASSET_GRAPH_API HOUSE_EXPORT
#else
#define ASSET_GRAPH_API HOUSE_IMPORT
#endif

#if defined(platform_engine_EXPORTS)
#define ENGINE_API HOUSE_EXPORT
#else
#define ENGINE_API HOUSE_IMPORT
#endif

#if defined(platform_utility_EXPORTS)
#define UTILITY_API HOUSE_EXPORT
#else
#define UTILITY_API HOUSE_IMPORT
#endif
