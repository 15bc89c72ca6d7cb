// The largest of several weighted tests in the groups of survmeth life, one test of one question.
#ifndef ANALYSIS_LIFE_COMBINATION_H_
#define ANALYSIS_LIFE_COMBINATION_H_

#include <vector>

#include "analysis/life/request.h"
#include "analysis/life/rows.h"
#include "engine/curves/combination.h"
#include "engine/curves/limits.h"

namespace survmeth::analysis {

// Of two groups one, of more each pair with Holm's adjustment; none where it is not asked for.
//
// In   rows   of which comparison tests exist
//      codes  of their times
std::vector<engine::curves::CombinationPair> combineLife(const LifeRows& rows,
                                                         const LifeRequest& request,
                                                         const engine::risk::TimeCodes& codes);

// The hazard of the second of two groups over that of the first by proportional-hazards regression,
// Efron's ties, in strata; absent where it has no maximum.
engine::curves::Contrast coxRatio(const LifeRows& rows, const LifeRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_COMBINATION_H_
