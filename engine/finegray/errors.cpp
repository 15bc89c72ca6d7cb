#include "engine/finegray/errors.h"

#include "numerics/runningSum.h"
#include "numerics/threads.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::BlockedColumns;
using numerics::RunningSum;
using numerics::RunningSumsOf;

// The places of the caller's rows.
std::vector<std::uint32_t> arrangedRows(const Problem& problem) {
  std::vector<std::uint32_t> arranged(problem.own.size(), 0);
  const auto& source = problem.rows.arrangement.source;
  for (std::uint32_t i = 0; i < source.size(); ++i) arranged[source[i]] = i;
  return arranged;
}

// What psi needs of one censoring group, for kCount columns side by side from a first one on.
template <std::size_t kCount>
class CensoringTerms {
 public:
  CensoringTerms(const Problem& problem, const Sums& sums, std::span<const double> increment,
                 std::span<const std::uint32_t> arranged, std::size_t firstColumn)
      : problem_(problem),
        sums_(sums),
        increment_(increment),
        arranged_(arranged),
        column_(firstColumn) {}

  void add(std::size_t group, BlockedColumns& residuals) {
    const curves::Sample& sample = problem_.curves.sample();
    first_ = sample.first[group];
    q_.assign(sample.first[group + 1] - first_, {});
    const risk::Arrangement& a = problem_.rows.arrangement;
    std::size_t from = 0;
    for (std::size_t s = 0; s < a.strata(); ++s) {
      std::size_t to = from;
      while (to < problem_.other.size() && problem_.other[to] < a.stratumRow[s + 1]) ++to;
      if (to > from) addStratum(group, s, from, to);
      from = to;
    }
    addRows(group, residuals);
  }

 private:
  using Each = typename RunningSumsOf<kCount>::Each;  // a number of each column

  // What the rows from .. to of `other`, of one stratum, add to q at each time of the group.
  void addStratum(std::size_t group, std::size_t s, std::size_t from, std::size_t to) {
    const risk::Arrangement& a = problem_.rows.arrangement;
    const std::size_t begin = a.stratumTime[s];
    const std::size_t stop = a.stratumTime[s + 1];
    hazard_.assign(stop - begin + 1, 0.0);
    means_.assign(stop - begin + 1, {});
    RunningSum hazard;
    RunningSumsOf<kCount> means;
    Each term;
    for (std::size_t k = stop; k-- > begin;) {
      const double weighted = problem_.weightAt(group, k) * increment_[k];
      hazard_[k - begin] = hazard.add(weighted);
      for (std::size_t c = 0; c < kCount; ++c) term[c] = weighted * sums_.mean(k, column_ + c);
      means.add(term);
      means_[k - begin] = means.values();
    }
    RunningSum risks;
    RunningSumsOf<kCount> moments;
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
        for (std::size_t c = 0; c < kCount; ++c) {
          term[c] = risk * problem_.rows.x(row, column_ + c);
        }
        moments.add(term);
      }
      while (k < stop && a.time[k] < time) ++k;
      for (std::size_t c = 0; c < kCount; ++c) {
        q_[m][c] += moments.value(c) * hazard_[k - begin] - risks.value() * means_[k - begin][c];
      }
    }
  }

  void addRows(std::size_t group, BlockedColumns& residuals) {
    const curves::Sample& sample = problem_.curves.sample();
    // Of each time: the sum of q c / n^2 over the times before it.
    before_.assign(1, {});
    before_.reserve(q_.size() + 1);
    RunningSumsOf<kCount> sum;
    Each term;
    for (std::size_t m = 0; m < q_.size(); ++m) {
      const double censored = sample.censored[first_ + m];
      const double n = problem_.curves.censorable(first_ + m);
      if (censored > 0.0) {
        for (std::size_t c = 0; c < kCount; ++c) term[c] = q_[m][c] * (censored / n) / n;
        sum.add(term);
      }
      before_.push_back(sum.values());
    }
    for (std::size_t i = sample.firstRow[group]; i < sample.firstRow[group + 1]; ++i) {
      const std::size_t at = sample.exitAt[i] - first_;
      const std::size_t entry = sample.entryOf(i, group) - first_;
      const bool censored = sample.event[i] == 0;
      // Where events come first, a row that fails is not at risk of the censorings of its time.
      const std::size_t until =
          censored || problem_.curves.ties() == CensoringTies::kAtRisk ? at + 1 : at;
      const std::size_t row = arranged_[sample.source[i]];
      for (std::size_t c = 0; c < kCount; ++c) {
        double psi = before_[entry][c] - before_[until][c];
        if (censored) psi += q_[at][c] / problem_.curves.censorable(first_ + at);
        residuals(row, column_ + c) += sample.weightOf(i) * psi;
      }
    }
  }

  const Problem& problem_;
  const Sums& sums_;
  std::span<const double> increment_;        // of the baseline, times g
  std::span<const std::uint32_t> arranged_;  // of the caller's rows
  std::size_t column_;                       // the first
  std::size_t first_ = 0;                    // time of the group
  std::vector<Each> q_, before_;             // at each of them
  std::vector<double> hazard_;               // sum from each event time of a stratum on
  std::vector<Each> means_;                  // likewise
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
  std::vector<double> exposed(sums.exposure);
  if (!g.empty()) overTimes(problem, increment, exposed);
  numerics::inParallel(problem.columns(), [&](std::size_t j) {
    std::vector<double> at(a.times());
    std::vector<double> exposure(a.rows());
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
  });
  return result;
}

void addCensoring(const Problem& problem, const Sums& sums, BlockedColumns& residuals,
                  std::span<const double> g) {
  const std::vector<double> increment = timesG(sums.increment, g);
  const std::vector<std::uint32_t> arranged = arrangedRows(problem);
  const auto addColumns = [&](auto terms) {
    for (std::size_t group = 0; group < problem.censoring.size(); ++group) {
      terms.add(group, residuals);
    }
  };
  const std::size_t p = problem.columns();
  numerics::inParallel((p + 1) / 2, [&](std::size_t part) {
    const std::size_t j = 2 * part;
    if (j + 1 < p) {
      addColumns(CensoringTerms<2>(problem, sums, increment, arranged, j));
    } else {
      addColumns(CensoringTerms<1>(problem, sums, increment, arranged, j));
    }
  });
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
