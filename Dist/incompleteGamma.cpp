// The regularized incomplete gamma functions: series, continued fraction, quadrature.
#include "Dist/incompleteGamma.h"

#include <cmath>

#include "Dist/constants.h"
#include "Dist/elementary.h"
#include "Dist/gammaFunction.h"
#include "Dist/quadrature.h"

namespace dist {
namespace {

constexpr double kTinyShape = 1e-6;

// sum of x^n / ((a + 1) ... (a + n)): the lower tail over x^a exp(-x) / Gamma(a + 1).
DoubleDouble lowerSeries(double a, double x) {
  DoubleDouble term = 1.0;
  DoubleDouble sum = 1.0;
  for (int n = 1; n < 1000 && term.hi > 0x1p-100 * sum.hi; ++n) {
    term = term * x / twoSum(a, n);
    sum = sum + term;
  }
  return sum;
}

// The upper tail over x^a exp(-x) / Gamma(a), x above a + 1 or above 4: Legendre's continued
// fraction 1 / (x + 1 - a - 1 (1 - a) / (x + 3 - a - 2 (2 - a) / (x + 5 - a - ...))), by Lentz.
DoubleDouble upperFraction(double a, double x) {
  const DoubleDouble difference = twoSum(x, -a);
  DoubleDouble value = difference + 1.0;
  DoubleDouble top = value;
  DoubleDouble bottom = 0.0;
  for (int n = 1; n < 1000; ++n) {
    const DoubleDouble numerator = twoSum(a, -n) * static_cast<double>(n);
    const DoubleDouble denominator = difference + (2.0 * n + 1.0);
    bottom = DoubleDouble(1.0) / (denominator + numerator * bottom);
    top = denominator + numerator / top;
    const DoubleDouble factor = top * bottom;
    value = value * factor;
    if (std::fabs((factor - 1.0).hi) < 0x1p-75) break;
  }
  return DoubleDouble(1.0) / value;
}

// Where the shape is next to nothing the upper tail is too, and 1 - lower would lose it.
Tails tinyShapeTails(double a, double x) {
  const DoubleDouble logPower = logarithm(x) * a - logGammaOnePlusSmall(a);
  const DoubleDouble rise = exponentialMinusOne(logPower);
  const DoubleDouble power = rise + 1.0;  // x^a / Gamma(1 + a)
  const Scaled slope = exponentialFull(-x) * (power * a);
  if (x >= 4.0) {
    const Scaled upper = slope * upperFraction(a, x);
    return {{DoubleDouble(1.0) - toDoubleDouble(upper), 0}, upper, slope};
  }
  // lower = power (1 + a sum of (-x)^n / (n! (a + n)))
  DoubleDouble term = 1.0;
  DoubleDouble sum = 0.0;
  for (int n = 1; n < 1000; ++n) {
    term = term * -x / static_cast<double>(n);
    const DoubleDouble part = term / twoSum(a, n);
    sum = sum + part;
    if (std::fabs(part.hi) <= 0x1p-100 * std::fabs(sum.hi)) break;
  }
  sum = sum * a;
  const DoubleDouble upper = -rise - power * sum;
  return {{power + power * sum, 0}, {upper, 0}, slope};
}

Tails smallShapeTails(double a, double x) {
  const DoubleDouble gamma = gammaOnePlus(a);
  const Scaled peak = exponentialFull(logarithm(x) * a - x) / gamma;
  const Scaled slope = peak * a;
  // 1 - lower is taken only where the upper tail is above 1e-9.
  const double change = a < 0.1 ? 4.0 : std::fmax(12.0, a + 1.0);
  if (x < change) {
    const Scaled lower = peak * lowerSeries(a, x);
    return {lower, {DoubleDouble(1.0) - toDoubleDouble(lower), 0}, slope};
  }
  const Scaled upper = slope * upperFraction(a, x);
  return {{DoubleDouble(1.0) - toDoubleDouble(upper), 0}, upper, slope};
}

// In v = |log(t / x)| the density falls like exp(-h(v)) from the edge of the smaller tail.
Tails largeShapeTails(double a, double x) {
  const DoubleDouble difference = twoSum(x, -a);
  const DoubleDouble relative = difference / a;
  const DoubleDouble gap =
      relative.hi < -0.5 ? relative - (logarithm(x) - logarithm(a)) : logarithmGap(relative);
  const Scaled slope = exponential(-(gap * a) - stirling(a)) * kInvSqrt2Pi * squareRoot(a);
  const double distance = std::fabs(difference.hi);
  const double sign = x < a ? -1.0 : 1.0;
  const double integral = tailQuadrature(
      [=](double v) { return x * exponentialGap(sign * v) + distance * v; },
      [=](double v) { return sign * x * (exponentialGap(sign * v) + sign * v) + distance; },
      distance, x);
  const Scaled tail = slope * integral;
  const Scaled rest = {DoubleDouble(1.0) - toDoubleDouble(tail), 0};
  return x < a ? Tails{tail, rest, slope} : Tails{rest, tail, slope};
}

}  // namespace

Tails gammaTails(double a, double x) {
  if (x > 1e6 && x > 2000.0 * a) return {{1.0, 0}, {0.0, 0}, {0.0, 0}};
  if (a < kTinyShape) return tinyShapeTails(a, x);
  return a < kStirlingFrom ? smallShapeTails(a, x) : largeShapeTails(a, x);
}

}  // namespace dist
