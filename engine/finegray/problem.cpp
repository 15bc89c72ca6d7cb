#include "engine/finegray/problem.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/elementary.h"
#include "numerics/runningSum.h"
#include "numerics/sizes.h"
#include "numerics/threads.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::BlockedColumns;

std::vector<std::uint32_t> flags(const Response& response, std::uint32_t cause) {
  std::vector<std::uint32_t> event(response.rows());
  for (std::size_t i = 0; i < event.size(); ++i) {
    const std::uint32_t code = response.event[i];
    event[i] = (cause == 0 ? code != 0 : code == cause) ? 1 : 0;
  }
  return event;
}

const Response& checked(const Response& response, std::uint32_t cause) {
  risk::check(response, {}, {});
  if (cause < 1 || cause > response.causes) {
    throw Refusal(Role::kEvent, Refusal::kNone, "the cause of interest is none of the causes");
  }
  return response;
}

// Nothing but the weights counts for the censoring curves.
Rows weightsOf(const Rows& rows) {
  Rows result;
  result.weight = rows.weight;
  return result;
}

// For each stratum the places in `other` of its rows.
template <typename Work>
void eachStratum(const Problem& problem, const Work& work) {
  const risk::Arrangement& a = problem.rows.arrangement;
  std::size_t from = 0;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    std::size_t to = from;
    while (to < problem.other.size() && problem.other[to] < a.stratumRow[s + 1]) ++to;
    work(s, from, to);
    from = to;
  }
}

// Adds to sums over the rows at risk what those weigh that have failed of another cause.
//
// In   valueOf(row, c), sumOf(k, c)   of columns 0 .. kCount - 1
template <std::size_t kCount, typename ValueOf, typename SumOf>
void addGone(const Problem& problem, const ValueOf& valueOf, const SumOf& sumOf) {
  const risk::Arrangement& a = problem.rows.arrangement;
  const auto add = [&](auto& gone) {
    eachStratum(problem, [&](std::size_t s, std::size_t from, std::size_t to) {
      for (auto& each : gone) each = {};
      std::size_t next = from;
      for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
        for (; next < to && a.end[problem.other[next]] <= k; ++next) {
          const std::uint32_t row = problem.other[next];
          std::array<double, kCount> term;
          for (std::size_t c = 0; c < kCount; ++c) term[c] = valueOf(row, c) * problem.since[next];
          gone[gone.size() == 1 ? 0 : problem.group[row]].add(term);
        }
        if (next == from) continue;
        for (std::size_t g = 0; g < gone.size(); ++g) {
          const double weight = problem.weightAt(g, k);
          const std::array<double, kCount> sums = gone[g].values();
          for (std::size_t c = 0; c < kCount; ++c) sumOf(k, c) += weight * sums[c];
        }
      }
    });
  };
  if (problem.censoring.size() == 1) {
    std::array<numerics::RunningSumsOf<kCount>, 1> gone;
    add(gone);
  } else {
    std::vector<numerics::RunningSumsOf<kCount>> gone(problem.censoring.size());
    add(gone);
  }
}

// As many columns are summed side by side.
constexpr std::size_t kWidth = 4;

// The weighted means of columns first .. first + kCount - 1 over the risk sets.
template <std::size_t kCount>
void takeMeans(const Problem& problem, std::size_t first, Sums& sums) {
  const BlockedColumns& x = problem.rows.x;
  BlockedColumns& mean = sums.mean;
  const auto& risk = sums.risk;
  const std::size_t times = problem.times();
  {
    std::vector<double> value(x.rows()), others(times), failing(times);
    for (std::size_t j = first; j < first + kCount; ++j) {
      for (std::size_t block = 0; block < x.blocks(); ++block) {
        const double* column = x.column(block, j);
        const std::size_t from = block * BlockedColumns::kBlock;
        for (std::size_t i = 0; i < x.rowsOf(block); ++i) {
          value[from + i] = column[i] * risk[from + i];
        }
      }
      problem.rows.sums.overRiskSets(value, others, failing);
      for (std::size_t k = 0; k < times; ++k) mean(k, j) = others[k] + failing[k];
    }
  }
  addGone<kCount>(
      problem, [&](std::uint32_t row, std::size_t c) { return x(row, first + c) * risk[row]; },
      [&](std::size_t k, std::size_t c) -> double& { return mean(k, first + c); });
  for (std::size_t j = first; j < first + kCount; ++j) {
    for (std::size_t k = 0; k < times; ++k) mean(k, j) /= sums.total[k];
  }
}

void takeMeans(const Problem& problem, Sums& sums) {
  const std::size_t p = problem.columns();
  if (sums.mean.columns() != p) sums.mean = BlockedColumns(problem.times(), p);
  numerics::inParallel((p + kWidth - 1) / kWidth, [&](std::size_t part) {
    const std::size_t first = part * kWidth;
    if (first + kWidth <= p) return takeMeans<kWidth>(problem, first, sums);
    for (std::size_t j = first; j < p; ++j) takeMeans<1>(problem, j, sums);
  });
}

void addGram(const BlockedColumns& x, std::span<const double> weight, double sign,
             numerics::SquareMatrix& sum) {
  for (std::size_t block = 0; block < x.blocks(); ++block) {
    numerics::addWeightedGram(x.column(block, 0), weight.data() + block * BlockedColumns::kBlock,
                              x.rowsOf(block), sign, sum);
  }
}

}  // namespace

