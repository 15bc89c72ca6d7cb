// The regularized incomplete beta function: continued fraction, series, quadrature, quantile.
#include "Dist/incompleteBeta.h"

#include <cmath>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "Dist/elementary.h"
#include "Dist/gammaFunction.h"
#include "Dist/quadrature.h"
#include "Dist/search.h"

namespace dist {
namespace {

// Above, the continued fraction needs more steps than the quadrature costs.
constexpr double kQuadratureFrom = 3000.0;

// Below, the fraction is formed in double-double: it is short, and the quantile keeps more of its
// error, or the other tail may be small.
constexpr double kDoubleFrom = 16.0;

UnitPoint mirrored(const UnitPoint& point) { return {point.y, point.x, point.logY, point.logX}; }

// a y - b x: how far x lies below the mean, in units of a + b.
DoubleDouble meanExcess(double a, double b, const UnitPoint& point) {
  return point.y * a - point.x * b;
}

Scaled slopeSmallShapes(double a, double b, const UnitPoint& point) {
  const DoubleDouble sum = twoSum(a, b);
  const Scaled powers = exponentialFull(point.logX * a + point.logY * b);
  return powers *
         (gammaOnePlus(sum) / gammaOnePlus(a) / gammaOnePlus(b) * (DoubleDouble(b) / sum) * a);
}

// Gamma(a + b) / Gamma(b) from Stirling's formula with b^a taken out, so that no large
// logarithms cancel; a < kStirlingFrom <= b.
Scaled slopeSmallAndLarge(double a, double b, const UnitPoint& point) {
  const DoubleDouble ratio = DoubleDouble(a) / b;
  const DoubleDouble sum = twoSum(a, b);
  const DoubleDouble exponent = (point.logX + logarithm(b)) * a + point.logY * b +
                                ratio * twoSum(a, -0.5) - (sum - 0.5) * logarithmGap(ratio) +
                                stirling(sum) - stirling(b);
  return exponentialFull(exponent) * (DoubleDouble(a) / gammaOnePlus(a));
}

// relative - log(1 + relative), relative = x / mean - 1; far below the mean 1 + relative has lost
// its digits and the logarithm of x has not.
DoubleDouble gapFromMean(DoubleDouble relative, DoubleDouble logX, double a, double b) {
  if (relative.hi >= -0.5) return logarithmGap(relative);
  return relative - (logX + logarithmOnePlus(DoubleDouble(b) / a));
}

Scaled slopeLargeShapes(double a, double b, const UnitPoint& point) {
  const DoubleDouble excess = meanExcess(a, b, point);
  const DoubleDouble sum = twoSum(a, b);
  const DoubleDouble exponent = stirling(sum) - stirling(a) - stirling(b) -
                                gapFromMean(-(excess / a), point.logX, a, b) * a -
                                gapFromMean(excess / b, point.logY, b, a) * b;
  return exponential(exponent) * kInvSqrt2Pi * squareRoot(a) * squareRoot(DoubleDouble(b) / sum);
}

// In v, minus the change of the logit of t, the density falls from the edge x like exp(-h(v)),
// h(v) = a v + (a + b) log(y + x exp(-v)), here about the edge; the smaller of x and y keeps the
// cancellation mild.
double lowerQuadrature(double a, double b, const UnitPoint& point) {
  const double x = point.x.hi;
  const double y = point.y.hi;
  const double sum = a + b;
  const double excess = meanExcess(a, b, point).hi;
  const double part = std::fmin(x, y);
  const double sign = y < x ? 1.0 : -1.0;
  return tailQuadrature(
      [=](double v) {
        const double gap = exponentialGap(sign * v);
        return excess * v + sum * (part * gap - logarithmGap(part * (gap + sign * v)));
      },
      [=](double v) { return a - sum * x / (x + y / exponentialOfNegative(v)); }, excess,
      sum * x * y);
}

double leading(double value) { return value; }
double leading(DoubleDouble value) { return value.hi; }

// The lower tail over the slope: the continued fraction of DiDonato and Morris (ACM TOMS 18
// (1992) 360-373, section 3), by Lentz's method.
template <class Real>
Real fraction(double a, double b, Real sum, Real x, Real y, Real excess, double tolerance) {
  const Real one = 1.0;
  const Real shape = a;
  Real inverse = one / (shape + 1.0);  // 1 / (a + 2 n + 1)
  Real value = shape * inverse * (excess + 1.0);
  Real top = value;
  Real bottom = 0.0;
  for (int n = 1; n < 20000; ++n) {
    const double count = n;
    const Real before = inverse;
    inverse = one / (shape + (2.0 * count + 1.0));
    const Real falling = (Real(b) - count) * x * before * count;
    const Real numerator = (shape + (count - 1.0)) * ((sum + (count - 1.0)) * x) * before * falling;
    const Real denominator =
        falling + count + (shape + count) * inverse * (excess + 1.0 + (y + 1.0) * count);
    bottom = one / (denominator + numerator * bottom);
    top = denominator + numerator / top;
    const Real factor = top * bottom;
    value = value * factor;
    if (!(std::fabs(leading(factor - one)) >= tolerance)) break;
  }
  return one / value;
}

// First guess of the x where the lower tail is p.
double quantileStart(double p, bool lower, double a, double b) {
  const double tail = lower ? p : 1.0 - p;
  const double z = lower ? -InvCDFNormalStd(p) : InvCDFNormalStd(p);
  if (a >= 1.0 && b >= 1.0) {
    // Abramowitz and Stegun 26.5.22
    const double third = (z * z - 3.0) / 6.0;
    const double inverseA = 1.0 / (2.0 * a - 1.0);
    const double inverseB = 1.0 / (2.0 * b - 1.0);
    const double h = 2.0 / (inverseA + inverseB);
    if (h + third > 0.0) {
      const double w = z * std::sqrt(h + third) / h -
                       (inverseB - inverseA) * (third + 5.0 / 6.0 - 2.0 / (3.0 * h));
      return a / (a + b * exponentialRounded(2.0 * w));
    }
  }
  // The lower tail is near x^a / (a B(a, b)), with B(a, b) near Gamma(a) / (b + (a - 1) / 2)^a.
  const double logGamma = a < kStirlingFrom ? logarithm(gammaOnePlus(a)).hi : 0.0;
  const double base = std::fmax(b + 0.5 * (a - 1.0), 0.5 * b);
  return exponentialRounded((logarithm(tail).hi + logGamma) / a - logarithm(base).hi);
}

}  // namespace

UnitPoint unitPoint(double x, bool complement) {
  const UnitPoint point = {x, twoSum(1.0, -x), logarithm(x), logarithmOnePlus(-x)};
  return complement ? mirrored(point) : point;
}

Scaled betaSlope(double a, double b, const UnitPoint& point) {
  if (a > b) return betaSlope(b, a, mirrored(point));
  if (b < kStirlingFrom) return slopeSmallShapes(a, b, point);
  return a < kStirlingFrom ? slopeSmallAndLarge(a, b, point) : slopeLargeShapes(a, b, point);
}

DoubleDouble betaSeries(double a, double b, const UnitPoint& point) {
  const DoubleDouble sum = twoSum(a, b);
  DoubleDouble term = 1.0;
  DoubleDouble total = 1.0;
  for (int n = 0; n < 5000 && term.hi > 0x1p-75 * total.hi; ++n) {
    term = term * (point.x * (sum + static_cast<double>(n))) / twoSum(a, n + 1.0);
    total = total + term;
  }
  return total / a;
}

DoubleDouble betaFraction(double a, double b, const UnitPoint& point) {
  return fraction<DoubleDouble>(a, b, twoSum(a, b), point.x, point.y, meanExcess(a, b, point),
                                0x1p-75);
}

double betaFractionDouble(double a, double b, const UnitPoint& point) {
  return fraction<double>(a, b, a + b, point.x.hi, point.y.hi, meanExcess(a, b, point).hi, 0x1p-51);
}

Tails betaTails(double a, double b, const UnitPoint& point) {
  if (meanExcess(a, b, point).hi < 0.0) {
    const Tails tails = betaTails(b, a, mirrored(point));
    return {tails.upper, tails.lower, tails.slope};
  }
  const Scaled slope = betaSlope(a, b, point);
  const double smaller = std::fmin(a, b);
  Scaled lower;
  if (smaller >= kQuadratureFrom) {
    lower = slope * lowerQuadrature(a, b, point);
  } else if (smaller < kDoubleFrom) {
    lower = slope * betaFraction(a, b, point);
  } else {
    lower = slope * betaFractionDouble(a, b, point);
  }
  return {lower, {DoubleDouble(1.0) - toDoubleDouble(lower), 0}, slope};
}

BetaQuantile betaQuantile(double p, bool lower, double a, double b) {
  // Beyond these sizes the law is a point, or the quantile an inverse power of the larger shape.
  constexpr double kLargest = 1e100;
  constexpr double kPoint = 1e40;
  // With a smaller shape the quantile, about p^(1 / a), is less than any double.
  constexpr double kVanishing = 1e-100;
  if (a < kVanishing) return {0.0, 1.0};
  const double larger = std::fmax(a, b);
  if (larger > kLargest) {
    if (std::fmin(a, b) > kPoint) {
      return {1.0 / (1.0 + b / a), 1.0 / (1.0 + a / b)};
    }
    const double factor = kLargest / larger;
    BetaQuantile q = betaQuantile(p, lower, std::fmin(a, kLargest), std::fmin(b, kLargest));
    (a > b ? q.y : q.x) *= factor;
    return q;
  }

  const Target target(p);
  double start = quantileStart(p, lower, a, b);
  bool complement = start > 0.5;
  if (complement) start = 1.0 - start;
  for (int attempt = 0;; ++attempt) {
    const auto f = [&](double s) {
      const UnitPoint point = unitPoint(s, complement);
      const Tails tails = betaTails(a, b, point);
      const Scaled change = tails.slope / (complement ? -point.x : point.y);
      const double odds = point.x.hi / point.y.hi;
      const double bend = complement ? b - (a - 1.0) / odds : a - (b - 1.0) * odds;
      return lower ? measure(tails.lower, change, bend, target)
                   : measure(tails.upper, -change, bend, target);
    };
    const double s = searchPositive(f, start, 0.0, 1.0, lower != complement);
    // The smaller of x and y is the one that is searched, so that both are accurate.
    if (s <= 0.5 || attempt == 1) {
      return complement ? BetaQuantile{1.0 - s, s} : BetaQuantile{s, 1.0 - s};
    }
    complement = !complement;
    start = 1.0 - s;
  }
}

}  // namespace dist
