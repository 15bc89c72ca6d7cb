#include "engine/finegray/fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "engine/cox/maximum.h"
#include "engine/finegray/errors.h"
#include "numerics/cholesky.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::Cholesky;
using numerics::SquareMatrix;

void countRows(Fit& fit) {
  const Problem& problem = *fit.problem;
  fit.rows = problem.rows.arrangement.rows();
  for (const std::uint32_t events : problem.rows.arrangement.events) fit.events += events;
  fit.competing = problem.other.size();
}

// Columns that say nothing beside those before them; none: every column is told apart.
void noteCollinear(const Problem& problem, const Cholesky& factor, Fit& fit) {
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    if (!factor.dependent(j)) continue;
    Outcome& outcome = fit.outcomes.emplace_back();
    outcome.code = "collinear";
    outcome.names = {problem.rows.names[j]};
    const std::vector<double> combination = factor.combination(j);
    for (std::size_t k = 0; k < j; ++k) {
      if (std::fabs(combination[k]) * problem.rows.spread[k] > 1e-6 * problem.rows.spread[j]) {
        outcome.names.push_back(problem.rows.names[k]);
      }
    }
    outcome.text = problem.rows.names[j] + (outcome.names.size() == 1
                                                ? " does not vary among those at risk at events"
                                                : " follows from other covariates");
  }
}

// How far a step moves each column's values.
double reachOf(const Problem& problem, std::span<const double> step, std::size_t j) {
  return std::fabs(step[j]) * problem.rows.spread[j];
}

// Whether, along a direction, every event has the largest predictor of its risk set: the likelihood
// then rises without end.
bool separates(const Problem& problem, std::span<const double> direction, double reach) {
  const risk::Arrangement& a = problem.rows.arrangement;
  std::vector<double> value(a.rows(), 0.0);
  numerics::addProduct(problem.rows.x, direction, value);
  const double rounding = 1e-9 * reach;
  std::vector<double> largest = problem.rows.sums.largestInRiskSets(value);
  std::size_t next = 0;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    double gone = -std::numeric_limits<double>::infinity();
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      for (; next < problem.other.size() && a.end[problem.other[next]] <= k &&
             problem.other[next] < a.stratumRow[s + 1];
           ++next) {
        if (problem.weightAt(problem.group[problem.other[next]], k) > 0.0) {
          gone = std::max(gone, value[problem.other[next]]);
        }
      }
      for (std::size_t i = a.firstEvent[k]; i < a.firstEvent[k] + a.events[k]; ++i) {
        if (value[i] < std::max(largest[k], gone) - rounding) return false;
      }
    }
    while (next < problem.other.size() && problem.other[next] < a.stratumRow[s + 1]) ++next;
  }
  return true;
}

std::string reasonOf(numerics::NewtonStop stop) {
  switch (stop) {
    case numerics::NewtonStop::kIterationLimit:
      return "the limit was reached";
    case numerics::NewtonStop::kNoAscent:
      return "no step raises the likelihood";
    case numerics::NewtonStop::kRankLost:
      return "the information matrix became singular: a covariate may tell all events apart";
    default:
      return "the predictors are too far apart";
  }
}

void noteSeparated(const Problem& problem, std::span<const double> step, Fit& fit) {
  double reach = 0.0;
  for (std::size_t j = 0; j < problem.columns(); ++j) reach += reachOf(problem, step, j);
  Outcome& outcome = fit.outcomes.emplace_back();
  outcome.code = "separated";
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    if (reachOf(problem, step, j) > 1e-3 * reach) outcome.names.push_back(problem.rows.names[j]);
  }
  outcome.text = "the likelihood rises without end: at every event the row that fails stands out";
}

ChiSquareTest waldTest(const Fit& fit, const std::vector<std::size_t>& chosen) {
  std::vector<double> value;
  for (const std::size_t j : chosen) value.push_back(fit.coefficients[j]);
  const Cholesky factor(numerics::part(fit.covariance, chosen));
  return cox::chiSquareTest(factor.quadraticForm(value), factor.rank());
}

