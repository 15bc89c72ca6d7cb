// The regularized incomplete beta function.
#ifndef DIST_INCOMPLETE_BETA_H_
#define DIST_INCOMPLETE_BETA_H_

#include "Dist/doubleDouble.h"
#include "Dist/incompleteGamma.h"

namespace dist {

// A point of the unit interval with its complement and their logarithms, each with its own
// relative accuracy.
struct UnitPoint {
  DoubleDouble x;
  DoubleDouble y;  // 1 - x
  DoubleDouble logX;
  DoubleDouble logY;
};

// The point x, or its complement where `complement`; x in (0, 1).
UnitPoint unitPoint(double x, bool complement);

// x^a y^b / B(a, b): the derivative of the lower tail with respect to the logit of x.
Scaled betaSlope(double a, double b, const UnitPoint& point);

// The lower tail over the slope, by the power series of positive terms: few of them where
// (a + b) x is moderate and x is well below 1. b > 0, a > 0.
DoubleDouble betaSeries(double a, double b, const UnitPoint& point);

// The same by DiDonato and Morris's continued fraction, for x not much above a / (a + b); in
// double-double, or in double where the accuracy of a double is enough.
DoubleDouble betaFraction(double a, double b, const UnitPoint& point);
double betaFractionDouble(double a, double b, const UnitPoint& point);

// Both tails of the beta law at a point, to the accuracy of a double (times the condition number
// where a and b are large), and the slope. a, b in (0, 1e100].
Tails betaTails(double a, double b, const UnitPoint& point);

// Quantile of the beta law where its lower (or else upper) tail is `p` in (0, 1), as the pair of
// the quantile and its complement.
struct BetaQuantile {
  double x;
  double y;
};
BetaQuantile betaQuantile(double p, bool lower, double a, double b);

}  // namespace dist

#endif  // DIST_INCOMPLETE_BETA_H_
