// Exponentials, logarithms and powers with the same bits on every machine and word size: made of
// +, -, *, / of doubles, no fused operation and nothing of the system's mathematics library.
//
// Rounding has to be to nearest and subnormal numbers kept (no flush to zero). Special values are
// those of C's Annex F; errno is left alone and the exception flags are not to be read. Errors are
// in units of the last place (ulp) of the exact value; docs/accuracy.md has the measured ones.
// Every function is thread-safe and holds no state.
#ifndef NUMERICS_ELEMENTARY_H_
#define NUMERICS_ELEMENTARY_H_

#include <span>

#include "numerics/arithmetic.h"

namespace survmeth::numerics {

// e^x and log(x), any x; log(-0) is -infinity, log of less NaN. Error below 0.52 ulp.
//
// Source Tang, ACM Trans. Math. Software 15 (1989) 144-157 and 16 (1990) 378-400
double exp(double x);
double log(double x);

// e^x - 1 and log(1 + x), relatively exact around 0 too; log1p(-1) is -infinity, log1p of less
// NaN. Error below 1 ulp.
//
// Source Tang, ACM Trans. Math. Software 18 (1992) 211-222 and 16 (1990) 378-400
double expm1(double x);
double log1p(double x);

// x^y, any x and y. Error below 1 ulp; a result that is a double is exact.
//
// Edge pow(x, 0) = pow(1, y) = 1 even where the other is NaN; NaN for x < 0 and y not whole
double pow(double x, double y);

// log |Gamma(x)|, infinite at 0, -1, -2, ... Error below 1 ulp, but next to the zeros between
// negative whole numbers 2^-96.
//
// Source Abramowitz & Stegun, Handbook of Mathematical Functions, 6.1.17, 6.1.33, 6.1.41
double lgamma(double x);

// out[i] = f(in[i]), bit for bit, in a fraction of the time.
//
// In   in[n]   any numbers
// Out  out[n]  in and out are the same array or do not overlap
// Edge in and out of different lengths: the shorter one counts
void expArray(std::span<const double> in, std::span<double> out);
void logArray(std::span<const double> in, std::span<double> out);
void expm1Array(std::span<const double> in, std::span<double> out);
void log1pArray(std::span<const double> in, std::span<double> out);

}  // namespace survmeth::numerics

#endif  // NUMERICS_ELEMENTARY_H_
