#include "engine/curves/means.h"

#include <algorithm>
#include <cmath>

#include "engine/curves/influence.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

// Of each time the area under the curve from it to the horizon, 0 beyond; the whole area last.
std::vector<double> areasFrom(const Curve& curve, double origin, double horizon) {
  std::vector<double> area(curve.time.size() + 1, 0.0);
  numerics::RunningSum sum;
  double right = horizon;
  for (std::size_t i = curve.time.size(); i-- > 0;) {
    if (curve.time[i] >= horizon) continue;
    area[i] = sum.add((right - curve.time[i]) * curve.survival[i]);
    right = curve.time[i];
  }
  area.back() = sum.add(std::max(right - origin, 0.0));
  return area;
}

double variance(const Sample& sample, std::size_t group, const Options& options,
                std::span<const double> area, Influence* influence) {
  if (influence != nullptr) {
    const Increments increments = options.survival == Survival::kExponential
                                      ? hazardIncrements(sample, group, options.ties)
                                      : productIncrements(sample, group);
    return influence->variance(group, increments, area);
  }
  numerics::RunningSum sum;
  for (std::size_t i = 0; i + 1 < area.size(); ++i) {
    if (!(area[i] > 0.0)) break;  // beyond it S is 0, or the horizon past
    sum.add(area[i] * area[i] * logVarianceTerm(sample, sample.first[group] + i, options));
  }
  return sum.value();
}

}  // namespace

double commonHorizon(std::span<const Curve> curves) {
  double horizon = kAbsent;
  for (const Curve& curve : curves) {
    if (curve.time.empty() || horizon <= curve.time.back()) continue;
    horizon = curve.time.back();
  }
  return horizon;
}

std::vector<RestrictedMean> restrictedMeans(const Sample& sample, const Rows& rows,
                                            std::span<const Curve> curves, const Options& options,
                                            double horizon) {
  const double z = normalQuantile(options.level);
  double origin = 0.0;
  for (const Curve& curve : curves) {
    if (!curve.time.empty()) origin = std::min(origin, curve.time.front());
  }
  if (!(horizon > origin) || !std::isfinite(horizon)) {
    throw Refusal(Role::kValue, Refusal::kNone, "the horizon is not after the origin of time");
  }
  Influence influence(sample, rows);
  std::vector<RestrictedMean> result;
  for (std::size_t g = 0; g < curves.size(); ++g) {
    RestrictedMean& mean = result.emplace_back();
    mean.origin = origin;
    mean.horizon = horizon;
    const Curve& curve = curves[g];
    if (curve.time.empty()) continue;
    const std::vector<double> area = areasFrom(curve, origin, horizon);
    mean.mean = area.back();
    mean.lost = (horizon - origin) - mean.mean;
    mean.standardError =
        std::sqrt(variance(sample, g, options, area, robust(rows, options) ? &influence : nullptr));
    mean.lower = mean.mean - z * mean.standardError;
    mean.upper = mean.mean + z * mean.standardError;
    mean.lostLower = mean.lost - z * mean.standardError;
    mean.lostUpper = mean.lost + z * mean.standardError;
    mean.extended = curve.time.back() < horizon && curve.survival.back() > 0.0;
  }
  return result;
}

MeanContrasts compareMeans(const RestrictedMean& first, const RestrictedMean& second,
                           double level) {
  const double z = normalQuantile(level);
  const auto root = [](double a, double b) { return std::sqrt(a * a + b * b); };
  const double e = first.standardError;
  const double f = second.standardError;
  return {difference(second.mean - first.mean, root(e, f), z),
          ratio(second.mean / first.mean, root(e / first.mean, f / second.mean), z),
          ratio(second.lost / first.lost, root(e / first.lost, f / second.lost), z)};
}

}  // namespace survmeth::engine::curves
