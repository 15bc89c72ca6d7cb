// Sums of risks over risk sets and the increments of the cumulative hazard.
#include <algorithm>

#include "engine/cox/chunks.h"
#include "engine/cox/problem.h"
#include "engine/cox/risks.h"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

// Sums weight * log(value) in groups that are taken at once.
class LogSum {
 public:
  void add(double weight, double value) {
    weight_[count_] = weight;
    value_[count_] = value;
    if (++count_ == kMost) flush();
  }
  // weight[i] log(value[i]) for i = 0 .. count - 1.
  //
  // In   count  at most kMost
  // Out  value  changed
  void add(const double* weight, double* value, std::size_t count) {
    flush();
    numerics::logArray({value, count}, {value, count});
    for (std::size_t i = 0; i < count; ++i) sum_.add(weight[i] * value[i]);
  }
  double total() {
    flush();
    return sum_.value();
  }
  static constexpr std::size_t kMost = 256;

 private:
  void flush() {
    numerics::logArray({value_, count_}, {value_, count_});
    for (std::size_t i = 0; i < count_; ++i) sum_.add(weight_[i] * value_[i]);
    count_ = 0;
  }
  double weight_[kMost], value_[kMost];
  std::size_t count_ = 0;
  numerics::RunningSum sum_;
};

// Of times at which one row fails; whole[k] gets the sum over the risk set.
SURVMETH_HOT void incrementsOf(const double* weight, const double* others, const double* failing,
                               std::size_t count, double* whole, double* increment) {
  for (std::size_t k = 0; k < count; ++k) {
    whole[k] = others[k] + failing[k];
    increment[k] = weight[k] / whole[k];
  }
}

bool exactTies(Ties ties) { return ties == Ties::kDiscrete || ties == Ties::kMarginal; }

}  // namespace

TieMoments tieMoments(const Problem& problem, const Hazards& hazards, Ties ties, std::size_t k) {
  const risk::Arrangement& a = problem.arrangement;
  const double omega = a.eventWeight[k];
  const std::uint32_t d = a.events[k];
  if (d == 1 || ties == Ties::kBreslow) return {omega, omega, omega, omega, omega};
  if (exactTies(ties)) return {};
  TieMoments m{};
  const double whole = hazards.all(k);
  for (std::uint32_t l = 0; l < d; ++l) {
    const double f = static_cast<double>(d - l) / static_cast<double>(d);
    const double u = whole / (hazards.others[k] + f * hazards.failing[k]);
    m.u += u;
    m.uf += u * f;
    m.u2 += u * u;
    m.u2f += u * u * f;
    m.u2ff += u * u * f * f;
  }
  const double share = omega / static_cast<double>(d);
  return {share * m.u, share * m.uf, share * m.u2, share * m.u2f, share * m.u2ff};
}

namespace {

// Increments at the times begin .. end - 1; returns the sum of the logarithms of what the events
// are divided by.
double formIncrements(const Problem& problem, Ties ties, std::size_t begin, std::size_t end,
                      Hazards& hazards) {
  const risk::Arrangement& a = problem.arrangement;
  LogSum logs;
  constexpr std::size_t kWorthIt = 16;
  for (std::size_t k = begin; k < end; ++k) {
    // Neighbours at which one row fails are taken at once.
    const std::size_t limit = std::min(end - k, LogSum::kMost);
    std::size_t run = 0;
    while (run < limit && (a.events[k + run] == 1 || ties == Ties::kBreslow)) ++run;
    if (run >= kWorthIt) {
      double sums[LogSum::kMost];
      incrementsOf(a.eventWeight.data() + k, hazards.others.data() + k, hazards.failing.data() + k,
                   run, sums, hazards.increment.data() + k);
      std::copy_n(hazards.increment.data() + k, run, hazards.own.data() + k);
      logs.add(a.eventWeight.data() + k, sums, run);
      k += run - 1;
      continue;
    }
    const double whole = hazards.all(k);
    const std::uint32_t d = a.events[k];
    if (d == 1 || ties == Ties::kBreslow) {
      hazards.increment[k] = hazards.own[k] = a.eventWeight[k] / whole;
      logs.add(a.eventWeight[k], whole);
      continue;
    }
    const TieMoments m = tieMoments(problem, hazards, ties, k);
    hazards.increment[k] = m.u / whole;
    hazards.own[k] = m.uf / whole;
    if (ties == Ties::kEfron) {
      const double share = a.eventWeight[k] / static_cast<double>(d);
      for (std::uint32_t l = 0; l < d; ++l) {
        const double f = static_cast<double>(d - l) / static_cast<double>(d);
        logs.add(share, hazards.others[k] + f * hazards.failing[k]);
      }
    }
  }
  return logs.total();
}

}  // namespace

bool hazardsAt(const Problem& problem, Ties ties, std::span<const double> coefficients,
               Hazards& hazards) {
  const risk::Arrangement& a = problem.arrangement;
  double observed = 0.0;
  if (!formRisks(problem, coefficients, hazards, observed)) return false;

  hazards.others.resize(a.times());
  hazards.failing.resize(a.times());
  problem.sums.overRiskSets(hazards.risk, hazards.others, hazards.failing, hazards.scales);

  hazards.increment.resize(a.times());
  hazards.own.resize(a.times());
  const Chunks times(a.times(), 4096);
  std::vector<double> logs(times.count());
  times.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
    logs[chunk] = formIncrements(problem, ties, begin, end, hazards);
  });
  numerics::RunningSum logSum;
  for (const double sum : logs) logSum.add(sum);
  hazards.logLikelihood = observed - logSum.value();
  if (!exactTies(ties)) hazards.cumulative.swap(hazards.predictor);
  hazards.cumulative.resize(a.rows());
  problem.sums.overTimes(hazards.increment, hazards.own, hazards.cumulative, hazards.scales);
  return true;
}

}  // namespace survmeth::engine::cox
