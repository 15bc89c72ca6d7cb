#include "engine/cox/proportionality.h"

#include <algorithm>
#include <cmath>

#include "engine/cox/likelihood.h"
#include "numerics/cholesky.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

using numerics::SquareMatrix;

// Rows by the code of their time, strata together: a transform of the time axis, whatever the rows'
// weights.
struct Counts {
  explicit Counts(const risk::Arrangement& a)
      : events(a.codeTime.size(), 0.0),
        rows(a.codeTime.size(), 0.0),
        atRisk(a.codeTime.size() + 1, 0.0) {
    for (std::size_t i = 0; i < a.rows(); ++i) {
      atRisk[a.exitCode[i]] += 1.0;
      if (!a.entryCode.empty()) atRisk[a.entryCode[i]] -= 1.0;
      rows[a.exitCode[i]] += 1.0;
      events[a.exitCode[i]] += a.event[i];
    }
    for (std::size_t c = a.codeTime.size(); c-- > 0;) atRisk[c] += atRisk[c + 1];
  }
  std::vector<double> events, rows, atRisk;
};

// g by the code of the time.
std::vector<double> transformed(const risk::Arrangement& a, TimeTransform transform) {
  const Counts counts(a);
  std::vector<double> g(a.codeTime.size(), 0.0);
  double survival = 1.0;
  double before = 0.0;
  for (std::size_t c = 0; c < g.size(); before += counts.rows[c], ++c) {
    if (counts.events[c] == 0.0) continue;
    switch (transform) {
      case TimeTransform::kKaplanMeier:
        g[c] = 1.0 - survival;
        survival *= (counts.atRisk[c] - counts.events[c]) / counts.atRisk[c];
        break;
      case TimeTransform::kRank:
        g[c] = before + (counts.rows[c] + 1.0) / 2.0;
        break;
      case TimeTransform::kIdentity:
        g[c] = a.codeTime[c];
        break;
      case TimeTransform::kLog:
        if (!(a.codeTime[c] > 0.0)) {
          throw Refusal(Role::kTime, Refusal::kNone, "the logarithm needs positive event times");
        }
        g[c] = numerics::log(a.codeTime[c]);
        break;
    }
  }
  return g;
}

// The score test of theta over the columns `chosen`, given all columns' coefficients.
ChiSquareTest scoreTest(const std::vector<double>& score, const SquareMatrix& variance,
                        const std::vector<std::size_t>& chosen) {
  std::vector<double> u;
  for (const std::size_t j : chosen) u.push_back(score[j]);
  const numerics::Cholesky factor(numerics::part(variance, chosen));
  return chiSquareTest(factor.quadraticForm(u), factor.rank());
}

// Each estimated column's coefficient in its term's one column.
std::vector<TermResiduals> residualsOfTerms(const Fit& fit,
                                            const std::vector<std::size_t>& estimated,
                                            const SquareMatrix& information,
                                            const SchoenfeldResiduals& raw) {
  const Problem& problem = *fit.problem;
  std::vector<std::vector<std::size_t>> ofTerm(problem.termNames.size());
  for (std::size_t m = 0; m < estimated.size(); ++m) {
    ofTerm[problem.term[estimated[m]]].push_back(m);
  }
  std::vector<TermResiduals> terms;
  std::vector<std::vector<double>> loadings;  // of each term, over the estimated columns
  for (std::size_t term = 0; term < ofTerm.size(); ++term) {
    if (ofTerm[term].empty()) continue;
    std::vector<double> loading(estimated.size(), 0.0);
    const bool one = ofTerm[term].size() == 1;
    for (const std::size_t m : ofTerm[term]) {
      loading[m] = one ? 1.0 : fit.coefficients[estimated[m]];
    }
    loadings.push_back(std::move(loading));
    TermResiduals made;
    made.term = term;
    made.coefficient = one ? fit.coefficients[estimated[ofTerm[term][0]]] : 1.0;
    terms.push_back(std::move(made));
  }
  SquareMatrix joint(terms.size());
  for (std::size_t s = 0; s < terms.size(); ++s) {
    for (std::size_t t = 0; t < terms.size(); ++t) {
      for (std::size_t m = 0; m < estimated.size(); ++m) {
        joint(s, t) += loadings[s][m] * numerics::dot(information.row(m), loadings[t]);
      }
    }
  }
  const numerics::Cholesky factor(joint);
  if (!factor.fullRank()) return {};
  const SquareMatrix covariance = factor.inverse();
  const auto events = static_cast<double>(fit.events);
  // What each column's residuals are multiplied with for the residuals of term t.
  for (std::size_t t = 0; t < terms.size(); ++t) {
    std::vector<double> scale(estimated.size(), 0.0);
    for (std::size_t m = 0; m < estimated.size(); ++m) {
      for (std::size_t s = 0; s < terms.size(); ++s) {
        scale[m] += events * loadings[s][m] * covariance(s, t);
      }
    }
    terms[t].variance = events * covariance(t, t);
    terms[t].value.assign(raw.row.size(), terms[t].coefficient);
    for (std::size_t m = 0; m < estimated.size(); ++m) {
      const std::vector<double>& column = raw.column[estimated[m]];
      for (std::size_t i = 0; i < column.size(); ++i) terms[t].value[i] += scale[m] * column[i];
    }
  }
  return terms;
}

}  // namespace

