#include "engine/incidence/lost.h"

#include <cmath>

#include "engine/incidence/robust.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::incidence {
namespace {

// What the errors of one time do to the area: that of the cause's share of those at risk, and that
// of the share of all events.
struct Weights {
  double own = 0.0, any = 0.0;
};

// Of each time; the whole area in `lost`.
std::vector<Weights> weightsOf(const Causes& data, std::size_t group, const Curve& curve,
                               const CauseCurve& of, TimeLost& lost) {
  std::vector<Weights> weights(curve.time.size());
  numerics::RunningSum area;  // from the time to the horizon
  double right = lost.horizon;
  for (std::size_t i = curve.time.size(); i-- > 0;) {
    if (curve.time[i] >= lost.horizon) continue;
    area.add((right - curve.time[i]) * of.incidence[i]);
    right = curve.time[i];
    const std::size_t k = data.sample.first[group] + i;
    if (!(data.sample.events[k] > 0.0)) continue;
    const double left = lost.horizon - curve.time[i];
    weights[i].own = (i > 0 ? curve.survival[i - 1] : 1.0) * left;
    const double stay = data.sample.surviving[k] / curve.atRisk[i];
    if (stay > 0.0) weights[i].any = -(area.value() - left * of.incidence[i]) / stay;
  }
  lost.lost = area.value();
  return weights;
}

double modelBased(const Causes& data, std::size_t group, std::size_t cause, Variance variance,
                  std::span<const Weights> weights) {
  numerics::RunningSum sum;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const auto [a, b] = weights[i];
    if (a == 0.0 && b == 0.0) continue;
    const Spread spread = spreadAt(data, cause, data.sample.first[group] + i, variance);
    sum.add(a * a * spread.own + 2.0 * a * b * spread.covariance + b * b * spread.any);
  }
  return sum.value();
}

double robust(const Causes& data, const Rows& rows, std::size_t group, std::size_t cause,
              const Curve& curve, std::span<const Weights> weights) {
  Increments increments(weights.size());
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const double n = curve.atRisk[i];
    const double any = data.sample.events[data.sample.first[group] + i];
    increments.cause[i] = weights[i].own / n;
    increments.any[i] = weights[i].any / n;
    increments.all[i] =
        (weights[i].own * (curve.causes[cause].eventsAt[i] / n) + weights[i].any * (any / n)) / n;
  }
  return Robust(data, rows).variance(group, cause, increments);
}

}  // namespace

std::vector<TimeLost> timesLost(const Causes& data, const Rows& rows, std::span<const Curve> curves,
                                std::size_t cause, Variance asked, double horizon, double level) {
  const double z = curves::normalQuantile(level);
  const Variance variance = varianceFor(rows, asked);
  double origin = 0.0;
  for (const Curve& curve : curves) {
    if (!curve.time.empty()) origin = std::fmin(origin, curve.time.front());
  }
  if (!(horizon > origin) || !std::isfinite(horizon)) {
    throw Refusal(Role::kValue, Refusal::kNone, "the horizon is not after the origin of time");
  }
  std::vector<TimeLost> result;
  for (std::size_t g = 0; g < curves.size(); ++g) {
    const Curve& curve = curves[g];
    TimeLost& lost = result.emplace_back();
    lost.horizon = horizon;
    if (curve.time.empty()) continue;
    const std::vector<Weights> weights = weightsOf(data, g, curve, curve.causes[cause], lost);
    lost.standardError =
        std::sqrt(variance == Variance::kRobust ? robust(data, rows, g, cause, curve, weights)
                                                : modelBased(data, g, cause, variance, weights));
    lost.lower = lost.lost - z * lost.standardError;
    lost.upper = lost.lost + z * lost.standardError;
    lost.extended = curve.time.back() < horizon && curve.survival.back() > 0.0;
  }
  return result;
}

LostContrasts compareLost(const TimeLost& first, const TimeLost& second, double level) {
  const double z = curves::normalQuantile(level);
  const double e = first.standardError;
  const double f = second.standardError;
  const auto root = [](double a, double b) { return std::sqrt(a * a + b * b); };
  return {curves::difference(second.lost - first.lost, root(e, f), z),
          curves::ratio(second.lost / first.lost, root(e / first.lost, f / second.lost), z)};
}

}  // namespace survmeth::engine::incidence
