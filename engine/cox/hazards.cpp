// Risks, their sums over risk sets and the increments of the cumulative hazard.
#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/cox/problem.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

// Within this distance of 0 no sum of risks over- or underflows.
constexpr double kSafe = 300.0;
// exp(650) times any number of rows is below the largest double, exp(-650) above the smallest.
constexpr double kWidest = 1300.0;

// The shift of one stratum; false where its predictors are too far apart.
bool shiftOf(std::span<const double> predictor, double& shift) {
  // Four of each, as each waits for itself.
  double least[4];
  double most[4];
  double sum[4] = {};
  std::fill(least, least + 4, predictor.front());
  std::fill(most, most + 4, predictor.front());
  for (std::size_t i = 0; i < predictor.size(); ++i) {
    const double value = predictor[i];
    least[i % 4] = std::min(least[i % 4], value);
    most[i % 4] = std::max(most[i % 4], value);
    sum[i % 4] += value - value;  // 0 for finite numbers only
  }
  const double low = *std::min_element(least, least + 4);
  const double high = *std::max_element(most, most + 4);
  if (sum[0] + sum[1] + sum[2] + sum[3] != 0.0 || high - low > kWidest) return false;
  shift = high <= kSafe && low >= -kSafe ? 0.0 : std::floor(0.5 * (low + high));
  return true;
}

// The sum of weight * predictor over the events, without a decision for each row.
double observedSum(const risk::Arrangement& a, std::span<const double> predictor) {
  numerics::RunningSum sum;
  constexpr std::size_t kPart = 64;
  for (std::size_t begin = 0; begin < predictor.size(); begin += kPart) {
    const std::size_t stop = std::min(begin + kPart, predictor.size());
    double part[4] = {};
    for (std::size_t i = begin; i < stop; ++i) {
      part[i % 4] += a.event[i] * (a.weight[i] * predictor[i]);
    }
    sum.add((part[0] + part[1]) + (part[2] + part[3]));
  }
  return sum.value();
}

// Sums weight * log(value) in groups that are taken at once.
class LogSum {
 public:
  void add(double weight, double value) {
    weight_[count_] = weight;
    value_[count_] = value;
    if (++count_ == kGroup) flush();
  }
  double total() {
    flush();
    return sum_.value();
  }

 private:
  static constexpr std::size_t kGroup = 256;
  void flush() {
    numerics::logArray({value_, count_}, {value_, count_});
    for (std::size_t i = 0; i < count_; ++i) sum_.add(weight_[i] * value_[i]);
    count_ = 0;
  }
  double weight_[kGroup], value_[kGroup];
  std::size_t count_ = 0;
  numerics::RunningSum sum_;
};

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

bool hazardsAt(const Problem& problem, Ties ties, std::span<const double> coefficients,
               Hazards& hazards) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t n = a.rows();
  if (a.offset.empty()) {
    hazards.predictor.assign(n, 0.0);
  } else {
    hazards.predictor = a.offset;
  }
  numerics::addProduct(problem.x, coefficients, hazards.predictor);
  hazards.shift.assign(a.strata(), 0.0);
  hazards.risk = hazards.predictor;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    const std::size_t begin = a.stratumRow[s];
    const std::size_t count = a.stratumRow[s + 1] - begin;
    if (!shiftOf({hazards.predictor.data() + begin, count}, hazards.shift[s])) return false;
    if (hazards.shift[s] == 0.0) continue;
    for (std::size_t i = begin; i < begin + count; ++i) hazards.risk[i] -= hazards.shift[s];
  }
  const double observed = observedSum(a, hazards.risk);
  numerics::expArray(hazards.risk, hazards.risk);
  if (a.weighted) {
    for (std::size_t i = 0; i < n; ++i) hazards.risk[i] *= a.weight[i];
  }

  hazards.others.resize(a.times());
  hazards.failing.resize(a.times());
  problem.sums.overRiskSets(hazards.risk, hazards.others, hazards.failing);

  hazards.increment.resize(a.times());
  hazards.own.resize(a.times());
  LogSum logs;
  for (std::size_t k = 0; k < a.times(); ++k) {
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
  hazards.logLikelihood = observed - logs.total();
  hazards.cumulative.resize(n);
  problem.sums.overTimes(hazards.increment, hazards.own, hazards.cumulative);
  return true;
}

}  // namespace survmeth::engine::cox