void test(Fit& fit) {
  const cox::Problem& rows = fit.problem->rows;
  std::vector<std::vector<std::size_t>> columns(rows.termNames.size());
  std::vector<std::size_t> all;
  for (std::size_t j = 0; j < rows.columns(); ++j) {
    columns[rows.term[j]].push_back(j);
    all.push_back(j);
  }
  for (std::size_t term = 0; term < columns.size(); ++term) {
    fit.terms.push_back({term, waldTest(fit, columns[term])});
  }
  fit.wald = waldTest(fit, all);
  fit.likelihoodRatio =
      cox::chiSquareTest(2.0 * (fit.logLikelihood - fit.logLikelihoodNull), all.size());
}

}  // namespace

double Fit::standardError(std::size_t j) const { return std::sqrt(covariance(j, j)); }

Fit fit(const Response& response, const Rows& rows, const Design& design, const Groups& censoring,
        const Options& options, numerics::Progress& progress) {
  Fit result;
  const std::size_t p = design.size();
  result.errors = options.errors;
  result.weightKind = rows.weightKind;
  result.problem = std::make_shared<const Problem>(response, rows, design, censoring, options.cause,
                                                   options.censoringTies, options.tieTolerance);
  const Problem& problem = *result.problem;
  result.coefficients.assign(p, kAbsent);
  result.covariance = result.inverseInformation = SquareMatrix(p, kAbsent);
  countRows(result);
  if (result.events == 0) {
    result.outcomes.push_back({"noEvents", "no row fails of the cause of interest", {}});
    return result;
  }
  numerics::NewtonPoint start;
  const std::vector<double> zero(p, 0.0);
  if (!evaluate(problem, zero, result.sums, start)) {
    result.outcomes.push_back({"notConverged", "the offsets are too far apart", {}});
    return result;
  }
  result.logLikelihoodNull = start.value;
  const Cholesky first(start.information, cox::kRankTolerance);
  if (!first.fullRank()) {
    noteCollinear(problem, first, result);
    return result;
  }

  numerics::NewtonOptions newton;
  newton.iterationLimit = options.iterationLimit;
  newton.rankTolerance = cox::kRankTolerance;
  const auto function = [&](std::span<const double> at, numerics::NewtonPoint& point) {
    return evaluate(problem, at, result.sums, point);
  };
  const auto watch = [&](const numerics::NewtonResult& now) {
    progress.at(std::min(0.8, static_cast<double>(now.iterations) / 10.0));
    if (now.iterations < 4) return false;
    double reach = 0.0;
    for (std::size_t j = 0; j < p; ++j) reach += reachOf(problem, now.step, j);
    // A step that moves predictors far although next to nothing is left to gain.
    return reach > 0.3 && now.decrement * now.decrement < 0.02 * reach * reach &&
           separates(problem, now.step, reach);
  };
  const numerics::NewtonResult found = numerics::maximise(function, zero, newton, watch);
  result.iterations = found.iterations;
  result.decrement = found.decrement;
  result.converged = found.stop == numerics::NewtonStop::kConverged;
  if (found.stop == numerics::NewtonStop::kWatched) {
    noteSeparated(problem, found.step, result);
    return result;
  }
  if (!result.converged) {
    result.outcomes.push_back(
        {"notConverged", "no maximum was found: " + reasonOf(found.stop), {}});
    return result;
  }
  result.coefficients = found.at;
  result.logLikelihood = found.point.value;
  // The last point tried need not be the one that was taken.
  numerics::NewtonPoint again;
  evaluate(problem, result.coefficients, result.sums, again);
  result.inverseInformation = Cholesky(found.point.information).inverse();
  numerics::BlockedColumns residuals = scoreResiduals(problem, result.sums);
  progress.at(0.9);
  if (options.errors == Errors::kEstimatedWeights) addCensoring(problem, result.sums, residuals);
  result.covariance = numerics::sandwich(result.inverseInformation,
                                         productsOf(problem, rows.weightKind, residuals));
  test(result);
  return result;
}

std::vector<std::vector<double>> schoenfeld(const Fit& fit) {
  const cox::Problem& rows = fit.problem->rows;
  const risk::Arrangement& a = rows.arrangement;
  std::vector<std::vector<double>> result(a.times(), std::vector<double>(rows.columns(), 0.0));
  for (std::size_t k = 0; k < a.times(); ++k) {
    for (std::size_t i = a.firstEvent[k]; i < a.firstEvent[k] + a.events[k]; ++i) {
      for (std::size_t j = 0; j < rows.columns(); ++j) {
        result[k][j] += a.weight[i] * (rows.x(i, j) - fit.sums.mean(k, j));
      }
    }
  }
  return result;
}

}  // namespace survmeth::engine::finegray
