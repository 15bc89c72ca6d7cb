// Standard normal law: distribution function, density, quantile.
#include "Dist/normal.h"

#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "Dist/elementary.h"

namespace dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Below, the series about 0; above, Mills' ratio. The quartiles lie at 0.6745.
constexpr double kCentre = 0.68;
// No double lies between 0 and the tail beyond.
constexpr double kBeyondTail = 38.6;

double polynomial(const double* coefficient, int degree, double x) {
  double sum = coefficient[degree];
  for (int k = degree - 1; k >= 0; --k) sum = sum * x + coefficient[k];
  return sum;
}

// P(Z > x) over the density at x, x >= 0.6. The greater part is formed exactly, so that the
// rounding of the rest, a thousandth or at most a 25th of it, does not show.
DoubleDouble millsRatio(double x) {
  if (x < 5.0) {
    const DoubleDouble top = twoProduct(kMillsBaseTop[1], x) + kMillsBaseTop[0];
    const DoubleDouble bottom =
        (twoProduct(kMillsBaseBottom[2], x) + kMillsBaseBottom[1]) * x + kMillsBaseBottom[0];
    return top / bottom + polynomial(kMillsTop, 9, x) / polynomial(kMillsBottom, 10, x);
  }
  const double z = 1.0 / (x * x);
  const double rest = z * polynomial(kMillsFarTop, 6, z) / polynomial(kMillsFarBottom, 6, z);
  return twoSum(1.0, rest) / x;
}

Scaled density(double x) { return exponential(twoProduct(x, x) * -0.5) * kInvSqrt2Pi; }

// Wichura's AS 241 (Applied Statistics 37 (1988) 477-484), relative error 1e-16: the point from
// which one Newton step leaves only the rounding.
double quantileStart(double q, double smaller) {
  if (std::fabs(q) <= 0.425) {
    constexpr double kTop[8] = {3.3871328727963666080e0, 1.3314166789178437745e2,
                                1.9715909503065514427e3, 1.3731693765509461125e4,
                                4.5921953931549871457e4, 6.7265770927008700853e4,
                                3.3430575583588128105e4, 2.5090809287301226727e3};
    constexpr double kBottom[8] = {1.0,
                                   4.2313330701600911252e1,
                                   6.8718700749205790830e2,
                                   5.3941960214247511077e3,
                                   2.1213794301586595867e4,
                                   3.9307895800092710610e4,
                                   2.8729085735721942674e4,
                                   5.2264952788528545610e3};
    const double r = 0.180625 - q * q;
    return q * polynomial(kTop, 7, r) / polynomial(kBottom, 7, r);
  }
  const double r = std::sqrt(-logarithm(smaller).hi);
  double magnitude;
  if (r <= 5.0) {
    constexpr double kTop[8] = {1.42343711074968357734e0,  4.63033784615654529590e0,
                                5.76949722146069140550e0,  3.64784832476320460504e0,
                                1.27045825245236838258e0,  2.41780725177450611770e-1,
                                2.27238449892691845833e-2, 7.74545014278341407640e-4};
    constexpr double kBottom[8] = {1.0,
                                   2.05319162663775882187e0,
                                   1.67638483018380384940e0,
                                   6.89767334985100004550e-1,
                                   1.48103976427480074590e-1,
                                   1.51986665636164571966e-2,
                                   5.47593808499534494600e-4,
                                   1.05075007164441684324e-9};
    magnitude = polynomial(kTop, 7, r - 1.6) / polynomial(kBottom, 7, r - 1.6);
  } else {
    constexpr double kTop[8] = {6.65790464350110377720e0,  5.46378491116411436990e0,
                                1.78482653991729133580e0,  2.96560571828504891230e-1,
                                2.65321895265761230930e-2, 1.24266094738807843860e-3,
                                2.71155556874348757815e-5, 2.01033439929228813265e-7};
    constexpr double kBottom[8] = {1.0,
                                   5.99832206555887937690e-1,
                                   1.36929880922735805310e-1,
                                   1.48753612908506148525e-2,
                                   7.86869131245613259100e-4,
                                   1.84631831751005468180e-5,
                                   1.42151175831644588870e-7,
                                   2.04426310338993978564e-15};
    magnitude = polynomial(kTop, 7, r - 5.0) / polynomial(kBottom, 7, r - 5.0);
  }
  return q < 0.0 ? -magnitude : magnitude;
}

}  // namespace

Scaled normalTail(double x) {
  const Scaled peak = density(x);
  return peak * millsRatio(x);
}

DoubleDouble normalCentre(double x) {
  const double z = x * x;
  return (kInvSqrt2Pi + z * polynomial(kNormalCentre, 15, z)) * x;
}

}  // namespace dist

double CDFNormalStd(double x) {
  using namespace dist;
  if (std::isnan(x)) return kNaN;
  const double magnitude = std::fabs(x);
  if (magnitude < kCentre) return (normalCentre(x) + 0.5).hi;
  const double tail = magnitude > kBeyondTail ? 0.0 : toDouble(normalTail(magnitude));
  return x < 0.0 ? tail : 1.0 - tail;
}

double PDFNormalStd(double x) {
  using namespace dist;
  if (std::isnan(x)) return kNaN;
  return std::fabs(x) > kBeyondTail + 1.0 ? 0.0 : toDouble(density(x));
}

double InvCDFNormalStd(double p) {
  using namespace dist;
  if (!(p >= 0.0 && p <= 1.0)) return kNaN;
  if (p == 0.0) return -kInfinity;
  if (p == 1.0) return kInfinity;
  const double q = p - 0.5;  // exact where it is used as a number
  const double smaller = q < 0.0 ? p : 1.0 - p;
  const double start = quantileStart(q, smaller);
  if (std::fabs(q) <= 0.25) {
    return start - (normalCentre(start) - q).hi / toDouble(density(start));
  }
  // (tail / p - 1) in scaled numbers: p may be denormal.
  const double x = std::fabs(start);
  int power = 0;
  const double fraction = std::frexp(smaller, &power);
  const Scaled tail = normalTail(x);
  const double ratio = std::ldexp((tail.value / fraction).hi, tail.exponent - power);
  const double refined = x + (ratio - 1.0) * millsRatio(x).hi;
  return q < 0.0 ? -refined : refined;
}
