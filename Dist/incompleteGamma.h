// The regularized incomplete gamma functions.
#ifndef DIST_INCOMPLETE_GAMMA_H_
#define DIST_INCOMPLETE_GAMMA_H_

#include "Dist/doubleDouble.h"

namespace dist {

// Both tails of the gamma law of shape a at x, each with its own relative accuracy, and the
// derivative of the lower one with respect to log x, x^a exp(-x) / Gamma(a).
struct Tails {
  Scaled lower;
  Scaled upper;
  Scaled slope;
};

// a in (0, 1e60], x > 0 and finite.
Tails gammaTails(double a, double x);

}  // namespace dist

#endif  // DIST_INCOMPLETE_GAMMA_H_
