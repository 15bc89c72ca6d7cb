#include "engine/incidence/robust.h"

#include <algorithm>

#include "engine/incidence/curve.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::incidence {

using numerics::DoubleDouble;
using numerics::twoProduct;

void Robust::Moments::add(const Cluster& cluster, double sign) {
  gg = gg + cluster.g * cluster.g * sign;
  gh = gh + cluster.g * cluster.h * sign;
  hh = hh + cluster.h * cluster.h * sign;
  ga = ga + cluster.g * (cluster.atRisk * sign);
  ha = ha + cluster.h * (cluster.atRisk * sign);
  aa = aa + twoProduct(cluster.atRisk, cluster.atRisk) * sign;
}

std::size_t Robust::clusterOf(std::size_t row, std::size_t group) const {
  const curves::Sample& sample = data_.sample;
  return rows_.cluster.empty() ? row - sample.firstRow[group] : rows_.cluster[sample.source[row]];
}

void Robust::begin(std::size_t group) {
  const curves::Sample& sample = data_.sample;
  const std::size_t first = sample.firstRow[group];
  const std::size_t rows = sample.firstRow[group + 1] - first;
  cluster_.resize(std::max(cluster_.size(), rows_.cluster.empty() ? rows : rows_.clusters));
  for (std::size_t i = 0; i < rows; ++i) cluster_[clusterOf(first + i, group)] = {};
}

double Robust::own(std::size_t row, std::size_t cause, const Increments& increments,
                   std::size_t at) const {
  if (data_.cause[row] == 0) return 0.0;
  return increments.any[at] + (data_.cause[row] == cause + 1 ? increments.cause[at] : 0.0);
}

std::vector<double> Robust::variances(std::size_t group, std::size_t cause, const Increments& g,
                                      const Increments& h, std::span<const double> level) {
  const curves::Sample& s = data_.sample;
  const std::size_t firstTime = s.first[group];
  const std::size_t stop = s.firstRow[group + 1];
  begin(group);
  byEntry_.clear();
  for (std::size_t i = s.firstRow[group]; i < stop; ++i) {
    byEntry_.push_back(static_cast<std::uint32_t>(i));
  }
  if (!s.entryAt.empty()) {
    std::stable_sort(byEntry_.begin(), byEntry_.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return s.entryAt[a] < s.entryAt[b]; });
  }

  Moments moments;
  const auto change = [&](std::size_t row, DoubleDouble addedG, DoubleDouble addedH, double sign) {
    Cluster& cluster = cluster_[clusterOf(row, group)];
    const double weight = s.weightOf(row);
    moments.add(cluster, -1.0);
    cluster.g = cluster.g + addedG * weight;
    cluster.h = cluster.h + addedH * weight;
    cluster.atRisk += sign * weight;
    moments.add(cluster, 1.0);
  };
  std::vector<double> result(level.size());
  DoubleDouble allG;
  DoubleDouble allH;
  std::size_t entering = 0;
  std::size_t row = s.firstRow[group];
  for (std::size_t i = 0; i < level.size(); ++i) {
    for (; entering < byEntry_.size() && s.entryOf(byEntry_[entering], group) == firstTime + i;
         ++entering) {
      change(byEntry_[entering], allG, allH, 1.0);
    }
    allG = allG + g.all[i];
    allH = allH + h.all[i];
    for (; row < stop && s.exitAt[row] == firstTime + i; ++row) {
      change(row, own(row, cause, g, i) - allG, own(row, cause, h, i) - allH, -1.0);
    }
    // Of (g - F h) - atRisk (allG - F allH).
    const double f = level[i];
    const DoubleDouble common = allG - allH * f;
    const DoubleDouble squares = moments.gg - (moments.gh * 2.0 - moments.hh * f) * f;
    const DoubleDouble mixed = moments.ga - moments.ha * f;
    const DoubleDouble variance = squares - (mixed * 2.0 - moments.aa * common) * common;
    result[i] = std::max(variance.hi, 0.0);
  }
  return result;
}

void Robust::addVariances(std::size_t group, std::size_t cause, Curve& curve) {
  const std::size_t m = curve.time.size();
  CauseCurve& of = curve.causes[cause];
  Increments g(m);
  Increments h(m);
  Increments hazard(m);
  double survival = 1.0;
  for (std::size_t i = 0; i < m; ++i) {
    const std::size_t k = data_.sample.first[group] + i;
    const double any = data_.sample.events[k];
    if (!(any > 0.0)) continue;
    const double n = curve.atRisk[i];
    const double d = of.eventsAt[i];
    const double stay = data_.sample.surviving[k];
    hazard.cause[i] = 1.0 / n;
    hazard.all[i] = d / n / n;
    g.cause[i] = survival / n;
    g.all[i] = survival * (d / n) / n;
    if (stay > 0.0) {  // else the incidence stays as it is
      h.any[i] = 1.0 / stay;
      h.all[i] = any / n / stay;
      g.any[i] = of.incidence[i] * h.any[i];
      g.all[i] += of.incidence[i] * h.all[i];
    }
    survival = curve.survival[i];
  }
  of.variance = variances(group, cause, g, h, of.incidence);
  of.hazardVariance = variances(group, cause, hazard, Increments(m), std::vector<double>(m, 0.0));
}

double Robust::variance(std::size_t group, std::size_t cause, const Increments& increments) {
  const curves::Sample& s = data_.sample;
  const std::size_t firstTime = s.first[group];
  std::vector<DoubleDouble> before{DoubleDouble()};  // of each time: the sum of those before it
  for (const double all : increments.all) before.push_back(before.back() + all);
  begin(group);
  const std::size_t stop = s.firstRow[group + 1];
  for (std::size_t i = s.firstRow[group]; i < stop; ++i) {
    const std::size_t at = s.exitAt[i] - firstTime;
    const DoubleDouble influence =
        before[s.entryOf(i, group) - firstTime] - before[at + 1] + own(i, cause, increments, at);
    Cluster& cluster = cluster_[clusterOf(i, group)];
    cluster.g = cluster.g + influence * s.weightOf(i);
  }
  numerics::RunningSum sum;
  for (std::size_t i = s.firstRow[group]; i < stop; ++i) {
    // Each cluster once: what it gathered is taken away with its first row.
    DoubleDouble& gathered = cluster_[clusterOf(i, group)].g;
    sum.add(gathered.hi * gathered.hi);
    gathered = {};
  }
  return sum.value();
}

}  // namespace survmeth::engine::incidence
