// Regression of the subdistribution hazard of one cause while others compete.
#ifndef ENGINE_FINEGRAY_FIT_H_
#define ENGINE_FINEGRAY_FIT_H_

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "engine/cox/fit.h"
#include "engine/finegray/problem.h"
#include "numerics/progress.h"

namespace survmeth::engine::finegray {

using cox::ChiSquareTest;
using cox::kAbsent;
using cox::TermTest;

enum class Errors {
  kEstimatedWeights,  // the sandwich, with what the estimated censoring curve adds (Fine & Gray)
  kSandwich,          // censoring weights taken as known
};

struct Options {
  std::uint32_t cause = 1;
  CensoringTies censoringTies = CensoringTies::kAtRisk;
  Errors errors = Errors::kEstimatedWeights;
  double tieTolerance = 0.0;  // 0: only equal times are tied
  int iterationLimit = 50;
};

struct Fit {
  std::vector<double> coefficients;  // p; NaN where there is no answer
  // p x p. `information` is the inverse information, which is no covariance of a weighted
  // likelihood; `covariance` is the one to use.
  numerics::SquareMatrix inverseInformation, covariance;
  double logLikelihoodNull = kAbsent, logLikelihood = kAbsent;  // pseudo
  ChiSquareTest likelihoodRatio;                                // pseudo, as crr has it
  ChiSquareTest wald;
  std::vector<TermTest> terms;  // Wald tests

  std::size_t rows = 0, events = 0, competing = 0;  // that take part
  int iterations = 0;
  double decrement = kAbsent;
  bool converged = false;
  std::vector<Outcome> outcomes;  // "noEvents", "collinear", "separated", "notConverged"

  // Of the follow-ups.
  Errors errors = Errors::kEstimatedWeights;
  WeightKind weightKind = WeightKind::kFrequencies;
  std::shared_ptr<const Problem> problem;
  Sums sums;  // at the coefficients
  double standardError(std::size_t j) const;
};

// Fits the model.
//
// In   response    causes 1 .. causes
//      rows        weights: frequencies, or sampling weights; strata have baselines of their own
//      censoring   groups that share a censoring curve; one group: everybody
// Out  coefficients at which the Newton decrement is at most 1e-10
// Edge Refusal for input that cannot be analysed; "collinear" names the columns, nothing is
//      estimated then
// Cost O(n (log n + p^2)) for each of some five iterations; errors the same
// Source Fine & Gray, JASA 94 (1999) 496-509; Geskus, Biometrics 67 (2011) 39-49
Fit fit(const Response& response, const Rows& rows, const Design& design, const Groups& censoring,
        const Options& options, numerics::Progress& progress);

// Residuals of the kind of Schoenfeld's: of each event the covariates less their weighted mean,
// events of one time together.
//
// Out  times x p
std::vector<std::vector<double>> schoenfeld(const Fit& fit);

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_FIT_H_
