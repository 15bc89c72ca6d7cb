// Proportional-hazards regression: coefficients, tests, baseline and residuals, or a word on why
// there is no such model.
#ifndef ANALYSIS_COX_MODEL_H_
#define ANALYSIS_COX_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "analysis/estimate.h"

namespace survmeth {

struct CoxCovariate {
  std::string name;
  std::span<const double> values;  // finite
};

struct CoxRequest {
  std::span<const double> time;            // finite
  std::span<const std::uint8_t> event;     // 0 censored, anything else an event
  std::vector<CoxCovariate> covariates;    // at least one
  std::span<const std::uint32_t> stratum;  // 0 .. strata - 1; empty: one stratum
  std::size_t strata = 1;
  double alpha = 0.05;  // in (0, 1); intervals have level 1 - alpha
  // Backward removal: as long as more than one covariate is left, the one with the largest Wald
  // p-value goes if that is at least this.
  std::optional<double> removeAt;
  bool baseline = false;
  bool residuals = false;
};

// A covariate that does not vary within any stratum has no coefficient: every number is NaN.
struct CoxCoefficient {
  std::string name;
  bool constant = false;
  double coef = 0, se = 0, z = 0, p = 0;
  double hazardRatio = 0, lower = 0, upper = 0;
};

struct CoxRemoval {
  std::string name;
  double chiSquare = 0, p = 0;  // Wald test at the time of its removal
};

// One stratum's cumulative hazard and survival at CoxModel::centre.
struct CoxBaseline {
  std::vector<double> time, cumulativeHazard, survival;
};

struct CoxModel {
  std::size_t n = 0, events = 0;
  // Of the covariates that are left and of those that are constant, in the request's order.
  std::vector<CoxCoefficient> coefficients;
  Test likelihoodRatio, score, wald;  // of all coefficients being 0
  double logLikNull = 0, logLik = 0;
  int iterations = 0;
  // Harrell's: of the pairs within strata whose order is known, the share in which the higher risk
  // fails first; equal risks count a half. NaN without such a pair.
  double concordance = 0;
  std::vector<CoxRemoval> removed;  // in order
  std::vector<double> centre;       // mean of each coefficient's covariate; NaN: constant
  std::vector<CoxBaseline> baseline;
  // In the order of the data. Schoenfeld residuals: one vector for each coefficient, NaN in rows
  // that are not events and where the covariate is constant.
  std::vector<double> martingale, deviance;
  std::vector<std::vector<double>> schoenfeld;
};

// A model that the data do not support. Its message names the covariates at fault.
class NoSuchModel : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Cox regression with Breslow's treatment of tied times.
//
// Throws engine::Refusal for columns of different length, no covariate, fewer than two rows or more
// than kMostRows (with many covariates: fewer), no event, values that are not finite, a stratum
// code, alpha or removeAt out of range, and where the number of strata times the largest number of
// distinct times in one of them passes 2^25; NoSuchModel where no covariate varies (within strata),
// for covariates that depend on others linearly, a covariate that separates the events from those
// at risk, estimates that run away, iterations that do not converge.
// Edge   more covariates than events: fitted if there is a maximum, which is then a matter of luck
// Cost   O(g n p^2) for each iteration, g the number of distinct times; memory O(n p) and about 70
//        bytes for each stratum and each of the most distinct times in one
// Source Cox, J R Stat Soc B 34 (1972) 187-220; Breslow, Biometrics 30 (1974) 89-99;
//        Harrell et al., Stat Med 15 (1996) 361-387 (concordance)
CoxModel coxModel(const CoxRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_COX_MODEL_H_
