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

}  // namespace

std::vector<double> timeTransform(const risk::Arrangement& a, TimeTransform transform) {
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

std::vector<double> centredAtEvents(const risk::Arrangement& a, std::span<const double> byCode) {
  double sum = 0.0;
  double weights = 0.0;
  for (std::size_t k = 0; k < a.times(); ++k) {
    sum += a.eventWeight[k] * byCode[a.timeCode[k]];
    weights += a.eventWeight[k];
  }
  std::vector<double> g(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) g[k] = byCode[a.timeCode[k]] - sum / weights;
  return g;
}

TermTests scoreTests(const Problem& problem, const std::vector<std::size_t>& estimated,
                     std::span<const double> score, const SquareMatrix& variance) {
  const auto test = [&](const std::vector<std::size_t>& chosen) {
    std::vector<double> u;
    for (const std::size_t m : chosen) u.push_back(score[m]);
    const numerics::Cholesky factor(numerics::part(variance, chosen));
    return chiSquareTest(factor.quadraticForm(u), factor.rank());
  };
  std::vector<std::size_t> all;
  std::vector<std::vector<std::size_t>> ofTerm(problem.termNames.size());
  for (std::size_t m = 0; m < estimated.size(); ++m) {
    all.push_back(m);
    ofTerm[problem.term[estimated[m]]].push_back(m);
  }
  TermTests tests;
  for (std::size_t term = 0; term < ofTerm.size(); ++term) {
    tests.terms.push_back({term, ofTerm[term].empty() ? ChiSquareTest{} : test(ofTerm[term])});
  }
  if (!all.empty()) tests.global = test(all);
  return tests;
}

SquareMatrix givenCoefficients(SquareMatrix variance, const SquareMatrix& mixed,
                               const numerics::Cholesky& information) {
  for (std::size_t j = 0; j < variance.size(); ++j) {
    const std::vector<double> solved = information.solve(mixed.row(j));
    for (std::size_t k = 0; k < variance.size(); ++k) {
      variance(j, k) -= numerics::dot(mixed.row(k), solved);
    }
  }
  return variance;
}

std::vector<TermResiduals> termResiduals(const Problem& problem,
                                         std::span<const double> coefficients,
                                         const std::vector<std::size_t>& estimated,
                                         const SquareMatrix& information, double events,
                                         const std::vector<std::vector<double>>& raw) {
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
      loading[m] = one ? 1.0 : coefficients[estimated[m]];
    }
    loadings.push_back(std::move(loading));
    TermResiduals made;
    made.term = term;
    made.coefficient = one ? coefficients[estimated[ofTerm[term][0]]] : 1.0;
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
  // What each column's residuals are multiplied with for the residuals of term t.
  for (std::size_t t = 0; t < terms.size(); ++t) {
    std::vector<double> scale(estimated.size(), 0.0);
    for (std::size_t m = 0; m < estimated.size(); ++m) {
      for (std::size_t s = 0; s < terms.size(); ++s) {
        scale[m] += events * loadings[s][m] * covariance(s, t);
      }
    }
    terms[t].variance = events * covariance(t, t);
    terms[t].value.assign(raw[estimated[0]].size(), terms[t].coefficient);
    for (std::size_t m = 0; m < estimated.size(); ++m) {
      const std::vector<double>& column = raw[estimated[m]];
      for (std::size_t i = 0; i < column.size(); ++i) terms[t].value[i] += scale[m] * column[i];
    }
  }
  return terms;
}

Proportionality testProportionality(const Fit& fit, TimeTransform transform) {
  refuseExactTies(fit.ties, "tests of proportional hazards");
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.arrangement;
  const std::vector<double> byCode = timeTransform(a, transform);
  Proportionality result;
  result.scaled = scaledSchoenfeldResiduals(fit, false);
  for (std::size_t k = 0; k < a.times(); ++k) {
    result.transformed.insert(result.transformed.end(), a.events[k], byCode[a.timeCode[k]]);
  }
  const std::vector<double> g = centredAtEvents(a, byCode);
  std::vector<double> square(g);
  for (double& each : square) each *= each;
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
  result.scaledTerms =
      termResiduals(problem, fit.coefficients, estimated, kept, static_cast<double>(fit.events),
                    schoenfeldResiduals(fit, false).column);
  std::vector<double> u;
  for (const std::size_t j : estimated) u.push_back(score[j]);
  static_cast<TermTests&>(result) =
      scoreTests(problem, estimated, u,
                 givenCoefficients(numerics::part(variance, estimated),
                                   numerics::part(mixed, estimated), factor));
  return result;
}

}  // namespace survmeth::engine::cox
