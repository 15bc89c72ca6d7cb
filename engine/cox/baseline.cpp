#include "engine/cox/baseline.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/cox/residuals.h"
#include "numerics/elementary.h"
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
  sums_.hazard = hazards.increment;
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
}

// Covariates and an offset in one stratum.
class BaselineHazard::Subject {
 public:
  Subject(const HazardSums& sums, std::span<const double> x, double offset, std::uint32_t stratum)
      : sums_(sums), away_(sums.column.size()), q_(sums.column.size()) {
    const auto found = std::lower_bound(sums.stratum.begin(), sums.stratum.end(), stratum);
    if (found == sums.stratum.end() || *found != stratum) {
      throw Refusal(Role::kStrata, Refusal::kNone,
                    "stratum " + std::to_string(stratum) + " has no rows in the fit");
    }
    stratum_ = static_cast<std::size_t>(found - sums.stratum.begin());
    double predictor = offset - sums.shift[stratum_];
    for (std::size_t j = 0; j < away_.size(); ++j) {
      away_[j] = x[j] - sums.centre[stratum_ * away_.size() + j];
      if (sums.column[j] != Column::kAliased) predictor += away_[j] * sums.coefficients[j];
      infinite_ = infinite_ || sums.column[j] == Column::kInfinite;
    }
    predictor_ = predictor;
    risk_ = numerics::exp(predictor);
  }

  std::size_t begin() const { return sums_.firstTime[stratum_]; }
  std::size_t end() const { return sums_.firstTime[stratum_ + 1]; }
  double lastTime() const { return sums_.lastTime[stratum_]; }

  // Just after event time k.
  HazardValue after(std::size_t k) {
    const std::size_t p = away_.size();
    for (std::size_t j = 0; j < p; ++j) {
      q_[j] = away_[j] * sums_.hazard[k] - sums_.mean[j][k];
    }
    double variance = sums_.variance[k];
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t m = 0; m < p; ++m) {
        if (sums_.column[j] == Column::kAliased || sums_.column[m] == Column::kAliased) continue;
        variance += q_[j] * q_[m] * sums_.covariance(j, m);
      }
    }
    const double risk =
        sums_.scale.empty() ? risk_ : numerics::exp(predictor_ - risk::kScaleStep * sums_.scale[k]);
    return {risk * sums_.hazard[k], infinite_ ? kAbsent : risk * std::sqrt(variance)};
  }

 private:
  const HazardSums& sums_;
  std::vector<double> away_, q_;
  std::size_t stratum_ = 0;
  double predictor_ = 0, risk_ = 0;
  bool infinite_ = false;
};

CumulativeHazard BaselineHazard::at(std::span<const double> x, double offset,
                                    std::uint32_t stratum) const {
  Subject subject(sums_, x, offset, stratum);
  CumulativeHazard result;
  for (std::size_t k = subject.begin(); k < subject.end(); ++k) {
    const HazardValue value = subject.after(k);
    result.time.push_back(sums_.time[k]);
    result.hazard.push_back(value.hazard);
    result.standardError.push_back(value.standardError);
  }
  return result;
}

std::vector<HazardValue> BaselineHazard::at(std::span<const double> x, double offset,
                                            std::uint32_t stratum,
                                            std::span<const double> times) const {
  Subject subject(sums_, x, offset, stratum);
  const auto first = sums_.time.begin() + static_cast<std::ptrdiff_t>(subject.begin());
  const auto last = sums_.time.begin() + static_cast<std::ptrdiff_t>(subject.end());
  std::vector<HazardValue> values;
  for (const double time : times) {
    if (time > subject.lastTime()) {
      values.push_back({kAbsent, kAbsent});
      continue;
    }
    const auto next = std::upper_bound(first, last, time);
    if (next == first) {
      values.push_back({});
    } else {
      values.push_back(subject.after(static_cast<std::size_t>(next - sums_.time.begin()) - 1));
    }
  }
  return values;
}

}  // namespace survmeth::engine::cox
