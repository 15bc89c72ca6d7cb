// Student's t: distribution function and quantile.
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "Dist/elementary.h"
#include "Dist/incompleteBeta.h"
#include "Dist/search.h"

namespace dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// With more degrees of freedom the law is normal to 1e-18, for every t whose tail is a double.
constexpr double kNormalFrom = 1e24;
// With fewer, every finite t lies at the median, and every other quantile beyond the doubles.
constexpr double kPointAtInfinity = 1e-100;
// Beyond, t^2 or its inverse leaves the range in which products are split.
constexpr double kHuge = 1e140;

// P(0 < T < t), P(T > t) and the density times t, each with its own relative accuracy.
struct StudentMasses {
  Scaled centre;
  Scaled tail;
  Scaled slope;
};

DoubleDouble halfComplement(Scaled probability) {
  return DoubleDouble(0.5) - toDoubleDouble(probability);
}

StudentMasses withTail(Scaled tail, Scaled slope) {
  return {{halfComplement(tail), 0}, tail, slope};
}

StudentMasses withCentre(Scaled centre, Scaled slope) {
  return {centre, {halfComplement(centre), 0}, slope};
}

// The point df / (df + t^2), whose beta tail with shapes df / 2 and 1 / 2 is twice the upper tail.
UnitPoint studentPoint(double t, double df) {
  const DoubleDouble square = twoProduct(t, t);
  const DoubleDouble whole = square + df;
  UnitPoint point;
  point.x = DoubleDouble(df) / whole;
  point.y = square / whole;
  point.logX = point.x.hi > 0.7 ? logarithmOnePlus(-point.y) : logarithm(point.x);
  point.logY = point.y.hi > 0.7 ? logarithmOnePlus(-point.x) : logarithm(point.y);
  return point;
}

// t > 0 and finite.
StudentMasses studentMasses(double t, double df) {
  const double a = 0.5 * df;
  const DoubleDouble half = 0.5;
  if (t > kHuge || t * t > kHuge * df) {
    // P(T > t) is x^a / (2 a B(a, 1/2)), x = df / t^2, to the last bit.
    UnitPoint point{0.0, 1.0, logarithm(df) - logarithm(t) * 2.0, 0.0};
    const Scaled slope = betaSlope(a, 0.5, point);
    return withTail(slope * half / a, slope);
  }
  if (t < 1.0 / kHuge) return withTail({0.5, 0}, {0.0, 0});
  const UnitPoint point = studentPoint(t, df);
  const UnitPoint mirror{point.y, point.x, point.logY, point.logX};
  const Scaled slope = betaSlope(a, 0.5, point);
  if (point.y.hi < 0.5 && point.y.hi * (a + 0.5) < 6.0) {
    return withCentre(slope * half * betaSeries(0.5, a, mirror), slope);
  }
  return t < 1.0 ? withCentre(slope * half * betaFraction(0.5, a, mirror), slope)
                 : withTail(slope * half * betaFraction(a, 0.5, point), slope);
}

// First guess of the t > 0 with P(T > t) = p; z is the same quantile of the normal law.
double quantileStart(double p, double z, double df) {
  if (df < 1.0 || z * z > 2.0 * df) {
    // The tail is near x^a / (2 a B(a, 1/2)), x = df / t^2.
    const UnitPoint unit{0.0, 1.0, 0.0, 0.0};
    const Scaled slope = betaSlope(0.5 * df, 0.5, unit);
    const double logTail = (logarithm(slope.value).hi + slope.exponent * kLn2.hi);
    return exponentialRounded((logTail - logarithm(df * p).hi) / df + 0.5 * logarithm(df).hi);
  }
  // The first terms of Cornish and Fisher's expansion.
  const double square = z * z;
  return z * (1.0 + (square + 1.0) / (4.0 * df) +
              ((5.0 * square + 16.0) * square + 3.0) / (96.0 * df * df));
}

// The t > 0 with P(T > t) = p, or where `centre` with P(0 < T < t) = p; 0 < p < 1/2.
double positiveQuantile(double p, bool centre, double df) {
  const Target target(p);
  const auto f = [&](double t) {
    const StudentMasses masses = studentMasses(t, df);
    const double ratio = t / df * t;
    const double bend = (1.0 - df * ratio) / (1.0 + ratio);
    return centre ? measure(masses.centre, masses.slope, bend, target)
                  : measure(masses.tail, -masses.slope, bend, target);
  };
  const double tail = centre ? 0.5 - p : p;
  const double z = centre ? InvCDFNormalStd(0.5 + p) : -InvCDFNormalStd(p);
  return searchPositive(f, quantileStart(tail, z, df), 0.0, kInfinity, centre);
}

}  // namespace
}  // namespace dist

double CDFStudent(double t, double df) {
  using namespace dist;
  if (std::isnan(t) || !(df > 0.0)) return kNaN;
  if (df > kNormalFrom) return CDFNormalStd(t);
  if (t == 0.0) return 0.5;
  if (std::isinf(t)) return t < 0.0 ? 0.0 : 1.0;
  if (df < kPointAtInfinity) return 0.5;
  const StudentMasses masses = studentMasses(std::fabs(t), df);
  if (t < 0.0) return toDouble(masses.tail);
  return (DoubleDouble(1.0) - toDoubleDouble(masses.tail)).hi;
}

double InvCDFStudent(double p, double df) {
  using namespace dist;
  if (!(p >= 0.0 && p <= 1.0) || !(df > 0.0)) return kNaN;
  if (p == 0.0) return -kInfinity;
  if (p == 1.0) return kInfinity;
  if (p == 0.5) return 0.0;
  if (df > kNormalFrom) return InvCDFNormalStd(p);
  const double q = p - 0.5;  // exact where it is used
  if (df < kPointAtInfinity) return q < 0.0 ? -kInfinity : kInfinity;
  const double t = std::fabs(q) <= 0.25 ? positiveQuantile(std::fabs(q), true, df)
                                        : positiveQuantile(q < 0.0 ? p : 1.0 - p, false, df);
  return q < 0.0 ? -t : t;
}
