// Exponentials and logarithms with more digits than a double, from basic arithmetic only: a tail
// probability is a power, and a power multiplies the error of its exponent by the exponent's size.
#ifndef NUMERICS_DOUBLE_DOUBLE_FUNCTIONS_H_
#define NUMERICS_DOUBLE_DOUBLE_FUNCTIONS_H_

#include "numerics/doubleDouble.h"

namespace survmeth::numerics {

// exp(x) to about 2^-60, for one factor of a result. 0 for x below -1e5; x above 1e5 and NaN must
// be kept away by the caller.
Scaled exponential(DoubleDouble x);

// exp(x) to about 2^-98, where a difference follows.
Scaled exponentialFull(DoubleDouble x);

// exp(x) - 1 to about 2^-98 relative, |x| <= 0.35.
DoubleDouble exponentialMinusOne(DoubleDouble x);

// log(x) to about 2^-98 relative, x > 0 and finite.
DoubleDouble logarithm(DoubleDouble x);

// log(1 + m), relative accuracy also for small m; m > -1.
DoubleDouble logarithmOnePlus(DoubleDouble m);

// m - log(1 + m), relative accuracy also for small m; m > -1. It is the exponent of every
// gamma-like density relative to its peak.
DoubleDouble logarithmGap(DoubleDouble m);

// The same in double precision.
double logarithmGap(double m);

// exp(x) rounded to a double, any x.
double exponentialRounded(DoubleDouble x);

// exp(-h) in double precision, h >= 0; 0 where h is large or not a number.
double exponentialOfNegative(double h);

// exp(v) - 1 - v in double precision, relative accuracy also for small v; v <= 700.
double exponentialGap(double v);

}  // namespace survmeth::numerics

#endif  // NUMERICS_DOUBLE_DOUBLE_FUNCTIONS_H_
