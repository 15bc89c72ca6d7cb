// What survmeth life says.
#ifndef ANALYSIS_LIFE_DESCRIBE_H_
#define ANALYSIS_LIFE_DESCRIBE_H_

#include <string>
#include <vector>

#include "analysis/life/answer.h"
#include "analysis/life/request.h"
#include "report/report.h"

namespace survmeth::analysis {

report::Report describeLife(const LifeAnswer& answer, const LifeRequest& request);

// --- Parts of the report -------------------------------------------------------------------------

// The column of groups: its heading, and a label for each group.
report::Column lifeGroups(const LifeAnswer& answer, const LifeRequest& request);

// Counts and medians, tests, events, and the actuarial table.
void addLifeTables(const LifeAnswer& answer, const LifeRequest& request, report::Report& report);
// Quantiles, survival at given times, restricted means.
void addLifeReadings(const LifeAnswer& answer, const LifeRequest& request, report::Report& report);
// "kaplanMeier": a row for each distinct time of each group.
report::Table lifeCurveTable(const LifeAnswer& answer, const LifeRequest& request);

// "survival": a step for each group with the band of its limits, a tick at each censoring, and below
// the axis the numbers still at risk.
report::Figure lifeSurvivalFigure(const LifeAnswer& answer, const LifeRequest& request);

std::vector<report::Method> lifeMethods(const LifeAnswer& answer, const LifeRequest& request);
std::vector<report::Note> lifeNotes(const LifeAnswer& answer);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_DESCRIBE_H_
