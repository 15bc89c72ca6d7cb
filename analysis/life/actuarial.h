// The actuarial life table of a group: survival from counts in intervals of time.
//
// The field's usual convention, which is not that of the flat-array life table: an interval holds
// its lower bound and not its upper one, those censored in it count as at risk for half of it, and
// the density belongs to the interval's own width.
#ifndef ANALYSIS_LIFE_ACTUARIAL_H_
#define ANALYSIS_LIFE_ACTUARIAL_H_

#include <cstddef>
#include <vector>

#include "analysis/estimate.h"
#include "engine/curves/curve.h"

namespace survmeth {

// One interval, from 0. n' = entering - censored / 2, q = events / n', p = 1 - q, w the width.
struct LifeInterval {
  double lower = 0, upper = 0;  // upper is infinite in the last of given bounds
  double entering = 0, events = 0, censored = 0;
  double effective = kNone;         // n'
  double conditional = kNone;       // q
  double survivalAtStart = kNone;   // of the interval, S: the product of the p before
  double survivalAtEnd = kNone;     // S p
  double standardError = kNone;     // of the survival at the end, by Greenwood's formula
  engine::curves::Interval limits;  // of the same
  double density = kNone;           // S q / w
  double densityError = kNone;
  double hazard = kNone;  // 2 q / (w (1 + p)), at the middle of the interval
  double hazardError = kNone;
  double medianResidual = kNone;  // time from the start until half of S is left
  double medianResidualError = kNone;
};

// The bounds of intervals: [0, width), [width, 2 width), ... as far as the time `last`; the bounds
// are the doubles nearest to the decimal multiples of the width's shortest decimal form, so that
// 0.3 falls at the beginning of an interval of width 0.1. With width 0 those of `bounds`, ascending,
// positive or beginning at 0: [0, b1), [b1, b2), ..., [bk, infinity).
//
// Out  one more bound than there are intervals
// Edge Refusal(kIntervals) for a width or bounds that give no intervals or more than 100,000
std::vector<double> intervalBounds(double width, const std::vector<double>& bounds, double last);

// One interval for each two neighbouring bounds.
//
// In   curve    of rows that are at risk from 0 on; times, counts and numbers at risk are used
//      options  scale and level of the limits
// Edge an interval that nobody enters has no estimates; one without an upper bound has no density
//      and no hazard
// Cost O(times + intervals)
// Source Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644
std::vector<LifeInterval> actuarialTable(const engine::curves::Curve& curve,
                                         const std::vector<double>& bounds,
                                         const engine::curves::Options& options);

}  // namespace survmeth

#endif  // ANALYSIS_LIFE_ACTUARIAL_H_
