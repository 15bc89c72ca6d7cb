// Exponentials and logarithms with more digits than a double, by libDist's own short names: a tail
// probability is a power, and a power multiplies the error of its exponent by the exponent's size.
#ifndef DIST_ELEMENTARY_H_
#define DIST_ELEMENTARY_H_

#include "Dist/doubleDouble.h"
#include "numerics/doubleDoubleFunctions.h"
#include "numerics/doubleDoubleTables.h"

namespace dist {

using survmeth::numerics::exponential;
using survmeth::numerics::exponentialFull;
using survmeth::numerics::exponentialGap;
using survmeth::numerics::exponentialMinusOne;
using survmeth::numerics::exponentialOfNegative;
using survmeth::numerics::exponentialRounded;
using survmeth::numerics::kLn2;
using survmeth::numerics::logarithm;
using survmeth::numerics::logarithmGap;
using survmeth::numerics::logarithmOnePlus;

}  // namespace dist

#endif  // DIST_ELEMENTARY_H_
