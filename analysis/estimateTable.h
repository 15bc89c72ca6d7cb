// Estimates with limits as a table, a row for each.
#ifndef ANALYSIS_ESTIMATE_TABLE_H_
#define ANALYSIS_ESTIMATE_TABLE_H_

#include <string>
#include <vector>

#include "analysis/estimate.h"
#include "report/report.h"

namespace survmeth::analysis {

struct NamedEstimate {
  const char* name;
  Estimate value;
  double standardError = kNone;
};

enum class Errors { kNone, kShown };

// In   nameKey  key of the column of names, which has no heading
//      alpha    limits have level 1 - alpha
//      errors   whether there is a column of standard errors
report::Table estimateTable(const char* id, std::string caption, const char* nameKey, double alpha,
                            const std::vector<NamedEstimate>& rows, Errors errors = Errors::kNone);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_ESTIMATE_TABLE_H_
