// The normal law's tail with an exponent of its own, for the routines built on it.
#ifndef DIST_NORMAL_H_
#define DIST_NORMAL_H_

#include "Dist/doubleDouble.h"

namespace dist {

// P(Z > x) for x >= 0.6.
Scaled normalTail(double x);

// P(0 < Z < x) for |x| <= 1, odd in x.
DoubleDouble normalCentre(double x);

}  // namespace dist

#endif  // DIST_NORMAL_H_
