// What the library of shared mathematics shows to others.
#pragma once

#include "foundation/api.h"

#if defined(support_maths_EXPORTS)
#define MATHS_API HOUSE_EXPORT
#else
#define MATHS_API HOUSE_IMPORT
#endif
