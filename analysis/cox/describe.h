// What survmeth cox and survmeth clogit say.
#ifndef ANALYSIS_COX_DESCRIBE_H_
#define ANALYSIS_COX_DESCRIBE_H_

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

std::vector<report::Method> coxMethods(const CoxAnswer& answer, const CoxRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_DESCRIBE_H_
