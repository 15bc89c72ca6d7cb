// Mean time lost to each cause up to a horizon, and what groups differ by.
#ifndef ENGINE_INCIDENCE_LOST_H_
#define ENGINE_INCIDENCE_LOST_H_

#include <span>
#include <vector>

#include "engine/incidence/curve.h"

namespace survmeth::engine::incidence {

// The area under the incidence of one cause up to `horizon`.
struct TimeLost {
  double horizon = kAbsent;
  double lost = kAbsent, standardError = kAbsent;
  double lower = kAbsent, upper = kAbsent;
  bool extended = false;  // follow-up ends before the horizon with survivors: carried on level
};

// The time lost to one cause in each group. The influence of an error at a time s is that on the
// incidence, integrated from s to the horizon.
//
// In   curves    of estimate(data, rows, asked)
//      horizon   after 0 and after the first time where that is negative, else Refusal(kValue)
// Edge nothing is known of a group without rows
// Cost O(n)
// Source Andersen, Stat Med 32 (2013) 5278-5285
std::vector<TimeLost> timesLost(const Causes& data, const Rows& rows, std::span<const Curve> curves,
                                std::size_t cause, Variance asked, double horizon, double level);

// Second less first, and the ratio of second to first, its error that of the logarithm. Of
// independent groups.
struct LostContrasts {
  curves::Contrast difference, ratio;
};
LostContrasts compareLost(const TimeLost& first, const TimeLost& second, double level);

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_LOST_H_
