#include "support/maths/angle_table.h"

namespace SUPPORT {

// In double precision, so that every machine has the same table. The functions are odd or even, so half of the angles
// are enough: the product of a negated number is the negated product.
ANGLE_FUNCTIONS::ANGLE_FUNCTIONS()
{
    for (unsigned i = 0; i <= 0x8000; ++i) {
        double const radians = double(float(i) * radians_per_angle16);
        double const sine = std::sin(radians), cosine = std::cos(radians);
        unsigned const mirrored = (0x10000 - i) & 0xffff;
        // 0x8000 is its own mirror, and negative: it keeps what is stored last.
        sin_cos[i] = {float(sine), float(cosine)};
        sin_cos[mirrored] = {-float(sine), float(cosine)};
        tan[i] = float(sine / cosine);
        tan[mirrored] = -tan[i];
    }
    sin_cos[0].sine = 0;
    tan[0] = 0;
}

ANGLE_FUNCTIONS const ANGLE_TABLE;

}  // namespace SUPPORT
