// What the likelihood of a subdistribution hazard is made of, and its sums at one set of
// coefficients.
#ifndef ENGINE_FINEGRAY_PROBLEM_H_
#define ENGINE_FINEGRAY_PROBLEM_H_

#include <cstdint>
#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "engine/finegray/weights.h"
#include "numerics/newton.h"

namespace survmeth::engine::finegray {

// Rows as proportional hazards have them, events being those of the cause; besides, those that fail
// of another cause stay in the risk sets of their stratum behind their exit.
struct Problem {
  Problem(const Response& response, const Rows& input, const Design& design, const Groups& groups,
          std::uint32_t cause, CensoringTies ties, double tieTolerance);
  Problem(const Problem&) = delete;
  Problem& operator=(const Problem&) = delete;

  std::size_t columns() const { return rows.columns(); }
  std::size_t times() const { return rows.arrangement.times(); }

  std::vector<std::uint32_t> own, any;  // events of the cause, of any cause; the caller's rows
  cox::Problem rows;
  CensoringCurves curves;
  Groups censoring;
  std::vector<std::uint32_t> group;  // censoring group of each arranged row
  std::vector<std::uint32_t> other;  // arranged rows that fail of another cause, ascending
  std::vector<double> since;         // of each of them: 1 / (G H) before its exit
  std::vector<double> weight;        // groups x times: G H before each event time

  double weightAt(std::size_t g, std::size_t k) const { return weight[g * times() + k]; }
};

// At one set of coefficients. Risks are divided by exp(shift).
struct Sums {
  std::vector<double> risk;       // rows: weight exp(predictor - shift)
  std::vector<double> total;      // times: weighted sum of the risks
  std::vector<double> increment;  // times: of the baseline's cumulative subdistribution hazard
  std::vector<double> exposure;   // rows: the sum of weight x increment
  numerics::BlockedColumns mean;  // times x columns: weighted mean of the covariates
  double shift = 0.0, logLikelihood = 0.0;
};

// Value[i], weighted, over the risk set of each event time.
void overRiskSets(const Problem& problem, std::span<const double> value, std::span<double> sum);

// The sum of at[k], weighted, over the event times of which each row is in the risk set.
void overTimes(const Problem& problem, std::span<const double> at, std::span<double> sum);

// The information, each event time counting `g` of its part.
//
// In   g   times, or empty: 1
// Cost O(n p^2)
numerics::SquareMatrix informationOf(const Problem& problem, const Sums& sums,
                                     std::span<const double> g = {});

// Log-likelihood, gradient and information: events of one time each against the whole risk set
// (Breslow).
//
// Edge false where predictors are no finite numbers or lie too far apart
// Cost O(n p^2), and O(groups of censoring x times x p)
bool evaluate(const Problem& problem, std::span<const double> coefficients, Sums& sums,
              numerics::NewtonPoint& point);

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_PROBLEM_H_
