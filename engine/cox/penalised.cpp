#include "engine/cox/penalised.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Dist/Dist"
#include "engine/cox/determinant.h"
#include "engine/cox/fall.h"
#include "engine/cox/likelihood.h"
#include "numerics/cholesky.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

using numerics::Cholesky;
using numerics::NewtonPoint;
using numerics::SquareMatrix;

// The penalised likelihood of a problem over its active columns, and its maximum over some of them.
class Penalised {
 public:
  Penalised(const Problem& problem, Ties ties, const Penalty& penalty,
            std::vector<std::size_t> active, int limit, numerics::Progress& progress)
      : problem_(problem),
        ties_(ties),
        penalty_(penalty),
        active_(std::move(active)),
        limit_(limit),
        progress_(progress),
        square_(problem.columns(), 1.0) {
    for (std::size_t j = 0; j < square_.size() && penalty.standardised; ++j) {
      square_[j] = variance(j);
    }
  }

  const std::vector<std::size_t>& active() const { return active_; }
  double likelihood() const { return hazards_.logLikelihood; }  // without the penalty

  // Value and gradient of the penalised likelihood; the information is that of the likelihood and the
  // ridge.
  bool at(const std::vector<double>& coefficients, NewtonPoint& point) {
    if (!evaluate(problem_, ties_, coefficients, hazards_, point)) return false;
    unpenalised_ = point.value;
    if (penalty_.kind == Penalty::Kind::kDeterminant) {
      return addDeterminant(problem_, hazards_, ties_, active_, point);
    }
    for (const std::size_t j : active_) {
      const double pull = penalty_.theta * square_[j];
      point.value -= 0.5 * pull * coefficients[j] * coefficients[j];
      point.gradient[j] -= pull * coefficients[j];
      point.information(j, j) += pull;
    }
    return true;
  }
  double unpenalised() const { return unpenalised_; }
  double pull(std::size_t j) const { return penalty_.theta * square_[j]; }

  struct Found {
    std::vector<double> at;
    NewtonPoint point;
    double unpenalised = 0.0, decrement = 0.0;
    int iterations = 0;
    bool converged = false;
  };

  // From `start` over the columns `free`; scoring steps, and, where these come near slowly, Newton's
  // with second derivatives from differences of the gradient.
  Found maximise(std::vector<double> start, const std::vector<std::size_t>& free) {
    Found found;
    found.at = std::move(start);
    if (!at(found.at, found.point)) return found;
    found.unpenalised = unpenalised_;
    double previous = std::numeric_limits<double>::infinity();
    for (;; ++found.iterations) {
      progress_.at(std::min(1.0, static_cast<double>(found.iterations) / limit_));
      std::vector<double> gradient;
      for (const std::size_t j : free) gradient.push_back(found.point.gradient[j]);
      const Cholesky scoring(numerics::part(found.point.information, free), 1e-14);
      if (!scoring.fullRank()) return found;
      found.decrement = std::sqrt(scoring.quadraticForm(gradient));
      // Below that the likelihood's own rounding decides.
      if (found.decrement <= 1e-10 ||
          (found.decrement < 1e-8 && found.decrement > 0.5 * previous)) {
        found.converged = true;
        return found;
      }
      if (found.iterations >= limit_) return found;
      std::vector<double> step = scoring.solve(gradient);
      if (penalty_.kind == Penalty::Kind::kDeterminant && found.decrement > 0.05 * previous) {
        const Cholesky second(differences(found, free), 1e-14);
        if (second.fullRank() && !second.indefinite()) step = second.solve(gradient);
      }
      previous = found.decrement;
      if (!climb(step, free, found)) return found;
    }
  }

 private:
  // The sample's, every row counted once.
  double variance(std::size_t j) const {
    const risk::Arrangement& a = problem_.arrangement;
    const auto n = static_cast<double>(a.rows());
    double sum = 0.0, squares = 0.0;
    const auto value = [&](std::size_t i) {
      return problem_.x(i, j) + (problem_.centre(a.rowStratum[i], j) - problem_.centre(0, j));
    };
    for (std::size_t i = 0; i < a.rows(); ++i) sum += value(i);
    for (std::size_t i = 0; i < a.rows(); ++i) {
      const double away = value(i) - sum / n;
      squares += away * away;
    }
    return squares / (n - 1.0);
  }

  // Minus the second derivatives of the penalised likelihood, from central differences.
  SquareMatrix differences(const Found& found, const std::vector<std::size_t>& free) {
    SquareMatrix second(free.size());
    NewtonPoint above, below;
    for (std::size_t m = 0; m < free.size(); ++m) {
      const double width = 1e-4 / std::sqrt(found.point.information(free[m], free[m]));
      std::vector<double> there = found.at;
      there[free[m]] = found.at[free[m]] + width;
      const bool isAbove = at(there, above);
      there[free[m]] = found.at[free[m]] - width;
      if (!at(there, below) || !isAbove) return SquareMatrix(free.size());
      for (std::size_t l = 0; l < free.size(); ++l) {
        second(l, m) = (below.gradient[free[l]] - above.gradient[free[l]]) / (2.0 * width);
      }
    }
    for (std::size_t m = 0; m < free.size(); ++m) {
      for (std::size_t l = 0; l < m; ++l) {
        second(m, l) = second(l, m) = 0.5 * (second(m, l) + second(l, m));
      }
    }
    return second;
  }

