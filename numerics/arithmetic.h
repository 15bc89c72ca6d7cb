// What the bits of every result rest on, held at compile time: each operation on doubles is
// rounded to a double, once, and the compiler takes none of them for another.
//
// Contraction into fused operations has no macro to ask for; a test looks for it. Rounding to
// nearest and subnormal numbers are the caller's part.
#ifndef NUMERICS_ARITHMETIC_H_
#define NUMERICS_ARITHMETIC_H_

#include <cfloat>
#include <limits>

#ifdef __FAST_MATH__
#error "fast-math changes results: compile without it"
#endif

static_assert(FLT_EVAL_METHOD == 0, "32-bit x86 needs -msse2 -mfpmath=sse");
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);

#endif  // NUMERICS_ARITHMETIC_H_
