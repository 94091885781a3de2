// ANGLE_TABLE: sine, cosine and tangent of every ANGLE16, which indexes the arrays directly. Built while the library is
// loaded, constant from then on. Entry i belongs to i read as a signed 16-bit number (0x8000 is -32768 here) times
// 9.58738e-5 radians, a product of 32-bit floats; the entry is the function's value rounded to a float.
#pragma once

#include "support/maths/angle.h"
#include "support/maths/api.h"

namespace SUPPORT {

struct SINE_COSINE {
    float sine, cosine;
};

struct MATHS_API ANGLE_FUNCTIONS {
    ANGLE_FUNCTIONS();

    SINE_COSINE sin_cos[65536];
    float tan[65536];
};

MATHS_API extern ANGLE_FUNCTIONS const ANGLE_TABLE;

}  // namespace SUPPORT
