#include "engine/curves/comparison.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "Dist/Dist"
#include "engine/curves/pooled.h"
#include "engine/curves/weights.h"
#include "numerics/cholesky.h"
#include "numerics/doubleDouble.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

using numerics::SquareMatrix;

// Which groups are compared with one another, directly or by way of others: the covariance is
// singular along the sum of all groups that are, and in no other direction.
class Links {
 public:
  explicit Links(std::size_t groups) : parent_(groups) {
    std::iota(parent_.begin(), parent_.end(), std::size_t{0});
  }
  std::size_t find(std::size_t group) {
    while (parent_[group] != group) group = parent_[group] = parent_[parent_[group]];
    return group;
  }
  // False where they were linked before.
  bool join(std::size_t a, std::size_t b) {
    a = find(a);
    b = find(b);
    parent_[b] = a;
    return a != b;
  }

 private:
  std::vector<std::size_t> parent_;
};

// Sums of one weighting. What a row contributes is the integral of a common function over its time
// at risk, so that a row costs its two ends and nothing between them.
struct Sums {
  explicit Sums(std::size_t groups)
      : observed(groups), expected(groups), covariance(groups), links(groups) {}

  std::vector<double> observed, expected;
  SquareMatrix covariance;
  Links links;
};

// The groups of one stratum, numbered through.
class Stratum {
 public:
  Stratum(const Pooled& pooled, std::vector<std::uint32_t>& localOf)
      : pooled_(pooled), localOf_(localOf), unused_(localOf.size()) {}

  // Adds the stratum to the sums of all weightings, and its counts to `events`.
  void add(const StratumRows& rows, std::span<const Weighting> weightings, std::vector<Sums>& sums,
           std::vector<StratumEvents>* events) {
    groups_.clear();
    for (const std::uint32_t row : rows.byExit) groups_.push_back(pooled_.groups[row]);
    std::sort(groups_.begin(), groups_.end());
    groups_.erase(std::unique(groups_.begin(), groups_.end()), groups_.end());
    for (std::uint32_t j = 0; j < groups_.size(); ++j) localOf_[groups_[j]] = j;

    const std::vector<PooledTime> times = eventTimes(pooled_, rows);
    findChanges(rows, times);
    std::vector<numerics::DoubleDouble> n(groups_.size());
    for (const std::uint32_t row : rows.byExit)
      n[local(row)] = n[local(row)] + pooled_.weightOf(row);
    entering_.assign(groups_.size(), {});
    if (rows.byEntry.empty()) entering_ = n;
    for (std::size_t w = 0; w < weightings.size(); ++w) {
      run(times, weightsOf(weightings[w], times), sums[w].links);
      put(sums[w]);
    }
    if (events == nullptr) return;
    run(times, std::vector<double>(times.size(), 1.0), unused_);
    for (std::size_t j = 0; j < groups_.size(); ++j) {
      events->push_back({pooled_.stratumOf(rows.byExit.front()), groups_[j], n[j].hi, observed_[j],
                         expected_[j]});
    }
  }

 private:
  // A row's coming or going: the integrals over the first `at` event times are its share, or if it
  // enters are not.
  struct Change {
    std::uint32_t at, group;  // the group's number within the stratum
    double weight;            // below 0 where it enters
    double events;            // weight of an event, at event time at - 1
  };

  std::uint32_t local(std::uint32_t row) const { return localOf_[pooled_.groups[row]]; }

  // Changes in the order of time.
  void findChanges(const StratumRows& rows, std::span<const PooledTime> times) {
    changes_.clear();
    std::uint32_t at = 0;
    std::size_t exits = 0;
    std::size_t entries = 0;
    while (exits < rows.byExit.size()) {
      // A row that enters at an event time is at risk from the next on, one that leaves was.
      for (; entries < rows.byEntry.size(); ++entries) {
        const std::uint32_t row = rows.byEntry[entries];
        if (at < times.size() && pooled_.entry[row] >= times[at].code) break;
        changes_.push_back({at, local(row), -pooled_.weightOf(row), 0.0});
      }
      for (; exits < rows.byExit.size(); ++exits) {
        const std::uint32_t row = rows.byExit[exits];
        if (at < times.size() && pooled_.exit[row] >= times[at].code) break;
        const double weight = pooled_.weightOf(row);
        changes_.push_back({at, local(row), weight, pooled_.event[row] != 0 ? weight : 0.0});
      }
      ++at;
    }
  }

