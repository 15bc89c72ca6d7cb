#include "engine/cox/penalised.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Dist/Dist"
#include "engine/cox/penalisedLikelihood.h"
#include "numerics/cholesky.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

using numerics::Cholesky;
using numerics::NewtonPoint;
using numerics::SquareMatrix;

void refuse(const Rows& rows, const Options& options, const Penalty& penalty) {
  const auto none = [](Role role, const std::string& what) {
    throw Refusal(role, Refusal::kNone, "a penalised likelihood has no definition for " + what);
  };
  if (!rows.cluster.empty()) none(Role::kCluster, "clusters");
  if (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling) {
    none(Role::kWeight, "sampling weights");
  }
  if (options.robust) none(Role::kValue, "a robust covariance");
  const bool exact = options.ties == Ties::kDiscrete || options.ties == Ties::kMarginal;
  if (exact && penalty.kind == Penalty::Kind::kDeterminant) {
    none(Role::kValue, "an exact treatment of ties");
  }
}

// Active columns in terms.
std::vector<std::vector<std::size_t>> columnsOfTerms(const Problem& problem,
                                                     const std::vector<std::size_t>& active) {
  std::vector<std::vector<std::size_t>> columns(problem.termNames.size());
  for (const std::size_t j : active) columns[problem.term[j]].push_back(j);
  return columns;
}

void fillCovariance(const NewtonPoint& point, const std::vector<std::size_t>& active, Fit& fit) {
  const SquareMatrix inverse = Cholesky(numerics::part(point.information, active), 1e-14).inverse();
  fit.covariance = SquareMatrix(fit.coefficients.size(), kAbsent);
  for (std::size_t i = 0; i < active.size(); ++i) {
    for (std::size_t j = 0; j < active.size(); ++j) {
      fit.covariance(active[i], active[j]) = inverse(i, j);
    }
  }
}

// Penalised likelihood ratios, of all coefficients and of each term held at 0.
void testDeterminant(PenalisedLikelihood& likelihood, const PenalisedLikelihood::Found& found,
                     PenalisedFit& result) {
  Fit& fit = result.fit;
  const std::vector<std::size_t>& active = likelihood.active();
  fit.likelihoodRatio = chiSquareTest(
      std::max(0.0, 2.0 * (result.logLikelihood - result.logLikelihoodNull)), active.size());
  const auto terms = columnsOfTerms(*fit.problem, active);
  for (std::size_t term = 0; term < terms.size(); ++term) {
    ChiSquareTest test;
    if (!terms[term].empty()) {
      std::vector<double> start = found.at;
      for (const std::size_t j : terms[term]) start[j] = 0.0;
      const PenalisedLikelihood::Found held =
          likelihood.maximise(std::move(start), columnsWithout(active, terms[term]));
      if (held.converged) {
        test = chiSquareTest(std::max(0.0, 2.0 * (result.logLikelihood - held.point.value)),
                             terms[term].size());
      }
    }
    fit.terms.push_back({term, test});
  }
}

// The trace of information times covariance, and the likelihood's gain.
void testRidge(const PenalisedLikelihood& likelihood, const PenalisedLikelihood::Found& found,
               PenalisedFit& result) {
  Fit& fit = result.fit;
  const std::vector<std::size_t>& active = likelihood.active();
  result.effectiveDegrees = static_cast<double>(active.size());
  for (const std::size_t j : active) {
    result.effectiveDegrees -= likelihood.pull(j) * fit.covariance(j, j);
  }
  result.chiSquare = std::max(0.0, 2.0 * (found.unpenalised - fit.logLikelihoodNull));
  result.pValue = pValChiSq(result.chiSquare, result.effectiveDegrees);
  const auto terms = columnsOfTerms(*fit.problem, active);
  for (std::size_t term = 0; term < terms.size(); ++term) {
    fit.terms.push_back({term, terms[term].empty() ? ChiSquareTest{} : waldTest(fit, terms[term])});
  }
}

}  // namespace

PenalisedFit fitPenalised(const Response& response, const Rows& rows, const Design& design,
                          const Options& options, const Penalty& penalty,
                          numerics::Progress& progress) {
  refuse(rows, options, penalty);
  PenalisedFit result;
  result.penalty = penalty;
  // One step tells what is counted, which columns depend on others, and the score test.
  Options once = options;
  once.iterationLimit = 1;
  Fit& fit = result.fit;
  fit = cox::fit(response, rows, design, once, progress);
  fit.iterationLimit = options.iterationLimit;
  fit.likelihoodRatio = fit.wald = {};
  fit.terms.clear();
  std::erase_if(fit.outcomes,
                [](const Outcome& outcome) { return outcome.code == "notConverged"; });
  const bool dependent =
      !options.dropAliased &&
      std::any_of(fit.outcomes.begin(), fit.outcomes.end(),
                  [](const Outcome& outcome) { return outcome.code == "collinear"; });
  const std::vector<std::size_t> active = activeOf(fit);
  fit.converged = false;
  const std::vector<double> zero(fit.column.size(), 0.0);
  fit.working = zero;
  if (fit.events == 0 || dependent) return result;
  PenalisedLikelihood likelihood(*fit.problem, options.ties, penalty, active,
                                 options.iterationLimit, progress);
  NewtonPoint null;
  if (likelihood.at(zero, null)) result.logLikelihoodNull = null.value;
  const PenalisedLikelihood::Found found = likelihood.maximise(zero, active);
  fit.working = found.at;
  fit.iterations = found.iterations;
  fit.decrement = found.decrement;
  fit.converged = found.converged;
  for (const std::size_t j : active) fit.coefficients[j] = found.at[j];
  if (!found.converged) {
    fit.outcomes.push_back({"notConverged",
                            "the penalised likelihood does not converge within " +
                                std::to_string(options.iterationLimit) + " iterations",
                            {}});
    return result;
  }
  result.logLikelihood = found.point.value;
  fit.logLikelihood = found.unpenalised;
  fillCovariance(found.point, active, fit);
  fit.wald = active.empty() ? ChiSquareTest{} : waldTest(fit, active);
  const bool ridge = penalty.kind == Penalty::Kind::kRidge;
  if (ridge) {
    testRidge(likelihood, found, result);
    fit.score = {};
  } else {
    testDeterminant(likelihood, found, result);
  }
  const double degrees = ridge ? result.effectiveDegrees : static_cast<double>(active.size());
  fit.aic = 2.0 * degrees - 2.0 * fit.logLikelihood;
  fit.bic = degrees * numerics::log(fit.eventsCounted) - 2.0 * fit.logLikelihood;
  return result;
}

}  // namespace survmeth::engine::cox
