#include "engine/finegray/errors.h"

#include "numerics/runningSum.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::BlockedColumns;
using numerics::RunningSum;

// What psi needs of one censoring group.
class CensoringTerms {
 public:
  CensoringTerms(const Problem& problem, const Sums& sums, std::span<const double> increment)
      : problem_(problem), sums_(sums), increment_(increment), arranged_(problem.own.size(), 0) {
    const risk::Arrangement& a = problem.rows.arrangement;
    for (std::uint32_t i = 0; i < a.rows(); ++i) arranged_[a.source[i]] = i;
  }

  void add(std::size_t group, std::size_t j, BlockedColumns& residuals) {
    const curves::Sample& sample = problem_.curves.sample();
    first_ = sample.first[group];
    q_.assign(sample.first[group + 1] - first_, 0.0);
    const risk::Arrangement& a = problem_.rows.arrangement;
    std::size_t from = 0;
    for (std::size_t s = 0; s < a.strata(); ++s) {
      std::size_t to = from;
      while (to < problem_.other.size() && problem_.other[to] < a.stratumRow[s + 1]) ++to;
      if (to > from) addStratum(group, j, s, from, to);
      from = to;
    }
    addRows(group, j, residuals);
  }

 private:
  // What the rows from .. to of `other`, of one stratum, add to q at each time of the group.
  void addStratum(std::size_t group, std::size_t j, std::size_t s, std::size_t from,
                  std::size_t to) {
    const risk::Arrangement& a = problem_.rows.arrangement;
    const std::size_t begin = a.stratumTime[s];
    const std::size_t stop = a.stratumTime[s + 1];
    hazard_.assign(stop - begin + 1, 0.0);
    means_.assign(stop - begin + 1, 0.0);
    RunningSum hazard;
    RunningSum means;
    for (std::size_t k = stop; k-- > begin;) {
      const double weighted = problem_.weightAt(group, k) * increment_[k];
      hazard_[k - begin] = hazard.add(weighted);
      means_[k - begin] = means.add(weighted * sums_.mean(k, j));
    }
    RunningSum risks;
    RunningSum moments;
    const curves::Sample& sample = problem_.curves.sample();
    std::size_t next = from;
    std::size_t k = begin;
    for (std::size_t m = 0; m < q_.size(); ++m) {
      const double time = sample.time[first_ + m];
      for (; next < to && a.codeTime[a.exitCode[problem_.other[next]]] < time; ++next) {
        const std::uint32_t row = problem_.other[next];
        if (problem_.group[row] != group) continue;
        const double risk = sums_.risk[row] * problem_.since[next];
        risks.add(risk);
        moments.add(risk * problem_.rows.x(row, j));
      }
      while (k < stop && a.time[k] < time) ++k;
      q_[m] += moments.value() * hazard_[k - begin] - risks.value() * means_[k - begin];
    }
  }

  void addRows(std::size_t group, std::size_t j, BlockedColumns& residuals) {
    const curves::Sample& sample = problem_.curves.sample();
    // Of each time: the sum of q c / n^2 over the times before it.
    std::vector<double> before{0.0};
    RunningSum sum;
    for (std::size_t m = 0; m < q_.size(); ++m) {
      const double c = sample.censored[first_ + m];
      const double n = problem_.curves.censorable(first_ + m);
      before.push_back(c > 0.0 ? sum.add(q_[m] * (c / n) / n) : sum.value());
    }
    for (std::size_t i = sample.firstRow[group]; i < sample.firstRow[group + 1]; ++i) {
      const std::size_t at = sample.exitAt[i] - first_;
      const bool censored = sample.event[i] == 0;
      // Where events come first, a row that fails is not at risk of the censorings of its time.
      const std::size_t until =
          censored || problem_.curves.ties() == CensoringTies::kAtRisk ? at + 1 : at;
      double psi = before[sample.entryOf(i, group) - first_] - before[until];
      if (censored) psi += q_[at] / problem_.curves.censorable(first_ + at);
      residuals(arranged_[sample.source[i]], j) += sample.weightOf(i) * psi;
    }
  }

  const Problem& problem_;
  const Sums& sums_;
  std::span<const double> increment_;    // of the baseline, times g
  std::vector<std::uint32_t> arranged_;  // of the caller's rows
  std::size_t first_ = 0;                // time of the group
  std::vector<double> q_;                // at each of them
  std::vector<double> hazard_, means_;   // sums from each event time of a stratum on
};

std::vector<double> timesG(const std::vector<double>& increment, std::span<const double> g) {
  std::vector<double> result(increment);
  for (std::size_t k = 0; k < g.size(); ++k) result[k] *= g[k];
  return result;
}

}  // namespace

BlockedColumns scoreResiduals(const Problem& problem, const Sums& sums, std::span<const double> g) {
  const risk::Arrangement& a = problem.rows.arrangement;
  BlockedColumns result(a.rows(), problem.columns());
  const std::vector<double> increment = timesG(sums.increment, g);
  std::vector<double> at(a.times());
  std::vector<double> exposure(a.rows());
  std::vector<double> exposed(sums.exposure);
  if (!g.empty()) overTimes(problem, increment, exposed);
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    for (std::size_t k = 0; k < a.times(); ++k) at[k] = increment[k] * sums.mean(k, j);
    overTimes(problem, at, exposure);
    for (std::size_t i = 0; i < a.rows(); ++i) {
      const double x = problem.rows.x(i, j);
      double score = -sums.risk[i] * (x * exposed[i] - exposure[i]);
      if (a.event[i] != 0) {
        const std::size_t k = a.end[i] - std::size_t{1};
        score += a.weight[i] * (g.empty() ? 1.0 : g[k]) * (x - sums.mean(k, j));
      }
      result(i, j) = score;
    }
  }
  return result;
}

void addCensoring(const Problem& problem, const Sums& sums, BlockedColumns& residuals,
                  std::span<const double> g) {
  const std::vector<double> increment = timesG(sums.increment, g);
  CensoringTerms terms(problem, sums, increment);
  for (std::size_t group = 0; group < problem.censoring.size(); ++group) {
    for (std::size_t j = 0; j < problem.columns(); ++j) terms.add(group, j, residuals);
  }
}

numerics::SquareMatrix productsOf(const Problem& problem, WeightKind weights,
                                  const BlockedColumns& residuals) {
  const risk::Arrangement& a = problem.rows.arrangement;
  const std::size_t p = problem.columns();
  numerics::SquareMatrix sum(p);
  const auto add = [&](const BlockedColumns& values, std::span<const double> weight) {
    for (std::size_t block = 0; block < values.blocks(); ++block) {
      numerics::addWeightedGram(values.column(block, 0),
                                weight.data() + block * BlockedColumns::kBlock,
                                values.rowsOf(block), 1.0, sum);
    }
  };
  const cox::Problem& rows = problem.rows;
  if (rows.cluster.empty()) {
    std::vector<double> weight(a.rows(), 1.0);
    if (weights == WeightKind::kFrequencies) {
      for (std::size_t i = 0; i < a.rows(); ++i) weight[i] = 1.0 / a.weight[i];
    }
    add(residuals, weight);
  } else {
    BlockedColumns clusters(rows.clusters, p);
    for (std::size_t i = 0; i < a.rows(); ++i) {
      for (std::size_t j = 0; j < p; ++j) {
        clusters(rows.cluster[a.source[i]], j) += residuals(i, j);
      }
    }
    add(clusters, std::vector<double>(rows.clusters, 1.0));
  }
  numerics::mirror(sum);
  return sum;
}

}  // namespace survmeth::engine::finegray
