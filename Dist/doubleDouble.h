// Double-double numbers by libDist's own short names.
#ifndef DIST_DOUBLE_DOUBLE_H_
#define DIST_DOUBLE_DOUBLE_H_

#include "numerics/doubleDouble.h"

namespace dist {

using survmeth::numerics::DoubleDouble;
using survmeth::numerics::quickTwoSum;
using survmeth::numerics::Scaled;
using survmeth::numerics::split;
using survmeth::numerics::squareRoot;
using survmeth::numerics::toDouble;
using survmeth::numerics::toDoubleDouble;
using survmeth::numerics::twoProduct;
using survmeth::numerics::twoSum;

}  // namespace dist

#endif  // DIST_DOUBLE_DOUBLE_H_
