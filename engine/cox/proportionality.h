// The test of proportional hazards: whether coefficients change with a function of time.
#ifndef ENGINE_COX_PROPORTIONALITY_H_
#define ENGINE_COX_PROPORTIONALITY_H_

#include <span>
#include <vector>

#include "engine/cox/fit.h"
#include "engine/cox/residuals.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::cox {

// g(t) of the coefficients b + theta g(t) that the test looks for.
enum class TimeTransform {
  kKaplanMeier,  // 1 - S(t-) of all strata together
  kRank,         // of the time among those of all rows, ties at their mean
  kIdentity,
  kLog,
};

// Residuals of a term, as if its columns times their coefficients were one column (those of a term of
// one column are that column's), scaled by the covariance of such columns.
struct TermResiduals {
  std::size_t term = 0;
  double coefficient = kAbsent;  // 1 of a term of several
  double variance = kAbsent;     // of one residual, as the scaling has it
  std::vector<double> value;     // of the events, as `Proportionality::scaled`
};

struct TermTests {
  std::vector<TermTest> terms;  // theta = 0 for the term's columns
  ChiSquareTest global;         // for all columns
};

struct Proportionality : TermTests {
  SchoenfeldResiduals scaled;       // to be drawn against `transformed`
  std::vector<double> transformed;  // g at each of the residuals' rows
  // Of each term with an estimated coefficient; none where such columns depend on each other.
  std::vector<TermResiduals> scaledTerms;
};

// The score test of theta = 0 at the fit's coefficients, model-based.
//
// Edge columns without a finite coefficient take no part, terms of such columns have no test.
//      Refusal for the exact treatments of ties, and for kLog at times that are not positive
// Cost two sums of outer products, O(n p^2)
// Source Grambsch & Therneau, Biometrika 81 (1994) 515-526, with the information itself in place
//      of its average over time
Proportionality testProportionality(const Fit& fit, TimeTransform transform);

// --- What subdistribution hazards share ----------------------------------------------------------

// g by the code of a time; of codes without an event 0.
// Throws Refusal(kTime) for kLog at times that are not positive
std::vector<double> timeTransform(const risk::Arrangement& a, TimeTransform transform);

// g at each event time, less its mean over the events: a constant in g changes nothing, as the score
// of the coefficients is 0, and without it the two parts of the variance do not cancel.
std::vector<double> centredAtEvents(const risk::Arrangement& a, std::span<const double> byCode);

// Residuals of each term with an estimated column.
//
// In   raw           of each column: Schoenfeld residuals of the events
//      estimated     columns with a coefficient; `information` is over these
//      events        by which residuals are scaled
std::vector<TermResiduals> termResiduals(const Problem& problem,
                                         std::span<const double> coefficients,
                                         const std::vector<std::size_t>& estimated,
                                         const numerics::SquareMatrix& information, double events,
                                         const std::vector<std::vector<double>>& raw);

// The score tests of theta: of each term, none of those without an estimated column, and of all.
//
// In   score, variance   over `estimated`
TermTests scoreTests(const Problem& problem, const std::vector<std::size_t>& estimated,
                     std::span<const double> score, const numerics::SquareMatrix& variance);

// What the information leaves of theta's when the coefficients are estimated too.
numerics::SquareMatrix givenCoefficients(numerics::SquareMatrix variance,
                                         const numerics::SquareMatrix& mixed,
                                         const numerics::Cholesky& information);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PROPORTIONALITY_H_
