// The floating-point state that fixed arithmetic relies on: round to nearest, denormals kept, no traps. A process that
// loads foreign libraries cannot count on finding it.
#pragma once

#include "foundation/api.h"

namespace KN {

// Sets the state for the current thread.
FOUNDATION_API void set_fp_state();

// Sets the state, and puts back what it found when it goes.
class FOUNDATION_API FpStateScope {
public:
    FpStateScope();
    ~FpStateScope();
    FpStateScope(FpStateScope const &) = delete;
    FpStateScope &operator=(FpStateScope const &) = delete;

private:
    unsigned found;
};

}  // namespace KN