  void run(std::span<const PooledTime> times, std::span<const double> weights, Links& links) {
    const std::size_t m = groups_.size();
    here_ = Links(m);
    linked_ = 1;
    atRisk_ = entering_;
    observed_.assign(m, 0.0);
    expected_.assign(m, 0.0);
    alone_.assign(m, 0.0);
    together_.assign(m * m, 0.0);
    integral_.assign(m, 0.0);
    numerics::RunningSum hazard;
    numerics::RunningSum variance;
    std::size_t next = 0;
    for (std::uint32_t k = 0; k <= times.size(); ++k) {
      const double expected = hazard.value();
      const double alone = variance.value();
      for (; next < changes_.size() && changes_[next].at == k; ++next) {
        const Change& change = changes_[next];
        const std::size_t j = change.group;
        atRisk_[j] = atRisk_[j] - change.weight;
        if (change.events > 0.0) observed_[j] += change.events * weights[k - 1];
        expected_[j] += change.weight * expected;
        alone_[j] += change.weight * alone;
        double* row = together_.data() + j * m;
        for (std::size_t h = 0; h < m; ++h) row[h] += change.weight * integral_[h];
      }
      if (k == times.size()) break;
      const double n = times[k].atRisk;
      const double d = times[k].events;
      hazard.add(weights[k] * (d / n));
      const double spread =
          n > 1.0 ? weights[k] * weights[k] * d * (times[k].surviving / (n - 1.0)) / n : 0.0;
      variance.add(spread);
      for (std::size_t j = 0; j < m; ++j) integral_[j] += spread * (atRisk_[j].hi / n);
      if (spread > 0.0) link(links);
    }
  }

  // The groups at risk now are compared with one another.
  void link(Links& links) {
    const std::size_t m = groups_.size();
    if (linked_ == m) return;
    std::size_t first = m;
    for (std::size_t j = 0; j < m; ++j) {
      if (!(atRisk_[j].hi > 0.0)) continue;
      if (first == m) first = j;
      if (!here_.join(first, j)) continue;
      ++linked_;
      links.join(groups_[first], groups_[j]);
    }
  }

  void put(Sums& sums) const {
    const std::size_t m = groups_.size();
    for (std::size_t i = 0; i < m; ++i) {
      const std::uint32_t g = groups_[i];
      sums.observed[g] += observed_[i];
      sums.expected[g] += expected_[i];
      for (std::size_t j = 0; j <= i; ++j) {
        const double both = 0.5 * (together_[i * m + j] + together_[j * m + i]);
        sums.covariance(g, groups_[j]) += (i == j ? alone_[i] : 0.0) - both;
      }
    }
  }

  const Pooled& pooled_;
  std::vector<std::uint32_t>& localOf_;
  std::vector<std::uint32_t> groups_;
  std::vector<Change> changes_;
  std::vector<numerics::DoubleDouble> entering_, atRisk_;  // at the beginning, and now
  std::vector<double> observed_, expected_;
  std::vector<double> alone_, together_;  // of the covariance: diagonal less products
  std::vector<double> integral_;          // of n_j / n^2 times the spread of the times so far
  Links here_{0};                         // of the stratum's groups
  Links unused_;                          // for the counts, which no test is made of
  std::size_t linked_ = 1;
};

