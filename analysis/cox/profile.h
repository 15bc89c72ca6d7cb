// Profile-likelihood limits of Cox models.
#ifndef ANALYSIS_COX_PROFILE_H_
#define ANALYSIS_COX_PROFILE_H_

#include <cstddef>

#include "engine/cox/fit.h"
#include "engine/cox/penalised.h"
#include "numerics/progress.h"
#include "procedures/profile.h"

namespace survmeth::analysis {

// In   penalised   the fit's own, where it is penalised; or nullptr
//      level       in (0, 1)
// Edge absent, and not found, for an aliased column, a ridge, and a fit that has not converged
procedures::ProfileLimits coxProfileLimits(const engine::cox::Fit& fit,
                                           const engine::cox::PenalisedFit* penalised,
                                           std::size_t column, double level,
                                           numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PROFILE_H_