Problem::Problem(const Response& response, const Rows& input, const Design& design,
                 const Groups& groups, std::uint32_t cause, CensoringTies ties, double tieTolerance)
    : own(flags(checked(response, cause), cause)),
      any(flags(response, 0)),
      rows({response.entry, response.exit, own, 1}, input, design, tieTolerance),
      curves({response.entry, response.exit, any, 1}, weightsOf(input), groups, ties, tieTolerance),
      censoring(groups) {
  const risk::Arrangement& a = rows.arrangement;
  group.resize(a.rows());
  for (std::uint32_t i = 0; i < a.rows(); ++i) {
    const std::uint32_t row = a.source[i];
    group[i] = groups[row];
    if (any[row] == 0 || own[row] != 0) continue;
    const double before = curves.before(group[i], a.codeTime[a.exitCode[i]]);
    if (!(before > 0.0)) {
      throw Refusal(
          Role::kEntry, row,
          "nobody stays at risk from this end to later entries: a row that fails of another "
          "cause has no weight across the gap");
    }
    other.push_back(i);
    since.push_back(1.0 / before);
  }
  weight.resize(numerics::product(groups.size(), times()));
  for (std::size_t g = 0; g < groups.size(); ++g) {
    for (std::size_t k = 0; k < times(); ++k) {
      weight[g * times() + k] = curves.before(g, a.time[k]);
    }
  }
}

void overRiskSets(const Problem& problem, std::span<const double> value, std::span<double> sum) {
  std::vector<double> failing(sum.size());
  problem.rows.sums.overRiskSets(value, sum, failing);
  for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += failing[k];
  addGone<1>(
      problem, [&](std::uint32_t row, std::size_t) { return value[row]; },
      [&](std::size_t k, std::size_t) -> double& { return sum[k]; });
}

void overTimes(const Problem& problem, std::span<const double> at, std::span<double> sum) {
  const risk::Arrangement& a = problem.rows.arrangement;
  problem.rows.sums.overTimes(at, at, sum);
  std::vector<numerics::RunningSum> later(problem.censoring.size());
  eachStratum(problem, [&](std::size_t s, std::size_t from, std::size_t to) {
    std::fill(later.begin(), later.end(), numerics::RunningSum());
    std::size_t k = a.stratumTime[s + 1];
    for (std::size_t next = to; next-- > from;) {
      const std::uint32_t row = problem.other[next];
      for (; k > a.end[row]; --k) {
        for (std::size_t g = 0; g < later.size(); ++g) {
          later[g].add(problem.weightAt(g, k - 1) * at[k - 1]);
        }
      }
      sum[row] += problem.since[next] * later[problem.group[row]].value();
    }
  });
}

numerics::SquareMatrix informationOf(const Problem& problem, const Sums& sums,
                                     std::span<const double> g) {
  const risk::Arrangement& a = problem.rows.arrangement;
  std::vector<double> exposed(sums.exposure);
  std::vector<double> events(a.eventWeight);
  if (!g.empty()) {
    std::vector<double> increment(sums.increment);
    for (std::size_t k = 0; k < a.times(); ++k) {
      increment[k] *= g[k];
      events[k] *= g[k];
    }
    overTimes(problem, increment, exposed);
  }
  for (std::size_t i = 0; i < a.rows(); ++i) exposed[i] *= sums.risk[i];
  numerics::SquareMatrix information(problem.columns());
  addGram(problem.rows.x, exposed, 1.0, information);
  addGram(sums.mean, events, -1.0, information);
  numerics::mirror(information);
  return information;
}

bool evaluate(const Problem& problem, std::span<const double> coefficients, Sums& sums,
              numerics::NewtonPoint& point) {
  const risk::Arrangement& a = problem.rows.arrangement;
  const std::size_t p = problem.columns();
  std::vector<double> predictor(a.rows(), 0.0);
  if (!a.offset.empty()) predictor = a.offset;
  numerics::addProduct(problem.rows.x, coefficients, predictor);
  sums.shift = a.rows() > 0 ? *std::max_element(predictor.begin(), predictor.end()) : 0.0;
  numerics::RunningSum logLikelihood;
  for (std::size_t i = 0; i < a.rows(); ++i) {
    predictor[i] -= sums.shift;
    if (!std::isfinite(predictor[i])) return false;
    if (a.event[i] != 0) logLikelihood.add(a.weight[i] * predictor[i]);
  }
  sums.risk.resize(a.rows());
  numerics::expArray(predictor, sums.risk);
  for (std::size_t i = 0; i < a.rows(); ++i) sums.risk[i] *= a.weight[i];
  sums.total.resize(a.times());
  sums.increment.resize(a.times());
  sums.exposure.resize(a.rows());
  overRiskSets(problem, sums.risk, sums.total);
  for (std::size_t k = 0; k < a.times(); ++k) {
    if (!(sums.total[k] > 0.0)) return false;
    sums.increment[k] = a.eventWeight[k] / sums.total[k];
    logLikelihood.add(-a.eventWeight[k] * numerics::log(sums.total[k]));
  }
  sums.logLikelihood = point.value = logLikelihood.value();
  overTimes(problem, sums.increment, sums.exposure);

  takeMeans(problem, sums);
  std::vector<double> residual(a.rows());
  for (std::size_t i = 0; i < a.rows(); ++i) {
    residual[i] = (a.event[i] != 0 ? a.weight[i] : 0.0) - sums.risk[i] * sums.exposure[i];
  }
  point.gradient.assign(p, 0.0);
  for (std::size_t block = 0; block < problem.rows.x.blocks(); ++block) {
    numerics::addWeightedSums(problem.rows.x.column(block, 0),
                              residual.data() + block * BlockedColumns::kBlock,
                              problem.rows.x.rowsOf(block), point.gradient);
  }
  point.information = informationOf(problem, sums);
  return true;
}

}  // namespace survmeth::engine::finegray
