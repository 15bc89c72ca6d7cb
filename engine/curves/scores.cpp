#include "engine/curves/scores.h"

#include <algorithm>
#include <cmath>

#include "engine/curves/weights.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

// Of the stratum's rows in the order of their exits. `entered` has a place for every row.
std::vector<double> scoresOf(const Pooled& pooled, const StratumRows& rows,
                             const std::vector<PooledTime>& times,
                             const std::vector<double>& weights, std::vector<double>& entered) {
  std::vector<double> hazard = {0.0};  // before each event time
  numerics::RunningSum sum;
  for (std::size_t k = 0; k < times.size(); ++k) {
    sum.add(weights[k] * (times[k].events / times[k].atRisk));
    hazard.push_back(sum.value());
  }
  std::size_t at = 0;
  for (const std::uint32_t row : rows.byEntry) {
    while (at < times.size() && times[at].code <= pooled.entry[row]) ++at;
    entered[row] = hazard[at];
  }
  std::vector<double> scores;
  scores.reserve(rows.byExit.size());
  at = 0;
  for (const std::uint32_t row : rows.byExit) {
    while (at < times.size() && times[at].code <= pooled.exit[row]) ++at;
    const double event = pooled.event[row] != 0 ? weights[at - 1] : 0.0;
    scores.push_back(event - (hazard[at] - (rows.byEntry.empty() ? 0.0 : entered[row])));
  }
  return scores;
}

}  // namespace

Scores scoresOf(const Pooled& pooled, std::span<const Weighting> weightings) {
  Scores result;
  std::vector<std::vector<double>> all(weightings.size());
  std::vector<double> entered(pooled.entry.size());
  result.first.push_back(0);
  StratumRows rest{pooled.byExit, pooled.byEntry};
  while (!rest.byExit.empty()) {
    const StratumRows rows = nextStratum(pooled, rest);
    const std::vector<PooledTime> times = eventTimes(pooled, rows);
    for (std::size_t w = 0; w < weightings.size(); ++w) {
      const std::vector<double> weights = weightsOf(weightings[w], times);
      const std::vector<double> scores = scoresOf(pooled, rows, times, weights, entered);
      all[w].insert(all[w].end(), scores.begin(), scores.end());
    }
    for (const std::uint32_t row : rows.byExit) result.group.push_back(pooled.group[row]);
    result.first.push_back(result.group.size());
  }
  // All scores together stay below 2^62 units.
  const int bits = 61 - std::ilogb(static_cast<double>(std::max<std::size_t>(1, result.rows())));
  for (const std::vector<double>& scores : all) {
    double largest = 0.0;
    for (const double score : scores) largest = std::max(largest, std::fabs(score));
    const int exponent = largest > 0.0 ? std::ilogb(largest) + 1 - bits : 0;
    std::vector<std::int64_t>& whole = result.score.emplace_back();
    whole.reserve(scores.size());
    for (const double score : scores) {
      whole.push_back(static_cast<std::int64_t>(std::round(std::ldexp(score, -exponent))));
    }
    result.unit.push_back(std::ldexp(1.0, exponent));
  }
  return result;
}

}  // namespace survmeth::engine::curves
