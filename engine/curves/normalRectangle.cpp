// The probability changes along the way from independence, R(t) = I + t (R - I), by Plackett's
// identity: its derivative by a correlation is the density of the pair at the corners of the pair's
// limits, times the probability of the others given the pair. So four dimensions take one integral
// over probabilities in two, and nothing but R(1) itself is singular.
#include "engine/curves/normalRectangle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "numerics/elementary.h"

namespace survmeth::engine::curves {
namespace {

constexpr double kSqrtTwoPi = dist::kSqrt2Pi.hi;
constexpr double kTwoPi = 2.0 * 0x1.921fb54442d18p+1;
constexpr std::size_t kHalfRule = sizeof dist::kLegendreNode / sizeof dist::kLegendreNode[0];
constexpr std::size_t kRule = 2 * kHalfRule;
// Beyond, a tail is below 1e-18: nothing beside the probabilities that it is added to.
constexpr double kFar = 9.0;
// From here on two variables are one, or one the negative of the other: a quotient of covariances
// does not know better.
constexpr double kSame = 1.0 - 0x1p-50;

// Node i of Gauss and Legendre's rule on [0, 1], and its weight.
double node(std::size_t i) {
  const std::size_t k = i % kHalfRule;
  return 0.5 * (i < kHalfRule ? 1.0 - dist::kLegendreNode[k] : 1.0 + dist::kLegendreNode[k]);
}
double weight(std::size_t i) { return 0.5 * dist::kLegendreWeight[i % kHalfRule]; }

using Nodes = std::array<double, kRule>;

double weighted(const Nodes& exponent, const Nodes& factor) {
  Nodes value;
  numerics::expArray(exponent, value);
  double sum = 0.0;
  for (std::size_t i = 0; i < kRule; ++i) sum += weight(i) * factor[i] * value[i];
  return sum;
}

// The density's integral over the correlations from 0 to r = 2 s / (1 + s^2): in s there is no root,
// and the nearest singularity, at 1, is far from s <= 0.67.
double fromIndependence(double h, double k, double r) {
  const double end = r / (1.0 + std::sqrt((1.0 - r) * (1.0 + r)));
  Nodes exponent;
  Nodes factor;
  for (std::size_t i = 0; i < kRule; ++i) {
    const double s = end * node(i);
    const double square = s * s;
    const double up = 1.0 + square;
    const double down = 1.0 - square;
    // (h^2 - 2 rho h k + k^2) / (1 - rho^2)
    exponent[i] = -0.5 * up * ((h * h + k * k) * up - 4.0 * s * h * k) / (down * down);
    factor[i] = 1.0 / up;
  }
  return end * weighted(exponent, factor) * (2.0 / kTwoPi);
}

// The density's integral over the correlations from r to 1, in x = sqrt(1 - rho^2): there it is
// exp(-(h - k)^2 / (2 x^2)) g(x) / (2 pi). The first three terms of g's series in x^2 have integrals
// in closed form, and what is left vanishes as x^6 where the exponential is steep.
double toEquality(double h, double k, double r) {
  const double a2 = (1.0 - r) * (1.0 + r);
  const double a = std::sqrt(a2);
  const double b = std::fabs(h - k);
  const double product = h * k;
  const double c1 = (4.0 - product) / 8.0;
  const double c2 = c1 * (12.0 - product) / 16.0;
  const double edge = numerics::exp(-0.5 * (b * b / a2 + product));
  // Times exp(-h k / 2), which alone may be beyond all numbers.
  const double tail = b < 38.0 * a ? numerics::exp(-0.5 * product) * CDFNormalStd(-b / a) : 0.0;
  const double i0 = a * edge - b * kSqrtTwoPi * tail;
  const double i2 = (a2 * a * edge - b * b * i0) / 3.0;
  const double i4 = (a2 * a2 * a * edge - b * b * i2) / 5.0;
  Nodes exponent;
  Nodes rest;
  Nodes series;
  for (std::size_t i = 0; i < kRule; ++i) {
    const double x = a * node(i);
    const double x2 = x * x;
    const double root = std::sqrt(1.0 - x2);
    // h k (1 / (1 + root) - 1 / 2) = h k x^2 / (2 (1 + root)^2)
    exponent[i] = -0.5 * product * x2 / ((1.0 + root) * (1.0 + root));
    rest[i] = -0.5 * (b * b / x2 + product);
    series[i] = 1.0 + x2 * (c1 + c2 * x2);
  }
  Nodes value;
  numerics::expArray(exponent, value);
  for (std::size_t i = 0; i < kRule; ++i) {
    const double x = a * node(i);
    series[i] = value[i] / std::sqrt(1.0 - x * x) - series[i];
  }
  return (i0 + c1 * i2 + c2 * i4 + a * weighted(rest, series)) / kTwoPi;
}

struct Limits {
  double lower, upper;
};

double between(const Limits& x) {
  return x.lower > 0.0 ? CDFNormalStd(-x.lower) - CDFNormalStd(-x.upper)
                       : CDFNormalStd(x.upper) - CDFNormalStd(x.lower);
}

double between(const Limits& x, const Limits& y, double r) {
  const double inside = normalAbove(x.lower, y.lower, r) - normalAbove(x.upper, y.lower, r) -
                        normalAbove(x.lower, y.upper, r) + normalAbove(x.upper, y.upper, r);
  return std::clamp(inside, 0.0, 1.0);
}

class Way {
 public:
  explicit Way(const numerics::SquareMatrix& correlation) : r_(correlation) {}

