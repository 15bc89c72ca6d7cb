// Two groups at a time: pairs of many, and hazard ratios.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "engine/curves/comparison.h"
#include "engine/curves/pooled.h"
#include "engine/curves/weights.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

using numerics::RunningSum;

// Score and variance of one of two groups.
struct PairSums {
  RunningSum score, variance;
};

void addTo(PairSums& sums, const Pooled& pooled, const StratumRows& rows,
           const Weighting& weighting, std::uint32_t second) {
  const std::vector<PooledTime> times = eventTimes(pooled, rows);
  const std::vector<GroupShare> shares = sharesOf(pooled, rows, times, second);
  const std::vector<double> weights = weightsOf(weighting, times);
  for (std::size_t k = 0; k < times.size(); ++k) {
    const double n = times[k].atRisk;
    const double d = times[k].events;
    const double part = shares[k].atRisk / n;
    sums.score.add(weights[k] * (shares[k].events - d * part));
    if (!(n > 1.0)) continue;
    sums.variance.add(weights[k] * weights[k] * d * (times[k].surviving / (n - 1.0)) * part *
                      (1.0 - part));
  }
}

}  // namespace

std::vector<PairTest> comparePairs(const Response& response, const Rows& rows, const Groups& groups,
                                   const Weighting& weighting, Adjustment adjustment,
                                   double tieTolerance) {
  return comparePairs(Pooled(response, rows, groups, tieTolerance), weighting, adjustment);
}

std::vector<PairTest> comparePairs(const Pooled& pooled, const Weighting& weighting,
                                   Adjustment adjustment) {
  requireWeighting(weighting);
  const std::size_t k = pooled.groupCount;
  PairedRows paired(pooled);
  std::vector<PairTest> result;
  std::vector<double> pValues;
  for (std::uint32_t g = 0; g < k; ++g) {
    for (std::uint32_t h = g + 1; h < k; ++h) {
      StratumRows rest = paired.of(g, h);
      PairSums sums;
      while (!rest.byExit.empty()) addTo(sums, pooled, nextStratum(pooled, rest), weighting, h);
      PairTest& pair = result.emplace_back(PairTest{g, h});
      const double variance = sums.variance.value();
      if (variance > 0.0) {
        pair.chiSquare = sums.score.value() * (sums.score.value() / variance);
        pair.pValue = pValChiSq(pair.chiSquare, 1.0);
      }
      pValues.push_back(pair.pValue);
    }
  }
  const std::vector<double> adjusted = adjust(pValues, adjustment);
  for (std::size_t i = 0; i < result.size(); ++i) result[i].adjusted = adjusted[i];
  return result;
}

std::vector<double> adjust(std::span<const double> pValues, Adjustment adjustment) {
  std::vector<double> adjusted(pValues.begin(), pValues.end());
  if (adjustment == Adjustment::kNone) return adjusted;
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < pValues.size(); ++i) {
    if (!std::isnan(pValues[i])) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return pValues[a] < pValues[b]; });
  const std::size_t m = order.size();
  const auto count = static_cast<double>(m);
  if (adjustment == Adjustment::kBonferroni) {
    for (const std::size_t i : order) adjusted[i] = std::min(1.0, count * pValues[i]);
  } else if (adjustment == Adjustment::kHolm) {
    double most = 0.0;
    for (std::size_t rank = 0; rank < m; ++rank) {
      most = std::max(most, (count - static_cast<double>(rank)) * pValues[order[rank]]);
      adjusted[order[rank]] = std::min(1.0, most);
    }
  } else {
    double least = 1.0;
    for (std::size_t rank = m; rank-- > 0;) {
      least = std::min(least, count / static_cast<double>(rank + 1) * pValues[order[rank]]);
      adjusted[order[rank]] = least;
    }
  }
  return adjusted;
}

HazardRatios hazardRatios(const Response& response, const Rows& rows, const Groups& groups,
                          double level, double tieTolerance) {
  return hazardRatios(Pooled(response, rows, groups, tieTolerance), level);
}

HazardRatios hazardRatios(const Pooled& pooled, double level) {
  const double z = normalQuantile(level);
  if (pooled.groupCount != 2) {
    throw Refusal(Role::kGroup, Refusal::kNone, "a hazard ratio is of two groups");
  }
  PairSums logRank;
  RunningSum above;
  RunningSum below;
  RunningSum products;
  StratumRows rest{pooled.byExit, pooled.byEntry};
  while (!rest.byExit.empty()) {
    const StratumRows stratum = nextStratum(pooled, rest);
    addTo(logRank, pooled, stratum, Weighting(), 1);
    const std::vector<PooledTime> times = eventTimes(pooled, stratum);
    const std::vector<GroupShare> shares = sharesOf(pooled, stratum, times, 1);
    for (std::size_t k = 0; k < times.size(); ++k) {
      const double part = shares[k].atRisk / times[k].atRisk;
      const double events = shares[k].events;
      above.add(events * (1.0 - part));
      below.add((times[k].events - events) * part);
      products.add(times[k].events * part * (1.0 - part));
    }
  }
  HazardRatios result;
  const double variance = logRank.variance.value();
  if (variance > 0.0) {
    result.peto =
        ratio(numerics::exp(logRank.score.value() / variance), 1.0 / std::sqrt(variance), z);
  }
  if (below.value() > 0.0) {
    const double estimate = above.value() / below.value();
    result.mantelHaenszel =
        ratio(estimate, std::sqrt(products.value() / (above.value() * below.value())), z);
  } else if (above.value() > 0.0) {
    result.mantelHaenszel.estimate = std::numeric_limits<double>::infinity();
  }
  return result;
}

}  // namespace survmeth::engine::curves
