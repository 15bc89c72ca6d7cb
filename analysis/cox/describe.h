// What survmeth cox and survmeth clogit say.
#ifndef ANALYSIS_COX_DESCRIBE_H_
#define ANALYSIS_COX_DESCRIBE_H_

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "analysis/cox/answer.h"
#include "analysis/cox/request.h"
#include "report/report.h"

namespace survmeth::analysis {

report::Report describeCox(const CoxAnswer& answer, const CoxRequest& request);

// --- Parts of the report -------------------------------------------------------------------------

// A coefficient as it is shown.
struct CoxEstimate {
  double coef = kNone, z = kNone, pValue = kNone;
  double ratio = kNone, lower = kNone, upper = kNone;  // hazard or odds ratio with limits
};
std::vector<CoxEstimate> coxEstimates(const CoxAnswer& answer, const CoxRequest& request);

// "hazard ratio" or "odds ratio".
const char* coxRatio(const CoxRequest& request);

// Coefficients, tests of all of them, and the tables that are asked for besides.
void addCoxTables(const CoxAnswer& answer, const CoxRequest& request, report::Report& report);
report::Table coxProportionalityTable(const CoxAnswer& answer, const CoxRequest& request);
report::Table coxBaselineTable(const CoxAnswer& answer, const CoxRequest& request);
report::Table coxResidualTable(const CoxAnswer& answer, const CoxRequest& request);

// A row for each coefficient that exists: its ratio with limits.
report::Figure coxForest(const CoxAnswer& answer, const CoxRequest& request);
// Scaled Schoenfeld residuals against transformed time, a panel for each coefficient.
report::Figure coxSchoenfeld(const CoxAnswer& answer, const CoxRequest& request);

// Scaled residuals of one term against transformed time, their smooth and the coefficient.
//
// In   time   what the axis of time shows
report::Panel schoenfeldPanel(std::string title, const std::string& time,
                              const engine::cox::TermResiduals& residuals,
                              std::span<const double> transformed, const Smooth& smooth);
// Of how many residuals such a panel shows one.
std::size_t schoenfeldStep(std::size_t residuals);
// What its time is, but for the first of the transforms.
std::string transformedTime(engine::cox::TimeTransform transform);

std::vector<report::Method> coxMethods(const CoxAnswer& answer, const CoxRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_DESCRIBE_H_
