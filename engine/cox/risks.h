// Predictors and risks of all rows at one set of coefficients.
#ifndef ENGINE_COX_RISKS_H_
#define ENGINE_COX_RISKS_H_

#include <span>

#include "engine/cox/problem.h"

namespace survmeth::engine::cox {

// Fills predictor, risk, shift, scales and behind.
//
// Out  observed  the sum over the events of weight times predictor less the reference of its time
// Edge false where predictors are no finite numbers
// Cost O(n p), one pass over the rows
bool formRisks(const Problem& problem, std::span<const double> coefficients, Hazards& hazards,
               double& observed);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_RISKS_H_
