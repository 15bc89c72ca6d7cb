#include "engine/curves/weightedSums.h"

#include <algorithm>
#include <cstdint>

#include "engine/curves/weights.h"
#include "numerics/doubleDouble.h"
#include "numerics/runningSum.h"
#include "numerics/sizes.h"

namespace survmeth::engine::curves {
namespace {

// The groups of one stratum, numbered through.
class Stratum {
 public:
  Stratum(const Pooled& pooled, std::vector<std::uint32_t>& localOf)
      : pooled_(pooled), localOf_(localOf), seen_(localOf.size()), unused_(localOf.size()) {}

  // Adds the stratum to the sums of all weightings, and its counts to `events`.
  void add(const StratumRows& rows, std::span<const Weighting> weightings,
           std::vector<WeightedSums>& sums, std::vector<StratumEvents>* events) {
    groups_.clear();
    ++stratum_;
    for (const std::uint32_t row : rows.byExit) {
      const std::uint32_t g = pooled_.group[row];
      if (seen_[g] != stratum_) groups_.push_back(g);
      seen_[g] = stratum_;
    }
    std::sort(groups_.begin(), groups_.end());
    for (std::uint32_t j = 0; j < groups_.size(); ++j) localOf_[groups_[j]] = j;

    const std::vector<PooledTime> times = eventTimes(pooled_, rows);
    findChanges(rows, times);
    std::vector<numerics::DoubleDouble> n(groups_.size());
    for (const std::uint32_t row : rows.byExit) pooled_.add(n[local(row)], pooled_.weightOf(row));
    entering_.assign(groups_.size(), {});
    if (rows.byEntry.empty()) entering_ = n;
    // The counts are those of a weight of 1 that stands behind the others.
    const std::size_t all = weightings.size() + (events == nullptr ? 0 : 1);
    const std::size_t m = groups_.size();
    const std::size_t most = std::max<std::size_t>(1, kTogether / (m * m));
    std::vector<Weighting> together;
    for (std::size_t from = 0; from < all; from += most) {
      count_ = std::min(most, all - from);
      together.clear();
      links_.clear();
      for (std::size_t i = 0; i < count_; ++i) {
        const bool counts = from + i == weightings.size();
        together.push_back(counts ? Weighting() : weightings[from + i]);
        links_.push_back(counts ? &unused_ : &sums[from + i].links);
      }
      run(times, together);
      for (std::size_t i = 0; i < count_ && from + i < weightings.size(); ++i) {
        put(i, sums[from + i]);
      }
    }
    if (events == nullptr) return;
    for (std::size_t j = 0; j < m; ++j) {
      events->push_back({pooled_.stratumOf(rows.byExit.front()), groups_[j], n[j].hi,
                         observed_[j * count_ + count_ - 1], expected_[j * count_ + count_ - 1]});
    }
  }

 private:
  // So many sums of products are held at once, 32 MB.
  static constexpr std::size_t kTogether = std::size_t{1} << 22;

  // The coming or going of a group's rows: the integrals over the first `at` event times are their
  // share, or if they enter are not.
  struct Change {
    std::uint32_t at, group;  // the group's number within the stratum
    double weight;            // below 0 where they enter
    double events;            // weight of the events, at event time at - 1
  };

  std::uint32_t local(std::uint32_t row) const { return localOf_[pooled_.group[row]]; }

  // Changes in the order of time, one for all rows of a group that enter or leave between two event
  // times.
  void findChanges(const StratumRows& rows, std::span<const PooledTime> times) {
    changes_.clear();
    const std::size_t ends = rows.byExit.size() + rows.byEntry.size();
    const std::size_t most = 2 * groups_.size();  // changes before one event time
    changes_.reserve(ends / most > times.size() ? numerics::product(most, times.size() + 1) : ends);
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::vector<std::size_t> in(groups_.size(), kNone);
    std::vector<std::size_t> out(groups_.size(), kNone);
    const auto change = [&](std::vector<std::size_t>& last, std::uint32_t at,
                            std::uint32_t row) -> Change& {
      const std::uint32_t j = local(row);
      if (last[j] == kNone || changes_[last[j]].at != at) {
        last[j] = changes_.size();
        changes_.push_back({at, j, 0.0, 0.0});
      }
      return changes_[last[j]];
    };
    std::uint32_t at = 0;
    std::size_t exits = 0;
    std::size_t entries = 0;
    while (exits < rows.byExit.size()) {
      // A row that enters at an event time is at risk from the next on, one that leaves was.
      for (; entries < rows.byEntry.size(); ++entries) {
        const std::uint32_t row = rows.byEntry[entries];
        if (at < times.size() && pooled_.entry[row] >= times[at].code) break;
        change(in, at, row).weight -= pooled_.weightOf(row);
      }
      for (; exits < rows.byExit.size(); ++exits) {
        const std::uint32_t row = rows.byExit[exits];
        if (at < times.size() && pooled_.exit[row] >= times[at].code) break;
        const double weight = pooled_.weightOf(row);
        Change& leaving = change(out, at, row);
        leaving.weight += weight;
        if (pooled_.event[row] != 0) leaving.events += weight;
      }
      ++at;
    }
  }

