#include "engine/cox/fit.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Dist/Dist"
#include "engine/cox/likelihood.h"
#include "engine/cox/maximum.h"
#include "engine/cox/residuals.h"
#include "engine/cox/separation.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

using numerics::Cholesky;
using numerics::SquareMatrix;

bool exactTies(Ties ties) { return ties == Ties::kDiscrete || ties == Ties::kMarginal; }

void refuseForExactTies(const Rows& rows, const Options& options) {
  if (!exactTies(options.ties)) return;
  const std::string method = options.ties == Ties::kDiscrete ? "discrete" : "exact marginal";
  const auto refuse = [&](Role role, const std::string& what) {
    throw Refusal(role, Refusal::kNone,
                  "the " + method + " treatment of ties has no definition for " + what);
  };
  for (const double weight : rows.weight) {
    if (weight != 1.0) refuse(Role::kWeight, "weights");
  }
  if (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling)
    refuse(Role::kWeight, "weights");
  if (!rows.cluster.empty()) refuse(Role::kCluster, "clusters");
  if (options.robust) refuse(Role::kValue, "a robust covariance");
}

void testTerms(Fit& fit) {
  const Problem& problem = *fit.problem;
  std::vector<std::vector<std::size_t>> columns(problem.termNames.size());
  std::vector<std::size_t> all;
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    if (fit.column[j] == Column::kAliased) continue;
    columns[problem.term[j]].push_back(j);
    all.push_back(j);
  }
  for (std::size_t term = 0; term < columns.size(); ++term) {
    fit.terms.push_back(
        {term, columns[term].empty() ? ChiSquareTest{} : waldTest(fit, columns[term])});
  }
  if (!all.empty()) fit.wald = waldTest(fit, all);
}

// u' (sum over clusters of u_c u_c')^-1 u of the score residuals at coefficients 0.
ChiSquareTest robustScoreTest(const Fit& fit, Hazards& hazards) {
  const std::vector<double> zero(fit.problem->columns(), 0.0);
  const ScoreSums sums = scoreSums(*fit.problem, fit.ties, zero, hazards);
  const Cholesky factor(sums.products);
  return chiSquareTest(factor.quadraticForm(sums.total), factor.rank());
}

void fillCovariance(Fit& fit, const SquareMatrix& information, bool robust, Hazards& hazards) {
  const std::size_t p = fit.problem->columns();
  std::vector<std::size_t> estimated;
  for (std::size_t j = 0; j < p; ++j) {
    if (fit.column[j] == Column::kEstimated) estimated.push_back(j);
  }
  fit.covariance = SquareMatrix(p, kAbsent);
  const SquareMatrix inverse = Cholesky(numerics::part(information, estimated)).inverse();
  const auto spread = [&](const SquareMatrix& from, SquareMatrix& to) {
    for (std::size_t i = 0; i < estimated.size(); ++i) {
      for (std::size_t j = 0; j < estimated.size(); ++j) {
        to(estimated[i], estimated[j]) = from(i, j);
      }
    }
  };
  spread(inverse, fit.covariance);
  if (!robust) return;
  const ScoreSums sums = scoreSums(*fit.problem, fit.ties, fit.working, hazards);
  fit.robustCovariance = SquareMatrix(p, kAbsent);
  spread(numerics::sandwich(inverse, numerics::part(sums.products, estimated)),
         fit.robustCovariance);
}

void countRows(Fit& fit, const Rows& rows) {
  const risk::Arrangement& a = fit.problem->arrangement;
  fit.rows = a.rows();
  double weights = 0.0;
  for (std::size_t k = 0; k < a.times(); ++k) {
    fit.events += a.events[k];
    weights += a.eventWeight[k];
  }
  const bool frequencies = rows.weightKind == WeightKind::kFrequencies;
  fit.eventsCounted = frequencies ? weights : static_cast<double>(fit.events);
}

}  // namespace

ChiSquareTest chiSquareTest(double chiSquare, std::size_t degreesOfFreedom) {
  return {chiSquare, degreesOfFreedom, pValChiSq(chiSquare, static_cast<double>(degreesOfFreedom))};
}

ChiSquareTest waldTest(const Fit& fit, const std::vector<std::size_t>& chosen) {
  for (const std::size_t j : chosen) {
    if (!std::isfinite(fit.coefficients[j])) return {};
  }
  std::vector<double> value;
  for (const std::size_t j : chosen) value.push_back(fit.coefficients[j]);
  const Cholesky factor(numerics::part(fit.inference(), chosen));
  return chiSquareTest(factor.quadraticForm(value), factor.rank());
}

double Fit::standardError(std::size_t j) const { return std::sqrt(inference()(j, j)); }

