// x^y = e^(y log x), the logarithm and its product with y in double-double arithmetic: what they
// lose, e^ multiplies by up to 745.
#include <cmath>
#include <cstdint>
#include <limits>

#include "numerics/doubleDouble.h"
#include "numerics/elementary.h"
#include "numerics/expScaled.h"
#include "numerics/logKernel.h"

namespace survmeth::numerics {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// log(x) to about 2^-67 relative, x positive and finite.
DoubleDouble longLogarithm(double x) {
  constexpr double kNormal = std::numeric_limits<double>::min();
  const LogReduced l = x < kNormal ? logReduced(x * 0x1p54, -54.0) : logReduced(x, 0.0);
  const double* c = kLogPolynomial;
  const DoubleDouble square = twoProduct(l.r, l.r);
  const double cubic = c[0] + l.r * c[1] + square.hi * (c[2] + l.r * c[3]) +
                       square.hi * square.hi * (c[4] + l.r * c[5]);
  const DoubleDouble linear = twoSum(l.high, l.r);
  const DoubleDouble bent = twoSum(linear.hi, -0.5 * square.hi);
  // log(1 + r + rest) = log(1 + r) + rest / (1 + r) + ...
  const double rest = l.rest - l.rest * l.r;
  const double low =
      (linear.lo + bent.lo) + ((l.r * square.hi * cubic - 0.5 * square.lo) + (rest + l.low));
  return quickTwoSum(bent.hi, low);
}

enum class Whole { kNo, kEven, kOdd };

Whole wholeness(double y) {
  if (std::fabs(y) >= 0x1p53) return Whole::kEven;
  const auto number = static_cast<std::int64_t>(y);
  if (static_cast<double>(number) != y) return Whole::kNo;
  return (number & 1) != 0 ? Whole::kOdd : Whole::kEven;
}

// |x|^y for x zero or infinite, or y infinite; y is not 0, nor |x| 1.
double powerAtTheEnds(double x, double y) { return (x > 1.0) == (y > 0.0) ? kInfinity : 0.0; }

}  // namespace

double pow(double x, double y) {
  if (y == 0.0 || x == 1.0) return 1.0;
  if (std::isnan(x) || std::isnan(y)) return x + y;
  if (y == 1.0) return x;  // exact without it too, only slower
  const double base = std::fabs(x);
  if (std::isinf(y)) return base == 1.0 ? 1.0 : powerAtTheEnds(base, y);
  double sign = 1.0;
  if (std::signbit(x)) {
    const Whole whole = wholeness(y);
    if (whole == Whole::kNo && x < 0.0 && base != kInfinity) return kNan;
    if (whole == Whole::kOdd) sign = -1.0;
  }
  if (base == 0.0 || base == kInfinity) return sign * powerAtTheEnds(base, y);
  if (base == 1.0) return sign;
  // Here |log x| is 2^-53 at least, so that a larger power is out of range, either way.
  if (std::fabs(y) > 0x1p64) return sign * powerAtTheEnds(base, y);
  const DoubleDouble logarithm = longLogarithm(base);
  const DoubleDouble product = twoProduct(y, logarithm.hi);
  const DoubleDouble exponent = quickTwoSum(product.hi, product.lo + y * logarithm.lo);
  return sign * expScaled(exponent.hi, exponent.lo);
}

}  // namespace survmeth::numerics
