// Tests of each two groups, and how their p-values are adjusted, as options say it.
#ifndef ANALYSIS_PAIRS_H_
#define ANALYSIS_PAIRS_H_

#include <string>
#include <utility>
#include <vector>

#include "engine/curves/comparison.h"

namespace survmeth::analysis {

enum class Pairs { kNone, kUnadjusted, kHolm, kBonferroni, kBenjaminiHochberg };

// "none", "unadjusted", "holm", "bonferroni", "benjamini-hochberg".
std::vector<std::pair<std::string, Pairs>> pairChoices();

engine::curves::Adjustment adjustmentOf(Pairs pairs);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_PAIRS_H_
