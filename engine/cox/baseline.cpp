#include "engine/cox/baseline.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/cox/residuals.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

// Sums from the first time of each stratum on, in place, of values in units of exp(-256 unit); each
// is in the largest of its terms' units.
void accumulate(const risk::Arrangement& a, std::span<const double> unit,
                std::vector<double>& value) {
  for (std::size_t s = 0; s < a.strata() && !unit.empty(); ++s) {
    risk::ScaledSum sum;
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      sum.add(value[k], -unit[k]);
      value[k] = sum.value();
    }
  }
  for (std::size_t s = 0; s < a.strata() && unit.empty(); ++s) {
    numerics::RunningSum sum;
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      value[k] = sum.add(value[k]);
    }
  }
}

// The units of such sums.
std::vector<double> unitsOfSums(const risk::Arrangement& a, std::vector<double> unit) {
  for (std::size_t s = 0; s < a.strata() && !unit.empty(); ++s) {
    for (std::size_t k = a.stratumTime[s] + std::size_t{1}; k < a.stratumTime[s + 1]; ++k) {
      unit[k] = std::min(unit[k], unit[k - 1]);
    }
  }
  return unit;
}

}  // namespace

BaselineHazard::BaselineHazard(const Fit& fit) {
  refuseExactTies(fit.ties, "cumulative hazards");
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.arrangement;
  Hazards hazards;
  hazardsAt(problem, fit.ties, fit.working, hazards);
  sums_.stratum = a.stratumCode;
  sums_.firstTime.assign(a.stratumTime.begin(), a.stratumTime.end());
  for (std::size_t s = 0; s < a.strata(); ++s) {
    sums_.lastTime.push_back(a.codeTime[a.exitCode[a.stratumRow[s + 1] - 1]]);
  }
  sums_.time = a.time;
  sums_.shift = hazards.shift;
  sums_.centre = problem.centres;
  sums_.coefficients = fit.working;
  sums_.column = fit.column;
  sums_.covariance = fit.inference();
  sums_.hazard.assign(hazards.increment.begin(), hazards.increment.end());
  sums_.variance.resize(a.times());
  std::vector<TieMoments> moments(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    moments[k] = tieMoments(problem, hazards, fit.ties, k);
    sums_.variance[k] = moments[k].u2 / (hazards.all(k) * hazards.all(k));
  }
  const std::vector<double>& unit = hazards.scales.time;
  std::vector<double> square(unit);
  for (double& each : square) each *= 2.0;
  accumulate(a, unit, sums_.hazard);
  accumulate(a, square, sums_.variance);
  sums_.scale = unitsOfSums(a, unit);
  std::vector<double> value(a.rows());
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    for (std::size_t i = 0; i < a.rows(); ++i) value[i] = hazards.risk[i] * problem.x(i, j);
    problem.sums.overRiskSets(value, others, failing, hazards.scales);
    std::vector<double> mean(a.times());
    for (std::size_t k = 0; k < a.times(); ++k) {
      const double whole = hazards.all(k);
      mean[k] =
          (moments[k].u2 * (others[k] / whole) + moments[k].u2f * (failing[k] / whole)) / whole;
    }
    accumulate(a, unit, mean);
    sums_.mean.push_back(std::move(mean));
  }
  findRoot();
}

BaselineHazard::BaselineHazard(HazardSums sums) : sums_(std::move(sums)) { findRoot(); }

void BaselineHazard::findRoot() {
  const numerics::SquareMatrix& v = sums_.covariance;
  for (std::size_t j = 0; j < sums_.column.size(); ++j) {
    if (sums_.column[j] == Column::kEstimated) estimated_.push_back(j);
    infinite_ = infinite_ || sums_.column[j] == Column::kInfinite;
  }
  const std::size_t p = estimated_.size();
  for (std::size_t c = 0; c < p; ++c) {
    std::vector<double> column(p, 0.0);
    for (std::size_t r = c; r < p; ++r) {
      column[r] = v(estimated_[r], estimated_[c]);
      for (std::size_t m = 0; m < c; ++m) column[r] -= root_[m][r] * root_[m][c];
    }
    // A robust covariance may have no full rank: what is left is rounding.
    const bool nothing = column[c] <= 1e-14 * v(estimated_[c], estimated_[c]);
    const double pivot = nothing ? 1.0 : std::sqrt(column[c]);
    for (double& each : column) each = nothing ? 0.0 : each / pivot;
    root_.push_back(std::move(column));
  }
  for (std::size_t c = 0; c < p; ++c) {
    std::vector<double> turned(sums_.time.size(), 0.0);
    for (std::size_t r = c; r < p; ++r) {
      const std::vector<double>& mean = sums_.mean[estimated_[r]];
      for (std::size_t k = 0; k < turned.size(); ++k) turned[k] += root_[c][r] * mean[k];
    }
    turned_.push_back(std::move(turned));
  }
}

}  // namespace survmeth::engine::cox
