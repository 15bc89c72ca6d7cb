#include "engine/finegray/proportionality.h"

#include <numeric>
#include <utility>

#include "engine/finegray/errors.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::BlockedColumns;
using numerics::SquareMatrix;

// The incidence of the cause before each code of time.
std::vector<double> incidenceBefore(const Problem& problem) {
  const risk::Arrangement& a = problem.rows.arrangement;
  const std::size_t codes = a.codeTime.size();
  std::vector<double> own(codes, 0.0), any(codes, 0.0), atRisk(codes + 1, 0.0), g(codes, 0.0);
  for (std::size_t i = 0; i < a.rows(); ++i) {
    atRisk[a.exitCode[i]] += 1.0;
    if (!a.entryCode.empty()) atRisk[a.entryCode[i]] -= 1.0;
    own[a.exitCode[i]] += a.event[i];
    any[a.exitCode[i]] += problem.any[a.source[i]];
  }
  for (std::size_t c = codes; c-- > 0;) atRisk[c] += atRisk[c + 1];
  double incidence = 0.0, free = 1.0;
  for (std::size_t c = 0; c < codes; ++c) {
    g[c] = incidence;
    if (any[c] == 0.0) continue;
    incidence += free * (own[c] / atRisk[c]);
    free *= (atRisk[c] - any[c]) / atRisk[c];
  }
  return g;
}

// Of each column the covariates of the events less their weighted means.
std::vector<std::vector<double>> residualsOfEvents(const Fit& fit) {
  const cox::Problem& rows = fit.problem->rows;
  const risk::Arrangement& a = rows.arrangement;
  std::vector<std::vector<double>> result(rows.columns());
  for (std::size_t k = 0; k < a.times(); ++k) {
    for (std::size_t i = a.firstEvent[k]; i < a.firstEvent[k] + a.events[k]; ++i) {
      for (std::size_t j = 0; j < rows.columns(); ++j) {
        result[j].push_back(rows.x(i, j) - fit.sums.mean(k, j));
      }
    }
  }
  return result;
}

}  // namespace

Proportionality testProportionality(const Fit& fit, TimeTransform transform,
                                    numerics::Progress& progress) {
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.rows.arrangement;
  const std::size_t p = problem.columns();
  const std::vector<double> byCode = transform == TimeTransform::kKaplanMeier
                                         ? incidenceBefore(problem)
                                         : cox::timeTransform(a, transform);
  const std::vector<double> g = cox::centredAtEvents(a, byCode);
  std::vector<double> square(g);
  for (double& each : square) each *= each;

  Proportionality result;
  std::vector<double> score(p, 0.0);
  const std::vector<std::vector<double>> ofTimes = schoenfeld(fit);
  for (std::size_t k = 0; k < a.times(); ++k) {
    result.transformed.insert(result.transformed.end(), a.events[k], byCode[a.timeCode[k]]);
    for (std::size_t j = 0; j < p; ++j) score[j] += g[k] * ofTimes[k][j];
  }
  std::vector<std::size_t> estimated(p);
  std::iota(estimated.begin(), estimated.end(), std::size_t{0});
  const SquareMatrix information = informationOf(problem, fit.sums);
  const SquareMatrix mixed = informationOf(problem, fit.sums, g);
  const numerics::Cholesky factor(information);
  result.scaledTerms = cox::termResiduals(problem.rows, fit.coefficients, estimated, information,
                                          static_cast<double>(fit.events), residualsOfEvents(fit));
  result.modelBased = cox::scoreTests(
      problem.rows, estimated, score,
      cox::givenCoefficients(informationOf(problem, fit.sums, square), mixed, factor));

  progress.at(0.3);
  BlockedColumns own = scoreResiduals(problem, fit.sums);
  BlockedColumns changing = scoreResiduals(problem, fit.sums, g);
  if (fit.errors == Errors::kEstimatedWeights) {
    progress.at(0.5);
    addCensoring(problem, fit.sums, own);
    progress.at(0.7);
    addCensoring(problem, fit.sums, changing, g);
  }
  progress.at(0.9);
  std::vector<std::vector<double>> taken;  // of each column: what a score of b takes along
  for (std::size_t j = 0; j < p; ++j) taken.push_back(factor.solve(mixed.row(j)));
  std::vector<double> row(p);
  for (std::size_t i = 0; i < a.rows(); ++i) {
    for (std::size_t j = 0; j < p; ++j) row[j] = own(i, j);
    for (std::size_t j = 0; j < p; ++j) changing(i, j) -= numerics::dot(taken[j], row);
  }
  static_cast<cox::TermTests&>(result) = cox::scoreTests(
      problem.rows, estimated, score, productsOf(problem, fit.weightKind, changing));
  return result;
}

}  // namespace survmeth::engine::finegray
