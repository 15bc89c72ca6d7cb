// Curves over time as figures: steps with bands and ticks at the censorings, a time axis from 0, and
// below it the numbers still at risk.
#ifndef ANALYSIS_STEP_FIGURE_H_
#define ANALYSIS_STEP_FIGURE_H_

#include <span>
#include <string>
#include <vector>

#include "report/report.h"

namespace survmeth::analysis {

// The curve of one group at its distinct times, ascending; at least one.
struct StepCurve {
  std::string name;  // in the legend; may be empty
  std::span<const double> time;
  std::span<const double> level;         // from each time on
  std::span<const double> lower, upper;  // limits of the level; empty or NaN: none
  std::span<const double> censored;      // at each time: a tick where there is any
  std::span<const double> atRisk;        // just before each time
};

// In   origin  level of all curves at time 0, from 0 to 1 like every level
// Out  a panel whose time axis holds all curves, its ticks 1, 2 or 5 times a power of ten apart.
//      Corners, and ticks, that lie closer together than a picture can show (1/2000 of the axes)
//      are one.
// Cost O(times)
report::Panel stepPanel(const std::string& time, const std::string& level, double origin,
                        const std::vector<StepCurve>& curves);

// The ticks of such a panel's time axis, which ends at `end`.
std::vector<double> timeTicks(double end);

// Panels are compared by eye: of several, all get one height, a round number above everything in
// them.
void shareHeight(report::Figure& figure);

// And one time axis, to the last time of any.
void shareAxes(report::Figure& figure);

// At risk in each group at the ticks of such a panel; `labels` name the groups.
report::RiskTable riskTableOf(const report::Panel& panel, const std::vector<std::string>& labels,
                              const std::vector<StepCurve>& curves);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_STEP_FIGURE_H_
