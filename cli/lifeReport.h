// What survmeth life has computed, and the forms in which it is shown.
#ifndef CLI_LIFE_REPORT_H_
#define CLI_LIFE_REPORT_H_

#include <string>
#include <vector>

#include "analysis/lifeTable.h"
#include "analysis/survivalCurves.h"
#include "cli/shell/json.h"
#include "cli/shell/output.h"
#include "cli/shell/table.h"

namespace cli {

enum class LifeTableKind { kNone, kKaplanMeier, kActuarial };

struct LifeReport {
  std::string source, time, event, eventLabels, group, weight;  // names; group, weight may be empty
  std::size_t rows = 0;
  std::vector<std::string> labels;  // of the groups; "all" for one without a column
  double alpha = 0.05;
  survmeth::CurveLimits limits = survmeth::CurveLimits::kLogLog;
  LifeTableKind table = LifeTableKind::kNone;
  survmeth::CurveResult result;
  std::vector<std::vector<survmeth::LifeInterval>> intervals;  // when actuarial
};

// One line for each method used.
std::vector<std::string> lifeMethods(const LifeReport& report);
std::string limitsName(survmeth::CurveLimits limits);

std::string lifeText(const LifeReport& report);
void addLifeJson(const LifeReport& report, Json& json);
void addLifeFiles(const LifeReport& report, const std::string& folder, Output& output);

// The picture, as a script for gnuplot.
std::string lifePlot(const LifeReport& report, const std::string& file);
// What the picture leaves out, if anything.
std::string lifePlotNote(const LifeReport& report);

}  // namespace cli

#endif  // CLI_LIFE_REPORT_H_
