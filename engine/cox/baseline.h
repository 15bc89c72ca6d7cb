// The cumulative hazard of a proportional-hazards fit at given covariates, with its error.
#ifndef ENGINE_COX_BASELINE_H_
#define ENGINE_COX_BASELINE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "engine/cox/fit.h"

namespace survmeth::engine::cox {

// Of one stratum, at its event times: a step function that is 0 before the first.
struct CumulativeHazard {
  std::vector<double> time;           // ascending
  std::vector<double> hazard;         // survival is exp(-hazard)
  std::vector<double> standardError;  // of the hazard; NaN where a coefficient is infinite
};

// What the hazards at any covariates are made of. Breslow's estimate under Breslow's ties, Efron's
// under Efron's.
//
// Edge refuses the exact treatments of ties
// Cost O(n p) once; a hazard at K times takes O(K p^2)
// Source Breslow, Biometrics 30 (1974) 89-99; Tsiatis, Ann. Statist. 9 (1981) 93-108; Efron,
//      JASA 72 (1977) 557-565
class BaselineHazard {
 public:
  explicit BaselineHazard(const Fit& fit);

  // The caller's codes of the strata that have rows, ascending.
  const std::vector<std::uint32_t>& strata() const;

  // The hazard at covariates x and an offset in one stratum. With x of zeros it is the baseline;
  // the covariates' means give the centred one.
  //
  // In   x[p]     aliased columns do not count
  //      stratum  a caller's code; one without rows is refused
  CumulativeHazard at(std::span<const double> x, double offset, std::uint32_t stratum) const;

 private:
  Fit fit_;
  std::vector<double> hazard_, variance_;  // times: sums within the stratum, in its shifted unit
  std::vector<std::vector<double>> mean_;  // columns: sums of increments times means
  std::vector<double> shift_;              // strata
};

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_BASELINE_H_
