// Proportional-hazards regression: coefficients, their covariances, likelihoods and tests.
#ifndef ENGINE_COX_FIT_H_
#define ENGINE_COX_FIT_H_

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

#include "engine/cox/problem.h"
#include "engine/input.h"
#include "numerics/progress.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

inline constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

struct Options {
  Ties ties = Ties::kEfron;
  double tieTolerance = risk::kTieTolerance;  // 0: only equal times are tied
  // The sandwich covariance; clusters and sampling weights imply it.
  bool robust = false;
  // Fit on without the columns that depend on those before them, instead of giving no answer.
  bool dropAliased = false;
  int iterationLimit = 50;
};

struct ChiSquareTest {
  double chiSquare = kAbsent;
  std::size_t degreesOfFreedom = 0;
  double pValue = kAbsent;
};

// With the upper tail's probability.
ChiSquareTest chiSquareTest(double chiSquare, std::size_t degreesOfFreedom);

// The test of one term's coefficients.
struct TermTest {
  std::size_t term;  // index into Design.termNames
  ChiSquareTest test;
};

// How one column came out.
enum class Column {
  kEstimated,
  kAliased,   // depends on columns before it: coefficient NaN
  kInfinite,  // the likelihood rises without end: coefficient +-infinity, no variance
};

struct Fit {
  std::vector<double> coefficients;  // p; NaN where there is none
  std::vector<Column> column;        // p
  // p x p; rows and columns of NaN where a coefficient is not estimated. `covariance` is the
  // inverse information; `robustCovariance` has size 0 where it is not asked for.
  numerics::SquareMatrix covariance, robustCovariance;

  double logLikelihoodNull = kAbsent;  // coefficients 0
  double logLikelihood = kAbsent;
  // All coefficients. Wald's with the robust covariance where there is one; absent where a
  // coefficient is infinite.
  ChiSquareTest likelihoodRatio, score, wald, robustScore;
  std::vector<TermTest> terms;  // Wald tests
  double aic = kAbsent;
  double bic = kAbsent;  // log of `eventsCounted`

  std::size_t rows = 0;        // that take part
  std::size_t events = 0;      // rows that fail
  double eventsCounted = 0.0;  // frequencies counted; else `events`
  int iterations = 0;
  double decrement = kAbsent;  // distance from the maximum in standard errors
  bool converged = false;
  std::vector<Outcome> outcomes;

  // What the follow-ups need: residuals, hazards, tests of proportionality, profiles.
  Ties ties = Ties::kEfron;
  int iterationLimit = 0;
  std::shared_ptr<const Problem> problem;
  std::vector<double> working;  // p: coefficients with 0 for aliased and large finite numbers for
                                // infinite ones
  // The covariance that inference uses.
  const numerics::SquareMatrix& inference() const {
    return robustCovariance.size() != 0 ? robustCovariance : covariance;
  }
  double standardError(std::size_t j) const;
};

// Fits the model.
//
// In   response, rows, design   as engine/input.h says; weights with Efron and Breslow only
// Out  coefficients at which the Newton decrement is at most 1e-10, and everything else taken
//      there
// Edge Refusal for input that cannot be analysed: weights, clusters or robust covariance with an
//      exact treatment of ties among them. Outcomes: "noEvents", "collinear" (each names the
//      column and those it depends on; without dropAliased nothing is estimated), "separated"
//      (columns with infinite coefficients; the rest is the limit's), "notConverged"
// Cost O(n (log n + p^2)) for each of some five iterations, and p^3; exact treatments of ties as
//      likelihood.h says. Memory on one thread: a copy of the design and some 80 bytes a row
// Source Cox, JRSS B 34 (1972) 187-220; Lin & Wei, JASA 84 (1989) 1074-1078
Fit fit(const Response& response, const Rows& rows, const Design& design, const Options& options,
        numerics::Progress& progress);

// The Wald test of the coefficients `chosen` with the covariance of inference; absent where one is
// not estimated.
ChiSquareTest waldTest(const Fit& fit, const std::vector<std::size_t>& chosen);

// The likelihood-ratio test of each term: the model without it is fitted.
//
// Edge absent for a term with an aliased column or where the smaller model does not converge
// Cost one fit a term
std::vector<TermTest> dropEachTerm(const Fit& fit, numerics::Progress& progress);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_FIT_H_
