#include "engine/curves/limits.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "Dist/Dist"
#include "numerics/elementary.h"

namespace survmeth::engine::curves {
namespace {

constexpr double kQuarterTurn = 1.5707963267948966;  // pi / 2

struct SineCosine {
  double sine, cosine;
};

// Of an angle within [0, pi / 2]: the two series up to pi / 4, exchanged beyond it.
SineCosine sineCosine(double angle) {
  constexpr double kLow = 6.123233995736766e-17;  // pi / 2 - kQuarterTurn
  const bool exchanged = angle > 0.5 * kQuarterTurn;
  const double x = exchanged ? (kQuarterTurn - angle) + kLow : angle;
  const double square = x * x;
  double sine = 0.0;
  double cosine = 0.0;
  for (int k = 18; k >= 2; k -= 2) {  // the next terms are below 2^-60 of the sums
    sine = (1.0 + sine) * (-square / (k * (k + 1)));
    cosine = (1.0 + cosine) * (-square / ((k - 1) * k));
  }
  const SineCosine small{x + x * sine, 1.0 + cosine};
  return exchanged ? SineCosine{small.cosine, small.sine} : small;
}

// The angle in [0, pi / 2] with this sine and cosine, by Newton's method from the smaller one.
double angleOf(double sine, double cosine) {
  const bool exchanged = sine > cosine;
  const double y = exchanged ? cosine : sine;  // at most sqrt(1/2): the angle at most pi / 4
  double x = y;
  for (int step = 0; step < 6; ++step) {
    const auto [s, c] = sineCosine(std::min(x, 0.5 * kQuarterTurn));
    x += (y - s) / c;
  }
  return exchanged ? kQuarterTurn - x : x;
}

struct Transformed {
  double value, error;
};

Transformed transformed(const SurvivalAt& at, Scale scale) {
  const double s = at.survival;
  const double e = std::sqrt(at.logVariance);
  if (!(s > 0.0) || (!(s < 1.0) && scale != Scale::kPlain)) return {kAbsent, kAbsent};
  switch (scale) {
    case Scale::kPlain:
      return {s, s * e};
    case Scale::kLog:
      return {numerics::log(s), e};
    case Scale::kLogLog: {
      const double logSurvival = numerics::log(s);
      return {numerics::log(-logSurvival), -e / logSurvival};
    }
    case Scale::kLogit:
      return {numerics::log(s) - numerics::log1p(-s), e / (1.0 - s)};
    case Scale::kArcsine:
      break;
  }
  return {angleOf(std::sqrt(s), std::sqrt(1.0 - s)), 0.5 * e * std::sqrt(s / (1.0 - s))};
}

Interval arcsineLimits(double survival, double spread) {
  const double root = std::sqrt(survival);
  const double other = std::sqrt(1.0 - survival);
  const double turn = 0.5 * spread * root / other;
  if (!(turn < kQuarterTurn)) return std::isnan(turn) ? Interval{} : Interval{0.0, 1.0};
  const auto [sine, cosine] = sineCosine(turn);
  // Sine of the lower and upper angle, and the cosine that says whether it passes pi / 2.
  const double lower = root * cosine - other * sine;
  const double upper = root * cosine + other * sine;
  const bool past = !(other * cosine - root * sine > 0.0);
  return {lower > 0.0 ? lower * lower : 0.0, past ? 1.0 : std::min(upper * upper, 1.0)};
}

}  // namespace

double normalQuantile(double level) {
  if (!(level > 0.0 && level < 1.0)) {
    throw Refusal(Role::kAlpha, Refusal::kNone, "the level of limits is not between 0 and 1");
  }
  return std::fabs(InvCDFNormalStd(0.5 * (1.0 - level)));
}

Interval survivalLimits(double survival, double spread, Scale scale) {
  if (!(survival > 0.0) || std::isnan(spread)) return {};
  const double s = survival;
  switch (scale) {
    case Scale::kPlain:
      return {std::max(s - spread * s, 0.0), std::min(s + spread * s, 1.0)};
    case Scale::kLog:
      return {s * numerics::exp(-spread), std::min(s * numerics::exp(spread), 1.0)};
    default:
      break;
  }
  if (!(s < 1.0)) return {};
  if (scale == Scale::kArcsine) return arcsineLimits(s, spread);
  if (scale == Scale::kLogit) {
    const double factor = numerics::exp(spread / (1.0 - s));
    // Divided by the factor where it grows without limit.
    return {s / factor / (s / factor + (1.0 - s)), s / (s + (1.0 - s) / factor)};
  }
  const double logSurvival = numerics::log(s);
  const double factor = numerics::exp(-spread / logSurvival);
  return {numerics::exp(logSurvival * factor), numerics::exp(logSurvival / factor)};
}

void survivalLimits(std::span<const double> survival, std::span<const double> spread, Scale scale,
                    std::span<double> lower, std::span<double> upper) {
  const std::size_t n = survival.size();
  if (scale == Scale::kLog) {
    for (std::size_t i = 0; i < n; ++i) lower[i] = -spread[i];
    numerics::expArray(lower, lower);
    numerics::expArray(spread, upper);
    for (std::size_t i = 0; i < n; ++i) {
      lower[i] *= survival[i];
      upper[i] = std::min(survival[i] * upper[i], 1.0);
    }
  } else if (scale == Scale::kLogLog) {
    std::vector<double> logSurvival(n);
    numerics::logArray(survival, logSurvival);
    for (std::size_t i = 0; i < n; ++i) lower[i] = -spread[i] / logSurvival[i];
    numerics::expArray(lower, lower);
    for (std::size_t i = 0; i < n; ++i) {
      const double factor = lower[i];
      lower[i] = logSurvival[i] * factor;
      upper[i] = logSurvival[i] / factor;
    }
    numerics::expArray(lower, lower);
    numerics::expArray(upper, upper);
  }
  const bool formed = scale == Scale::kLog || scale == Scale::kLogLog;
  for (std::size_t i = 0; i < n; ++i) {
    const bool inside = survival[i] > 0.0 && survival[i] < 1.0 && !std::isnan(spread[i]);
    if (formed && inside) continue;
    const Interval own = survivalLimits(survival[i], spread[i], scale);
    lower[i] = own.lower;
    upper[i] = own.upper;
  }
}

Interval hazardLimits(double hazard, double standardError, double z, Scale scale) {
  const double half = z * standardError;
  if (scale == Scale::kPlain) return {std::max(hazard - half, 0.0), hazard + half};
  if (scale != Scale::kLog) {
    throw std::invalid_argument("limits of a cumulative hazard are plain or on the log scale");
  }
  if (!(hazard > 0.0)) return {};
  const double factor = numerics::exp(half / hazard);
  return {hazard / factor, hazard * factor};
}

Contrast difference(double estimate, double standardError, double z) {
  Contrast result{estimate, standardError, estimate - z * standardError,
                  estimate + z * standardError};
  if (standardError > 0.0) {
    result.z = estimate / standardError;
    result.pValue = 2.0 * CDFNormalStd(-std::fabs(result.z));
  }
  return result;
}

Contrast ratio(double estimate, double standardErrorOfLog, double z) {
  Contrast result{estimate, standardErrorOfLog};
  if (!(estimate > 0.0)) return result;
  result.lower = estimate * numerics::exp(-z * standardErrorOfLog);
  result.upper = estimate * numerics::exp(z * standardErrorOfLog);
  if (standardErrorOfLog > 0.0) {
    result.z = numerics::log(estimate) / standardErrorOfLog;
    result.pValue = 2.0 * CDFNormalStd(-std::fabs(result.z));
  }
  return result;
}

Contrast compareAt(const SurvivalAt& first, const SurvivalAt& second, Scale scale, double level) {
  const Transformed a = transformed(first, scale);
  const Transformed b = transformed(second, scale);
  return difference(b.value - a.value, std::sqrt(a.error * a.error + b.error * b.error),
                    normalQuantile(level));
}

}  // namespace survmeth::engine::curves
