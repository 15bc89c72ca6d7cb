// log |Gamma(x)| in double-double arithmetic: its parts cancel around 1 and 2, where it is 0.
#include <cmath>
#include <limits>

#include "numerics/doubleDoubleFunctions.h"
#include "numerics/elementary.h"
#include "numerics/gammaTables.h"

namespace survmeth::numerics {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kStirlingFrom = 24.0;  // here nine terms of the series leave 2^-86

// log(Gamma(2 + e)), |e| <= 1/2: Taylor's series, its first terms with all digits.
DoubleDouble aroundTwo(double e) {
  double rest = kLogGammaRest[25];
  for (int k = 24; k >= 0; --k) rest = rest * e + kLogGammaRest[k];
  DoubleDouble sum = rest;
  for (int k = 19; k >= 0; --k) sum = sum * e + kLogGamma[k];
  return (sum * e + kOneMinusEuler) * e;
}

DoubleDouble stirlingSeries(double x) {
  const double inverse = 1.0 / x;
  const double square = inverse * inverse;
  double sum = kStirlingSeries[8];
  for (int k = 7; k >= 0; --k) sum = sum * square + kStirlingSeries[k];
  return (DoubleDouble(x) - 0.5) * logarithm(x) - x + (kHalfLog2Pi + sum * inverse);
}

// x > 0, below 2^200
DoubleDouble ofPositive(double x) {
  if (x < 0.5) return aroundTwo(x) - logarithmOnePlus(x) - logarithm(x);
  if (x < 1.5) return aroundTwo(x - 1.0) - logarithmOnePlus(x - 1.0);
  if (x >= kStirlingFrom) return stirlingSeries(x);
  DoubleDouble product = 1.0;
  while (x >= 2.5) {
    x -= 1.0;
    product = product * x;
  }
  return aroundTwo(x - 2.0) + logarithm(product);
}

// sin(pi x) for 0 < x < 1
DoubleDouble sineOfPi(double x) {
  const DoubleDouble t = kPi * (x > 0.5 ? 1.0 - x : x);
  const DoubleDouble square = t * t;
  DoubleDouble sum = kSine[14];
  for (int k = 13; k >= 0; --k) sum = sum * square + kSine[k];
  return sum * t;
}

}  // namespace

double lgamma(double x) {
  if (std::isnan(x)) return x + x;
  const double size = std::fabs(x);
  if (size == kInfinity || x == 0.0) return kInfinity;
  if (size < 0x1p-60) return -logarithm(size).hi;
  if (x > 0x1p200) {
    // x (log(x) - 1): the rest is lost. The factor keeps products in range.
    const DoubleDouble scaled = (logarithm(x) - 1.0) * (x * 0x1p-100);
    return scaled.hi * 0x1p100;
  }
  if (x > 0.0) return ofPositive(x).hi;
  // Whole numbers are poles, and there is nothing else beyond 2^52.
  if (size >= 0x1p52) return kInfinity;
  const double part = size - static_cast<double>(static_cast<long long>(size));
  if (part == 0.0) return kInfinity;
  // Gamma(-x) Gamma(x) = -pi / (x sin(pi x))
  return (logarithm(kPi / (sineOfPi(part) * size)) - ofPositive(size)).hi;
}

}  // namespace survmeth::numerics
