// Tests of equal survival in the groups of survmeth life by permutation.
#ifndef ANALYSIS_LIFE_PERMUTATION_H_
#define ANALYSIS_LIFE_PERMUTATION_H_

#include <optional>

#include "analysis/life/request.h"
#include "analysis/life/rows.h"
#include "engine/curves/permutation.h"
#include "numerics/progress.h"

namespace survmeth::analysis {

struct LifePermutation {
  engine::curves::Permutations asked;
  engine::curves::PermutationComparison found;  // of the request's tests
  // Of two groups and where one is asked for: the maximum combination.
  std::optional<engine::curves::PermutationTest> combination;
};

// Nothing where it is not asked for.
//
// In   rows  of which comparison tests exist
// Edge BadOption for more arrangements than can be enumerated
std::optional<LifePermutation> permuteLife(const LifeRows& rows, const LifeRequest& request,
                                           numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_PERMUTATION_H_