  // Over all event times, of `count_` weightings side by side.
  void run(std::span<const PooledTime> times, std::span<const Weighting> weightings) {
    const std::size_t m = groups_.size();
    const std::size_t c = count_;
    here_.assign(c, Links(m));
    linked_.assign(c, 1);
    atRisk_ = entering_;
    const std::size_t cells = numerics::product(m, c);
    observed_.assign(cells, 0.0);
    expected_.assign(cells, 0.0);
    alone_.assign(cells, 0.0);
    together_.assign(numerics::product(m, cells), 0.0);
    integral_.assign(cells, 0.0);
    numerics::RunningSums integrals(2 * c);  // of hazard and variance
    std::vector<double> spread(c);
    std::vector<double> sums(2 * c);
    WeightsInTime weights(weightings);
    now_.resize(c);
    std::size_t next = 0;
    for (std::uint32_t k = 0; k <= times.size(); ++k) {
      for (; next < changes_.size() && changes_[next].at == k; ++next) {
        take(changes_[next], sums);
      }
      if (k == times.size()) break;
      const double n = times[k].atRisk;
      const double d = times[k].events;
      const double one = n > 1.0 ? d * (times[k].surviving / (n - 1.0)) / n : 0.0;
      weights.next(times[k], now_.data());
      for (std::size_t i = 0; i < c; ++i) {
        sums[i] = now_[i] * (d / n);
        sums[c + i] = spread[i] = now_[i] * now_[i] * one;
      }
      integrals.add(sums.data());
      for (std::size_t j = 0; j < m; ++j) {
        const double part = atRisk_[j].hi / n;
        double* integral = integral_.data() + j * c;
        for (std::size_t i = 0; i < c; ++i) integral[i] += spread[i] * part;
      }
      for (std::size_t i = 0; i < c; ++i) {
        if (linked_[i] < m && spread[i] > 0.0) link(i);
      }
    }
  }

  void take(const Change& change, const std::vector<double>& sums) {
    const std::size_t m = groups_.size();
    const std::size_t c = count_;
    const std::size_t j = change.group;
    pooled_.add(atRisk_[j], -change.weight);
    double* expected = expected_.data() + j * c;
    double* alone = alone_.data() + j * c;
    for (std::size_t i = 0; i < c; ++i) {
      expected[i] += change.weight * sums[i];
      alone[i] += change.weight * sums[c + i];
    }
    if (change.events > 0.0) {
      double* observed = observed_.data() + j * c;
      for (std::size_t i = 0; i < c; ++i) observed[i] += change.events * now_[i];
    }
    double* together = together_.data() + j * m * c;
    const double* integral = integral_.data();
    for (std::size_t h = 0; h < m * c; ++h) together[h] += change.weight * integral[h];
  }

  // The groups at risk now are compared with one another.
  void link(std::size_t i) {
    const std::size_t m = groups_.size();
    std::size_t first = m;
    for (std::size_t j = 0; j < m; ++j) {
      if (!(atRisk_[j].hi > 0.0)) continue;
      if (first == m) first = j;
      if (!here_[i].join(first, j)) continue;
      ++linked_[i];
      links_[i]->join(groups_[first], groups_[j]);
    }
  }

  void put(std::size_t which, WeightedSums& sums) const {
    const std::size_t m = groups_.size();
    const std::size_t c = count_;
    for (std::size_t i = 0; i < m; ++i) {
      const std::uint32_t g = groups_[i];
      sums.observed[g] += observed_[i * c + which];
      sums.expected[g] += expected_[i * c + which];
      for (std::size_t j = 0; j <= i; ++j) {
        const double both =
            0.5 * (together_[(i * m + j) * c + which] + together_[(j * m + i) * c + which]);
        sums.covariance(g, groups_[j]) += (i == j ? alone_[i * c + which] : 0.0) - both;
      }
    }
  }

  const Pooled& pooled_;
  std::vector<std::uint32_t>& localOf_;
  std::vector<std::uint32_t> groups_;
  std::vector<std::size_t> seen_;  // the last stratum in which each group has rows
  std::size_t stratum_ = 0;        // from 1
  std::vector<Change> changes_;
  std::vector<numerics::DoubleDouble> entering_, atRisk_;  // at the beginning, and now
  // Of the weightings that are summed side by side: the last index is theirs.
  std::size_t count_ = 0;
  std::vector<double> now_;  // the weights of the last event time
  std::vector<Links*> links_;
  std::vector<double> observed_, expected_;
  std::vector<double> alone_, together_;  // of the covariance: diagonal less products
  std::vector<double> integral_;          // of n_j / n^2 times the spread of the times so far
  std::vector<Links> here_;               // of the stratum's groups
  std::vector<std::size_t> linked_;
  Links unused_;  // for the counts, which no test is made of
};

}  // namespace

std::vector<WeightedSums> weightedSums(const Pooled& pooled, std::span<const Weighting> weightings,
                                       std::size_t groups, std::vector<StratumEvents>* events) {
  std::vector<WeightedSums> sums(weightings.size(), WeightedSums(groups));
  std::vector<std::uint32_t> localOf(groups);
  StratumRows rest{pooled.byExit, pooled.byEntry};
  Stratum stratum(pooled, localOf);
  while (!rest.byExit.empty()) stratum.add(nextStratum(pooled, rest), weightings, sums, events);
  for (WeightedSums& each : sums) {
    for (std::size_t i = 0; i < groups; ++i) {
      for (std::size_t j = 0; j < i; ++j) each.covariance(j, i) = each.covariance(i, j);
    }
  }
  return sums;
}

}  // namespace survmeth::engine::curves