  // False where the limits leave nothing.
  bool add(std::size_t index, Limits limits) {
    for (std::size_t i = 0; i < size_; ++i) {
      const double r = r_(index, at_[i]);
      if (std::fabs(r) < kSame) continue;
      if (r < 0.0) limits = {-limits.upper, -limits.lower};
      limits_[i] = {std::max(limits_[i].lower, limits.lower),
                    std::min(limits_[i].upper, limits.upper)};
      return limits_[i].lower < limits_[i].upper;
    }
    at_[size_] = index;
    limits_[size_++] = limits;
    return limits.lower < limits.upper;
  }

  double outside() {
    symmetric_ = std::all_of(limits_.begin(), limits_.begin() + size_,
                             [](const Limits& x) { return x.lower == -x.upper; });
    double independent = 0.0;
    for (std::size_t i = 0; i < size_; ++i) {
      const double one = CDFNormalStd(limits_[i].lower) + CDFNormalStd(-limits_[i].upper);
      independent = one + (1.0 - one) * independent;
    }
    tolerance_ = 1e-12 * independent;
    return std::clamp(independent - integral(0.0, 1.0, panel(0.0, 1.0), 0), 0.0, 1.0);
  }

 private:
  // Over s from `from` to `to`, with t = 1 - s^2: a singular R(1) makes the others' deviations given
  // the pair proportional to s. `whole` is the rule's value.
  double integral(double from, double to, double whole, int depth) const {
    const double middle = 0.5 * (from + to);
    const double left = panel(from, middle);
    const double right = panel(middle, to);
    // The halves are many digits better than their difference to the whole says.
    const bool good = std::fabs(left + right - whole) <= tolerance_ || depth == 40;
    if (good) return left + right;
    return integral(from, middle, left, depth + 1) + integral(middle, to, right, depth + 1);
  }

  double panel(double from, double to) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < kRule; ++i) {
      const double s = from + (to - from) * node(i);
      sum += weight(i) * 2.0 * s * slope(s * s);
    }
    return (to - from) * sum;
  }

