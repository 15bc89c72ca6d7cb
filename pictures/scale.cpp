#include "pictures/scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace survmeth::pictures {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLeastPositive = std::numeric_limits<double>::denorm_min();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
// Of an axis, in parts of its largest value: below it ticks would not be distinct doubles.
constexpr double kNarrowest = 1e-13;
constexpr double kSmallest = 1e-312;  // and of any axis, where doubles have fewer digits

// Standard normal quantile by bisection: a picture needs four digits and no table of coefficients.
double probit(double p) {
  if (!(p > 0 && p < 1)) return p == 0 ? -kInfinity : p == 1 ? kInfinity : kNone;
  double low = -40, high = 40;
  for (int i = 0; i < 50; ++i) {
    const double middle = (low + high) / 2;
    (0.5 * std::erfc(-middle / std::sqrt(2.0)) < p ? low : high) = middle;
  }
  return (low + high) / 2;
}

double transform(report::Scale kind, double value) {
  switch (kind) {
    case report::Scale::kLog:
      return value < 0 ? kNone : value == 0 ? -kInfinity : std::log10(value);
    case report::Scale::kCloglog:
      if (!(value >= 0 && value <= 1)) return kNone;
      return value == 0 ? -kInfinity : value == 1 ? kInfinity : std::log(-std::log1p(-value));
    case report::Scale::kProbit:
      return probit(value);
    case report::Scale::kLinear:
    case report::Scale::kCategory:
      break;
  }
  return value;
}

double back(report::Scale kind, double place) {
  switch (kind) {
    case report::Scale::kLog:
      return std::pow(10, place);
    case report::Scale::kCloglog:
      return -std::expm1(-std::exp(place));
    case report::Scale::kProbit:
      return 0.5 * std::erfc(-place / std::sqrt(2.0));
    case report::Scale::kLinear:
    case report::Scale::kCategory:
      break;
  }
  return place;
}

// Limits around one value.
Limits spread(report::Scale kind, double value) {
  if (kind == report::Scale::kLog) {
    return {std::max(value / 2, kLeastPositive), std::min(value, 0.8e308) * 2};
  }
  if (kind == report::Scale::kLinear) {
    const double half = value == 0 ? 1 : std::max(std::abs(value) * 0.05, 1e-300);
    return {std::max(value - half, -1.7e308), std::min(value + half, 1.7e308)};
  }
  const double at = transform(kind, value);
  return {back(kind, at - 0.5), back(kind, at + 0.5)};
}

}  // namespace

Scale::Scale(report::Scale kind, double least, double most)
    : kind_(kind), least_(least), most_(most) {
  if (kind == report::Scale::kLinear) {
    std::frexp(std::max(std::abs(least), std::abs(most)), &exponent_);
    exponent_ += 1;
  }
  from_ = transformed(least);
  to_ = transformed(most);
}

double Scale::transformed(double value) const {
  return kind_ == report::Scale::kLinear ? std::ldexp(value, -exponent_) : transform(kind_, value);
}

double Scale::place(double value) const { return (transformed(value) - from_) / (to_ - from_); }

bool knows(report::Scale kind, double value) { return std::isfinite(transform(kind, value)); }

Limits limitsOf(const report::Axis& axis, const std::vector<double>& values, double margin) {
  if (axis.scale == report::Scale::kCategory) {
    return {-0.5, std::max(static_cast<double>(axis.categories.size()), 1.0) - 0.5};
  }
  double least = kInfinity, most = -kInfinity;
  for (const double value : values) {
    if (!knows(axis.scale, value)) continue;
    least = std::min(least, value);
    most = std::max(most, value);
  }
  if (axis.least) least = *axis.least;
  if (axis.most) most = *axis.most;
  if (least == kInfinity && most == -kInfinity) {
    least = axis.scale == report::Scale::kLinear ? 0 : 0.1;
    most = axis.scale == report::Scale::kLog ? 10 : axis.scale == report::Scale::kLinear ? 1 : 0.9;
  }
  // One wanted limit may lie beyond all values.
  if (least == kInfinity) least = spread(axis.scale, most).least;
  if (most == -kInfinity) most = spread(axis.scale, least).most;
  const double size = std::max(std::abs(least), std::abs(most));
  if (!(least < most) || most / 2 - least / 2 <= std::max(kNarrowest * size, kSmallest)) {
    const Limits low = spread(axis.scale, axis.most && !axis.least ? most : least);
    const Limits high = spread(axis.scale, axis.least && !axis.most ? least : most);
    // A wanted limit stays, but for two that are the same.
    const bool same = axis.least && axis.most && least == most;
    if (!axis.least || same) least = low.least;
    if (!axis.most || same) most = high.most;
    return {least, axis.most && !axis.least ? most : std::max(most, high.most)};
  }
  // Nothing is put beside what ends at 0 by its nature, nor beyond probabilities.
  const double from = transform(axis.scale, least), to = transform(axis.scale, most);
  const double wide = std::isfinite(to - from) ? margin * (to - from) : 0;
  const double below = back(axis.scale, from - wide), above = back(axis.scale, to + wide);
  const bool fromZero = axis.scale == report::Scale::kLinear && least == 0;
  if (!axis.least && !fromZero && knows(axis.scale, below)) least = below;
  if (!axis.most && !(axis.percent && most == 1) && knows(axis.scale, above)) most = above;
  return {std::max(least, -1.7e308), std::min(most, 1.7e308)};
}

}  // namespace survmeth::pictures
