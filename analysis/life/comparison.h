// Tests of equal survival in the groups of survmeth life.
#ifndef ANALYSIS_LIFE_COMPARISON_H_
#define ANALYSIS_LIFE_COMPARISON_H_

#include <optional>
#include <string>
#include <vector>

#include "analysis/estimate.h"
#include "analysis/life/rows.h"
#include "engine/curves/comparison.h"

namespace survmeth::analysis {

// One test of all groups.
struct LifeTest {
  std::string name;  // "Log-rank"
  Test test;
  double trend = kNone, trendPValue = kNone;  // where it is asked for
};

// A group in which nobody is at risk at any event time has no part in the tests, and none of the
// events. Where no test exists, `reason` says why and the numbers are NaN.
struct LifeComparison {
  std::string reason;
  std::vector<LifeTest> tests;
  std::vector<bool> included;              // of each group
  std::vector<double> observed, expected;  // events of each group, as in the log-rank test
  // Where they are asked for.
  std::vector<engine::curves::StratumEvents> strata;
  std::vector<engine::curves::PairTest> pairs;
  std::optional<engine::curves::HazardRatios> ratios;
  engine::curves::Contrast coxRatio;  // beside them

  bool exists() const { return reason.empty(); }
};

// "Log-rank", "Fleming-Harrington (0, 1)".
std::string testName(const engine::curves::Weighting& weighting);

// In   codes  of the rows' times
// Edge one group, no event, groups that no event time links, rows that depend on each other: no
//      test. BadOption for hazard ratios of groups that are not two, and for scores that are not as
//      many as the groups
// Cost that of engine::curves::compare without its sort; no more than 8,192 groups, whose covariance takes 0.5 GB
LifeComparison compareLife(const LifeRows& rows, const LifeRequest& request,
                           const engine::risk::TimeCodes& codes);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_COMPARISON_H_
