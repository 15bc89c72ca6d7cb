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

using numerics::RunningSums;

void requireWeightings(std::span<const Weighting> weightings) {
  if (weightings.empty() || weightings.size() > kMostNormals) {
    throw Refusal(Role::kRho, Refusal::kNone, "a combination is of 1 to 4 weights");
  }
  for (const Weighting& weighting : weightings) requireWeighting(weighting);
}

// Of the second group, over the strata.
struct JointSums {
  explicit JointSums(std::size_t weightings)
      : score(weightings), covariance(entry(weightings, 0)) {}
  static std::size_t entry(std::size_t i, std::size_t j) { return i * (i + 1) / 2 + j; }

  RunningSums score, covariance;  // lower triangle
};

void addTo(JointSums& sums, const Pooled& pooled, const StratumRows& rows,
           std::span<const Weighting> weightings, std::uint32_t second) {
  const std::vector<PooledTime> times = eventTimes(pooled, rows);
  const std::vector<GroupShare> shares = sharesOf(pooled, rows, times, second);
  WeightsInTime inTime(weightings);
  std::array<double, kMostNormals> weights{};
  std::array<double, kMostNormals> scores{};
  std::array<double, kMostNormals*(kMostNormals + 1) / 2> products{};
  for (std::size_t k = 0; k < times.size(); ++k) {
    const double n = times[k].atRisk;
    const double d = times[k].events;
    const double part = shares[k].atRisk / n;
    const double difference = shares[k].events - d * part;
    const double variance =
        n > 1.0 ? d * (times[k].surviving / (n - 1.0)) * part * (1.0 - part) : 0.0;
    inTime.next(times[k], weights.data());
    std::size_t entry = 0;
    for (std::size_t i = 0; i < weightings.size(); ++i) {
      scores[i] = weights[i] * difference;
      for (std::size_t j = 0; j <= i; ++j) products[entry++] = weights[i] * weights[j] * variance;
    }
    sums.score.add(scores.data());
    if (variance != 0.0) sums.covariance.add(products.data());
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
    const double variance = sums.covariance.value(JointSums::entry(i, i));
    if (!(variance > 0.0)) continue;
    deviation[i] = std::sqrt(variance);
    result.z[i] = sums.score.value(i) / deviation[i];
    result.alone[i] = aloneOf(result.z[i], alternative);
    for (const std::size_t j : present) {
      result.correlation(i, j) = result.correlation(j, i) = std::clamp(
          sums.covariance.value(JointSums::entry(i, j)) / deviation[i] / deviation[j], -1.0, 1.0);
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
  if (pooled.groupCount != 2) {
    throw Refusal(Role::kGroup, Refusal::kNone, "a combination of tests is of two groups");
  }
  JointSums sums(weightings.size());
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
  const auto k = static_cast<std::uint32_t>(pooled.groupCount);
  std::vector<CombinationPair> result;
  std::vector<double> pValues;
  for (std::uint32_t g = 0; g < k; ++g) {
    for (std::uint32_t h = g + 1; h < k; ++h) {
      JointSums sums(weightings.size());
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
