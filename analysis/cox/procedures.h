// Selection of terms and the bootstrap of Cox models: what the procedures ask, answered by fits.
#ifndef ANALYSIS_COX_PROCEDURES_H_
#define ANALYSIS_COX_PROCEDURES_H_

#include "analysis/cox/run.h"
#include "procedures/bootstrap.h"
#include "procedures/selection.h"

namespace survmeth::analysis {

// In   full   the fit of all terms
// Throws BadOption (force) for a term that the model does not have
procedures::Selection selectCoxTerms(const CoxRequest& request, const CoxInput& input,
                                     const engine::cox::Fit& full, numerics::Progress& progress);

// The coefficients of rows drawn with replacement, clusters whole; those that the fit estimates. A
// replicate counts where the same coefficients are estimated.
procedures::Bootstrap bootstrapCox(const CoxRequest& request, const CoxInput& input,
                                   const engine::cox::Fit& fit, numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PROCEDURES_H_
