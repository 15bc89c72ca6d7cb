// Actuarial life tables by group: survival from counts in intervals of time.
//
// The field's usual convention, which is not that of the flat-array life table: an interval holds
// its lower bound and not its upper one, those censored in it count as at risk for half of it, and
// the density belongs to the interval's own width.
#ifndef ANALYSIS_LIFE_TABLE_H_
#define ANALYSIS_LIFE_TABLE_H_

#include <cstddef>
#include <vector>

#include "analysis/survivalCurves.h"
#include "analysis/survivalData.h"

namespace survmeth {

struct LifeTableRequest {
  SurvivalData data;
  double alpha = 0.05;
  CurveLimits limits = CurveLimits::kLogLog;
  // Intervals [0, width), [width, 2 width), ... as far as the last time of all groups; the bounds
  // are the doubles nearest to the decimal multiples of the width's shortest decimal form, so that
  // 0.3 falls at the beginning of an interval of width 0.1. Or, with width 0:
  double width = 0;
  // ascending, positive or beginning at 0: [0, b1), [b1, b2), ..., [bk, infinity).
  std::vector<double> bounds;
};

// One interval, from 0. n' = entering - censored / 2, q = events / n', p = 1 - q, w the width.
struct LifeInterval {
  double lower = 0, upper = 0;  // upper is infinite in the last of given bounds
  double entering = 0, events = 0, censored = 0;
  double effective = kNone;        // n'
  double conditional = kNone;      // q
  double survivalAtStart = kNone;  // of the interval, S: the product of the p before
  double survivalAtEnd = kNone;    // S p
  double standardError = kNone;    // of the survival at the end, by Greenwood's formula
  SurvivalLimits limits;           // of the same
  double density = kNone;          // S q / w
  double densityError = kNone;
  double hazard = kNone;  // 2 q / (w (1 + p)), at the middle of the interval
  double hazardError = kNone;
  double medianResidual = kNone;  // time from the start until half of S is left
  double medianResidualError = kNone;
};

// One table for each group.
//
// In   request  see SurvivalData and Tally for what is refused (engine::Refusal); further a width
//               or bounds that give no intervals ("width", "bounds") or more than 100,000
// Edge an interval that nobody enters has no estimates; one without an upper bound has no density
//      and no hazard
// Cost O(n log n + groups x intervals)
// Source Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644
std::vector<std::vector<LifeInterval>> lifeTables(const LifeTableRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_LIFE_TABLE_H_
