// Limits of a coefficient from the profile likelihood.
#ifndef ENGINE_COX_PROFILE_H_
#define ENGINE_COX_PROFILE_H_

#include <cstddef>
#include <optional>

#include "engine/cox/fit.h"

namespace survmeth::engine::cox {

struct ProfileLimits {
  double lower = kAbsent;  // -infinity where the likelihood never falls far enough
  double upper = kAbsent;
  std::optional<Outcome> outcome;  // why a limit is absent
};

// The values b of coefficient `column` at which twice the log-likelihood, maximised over the other
// coefficients, is below its maximum by the chi-square quantile of `level` on one degree of
// freedom; to 1e-9 of the distance in standard errors.
//
// In   level  in (0, 1)
// Edge absent for an aliased column and for a fit that has not converged; an infinite coefficient
//      is its own limit on that side
// Cost some five fits of the other coefficients a side
// Source Venzon & Moolgavkar, Applied Statistics 37 (1988) 87-94
ProfileLimits profileLimits(const Fit& fit, std::size_t column, double level,
                            numerics::Progress& progress);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PROFILE_H_