Fit fit(const Response& response, const Rows& rows, const Design& design, const Options& options,
        numerics::Progress& progress) {
  refuseForExactTies(rows, options);
  Fit result;
  result.problem = std::make_shared<Problem>(response, rows, design, options.tieTolerance);
  result.ties = options.ties;
  result.iterationLimit = options.iterationLimit;
  const Problem& problem = *result.problem;
  const std::size_t p = problem.columns();
  countRows(result, rows);
  result.coefficients.assign(p, kAbsent);
  result.column.assign(p, Column::kEstimated);
  result.working.assign(p, 0.0);
  result.covariance = SquareMatrix(p, kAbsent);
  if (result.events == 0) {
    result.outcomes.push_back({"noEvents", "no row has an event", {}});
    return result;
  }

  numerics::NewtonPoint start;
  Hazards hazards;
  evaluate(problem, options.ties, result.working, hazards, start);
  result.logLikelihoodNull = start.value;
  const Cholesky factor(start.information, kRankTolerance, smallestInformation(problem));
  for (Outcome& outcome : collinearOutcomes(problem, factor)) {
    result.outcomes.push_back(std::move(outcome));
  }
  if (!factor.fullRank() && !options.dropAliased) return result;
  std::vector<std::size_t> free;
  for (std::size_t j = 0; j < p; ++j) {
    if (factor.dependent(j)) {
      result.column[j] = Column::kAliased;
    } else {
      free.push_back(j);
    }
  }
  result.score = chiSquareTest(factor.quadraticForm(start.gradient), free.size());

  Maximum maximum = maximise(problem, options.ties, result.working, free, start,
                             options.iterationLimit, progress, std::move(hazards));
  result.working = maximum.at;
  result.iterations = maximum.iterations;
  result.decrement = maximum.decrement;
  result.converged = maximum.converged;
  for (const std::size_t j : free) result.coefficients[j] = maximum.at[j];
  for (const Separation& separation : maximum.separations) {
    result.outcomes.push_back(separationOutcome(problem, separation));
    for (const std::size_t j : separation.columns) {
      result.column[j] = Column::kInfinite;
      result.coefficients[j] = separation.direction[j] * std::numeric_limits<double>::infinity();
    }
  }
  for (const std::size_t j : maximum.undetermined) {
    if (result.column[j] == Column::kInfinite) continue;
    result.column[j] = Column::kAliased;
    result.coefficients[j] = kAbsent;
    result.outcomes.push_back({"collinear",
                               problem.names[j] + " cannot be told apart from other columns in the "
                                                  "rows that infinite coefficients leave",
                               {problem.names[j]}});
  }
  if (!maximum.converged) {
    result.outcomes.push_back(
        {"notConverged",
         maximum.reason + " after " + std::to_string(maximum.iterations) + " iterations",
         {}});
  }

  result.logLikelihood = maximum.point.value;
  result.likelihoodRatio = chiSquareTest(
      std::max(0.0, 2.0 * (result.logLikelihood - result.logLikelihoodNull)), free.size());
  const auto parameters = static_cast<double>(free.size());
  result.aic = 2.0 * parameters - 2.0 * result.logLikelihood;
  result.bic = parameters * numerics::log(result.eventsCounted) - 2.0 * result.logLikelihood;
  const bool robust = options.robust || !rows.cluster.empty() ||
                      (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling);
  fillCovariance(result, maximum.point.information, robust, maximum.hazards);
  if (robust && !free.empty()) result.robustScore = robustScoreTest(result, maximum.hazards);
  testTerms(result);
  return result;
}

std::vector<TermTest> dropEachTerm(const Fit& fit, numerics::Progress& progress) {
  const Problem& problem = *fit.problem;
  std::vector<TermTest> tests;
  for (std::size_t term = 0; term < problem.termNames.size(); ++term) {
    std::vector<std::size_t> kept;
    std::vector<double> start = fit.working;
    bool estimated = fit.converged;
    std::size_t dropped = 0;
    for (std::size_t j = 0; j < problem.columns(); ++j) {
      if (problem.term[j] == term) {
        start[j] = 0.0;
        ++dropped;
        estimated = estimated && fit.column[j] != Column::kAliased;
      } else if (fit.column[j] != Column::kAliased) {
        kept.push_back(j);
        if (fit.column[j] == Column::kInfinite) start[j] = 0.0;
      }
    }
    ChiSquareTest test;
    Hazards hazards;
    numerics::NewtonPoint point;
    if (estimated && dropped > 0 && evaluate(problem, fit.ties, start, hazards, point)) {
      const Maximum maximum =
          maximise(problem, fit.ties, start, kept, point, fit.iterationLimit, progress);
      if (maximum.converged) {
        test =
            chiSquareTest(std::max(0.0, 2.0 * (fit.logLikelihood - maximum.point.value)), dropped);
      }
    }
    tests.push_back({term, test});
  }
  return tests;
}

}  // namespace survmeth::engine::cox
