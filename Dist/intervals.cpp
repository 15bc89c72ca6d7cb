// Confidence intervals of proportions and ratios.
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Dist/elementary.h"
#include "Dist/incompleteBeta.h"

namespace dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// z^2 / m (z^2 / m + 4 r (1 - r)): the discriminant of Wilson's equation, where nothing cancels.
double wilsonRoot(double square, double r) {
  return std::sqrt(square * (square + 4.0 * r * (1.0 - r)));
}

// Quantile of the beta law at lower-tail probability p and its complement; NaN outside the domain.
BetaQuantile betaQuantileAt(double p, double a, double b) {
  if (!(a > 0.0 && std::isfinite(a)) || !(b > 0.0 && std::isfinite(b))) return {kNaN, kNaN};
  if (p == 0.0 || p == 1.0) return {p, 1.0 - p};
  return p <= 0.5 ? betaQuantile(p, true, a, b) : betaQuantile(1.0 - p, false, a, b);
}

}  // namespace
}  // namespace dist

void GetInfSupWald(double z, double p, double m, double* lower, double* upper) {
  const double half = z * std::sqrt(p * (1.0 - p) / m);
  *lower = p - half;
  *upper = p + half;
}

void GetInfSupWilson(double z, double p, double m, double c, double* lower, double* upper) {
  using namespace dist;
  *lower = *upper = kNaN;
  if (std::isnan(z) || std::isnan(p) || std::isnan(c) || !(m > 0.0)) return;
  const double square = z * z / m;
  const double below = p - c / m;
  const double above = p + c / m;
  // The product of the roots is r^2 / (1 + z^2 / m), which gives the smaller without cancellation.
  *lower =
      below <= 0.0 ? 0.0 : 2.0 * below * below / (2.0 * below + square + wilsonRoot(square, below));
  *upper = above >= 1.0
               ? 1.0
               : (2.0 * above + square + wilsonRoot(square, above)) / (2.0 * (1.0 + square));
  if (*upper > 1.0) *upper = 1.0;  // by rounding only
}

void GetInfSupClopper(double x, double m, double alpha, double* lower, double* upper) {
  using namespace dist;
  *lower = *upper = kNaN;
  if (std::isnan(x) || std::isnan(m) || !(alpha >= 0.0 && alpha <= 2.0)) return;
  const double p = 0.5 * alpha;
  // The upper bound is taken from the law of the failures, whose lower tail is p too.
  *lower = x <= 0.0 ? 0.0 : betaQuantileAt(p, x, m - x + 1.0).x;
  *upper = x >= m ? 1.0 : betaQuantileAt(p, m - x, x + 1.0).y;
}

void GetInfSupLog(double z, double ratio, double s, double* lower, double* upper) {
  using namespace dist;
  const double size = z * s;
  // The rounding of the product would be multiplied by its size.
  const DoubleDouble exponent =
      std::fabs(z) < 1e150 && std::fabs(s) < 1e150 ? twoProduct(z, s) : DoubleDouble(size);
  *lower = ratio * exponentialRounded(-exponent);
  *upper = ratio * exponentialRounded(exponent);
}
