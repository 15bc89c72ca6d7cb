// The integral of exp(-h(v)) over v >= 0 for a convex h that rises from h(0) = 0: a tail
// probability over the density at its edge. All terms are positive, so nothing cancels.
#ifndef DIST_QUADRATURE_H_
#define DIST_QUADRATURE_H_

#include <cmath>

#include "Dist/constants.h"
#include "Dist/elementary.h"

namespace dist {

// `h` and its derivative `slope` take v; h(v) is about slope0 v + curvature0 v^2 / 2 near 0. Good
// to 1e-16 for gamma and beta laws, in the logarithm or logit of the variable, whose shapes are 16
// or more: there 28 Gauss-Legendre points suffice for the interval where h rises to 40.
template <class H, class Slope>
double tailQuadrature(const H& h, const Slope& slope, double slope0, double curvature0) {
  constexpr double kDepth = 40.0;  // exp(-40) is nothing beside 1
  double end = 2.0 * kDepth / (slope0 + std::sqrt(slope0 * slope0 + 2.0 * kDepth * curvature0));
  for (int step = 0; step < 8; ++step) {
    const double excess = h(end) - kDepth;
    if (!(std::fabs(excess) > 2.0)) break;
    end -= excess / slope(end);
  }
  const double half = 0.5 * end;
  constexpr int kHalfRule = sizeof kLegendreNode / sizeof kLegendreNode[0];
  double sum = 0.0;
  for (int i = kHalfRule - 1; i >= 0; --i) {  // from the far end, where the terms are small
    sum += kLegendreWeight[i] * exponentialOfNegative(h(half * (1.0 + kLegendreNode[i])));
  }
  for (int i = 0; i < kHalfRule; ++i) {
    sum += kLegendreWeight[i] * exponentialOfNegative(h(half * (1.0 - kLegendreNode[i])));
  }
  return half * sum;
}

}  // namespace dist

#endif  // DIST_QUADRATURE_H_
