// Limits of a coefficient from the profile likelihood, over what a family says of a fit.
#ifndef PROCEDURES_PROFILE_H_
#define PROCEDURES_PROFILE_H_

#include <functional>

#include "procedures/family.h"

namespace survmeth::procedures {

// The coefficient at the maximum, where its limits are looked for.
struct Estimate {
  double coefficient = kAbsent;
  double standardError = kAbsent;
  double far = kAbsent;  // beyond that the likelihood does not change any more
  int infinite = 0;      // the side on which the estimate is infinite: -1, 1, or 0
};

// A fit with one coefficient held: the log-likelihood's maximum over the others, and its derivative
// with respect to the one that is held.
struct Held {
  bool exists = false;
  double logLikelihood = kAbsent, slope = kAbsent;
};

// A fit at its maximum, of which one coefficient can be held.
class Profiled {
 public:
  Profiled() = default;
  Profiled(const Profiled&) = delete;
  Profiled& operator=(const Profiled&) = delete;
  virtual ~Profiled() = default;

  virtual double logLikelihood() const = 0;
  virtual Estimate estimate() const = 0;
  // A search along one side: what it returns is called with values one after another.
  virtual std::function<Held(double value)> search() = 0;
};

struct ProfileLimits {
  double lower = kAbsent;  // -infinity where the likelihood never falls far enough
  double upper = kAbsent;
  bool found = true;  // false where the profile has no maximum on the way to a limit
};

// The values at which twice the log-likelihood, maximised over the other coefficients, is below its
// maximum by the chi-square quantile of `level` on one degree of freedom; to 1e-9 of the distance in
// standard errors. An infinite estimate is its own limit on that side.
//
// In   level  in (0, 1)
// Cost some five calls of a search a side
// Source Venzon & Moolgavkar, Applied Statistics 37 (1988) 87-94
ProfileLimits profileLimits(Profiled& fit, double level);

}  // namespace survmeth::procedures

#endif  // PROCEDURES_PROFILE_H_
