// What the plug-in and the layers around it call on the build host is exported from the library platform_build_host,
// whose sources implement these declarations. A module that uses them includes these headers and links that library.
#pragma once

#include "foundation/api.h"

#if defined(platform_build_host_EXPORTS)
#define HOST_API HOUSE_EXPORT
#else
#define HOST_API HOUSE_IMPORT
#endif