  // The longest of the step and its halves that raises the value, within its rounding.
  bool climb(const std::vector<double>& step, const std::vector<std::size_t>& free, Found& found) {
    const double least = found.point.value - 1e-13 * (1.0 + std::fabs(found.point.value));
    NewtonPoint next;
    double length = 1.0;
    for (int halving = 0; halving <= 30; ++halving, length *= 0.5) {
      std::vector<double> there = found.at;
      for (std::size_t m = 0; m < free.size(); ++m) there[free[m]] += length * step[m];
      if (!at(there, next) || !(next.value >= least)) continue;
      found.at = std::move(there);
      found.point = std::move(next);
      found.unpenalised = unpenalised_;
      return true;
    }
    return false;
  }

  const Problem& problem_;
  Ties ties_;
  Penalty penalty_;
  std::vector<std::size_t> active_;
  int limit_;
  numerics::Progress& progress_;
  std::vector<double> square_;  // s_j^2
  Hazards hazards_;
  double unpenalised_ = 0.0;
};

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

std::vector<std::size_t> activeOf(const Fit& fit) {
  std::vector<std::size_t> active;
  for (std::size_t j = 0; j < fit.column.size(); ++j) {
    if (fit.column[j] != Column::kAliased) active.push_back(j);
  }
  return active;
}

std::vector<std::size_t> without(const std::vector<std::size_t>& columns,
                                 const std::vector<std::size_t>& left) {
  std::vector<std::size_t> rest;
  for (const std::size_t j : columns) {
    if (std::find(left.begin(), left.end(), j) == left.end()) rest.push_back(j);
  }
  return rest;
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
void testDeterminant(Penalised& likelihood, const Penalised::Found& found, PenalisedFit& result) {
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
      const Penalised::Found held =
          likelihood.maximise(std::move(start), without(active, terms[term]));
      if (held.converged) {
        test = chiSquareTest(std::max(0.0, 2.0 * (result.logLikelihood - held.point.value)),
                             terms[term].size());
      }
    }
    fit.terms.push_back({term, test});
  }
}

// The trace of information times covariance, and the likelihood's gain.
void testRidge(const Penalised& likelihood, const Penalised::Found& found, PenalisedFit& result) {
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
  Penalised likelihood(*fit.problem, options.ties, penalty, active, options.iterationLimit,
                       progress);
  NewtonPoint null;
  if (likelihood.at(zero, null)) result.logLikelihoodNull = null.value;
  const Penalised::Found found = likelihood.maximise(zero, active);
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

ProfileLimits penalisedLimits(const PenalisedFit& penalised, std::size_t column, double level,
                              numerics::Progress& progress) {
  const Fit& fit = penalised.fit;
  const Problem& problem = *fit.problem;
  ProfileLimits result;
  const auto absent = [&](const std::string& why) {
    result.outcome = Outcome{"notConverged", why, {problem.names[column]}};
  };
  if (!fit.converged || fit.column[column] == Column::kAliased ||
      penalised.penalty.kind == Penalty::Kind::kRidge) {
    absent(problem.names[column] + " has no estimate to take limits around");
    return result;
  }
  const std::vector<std::size_t> active = activeOf(fit);
  Penalised likelihood(problem, fit.ties, penalised.penalty, active, fit.iterationLimit, progress);
  const std::vector<std::size_t> others = without(active, {column});
  const double z = std::sqrt(InvCDFChiSq(level, 1.0));
  for (const double sign : {-1.0, 1.0}) {
    std::vector<double> at = fit.working;
    const auto fall = [&](double b) -> Fall {
      at[column] = b;
      const Penalised::Found found = likelihood.maximise(at, others);
      if (!found.converged) return {0.0, 0.0, false};
      at = found.at;
      const double root =
          std::sqrt(std::max(0.0, 2.0 * (penalised.logLikelihood - found.point.value)));
      return {root, root > 0.0 ? -found.point.gradient[column] / root : 0.0, true};
    };
    const double from = fit.working[column];
    bool exists = true;
    (sign < 0.0 ? result.lower : result.upper) =
        limitOfFall(fall,
                    {from, from + sign * z * fit.standardError(column), z, sign,
                     kFarApart / problem.spread[column]},
                    exists);
    if (!exists) absent("the profile of " + problem.names[column] + " has no maximum");
  }
  return result;
}

}  // namespace survmeth::engine::cox
