// The search for a quantile on the positive axis.
#ifndef DIST_SEARCH_H_
#define DIST_SEARCH_H_

#include <cmath>
#include <cstdint>
#include <limits>

#include "Dist/constants.h"
#include "Dist/doubleDouble.h"
#include "Dist/elementary.h"
#include "numerics/bits.h"

namespace dist {

// A tail probability at s measured against its target.
struct Measure {
  double excess;  // log(tail / target)
  double slope;   // d log(tail) / d log(s)
  double bend;    // d log|d tail / d log(s)| / d log(s)
};

// A probability as fraction and power, so that a quotient by a denormal keeps its digits.
struct Target {
  double fraction;
  int power;

  explicit Target(double p) { fraction = std::frexp(p, &power); }
};

// Measure of `tail`, whose derivative with respect to log s is `change`.
inline Measure measure(Scaled tail, Scaled change, double bend, const Target& target) {
  if (!(tail.value.hi > 0.0)) return {-std::numeric_limits<double>::infinity(), 0.0, 0.0};
  const double excess = (logarithm(tail.value / target.fraction) +
                         kLn2 * static_cast<double>(tail.exponent - target.power))
                            .hi;
  return {excess, std::ldexp(change.value.hi / tail.value.hi, change.exponent - tail.exponent),
          bend};
}

// The positive double half way between two in the order of representations.
inline double halfWay(double low, double high) {
  const auto a = survmeth::numerics::bitCast<std::uint64_t>(low);
  const auto b = survmeth::numerics::bitCast<std::uint64_t>(high);
  return survmeth::numerics::bitCast<double>(a + (b - a) / 2);
}

// Halley's step for log(tail / target) = 0 in log s, or Newton's where the bend is out of hand.
inline double logStep(const Measure& m) {
  const double newton = -m.excess / m.slope;
  const double divisor = 1.0 + 0.5 * newton * (m.bend - m.slope);
  return divisor > 0.5 && divisor < 2.0 ? newton / divisor : newton;
}

// The s within (low, high) with excess 0; `increasing` says whether the tail grows with s.
// Halley's method in log s, kept within a bracket that is halved whenever a step leaves it or
// progress is slow, so that it ends for every input. The last step, from a point where the excess
// is a small number, leaves only its rounding.
template <class F>
double searchPositive(const F& f, double start, double low, double high, bool increasing) {
  double s = start > low && start < high ? start : halfWay(low, high);
  for (int iteration = 0; iteration < 300; ++iteration) {
    const Measure m = f(s);
    if (m.excess == 0.0) return s;
    ((m.excess > 0.0) == increasing ? high : low) = s;
    const double step = logStep(m);
    // Convergence is cubic, the factor about the square of the slope; rounding keeps the step
    // above the second bound.
    const double size = std::fabs(m.slope);
    const double enough = std::fmax(2e-6 / std::fmax(1.0, size), 0x1p-49 * (1.0 + 1.0 / size));
    if (std::fabs(step) < enough) return s + s * (step * (1.0 + 0.5 * step));
    double next = s * exponentialRounded(std::fmin(std::fmax(step, -700.0), 700.0));
    const bool slow = iteration > 12 && iteration % 2 == 1;
    if (slow || !(next > low && next < high)) next = halfWay(low, high);
    if (!(next > low && next < high)) return low > 0.0 ? s : low;  // neighbours, or underflow
    s = next;
  }
  return s;
}

}  // namespace dist

#endif  // DIST_SEARCH_H_
