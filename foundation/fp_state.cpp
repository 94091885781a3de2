#include "foundation/fp_state.h"

#if defined(__SSE2__) || defined(_M_X64)

#include <xmmintrin.h>

namespace KN {

// Every exception masked, round to nearest, neither denormals-are-zero nor flush-to-zero.
constexpr unsigned fixed_state = 0x1f80;

void set_fp_state() { _mm_setcsr(fixed_state); }

FpStateScope::FpStateScope() : found(_mm_getcsr()) { set_fp_state(); }
FpStateScope::~FpStateScope() { _mm_setcsr(found); }

}  // namespace KN

#else
#error "the floating-point state of this processor is not known here"
#endif
