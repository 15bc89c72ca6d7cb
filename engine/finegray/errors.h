// Score residuals of a subdistribution hazard, and the covariance that they make.
#ifndef ENGINE_FINEGRAY_ERRORS_H_
#define ENGINE_FINEGRAY_ERRORS_H_

#include "engine/finegray/fit.h"

namespace survmeth::engine::finegray {

// eta of each arranged row, times its weight: the integral of g (x - mean) over its martingale.
//
// In   g   of each event time, or empty: 1
// Cost O(n p), and O(groups of censoring x times x p)
numerics::BlockedColumns scoreResiduals(const Problem& problem, const Sums& sums,
                                        std::span<const double> g = {});

// Adds psi, what the row's part in the estimated censoring curve does to the score: the integral of
// q / n over its censoring martingale, with q(u) the sum of g (x - mean) r dLambda, weighted, over
// those that failed of another cause before u and the event times from u on.
//
// In   g   as before
// Cost O(n p) for each stratum
void addCensoring(const Problem& problem, const Sums& sums, numerics::BlockedColumns& residuals,
                  std::span<const double> g = {});

// The sum of outer products: over clusters of their rows' sums; without clusters over rows, a row
// of frequency w counting for w.
numerics::SquareMatrix productsOf(const Problem& problem, WeightKind weights,
                                  const numerics::BlockedColumns& residuals);

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_ERRORS_H_
