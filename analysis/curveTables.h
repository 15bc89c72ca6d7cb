// What is known of the survival of groups, as tables of a report.
#ifndef ANALYSIS_CURVE_TABLES_H_
#define ANALYSIS_CURVE_TABLES_H_

#include <string>
#include <vector>

#include "analysis/lifeTable.h"
#include "analysis/survivalCurves.h"
#include "report/report.h"

namespace survmeth::analysis {

// What the tables are of.
struct CurveNames {
  std::string time;                 // the column
  std::string group;                // the column; empty where there is none
  std::vector<std::string> labels;  // of the groups
  double alpha = 0.05;
};

// "log-log".
std::string limitsName(CurveLimits limits);

// "summary": counts and median of each group.
report::Table medianTable(const std::vector<SurvivalCurve>& curves, const CurveNames& names);

// "tests": a row for each test, with the reason below where none exists.
report::Table curveTestTable(const Comparison& comparison);

// "events": observed and expected events of each group.
report::Table groupEventTable(const Comparison& comparison, const CurveNames& names);

// "kaplanMeier": a row for each distinct time of each group.
report::Table kaplanMeierTable(const std::vector<SurvivalCurve>& curves, const CurveNames& names);

// "actuarial": a row for each interval of each group.
report::Table actuarialTable(const std::vector<std::vector<LifeInterval>>& intervals,
                             const CurveNames& names);

// " Median time to it: A 23 (95% limits 13 to no upper limit), B 8 (4 to 11)."; nothing where there
// are more groups than a sentence holds.
std::string mediansInWords(const std::vector<SurvivalCurve>& curves, const CurveNames& names);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CURVE_TABLES_H_
