#include "engine/curves/combination.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "engine/curves/normalRectangle.h"
#include "engine/curves/pooled.h"
#include "engine/curves/weights.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

using numerics::RunningSum;

void requireWeightings(std::span<const Weighting> weightings) {
  if (weightings.empty() || weightings.size() > kMostNormals) {
    throw Refusal(Role::kRho, Refusal::kNone, "a combination is of 1 to 4 weights");
  }
  for (const Weighting& weighting : weightings) requireWeighting(weighting);
}

// Of the second group, over the strata.
struct JointSums {
  std::array<RunningSum, kMostNormals> score;
  std::array<std::array<RunningSum, kMostNormals>, kMostNormals> covariance;  // j <= i
};

void addTo(JointSums& sums, const Pooled& pooled, const StratumRows& rows,
           std::span<const Weighting> weightings, std::uint32_t second) {
  const std::vector<PooledTime> times = eventTimes(pooled, rows);
  const std::vector<GroupShare> shares = sharesOf(pooled, rows, times, second);
  std::vector<std::vector<double>> weights;
  for (const Weighting& weighting : weightings) weights.push_back(weightsOf(weighting, times));
  for (std::size_t k = 0; k < times.size(); ++k) {
    const double n = times[k].atRisk;
    const double d = times[k].events;
    const double part = shares[k].atRisk / n;
    const double difference = shares[k].events - d * part;
    const double variance =
        n > 1.0 ? d * (times[k].surviving / (n - 1.0)) * part * (1.0 - part) : 0.0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      const double w = weights[i][k];
      sums.score[i].add(w * difference);
      if (variance == 0.0) continue;
      for (std::size_t j = 0; j <= i; ++j) sums.covariance[i][j].add(w * weights[j][k] * variance);
    }
  }
}

double aloneOf(double z, Alternative alternative) {
  if (alternative == Alternative::kTwoSided) return 2.0 * CDFNormalStd(-std::fabs(z));
  return CDFNormalStd(alternative == Alternative::kGreater ? -z : z);
}

// Of the weightings that take part: that all z stay below the statistic.
double jointPValue(const Combination& result, const std::vector<std::size_t>& present,
                   Alternative alternative) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double c = result.statistic;
  const std::vector<double> upper(present.size(), c);
  const std::vector<double> lower(present.size(),
                                  alternative == Alternative::kTwoSided ? -c : -kInfinity);
  return normalOutside(lower, upper, numerics::part(result.correlation, present));
}

Combination combined(const JointSums& sums, std::span<const Weighting> weightings,
                     Alternative alternative) {
  const std::size_t m = weightings.size();
  Combination result;
  result.weightings.assign(weightings.begin(), weightings.end());
  result.z.assign(m, kAbsent);
  result.alone.assign(m, kAbsent);
  result.correlation = numerics::SquareMatrix(m);
  std::vector<std::size_t> present;
  std::vector<double> deviation(m);
  for (std::size_t i = 0; i < m; ++i) {
    const double variance = sums.covariance[i][i].value();
    if (!(variance > 0.0)) continue;
    deviation[i] = std::sqrt(variance);
    result.z[i] = sums.score[i].value() / deviation[i];
    result.alone[i] = aloneOf(result.z[i], alternative);
    for (const std::size_t j : present) {
      result.correlation(i, j) = result.correlation(j, i) =
          std::clamp(sums.covariance[i][j].value() / deviation[i] / deviation[j], -1.0, 1.0);
    }
    result.correlation(i, i) = 1.0;
    present.push_back(i);
    const double size = alternative == Alternative::kTwoSided  ? std::fabs(result.z[i])
                        : alternative == Alternative::kGreater ? result.z[i]
                                                               : -result.z[i];
    if (present.size() > 1 && !(size > result.statistic)) continue;
    result.statistic = size;
    result.largest = i;
  }
  if (!present.empty()) result.pValue = jointPValue(result, present, alternative);
  return result;
}

}  // namespace

std::span<const Weighting> usualCombination() {
  using enum Weighting::Kind;
  static constexpr std::array<Weighting, 4> kUsual = {{{kFlemingHarrington, 0.0, 0.0},
                                                       {kFlemingHarrington, 1.0, 0.0},
                                                       {kFlemingHarrington, 0.0, 1.0},
                                                       {kFlemingHarrington, 1.0, 1.0}}};
  return kUsual;
}

Combination combine(const Response& response, const Rows& rows, const Groups& groups,
                    std::span<const Weighting> weightings, Alternative alternative,
                    double tieTolerance) {
  return combine(Pooled(response, rows, groups, tieTolerance), weightings, alternative);
}

Combination combine(const Pooled& pooled, std::span<const Weighting> weightings,
                    Alternative alternative) {
  requireWeightings(weightings);
  if (pooled.groups.size() != 2) {
    throw Refusal(Role::kGroup, Refusal::kNone, "a combination of tests is of two groups");
  }
  JointSums sums;
  StratumRows rest{pooled.byExit, pooled.byEntry};
  while (!rest.byExit.empty()) addTo(sums, pooled, nextStratum(pooled, rest), weightings, 1);
  return combined(sums, weightings, alternative);
}

std::vector<CombinationPair> combinePairs(const Response& response, const Rows& rows,
                                          const Groups& groups,
                                          std::span<const Weighting> weightings,
                                          Alternative alternative, Adjustment adjustment,
                                          double tieTolerance) {
  return combinePairs(Pooled(response, rows, groups, tieTolerance), weightings, alternative,
                      adjustment);
}

std::vector<CombinationPair> combinePairs(const Pooled& pooled,
                                          std::span<const Weighting> weightings,
                                          Alternative alternative, Adjustment adjustment) {
  requireWeightings(weightings);
  PairedRows paired(pooled);
  const auto k = static_cast<std::uint32_t>(pooled.groups.size());
  std::vector<CombinationPair> result;
  std::vector<double> pValues;
  for (std::uint32_t g = 0; g < k; ++g) {
    for (std::uint32_t h = g + 1; h < k; ++h) {
      JointSums sums;
      StratumRows rest = paired.of(g, h);
      while (!rest.byExit.empty()) addTo(sums, pooled, nextStratum(pooled, rest), weightings, h);
      result.push_back({g, h, combined(sums, weightings, alternative)});
      pValues.push_back(result.back().test.pValue);
    }
  }
  const std::vector<double> adjusted = adjust(pValues, adjustment);
  for (std::size_t i = 0; i < result.size(); ++i) result[i].adjusted = adjusted[i];
  return result;
}

}  // namespace survmeth::engine::curves
