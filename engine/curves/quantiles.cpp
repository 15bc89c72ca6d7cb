#include "engine/curves/quantiles.h"

#include <cmath>

namespace survmeth::engine::curves {
namespace {

// Where `value` crosses the level; stretches where it does not exist are passed over.
double crossing(const std::vector<double>& time, const std::vector<double>& value, double level,
                Flat flat) {
  constexpr double kTolerance = risk::kTieTolerance;
  std::size_t at = 0;
  while (at < value.size() && !(value[at] <= level + kTolerance)) ++at;
  if (at == value.size()) return kAbsent;
  if (flat == Flat::kFirst || value[at] < level - kTolerance) return time[at];
  std::size_t end = at;
  std::size_t last = at;
  while (end < value.size() && !(value[end] < level - kTolerance)) {
    if (!std::isnan(value[end])) last = end;
    ++end;
  }
  const double until = time[end < value.size() ? end : last];
  return flat == Flat::kLast ? until : 0.5 * (time[at] + until);
}

double levelOf(double probability) {
  if (!(probability > 0.0 && probability < 1.0)) {
    throw Refusal(Role::kValue, Refusal::kNone, "the quantile is not between 0 and 1");
  }
  return 1.0 - probability;
}

}  // namespace

std::vector<Reading> readings(const Curve& curve, std::span<const double> time, bool extend,
                              Scale scale) {
  std::vector<Reading> result;
  result.reserve(time.size());
  for (const double t : time) {
    Reading& reading = result.emplace_back();
    reading.time = t;
    const std::size_t at = indexAt(curve, t);
    if (curve.time.empty()) continue;
    // A curve that has ended at 0 stays there.
    if (!extend && t > curve.time.back() && curve.survival.back() > 0.0) continue;
    if (at == curve.time.size()) {
      const Interval limits = survivalLimits(1.0, 0.0, scale);
      reading = {t, 1.0, 0.0, limits.lower, limits.upper, 0.0, 0.0};
      continue;
    }
    reading = {t,
               curve.survival[at],
               curve.standardError(at),
               curve.lower[at],
               curve.upper[at],
               curve.hazard[at],
               curve.hazardError(at)};
  }
  return result;
}

std::vector<Quantile> quantiles(const Curve& curve, std::span<const double> probability,
                                Flat flat) {
  std::vector<Quantile> result;
  result.reserve(probability.size());
  for (const double p : probability) {
    const double level = levelOf(p);
    result.push_back({p, crossing(curve.time, curve.survival, level, flat),
                      crossing(curve.time, curve.lower, level, flat),
                      crossing(curve.time, curve.upper, level, flat)});
  }
  return result;
}

double followUp(const Curve& curve, double probability, Flat flat) {
  const double level = levelOf(probability);
  std::vector<double> followed;
  followed.reserve(curve.time.size());
  double product = 1.0;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const double n = curve.atRisk[i];
    const double c = curve.censoredAt[i];
    if (c > 0.0) product *= (n - c) / n;
    followed.push_back(product);
  }
  return crossing(curve.time, followed, level, flat);
}

}  // namespace survmeth::engine::curves