// Of each set of linked groups all but the one of the largest variance.
std::vector<std::size_t> independent(Sums& sums) {
  const std::size_t k = sums.observed.size();
  std::vector<std::size_t> largest(k, k);
  for (std::size_t g = 0; g < k; ++g) {
    std::size_t& at = largest[sums.links.find(g)];
    if (at == k || sums.covariance(g, g) > sums.covariance(at, at)) at = g;
  }
  std::vector<std::size_t> chosen;
  for (std::size_t g = 0; g < k; ++g) {
    if (largest[sums.links.find(g)] != g) chosen.push_back(g);
  }
  return chosen;
}

std::vector<Sums> sumUp(const Pooled& pooled, StratumRows rest,
                        std::span<const Weighting> weightings, std::size_t groups,
                        std::vector<std::uint32_t>& localOf, std::vector<StratumEvents>* events) {
  std::vector<Sums> sums(weightings.size(), Sums(groups));
  Stratum stratum(pooled, localOf);
  while (!rest.byExit.empty()) stratum.add(nextStratum(pooled, rest), weightings, sums, events);
  for (Sums& each : sums) {
    for (std::size_t i = 0; i < groups; ++i) {
      for (std::size_t j = 0; j < i; ++j) each.covariance(j, i) = each.covariance(i, j);
    }
  }
  return sums;
}

void addTrend(WeightedTest& test, std::span<const double> scores) {
  const std::size_t k = scores.size();
  // Scores about their mean, weighted by the variances, lose nothing where they are far from 0.
  double sum = 0.0;
  double total = 0.0;
  for (std::size_t i = 0; i < k; ++i) {
    sum += test.covariance(i, i) * scores[i];
    total += test.covariance(i, i);
  }
  const double centre = total > 0.0 ? sum / total : 0.0;
  double score = 0.0;
  double variance = 0.0;
  for (std::size_t i = 0; i < k; ++i) {
    const double s = scores[i] - centre;
    score += s * (test.observed[i] - test.expected[i]);
    for (std::size_t j = 0; j < k; ++j)
      variance += s * (scores[j] - centre) * test.covariance(i, j);
  }
  if (test.degreesOfFreedom == 0 || !(variance > 0.0)) return;
  test.trend = score / std::sqrt(variance);
  test.trendPValue = 2.0 * CDFNormalStd(-std::fabs(test.trend));
}

}  // namespace

Comparison compare(const Response& response, const Rows& rows, const Groups& groups,
                   std::span<const Weighting> weightings, std::span<const double> scores,
                   double tieTolerance) {
  const std::size_t k = groups.size();
  for (const Weighting& weighting : weightings) requireWeighting(weighting);
  const bool finite =
      std::all_of(scores.begin(), scores.end(), [](double score) { return std::isfinite(score); });
  if (!scores.empty() && (scores.size() != k || !finite)) {
    throw Refusal(Role::kValue, Refusal::kNone, "the scores are not one number for each group");
  }
  const Pooled pooled(response, rows, groups, tieTolerance);
  Comparison result;
  std::vector<std::uint32_t> localOf(k);
  std::vector<Sums> sums =
      sumUp(pooled, {pooled.byExit, pooled.byEntry}, weightings, k, localOf, &result.events);
  for (std::size_t w = 0; w < weightings.size(); ++w) {
    WeightedTest& test = result.tests.emplace_back();
    test.weighting = weightings[w];
    const std::vector<std::size_t> chosen = independent(sums[w]);
    test.observed = std::move(sums[w].observed);
    test.expected = std::move(sums[w].expected);
    test.covariance = std::move(sums[w].covariance);
    test.degreesOfFreedom = chosen.size();
    if (!chosen.empty()) {
      std::vector<double> score;
      for (const std::size_t g : chosen) score.push_back(test.observed[g] - test.expected[g]);
      test.chiSquare =
          numerics::Cholesky(numerics::part(test.covariance, chosen), 0.0).quadraticForm(score);
      test.pValue = pValChiSq(test.chiSquare, static_cast<double>(chosen.size()));
    }
    if (!scores.empty()) addTrend(test, scores);
  }
  return result;
}

}  // namespace survmeth::engine::curves
