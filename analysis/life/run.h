// From data and request to what survmeth life finds.
#ifndef ANALYSIS_LIFE_RUN_H_
#define ANALYSIS_LIFE_RUN_H_

#include "analysis/life/answer.h"
#include "analysis/life/request.h"
#include "frame/frame.h"
#include "numerics/progress.h"

namespace survmeth::analysis {

// Throws engine::Refusal, BadOption
// Cost O(n log n), besides that of the tests (comparison.h)
LifeAnswer fitLife(const frame::Frame& data, const LifeRequest& request,
                   numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_RUN_H_
