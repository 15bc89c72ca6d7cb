// Cumulative subdistribution hazards at any covariates, and so the incidences 1 - exp(-hazard),
// with their errors.
#ifndef ENGINE_FINEGRAY_HAZARDS_H_
#define ENGINE_FINEGRAY_HAZARDS_H_

#include "engine/cox/baseline.h"
#include "engine/finegray/fit.h"
#include "numerics/progress.h"

namespace survmeth::engine::finegray {

// What cox::BaselineHazard makes hazards and their errors of, for a fit that has converged.
//
// The error is that of the sum of what each row (or cluster) does to the hazard: by the
// coefficients, by the increments at given coefficients and, with Errors::kEstimatedWeights, by the
// censoring curves in both. Weights of late entry are taken as known.
//
// Cost O(n (log n + p)) for each stratum of the baseline, and O(K (g^2 + g p + p^2)) for K event
//      times and g groups of censoring
// Source Fine & Gray, JASA 94 (1999) 496-509, section 4
cox::HazardSums hazardSums(const Fit& fit, numerics::Progress& progress);

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_HAZARDS_H_
