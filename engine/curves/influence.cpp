#include "engine/curves/influence.h"

#include <algorithm>

#include "numerics/doubleDouble.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

using numerics::DoubleDouble;
using numerics::twoProduct;

DoubleDouble squareOf(DoubleDouble x) { return x * x; }

}  // namespace

Increments hazardIncrements(const Sample& sample, std::size_t group, HazardTies ties) {
  const std::size_t begin = sample.first[group];
  const std::size_t m = sample.first[group + 1] - begin;
  Increments result{std::vector<double>(m), std::vector<double>(m)};
  for (std::size_t i = 0; i < m; ++i) {
    const std::size_t k = begin + i;
    const double d = sample.events[k];
    if (!(d > 0.0)) continue;
    if (ties == HazardTies::kPlain) {
      result.own[i] = 1.0 / sample.atRisk[k];
      result.all[i] = d / sample.atRisk[k] / sample.atRisk[k];
      continue;
    }
    // A failing row is one d-th of the weight that fails, of which l parts in d have left.
    const std::uint32_t rows = sample.eventRows[k];
    const double each = d / rows;
    for (std::uint32_t l = 0; l < rows; ++l) {
      const double left = sample.surviving[k] + each * (rows - l);
      result.own[i] += 1.0 / left / rows + each / left * (static_cast<double>(l) / rows) / left;
      result.all[i] += each / left / left;
    }
  }
  return result;
}

Increments productIncrements(const Sample& sample, std::size_t group) {
  const std::size_t begin = sample.first[group];
  const std::size_t m = sample.first[group + 1] - begin;
  Increments result{std::vector<double>(m), std::vector<double>(m)};
  for (std::size_t i = 0; i < m; ++i) {
    const std::size_t k = begin + i;
    if (!(sample.events[k] > 0.0) || !(sample.surviving[k] > 0.0)) continue;
    result.own[i] = 1.0 / sample.surviving[k];
    result.all[i] = sample.events[k] / sample.atRisk[k] / sample.surviving[k];
  }
  return result;
}

Influence::Influence(const Sample& sample, const Rows& rows) : sample_(sample), rows_(rows) {}

std::size_t Influence::clusterOf(std::size_t row, std::size_t group) const {
  return rows_.cluster.empty() ? row - sample_.firstRow[group] : rows_.cluster[sample_.source[row]];
}

std::vector<double> Influence::variances(std::size_t group, const Increments& increments) {
  const Sample& s = sample_;
  const std::size_t begin = s.firstRow[group];
  const std::size_t stop = s.firstRow[group + 1];
  const std::size_t firstTime = s.first[group];
  const std::size_t m = s.first[group + 1] - firstTime;

  cluster_.resize(std::max(cluster_.size(), rows_.cluster.empty() ? stop - begin : rows_.clusters));
  byEntry_.clear();
  for (std::size_t i = begin; i < stop; ++i) {
    cluster_[clusterOf(i, group)] = {};
    byEntry_.push_back(static_cast<std::uint32_t>(i));
  }
  if (!s.entryAt.empty()) {
    std::stable_sort(byEntry_.begin(), byEntry_.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return s.entryAt[a] < s.entryAt[b]; });
  }

  DoubleDouble constant;  // sums over the clusters of gathered^2, gathered x atRisk, atRisk^2
  DoubleDouble linear;
  DoubleDouble quadratic;
  const auto change = [&](std::size_t row, DoubleDouble gathered, double atRisk) {
    Cluster& cluster = cluster_[clusterOf(row, group)];
    const DoubleDouble before(cluster.gathered, cluster.lost);
    const DoubleDouble after = before + gathered;
    const double now = cluster.atRisk + atRisk;
    constant = constant + (squareOf(after) - squareOf(before));
    linear = linear + (after * now - before * cluster.atRisk);
    quadratic = quadratic + (twoProduct(now, now) - twoProduct(cluster.atRisk, cluster.atRisk));
    cluster = {after.hi, after.lo, now};
  };

  std::vector<double> result(m);
  DoubleDouble sum;  // of `all`
  std::size_t entering = 0;
  std::size_t row = begin;
  for (std::size_t i = 0; i < m; ++i) {
    for (; entering < byEntry_.size() && s.entryOf(byEntry_[entering], group) == firstTime + i;
         ++entering) {
      const std::size_t in = byEntry_[entering];
      change(in, sum * s.weightOf(in), s.weightOf(in));
    }
    sum = sum + increments.all[i];
    for (; row < stop && s.exitAt[row] == firstTime + i; ++row) {
      DoubleDouble own = -sum;
      if (s.event[row] != 0) own = own + increments.own[i];
      change(row, own * s.weightOf(row), -s.weightOf(row));
    }
    const DoubleDouble variance = constant - (linear * 2.0 - quadratic * sum) * sum;
    result[i] = std::max(variance.hi, 0.0);
  }
  return result;
}

double Influence::variance(std::size_t group, const Increments& increments,
                           std::span<const double> factor) {
  const Sample& s = sample_;
  const std::size_t begin = s.firstRow[group];
  const std::size_t stop = s.firstRow[group + 1];
  const std::size_t firstTime = s.first[group];
  std::vector<DoubleDouble> before{DoubleDouble()};  // of each time: the sum of those before it
  for (std::size_t i = 0; i < increments.all.size(); ++i) {
    before.push_back(before.back() + twoProduct(increments.all[i], factor[i]));
  }
  cluster_.resize(std::max(cluster_.size(), rows_.cluster.empty() ? stop - begin : rows_.clusters));
  for (std::size_t i = begin; i < stop; ++i) cluster_[clusterOf(i, group)] = {};
  const auto influence = [&](std::size_t i) {
    const std::size_t at = s.exitAt[i] - firstTime;
    DoubleDouble sum = before[s.entryOf(i, group) - firstTime] - before[at + 1];
    if (s.event[i] != 0) sum = sum + twoProduct(increments.own[at], factor[at]);
    return sum.hi * s.weightOf(i);
  };
  for (std::size_t i = begin; i < stop; ++i) {
    cluster_[clusterOf(i, group)].gathered += influence(i);
  }
  numerics::RunningSum sum;
  for (std::size_t i = begin; i < stop; ++i) {
    // Each cluster once: what it gathered is taken away with its first row.
    double& gathered = cluster_[clusterOf(i, group)].gathered;
    sum.add(gathered * gathered);
    gathered = 0.0;
  }
  return sum.value();
}

}  // namespace survmeth::engine::curves
