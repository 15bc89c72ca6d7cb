// The test of proportional hazards: whether coefficients change with a function of time.
#ifndef ENGINE_COX_PROPORTIONALITY_H_
#define ENGINE_COX_PROPORTIONALITY_H_

#include <vector>

#include "engine/cox/fit.h"
#include "engine/cox/residuals.h"

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

struct Proportionality {
  std::vector<TermTest> terms;      // theta = 0 for the term's columns
  ChiSquareTest global;             // for all columns
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

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PROPORTIONALITY_H_
