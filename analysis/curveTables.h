// What is known of the survival of groups, as tables and a figure of a report.
#ifndef ANALYSIS_CURVE_TABLES_H_
#define ANALYSIS_CURVE_TABLES_H_

#include <string>
#include <vector>

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

// "summary": counts and median of each group.
report::Table medianTable(const CurveResult& result, const CurveNames& names);

// " Median time to it: A 23 (95% limits 13 to no upper limit), B 8 (4 to 11)."; nothing where there
// are more groups than a sentence holds.
std::string mediansInWords(const CurveResult& result, const CurveNames& names);

// "kaplanMeier": a row for each distinct time of each group.
report::Table kaplanMeierTable(const CurveResult& result, const CurveNames& names);

// "survival": a step for each group with its band, made by `limits`, a tick at each censoring, and
// below the axis the numbers still at risk.
report::Figure survivalFigure(const CurveResult& result, CurveLimits limits,
                              const CurveNames& names);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CURVE_TABLES_H_