  // The derivative by t of the probability inside, at 1 - rest.
  double slope(double rest) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < size_; ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const double r = r_(at_[i], at_[j]);
        if (r != 0.0) sum += r * pair(i, j, r, rest);
      }
    }
    return sum;
  }

  double pair(std::size_t i, std::size_t j, double r, double rest) const {
    const Limits& x = limits_[i];
    const Limits& y = limits_[j];
    if (symmetric_) {
      return 2.0 *
             (corner(i, j, r, rest, x.upper, y.upper) - corner(i, j, r, rest, x.upper, y.lower));
    }
    return corner(i, j, r, rest, x.upper, y.upper) - corner(i, j, r, rest, x.upper, y.lower) -
           corner(i, j, r, rest, x.lower, y.upper) + corner(i, j, r, rest, x.lower, y.lower);
  }

  // The density of the pair at (x, y) times the probability of the others' limits given it. In the
  // pair's sum and difference, which are independent, nothing cancels where r is near 1 or -1.
  double corner(std::size_t i, std::size_t j, double r, double rest, double x, double y) const {
    if (std::isinf(x) || std::isinf(y)) return 0.0;
    const double t = 1.0 - rest;
    const double plus = (1.0 + r) - rest * r;  // 1 + t r
    const double minus = (1.0 - r) + rest * r;
    const double half = 0.5 * (x + y);
    const double apart = 0.5 * (x - y);
    const double density = numerics::exp(-half * (half / plus) - apart * (apart / minus)) /
                           (kTwoPi * std::sqrt(plus * minus));
    if (density == 0.0) return 0.0;

    std::array<Limits, 2> given;
    std::array<double, 2> sum;
    std::array<double, 2> difference;
    std::array<double, 2> deviation;
    std::array<std::size_t, 2> other;
    std::size_t others = 0;
    for (std::size_t k = 0; k < size_; ++k) {
      if (k == i || k == j) continue;
      const double withI = t * r_(at_[k], at_[i]);
      const double withJ = t * r_(at_[k], at_[j]);
      sum[others] = withI + withJ;
      difference[others] = withI - withJ;
      const double mean = half * (sum[others] / plus) + apart * (difference[others] / minus);
      // R(t)'s least eigenvalue is `rest` at least, and so is every conditional variance.
      const double variance = 1.0 - 0.5 * sum[others] * (sum[others] / plus) -
                              0.5 * difference[others] * (difference[others] / minus);
      deviation[others] = std::sqrt(std::max(variance, rest));
      given[others] = {(limits_[k].lower - mean) / deviation[others],
                       (limits_[k].upper - mean) / deviation[others]};
      other[others++] = k;
    }
    if (others == 0) return density;
    if (others == 1) return density * between(given[0]);
    const double covariance = t * r_(at_[other[0]], at_[other[1]]) -
                              0.5 * sum[0] * (sum[1] / plus) -
                              0.5 * difference[0] * (difference[1] / minus);
    const double correlation = std::clamp(covariance / (deviation[0] * deviation[1]), -1.0, 1.0);
    return density * between(given[0], given[1], correlation);
  }

  const numerics::SquareMatrix& r_;
  std::array<std::size_t, kMostNormals> at_{};
  std::array<Limits, kMostNormals> limits_{};
  std::size_t size_ = 0;
  bool symmetric_ = false;
  double tolerance_ = 0.0;
};

}  // namespace

double normalAbove(double h, double k, double correlation) {
  if (h > kFar || k > kFar) return 0.0;
  if (h < -kFar) return CDFNormalStd(-k);
  if (k < -kFar) return CDFNormalStd(-h);
  // The series of either end are good to the last digits on their sides of here (Genz).
  constexpr double kStrong = 0.925;
  if (std::fabs(correlation) < kStrong) {
    return CDFNormalStd(-h) * CDFNormalStd(-k) + fromIndependence(h, k, correlation);
  }
  if (correlation < 0.0) return CDFNormalStd(-h) - normalAbove(h, -k, -correlation);
  const double equal = CDFNormalStd(-std::max(h, k));
  return correlation < 1.0 ? equal - toEquality(h, k, correlation) : equal;
}

double normalOutside(std::span<const double> lower, std::span<const double> upper,
                     const numerics::SquareMatrix& correlation) {
  const std::size_t d = lower.size();
  if (d == 0 || d > kMostNormals || upper.size() != d || correlation.size() != d) {
    throw std::invalid_argument("the normal law is computed for 1 to 4 variables");
  }
  const auto absent = [](double x) { return std::isnan(x); };
  if (std::any_of(lower.begin(), lower.end(), absent) ||
      std::any_of(upper.begin(), upper.end(), absent) ||
      std::any_of(correlation.values().begin(), correlation.values().end(), absent)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  Way way(correlation);
  for (std::size_t i = 0; i < d; ++i) {
    if (!way.add(i, {lower[i], upper[i]})) return 1.0;
  }
  return way.outside();
}

}  // namespace survmeth::engine::curves
