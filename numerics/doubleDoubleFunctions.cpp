// Exponentials and logarithms in double-double arithmetic.
#include "numerics/doubleDoubleFunctions.h"

#include <cmath>
#include <limits>

#include "numerics/doubleDoubleTables.h"

namespace survmeth::numerics {
namespace {

constexpr double kTooSmall = -1e5;  // exp of less is 0 whatever it is multiplied with here
constexpr double kInvLn2 = 0x1.71547652b82fep+0;
constexpr double kSqrtHalf = 0x1.6a09e667f3bcdp-1;

// Powers of two are taken out of an exponent: x = power ln 2 + rest, |rest| <= 0.35.
struct Reduced {
  double power;
  DoubleDouble rest;
};

Reduced reduce(DoubleDouble x) {
  const double power = std::floor(x.hi * kInvLn2 + 0.5);
  return {power, x - kLn2 * power};
}

// exp(r) = 1 + r + r^2/2 + r^3 p(r), |r| <= 0.35; p needs a double only.
DoubleDouble shortExponential(DoubleDouble r) {
  double p = kExpTail[12];
  for (int k = 11; k >= 0; --k) p = p * r.hi + kExpTail[k];
  const DoubleDouble square = r * r;
  return DoubleDouble(1.0) + (r + (square * 0.5 + square.hi * (r.hi * p)));
}

// s^2 (1/3 + s^2/5 + ...), z = s^2 <= 0.0295, so that atanh(s) = s + s times this.
DoubleDouble atanhTail(DoubleDouble z) {
  double rest = kAtanhRest[9];
  for (int k = 8; k >= 0; --k) rest = rest * z.hi + kAtanhRest[k];
  DoubleDouble sum = rest;
  for (int k = 9; k >= 0; --k) sum = sum * z + kAtanh[k];
  return sum * z;
}

// log(1 + m) for 1 + m within [sqrt(1/2), sqrt(2)].
DoubleDouble nearLogarithm(DoubleDouble m) {
  const DoubleDouble s = m / (m + 2.0);
  return (s + s * atanhTail(s * s)) * 2.0;
}

bool near(double m) { return m > -0.2928 && m < 0.4142; }

}  // namespace

Scaled exponential(DoubleDouble x) {
  if (x.hi < kTooSmall) return {0.0, 0};
  const Reduced r = reduce(x);
  return {shortExponential(r.rest), static_cast<int>(r.power)};
}

DoubleDouble exponentialMinusOne(DoubleDouble x) {
  // Taylor's series at x / 8, then three doublings exp(2 y) - 1 = 2 d + d^2.
  const DoubleDouble y{x.hi * 0.125, x.lo * 0.125};
  double rest = kInverseFactorialRest[5];
  for (int k = 4; k >= 0; --k) rest = rest * y.hi + kInverseFactorialRest[k];
  DoubleDouble sum = rest;
  for (int k = 9; k >= 1; --k) sum = sum * y + kInverseFactorial[k];
  sum = sum * y;
  for (int doubling = 0; doubling < 3; ++doubling) sum = sum * 2.0 + sum * sum;
  return sum;
}

Scaled exponentialFull(DoubleDouble x) {
  if (x.hi < kTooSmall) return {0.0, 0};
  const Reduced r = reduce(x);
  return {exponentialMinusOne(r.rest) + 1.0, static_cast<int>(r.power)};
}

DoubleDouble logarithm(DoubleDouble x) {
  int power = 0;
  double m = std::frexp(x.hi, &power);
  if (m < kSqrtHalf) {
    m *= 2.0;
    --power;
  }
  const DoubleDouble fraction = DoubleDouble(m - 1.0) + std::ldexp(x.lo, -power);
  return nearLogarithm(fraction) + kLn2 * static_cast<double>(power);
}

DoubleDouble logarithmOnePlus(DoubleDouble m) {
  return near(m.hi) ? nearLogarithm(m) : logarithm(m + 1.0);
}

DoubleDouble logarithmGap(DoubleDouble m) {
  if (!near(m.hi)) return m - logarithm(m + 1.0);
  // m - 2 atanh(s) with s = m / (2 + m), where m - 2 s = m s.
  const DoubleDouble s = m / (m + 2.0);
  return s * (m - atanhTail(s * s) * 2.0);
}

double logarithmGap(double m) {
  if (!near(m)) return logarithmGap(DoubleDouble(m)).hi;
  const double s = m / (2.0 + m);
  const double z = s * s;
  double sum = kAtanh[9].hi;
  for (int k = 8; k >= 0; --k) sum = sum * z + kAtanh[k].hi;
  return s * (m - 2.0 * z * sum);
}

double exponentialRounded(DoubleDouble x) {
  if (std::isnan(x.hi)) return x.hi;
  if (x.hi > 800.0) return std::numeric_limits<double>::infinity();
  return toDouble(exponential(x));
}

double exponentialOfNegative(double h) {
  if (!(h < 700.0)) return 0.0;
  const Reduced r = reduce(-h);
  double sum = kExpTail[12];
  for (int k = 11; k >= 0; --k) sum = sum * r.rest.hi + kExpTail[k];
  const double t = r.rest.hi;
  return std::ldexp(1.0 + (t + (r.rest.lo + t * t * (0.5 + t * sum))), static_cast<int>(r.power));
}

double exponentialGap(double v) {
  if (std::fabs(v) > 0.3) {
    const Scaled power = exponential(v);
    const DoubleDouble value = toDoubleDouble(power);
    return (value - 1.0 - v).hi;
  }
  double sum = kExpTail[9];
  for (int k = 8; k >= 0; --k) sum = sum * v + kExpTail[k];
  return v * v * (0.5 + v * sum);
}

}  // namespace survmeth::numerics
