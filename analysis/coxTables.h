// What survmeth cox found, and the tables and the figure that show it.
#ifndef ANALYSIS_COX_TABLES_H_
#define ANALYSIS_COX_TABLES_H_

#include <string>
#include <utility>
#include <vector>

#include "analysis/coxModel.h"
#include "report/report.h"

namespace survmeth::analysis {

struct CoxAnswer {
  CoxModel model;
  std::vector<std::string> strata;                              // labels, in the model's order
  std::vector<std::pair<std::string, std::string>> references;  // column, level
  std::string eventNote;                                        // empty where the coding is plain
  struct {
    std::vector<double> line, time;
    std::vector<std::string> event;
  } rows;  // of the data, where residuals are asked for
};

// Coefficients, tests and what selection removed. `level` is that of the limits: "95%".
void addCoxTables(const CoxAnswer& answer, const std::string& level, bool selected,
                  report::Report& report);
report::Table coxBaselineTable(const CoxAnswer& answer);
report::Table coxResidualTable(const CoxAnswer& answer, const std::string& time);

// A row for each coefficient that exists: its hazard ratio with limits.
report::Figure coxForest(const CoxAnswer& answer, const std::string& level);

// What a reader should know: constant covariates, more covariates than events, the coding of events.
void addCoxNotes(const CoxAnswer& answer, report::Report& report);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_TABLES_H_
