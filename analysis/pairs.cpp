#include "analysis/pairs.h"

namespace survmeth::analysis {

using engine::curves::Adjustment;

std::vector<std::pair<std::string, Pairs>> pairChoices() {
  return {{"none", Pairs::kNone},
          {"unadjusted", Pairs::kUnadjusted},
          {"holm", Pairs::kHolm},
          {"bonferroni", Pairs::kBonferroni},
          {"benjamini-hochberg", Pairs::kBenjaminiHochberg}};
}

Adjustment adjustmentOf(Pairs pairs) {
  switch (pairs) {
    case Pairs::kHolm:
      return Adjustment::kHolm;
    case Pairs::kBonferroni:
      return Adjustment::kBonferroni;
    case Pairs::kBenjaminiHochberg:
      return Adjustment::kBenjaminiHochberg;
    case Pairs::kNone:
    case Pairs::kUnadjusted:
      break;
  }
  return Adjustment::kNone;
}

}  // namespace survmeth::analysis
