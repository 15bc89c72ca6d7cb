#include "engine/curves/curve.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/curves/influence.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

using numerics::RunningSum;

// The model-based curve of one group, without limits.
Curve modelBased(const Sample& sample, std::size_t group, const Options& options) {
  const auto part = [&](const std::vector<double>& column) {
    return std::vector<double>(
        column.begin() + static_cast<std::ptrdiff_t>(sample.first[group]),
        column.begin() + static_cast<std::ptrdiff_t>(sample.first[group + 1]));
  };
  Curve curve;
  curve.rows = sample.firstRow[group + 1] - sample.firstRow[group];
  curve.time = part(sample.time);
  curve.atRisk = part(sample.atRisk);
  curve.eventsAt = part(sample.events);
  curve.censoredAt = part(sample.censored);
  const std::size_t m = curve.time.size();
  for (auto* column : {&curve.survival, &curve.logVariance, &curve.hazard, &curve.hazardVariance}) {
    column->resize(m);
  }
  RunningSum events;
  RunningSum censored;
  RunningSum greenwood;
  RunningSum hazard;
  RunningSum variance;
  double product = 1.0;
  for (std::size_t i = 0; i < m; ++i) {
    const std::size_t k = sample.first[group] + i;
    curve.events = events.add(sample.events[k]);
    curve.censored = censored.add(sample.censored[k]);
    if (sample.events[k] > 0.0) {  // a term of 0 would move the last bit of those behind it
      const HazardTerm term = hazardTerm(sample, k, options);
      hazard.add(term.hazard);
      variance.add(term.variance);
    }
    curve.hazard[i] = hazard.value();
    curve.hazardVariance[i] = variance.value();
    if (options.survival == Survival::kExponential) {
      curve.survival[i] = numerics::exp(-curve.hazard[i]);
      curve.logVariance[i] = curve.hazardVariance[i];
      continue;
    }
    if (sample.events[k] > 0.0) {
      const double stay = sample.surviving[k];
      product *= stay / sample.atRisk[k];
      greenwood.add(logVarianceTerm(sample, k, options));
    }
    curve.survival[i] = product;
    curve.logVariance[i] =
        product > 0.0 ? greenwood.value() : std::numeric_limits<double>::infinity();
  }
  curve.n = curve.events + curve.censored;
  return curve;
}

void addRobust(Curve& curve, const Sample& sample, std::size_t group, const Options& options,
               Influence& influence) {
  Increments increments = hazardIncrements(sample, group, options.ties);
  curve.hazardVariance = influence.variances(group, increments);
  if (options.survival == Survival::kExponential) {
    curve.logVariance = curve.hazardVariance;
    return;
  }
  increments = productIncrements(sample, group);
  curve.logVariance = influence.variances(group, increments);
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (!(curve.survival[i] > 0.0)) curve.logVariance[i] = kAbsent;
  }
}

void addLimits(Curve& curve, const Options& options) {
  const double z = normalQuantile(options.level);
  const std::size_t m = curve.time.size();
  curve.lower.resize(m);
  curve.upper.resize(m);
  std::vector<double> spread(m);
  for (std::size_t i = 0; i < m; ++i) spread[i] = z * std::sqrt(curve.logVariance[i]);
  survivalLimits(curve.survival, spread, options.scale, curve.lower, curve.upper);
  if (options.lowerLimit == LowerLimit::kUsual) return;
  double atRiskLast = m > 0 ? curve.atRisk[0] : 0.0;  // at the last event time
  for (std::size_t i = 0; i < m; ++i) {
    const double s = curve.survival[i];
    const double n = curve.atRisk[i];
    if (curve.eventsAt[i] > 0.0) atRiskLast = n;
    const double own = options.lowerLimit == LowerLimit::kModified
                           ? std::sqrt(curve.logVariance[i]) * std::sqrt(atRiskLast / n)
                           : std::sqrt((1.0 - s) / n);
    curve.lower[i] = survivalLimits(s, z * own, options.scale).lower;
  }
}

}  // namespace

HazardTerm hazardTerm(const Sample& sample, std::size_t k, const Options& options) {
  const double n = sample.atRisk[k];
  const double d = sample.events[k];
  if (!(d > 0.0)) return {};
  if (options.hazardVariance == HazardVariance::kBinomial) {
    return {d / n, d / n * (sample.surviving[k] / n) / n};
  }
  if (options.ties == HazardTies::kPlain) return {d / n, d / n / n};
  HazardTerm term;
  const std::uint32_t rows = sample.eventRows[k];
  const double each = d / rows;
  for (std::uint32_t l = 0; l < rows; ++l) {
    // From those that stay, so that nothing cancels where all fail.
    const double left = sample.surviving[k] + each * (rows - l);
    term.hazard += each / left;
    term.variance += each / left / left;
  }
  return term;
}

double logVarianceTerm(const Sample& sample, std::size_t k, const Options& options) {
  if (options.survival == Survival::kExponential) return hazardTerm(sample, k, options).variance;
  const double stay = sample.surviving[k];
  return stay > 0.0 ? sample.events[k] / sample.atRisk[k] / stay : 0.0;
}

bool robust(const Rows& rows, const Options& options) {
  return options.robust || !rows.cluster.empty() ||
         (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling);
}

std::vector<Curve> estimate(const Sample& sample, const Rows& rows, const Options& options) {
  normalQuantile(options.level);  // refuses
  const bool sandwich = robust(rows, options);
  if (options.hazardVariance == HazardVariance::kBinomial &&
      (sandwich || options.ties != HazardTies::kPlain)) {
    throw Refusal(Role::kRequest, Refusal::kNone,
                  "binomial variances are for plain ties and are not robust");
  }
  std::vector<Curve> result;
  result.reserve(sample.groups());
  Influence influence(sample, rows);
  for (std::size_t g = 0; g < sample.groups(); ++g) {
    Curve curve = modelBased(sample, g, options);
    if (sandwich) addRobust(curve, sample, g, options, influence);
    addLimits(curve, options);
    result.push_back(std::move(curve));
  }
  return result;
}

double Curve::standardError(std::size_t i) const { return survival[i] * std::sqrt(logVariance[i]); }

double Curve::hazardError(std::size_t i) const { return std::sqrt(hazardVariance[i]); }

std::size_t indexAt(const Curve& curve, double time) {
  const auto after = std::upper_bound(curve.time.begin(), curve.time.end(), time);
  if (after == curve.time.begin()) return curve.time.size();
  return static_cast<std::size_t>(after - curve.time.begin()) - 1;
}

}  // namespace survmeth::engine::curves
