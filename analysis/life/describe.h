// What survmeth life says.
#ifndef ANALYSIS_LIFE_DESCRIBE_H_
#define ANALYSIS_LIFE_DESCRIBE_H_

#include <optional>
#include <string>
#include <vector>

#include "analysis/life/answer.h"
#include "report/report.h"

namespace survmeth::analysis {

report::Report describeLife(const LifeAnswer& answer, const LifeRequest& request);

// --- Parts of the report -------------------------------------------------------------------------

// The column of groups: its heading, and a label for each group.
report::Column lifeGroups(const LifeAnswer& answer);
std::string lifeEstimateName(const LifeAnswer& answer);  // "Kaplan-Meier"
const char* lifeBandName(const LifeAnswer& answer);      // "Hall-Wellner"

// Each adds its tables, methods and notes, where they are asked for.
void addLifeTables(const LifeAnswer& answer, report::Report& report);  // counts, medians
void addLifeComparison(const LifeAnswer& answer, report::Report& report);
void addLifeCombination(const LifeAnswer& answer, report::Report& report);
void addLifePermutation(const LifeAnswer& answer, report::Report& report);
void addLifeReadings(const LifeAnswer& answer, report::Report& report);
void addLifeMeans(const LifeAnswer& answer, report::Report& report);
void addLifeRates(const LifeAnswer& answer, report::Report& report);
void addLifeMethods(const LifeAnswer& answer, report::Report& report);  // of the curves
void addLifeNotes(const LifeAnswer& answer, report::Report& report);

// A row for each distinct time of each group; one of the two, by the estimate.
std::optional<report::Table> lifeKaplanMeierTable(const LifeAnswer& answer);
std::optional<report::Table> lifeCurveTable(const LifeAnswer& answer);
// Who is at risk at the times that are asked for, or at the ticks of the figures.
std::vector<double> lifeRiskTimes(const LifeAnswer& answer);
std::optional<report::Table> lifeRiskTable(const LifeAnswer& answer);
std::optional<report::Table> lifeHazardTable(const LifeAnswer& answer);

// --- Figures -------------------------------------------------------------------------------------

// A step for each group with the limits or band, a tick at each censoring, and below the axis the
// numbers still at risk.
report::Figure lifeSurvivalFigure(const LifeAnswer& answer);
report::Figure lifeIncidenceFigure(const LifeAnswer& answer);         // 1 - S
report::Figure lifeCumulativeHazardFigure(const LifeAnswer& answer);  // H
// log(-log S) against the logarithm of time: parallel where hazards are proportional.
std::optional<report::Figure> lifeLogLogFigure(const LifeAnswer& answer);
std::optional<report::Figure> lifeHazardFigure(const LifeAnswer& answer);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_DESCRIBE_H_
