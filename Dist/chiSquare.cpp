// Chi-square law: upper tail and quantile.
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Dist/gammaFunction.h"
#include "Dist/incompleteGamma.h"
#include "Dist/normal.h"
#include "Dist/search.h"

namespace dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// With more degrees of freedom the law is normal to 1e-24, and a single double as a quantile.
constexpr double kNormalFrom = 1e50;

// The smaller power of the quantile's logarithm: P(X < x) is near x^a / Gamma(a + 1) at first.
double powerStart(double p, double a) {
  const double logGamma = a < kStirlingFrom ? logarithm(gammaOnePlus(a)).hi : 0.0;
  return exponentialRounded((logarithm(p).hi + logGamma) / a);
}

// Wilson and Hilferty, PNAS 17 (1931) 684-688.
double cubeRootStart(double z, double a) {
  const double ninth = 1.0 / (9.0 * a);
  const double root = 1.0 - ninth + z * std::sqrt(ninth);
  return root > 0.1 ? a * root * root * root : 0.0;
}

}  // namespace
}  // namespace dist

double pValChiSq(double x, double df) {
  using namespace dist;
  if (std::isnan(x) || !(df >= 0.0)) return kNaN;
  if (x <= 0.0) return 1.0;
  if (df == 0.0) return 0.0;
  if (std::isinf(x)) return std::isinf(df) ? kNaN : 0.0;
  if (std::isinf(df)) return 1.0;
  if (df > kNormalFrom) return CDFNormalStd((df - x) / std::sqrt(2.0 * df));
  // Half of x is exact unless x is the smallest denormal or nearly so; there the tail is 1.
  return toDouble(gammaTails(0.5 * df, std::fmax(0.5 * x, 5e-324)).upper);
}

double InvCDFChiSq(double p, double df) {
  using namespace dist;
  if (!(p >= 0.0 && p <= 1.0) || !(df >= 0.0)) return kNaN;
  if (df == 0.0 || p == 0.0) return 0.0;
  if (p == 1.0) return kInfinity;
  if (df > kNormalFrom) return df;
  const double a = 0.5 * df;
  const bool lower = p <= 0.5;
  const Target target(lower ? p : 1.0 - p);
  const auto f = [&](double x) {
    const Tails tails = gammaTails(a, x);
    return lower ? measure(tails.lower, tails.slope, a - x, target)
                 : measure(tails.upper, -tails.slope, a - x, target);
  };
  double start = cubeRootStart(InvCDFNormalStd(p), a);
  if (lower && a < kStirlingFrom && !(start > 0.5 * a)) start = powerStart(p, a);
  // Twice the quantile of the gamma law; where even the smallest double lies beyond it, 0.
  const double half = searchPositive(f, start, 0.0, kInfinity, lower);
  return 2.0 * half;
}
