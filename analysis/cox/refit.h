// A Cox fit again, of rows drawn from its own: predictions for new data with all that a sample of
// such a size leaves open, knots and centres of the terms included.
#ifndef ANALYSIS_COX_REFIT_H_
#define ANALYSIS_COX_REFIT_H_

#include "analysis/cox/answer.h"
#include "analysis/cox/predict.h"
#include "analysis/cox/request.h"
#include "frame/frame.h"
#include "numerics/progress.h"
#include "procedures/bootstrap.h"

namespace survmeth::analysis {

// The survivals at wishes.at of each row or subject of the new data, in that order. The model is that
// of the answer, selected or not; what its terms learn of data they learn of the rows drawn. A
// replicate counts where its factors have the same levels and the same coefficients are estimated; a
// survival of one that ends before the time is NaN.
//
// In   data      those of the answer, whose units are drawn
//      newData   complete for predictCox
// Throws engine::Refusal where newData cannot be predicted for by the answer itself
procedures::Bootstrap bootstrapSurvival(const frame::Frame& data, const CoxRequest& request,
                                        const CoxAnswer& answer, const frame::Frame& newData,
                                        const CoxWishes& wishes, numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_REFIT_H_
