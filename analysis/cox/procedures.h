// Selection of terms and the bootstrap of Cox models: what the procedures ask, answered by fits.
#ifndef ANALYSIS_COX_PROCEDURES_H_
#define ANALYSIS_COX_PROCEDURES_H_

#include <cstdint>
#include <span>
#include <vector>

#include "analysis/cox/run.h"
#include "procedures/bootstrap.h"
#include "procedures/selection.h"

namespace survmeth::analysis {

// In   full   the fit of all terms
// Throws BadOption (force) for a term that the model does not have
procedures::Selection selectCoxTerms(const CoxRequest& request, const CoxInput& input,
                                     const engine::cox::Fit& full, numerics::Progress& progress);

// The rows of each unit that a bootstrap draws: of each cluster, or each row by itself.
std::vector<std::vector<std::uint32_t>> coxUnits(const CoxInput& input);

// The rows of units that are drawn.
std::vector<std::uint32_t> coxRowsOf(const std::vector<std::vector<std::uint32_t>>& units,
                                     std::span<const std::uint32_t> drawn);

// In   request   with a bootstrap
procedures::BootstrapOptions coxBootstrapOptions(const CoxRequest& request);
procedures::BootstrapLimits coxBootstrapLimits(const CoxRequest& request);

// The coefficients of rows drawn with replacement, clusters whole; those that the fit estimates. A
// replicate counts where the same coefficients are estimated.
//
// In   units   of the input's rows
procedures::Bootstrap bootstrapCox(const CoxRequest& request, const CoxInput& input,
                                   const engine::cox::Fit& fit,
                                   const std::vector<std::vector<std::uint32_t>>& units,
                                   numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PROCEDURES_H_