Proportionality testProportionality(const Fit& fit, TimeTransform transform) {
  refuseExactTies(fit.ties, "tests of proportional hazards");
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.arrangement;
  const std::vector<double> byCode = transformed(a, transform);
  Proportionality result;
  result.scaled = scaledSchoenfeldResiduals(fit, false);
  double sum = 0.0;
  double weights = 0.0;
  for (std::size_t k = 0; k < a.times(); ++k) {
    result.transformed.insert(result.transformed.end(), a.events[k], byCode[a.timeCode[k]]);
    sum += a.eventWeight[k] * byCode[a.timeCode[k]];
    weights += a.eventWeight[k];
  }
  // A constant in g changes nothing, as the score of the coefficients is 0; without it the two
  // parts of the variance do not cancel.
  std::vector<double> g(a.times());
  std::vector<double> square(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    g[k] = byCode[a.timeCode[k]] - sum / weights;
    square[k] = g[k] * g[k];
  }
  Hazards hazards;
  hazardsAt(problem, fit.ties, fit.working, hazards);
  std::vector<double> score;
  std::vector<double> unused;
  SquareMatrix information;
  SquareMatrix mixed;
  SquareMatrix variance;
  derivatives(problem, hazards, fit.ties, {}, unused, information);
  derivatives(problem, hazards, fit.ties, square, unused, variance);
  derivatives(problem, hazards, fit.ties, g, score, mixed);

  std::vector<std::size_t> estimated;
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    if (fit.column[j] == Column::kEstimated) estimated.push_back(j);
  }
  const SquareMatrix kept = numerics::part(information, estimated);
  const numerics::Cholesky factor(kept);
  result.scaledTerms = residualsOfTerms(fit, estimated, kept, schoenfeldResiduals(fit, false));
  const SquareMatrix cross = numerics::part(mixed, estimated);
  SquareMatrix rest = numerics::part(variance, estimated);
  for (std::size_t j = 0; j < estimated.size(); ++j) {
    const std::vector<double> solved = factor.solve(cross.row(j));
    for (std::size_t k = 0; k < estimated.size(); ++k) {
      rest(j, k) -= numerics::dot(cross.row(k), solved);
    }
  }
  std::vector<double> u;
  for (const std::size_t j : estimated) u.push_back(score[j]);

  std::vector<std::size_t> all;
  std::vector<std::vector<std::size_t>> ofTerm(problem.termNames.size());
  for (std::size_t m = 0; m < estimated.size(); ++m) {
    all.push_back(m);
    ofTerm[problem.term[estimated[m]]].push_back(m);
  }
  for (std::size_t term = 0; term < ofTerm.size(); ++term) {
    result.terms.push_back(
        {term, ofTerm[term].empty() ? ChiSquareTest{} : scoreTest(u, rest, ofTerm[term])});
  }
  if (!all.empty()) result.global = scoreTest(u, rest, all);
  return result;
}

}  // namespace survmeth::engine::cox
