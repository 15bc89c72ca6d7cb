#include "engine/cox/baseline.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/cox/residuals.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

// Sums from the first time of each stratum on, in place.
void accumulate(const risk::Arrangement& a, std::vector<double>& value) {
  for (std::size_t s = 0; s < a.strata(); ++s) {
    numerics::RunningSum sum;
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      value[k] = sum.add(value[k]);
    }
  }
}

}  // namespace

BaselineHazard::BaselineHazard(const Fit& fit) : fit_(fit) {
  refuseExactTies(fit.ties, "cumulative hazards");
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.arrangement;
  Hazards hazards;
  hazardsAt(problem, fit.ties, fit.working, hazards);
  shift_ = hazards.shift;
  hazard_ = hazards.increment;
  variance_.resize(a.times());
  std::vector<TieMoments> moments(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    moments[k] = tieMoments(problem, hazards, fit.ties, k);
    variance_[k] = moments[k].u2 / (hazards.all(k) * hazards.all(k));
  }
  accumulate(a, hazard_);
  accumulate(a, variance_);
  std::vector<double> value(a.rows());
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    for (std::size_t i = 0; i < a.rows(); ++i) value[i] = hazards.risk[i] * problem.x(i, j);
    problem.sums.overRiskSets(value, others, failing);
    std::vector<double> mean(a.times());
    for (std::size_t k = 0; k < a.times(); ++k) {
      const double whole = hazards.all(k);
      mean[k] =
          (moments[k].u2 * (others[k] / whole) + moments[k].u2f * (failing[k] / whole)) / whole;
    }
    accumulate(a, mean);
    mean_.push_back(std::move(mean));
  }
}

const std::vector<std::uint32_t>& BaselineHazard::strata() const {
  return fit_.problem->arrangement.stratumCode;
}

CumulativeHazard BaselineHazard::at(std::span<const double> x, double offset,
                                    std::uint32_t stratum) const {
  const Problem& problem = *fit_.problem;
  const risk::Arrangement& a = problem.arrangement;
  const auto found = std::lower_bound(strata().begin(), strata().end(), stratum);
  if (found == strata().end() || *found != stratum) {
    throw Refusal(Role::kStrata, Refusal::kNone,
                  "stratum " + std::to_string(stratum) + " has no rows in the fit");
  }
  const auto s = static_cast<std::size_t>(found - strata().begin());
  const std::size_t p = problem.columns();
  std::vector<double> away(p);
  double predictor = offset - shift_[s];
  bool infinite = false;
  for (std::size_t j = 0; j < p; ++j) {
    away[j] = x[j] - problem.centre(s, j);
    if (fit_.column[j] != Column::kAliased) predictor += away[j] * fit_.working[j];
    infinite = infinite || fit_.column[j] == Column::kInfinite;
  }
  const double risk = numerics::exp(predictor);
  CumulativeHazard result;
  std::vector<double> q(p);
  for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
    result.time.push_back(a.time[k]);
    result.hazard.push_back(risk * hazard_[k]);
    for (std::size_t j = 0; j < p; ++j) q[j] = away[j] * hazard_[k] - mean_[j][k];
    double variance = variance_[k];
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t m = 0; m < p; ++m) {
        if (fit_.column[j] == Column::kAliased || fit_.column[m] == Column::kAliased) continue;
        variance += q[j] * q[m] * fit_.inference()(j, m);
      }
    }
    result.standardError.push_back(infinite ? kAbsent : risk * std::sqrt(variance));
  }
  return result;
}

}  // namespace survmeth::engine::cox
