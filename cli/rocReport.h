// What survmeth roc has computed, and the forms in which it is shown.
#ifndef CLI_ROC_REPORT_H_
#define CLI_ROC_REPORT_H_

#include <string>
#include <vector>

#include "analysis/rocCurve.h"
#include "cli/shell/json.h"
#include "cli/shell/output.h"

namespace cli {

struct RocReport {
  std::string source, classColumn, weight;  // weight may be empty
  std::string positive;                     // label of the positives
  std::vector<std::string> negative;        // labels of the others
  std::size_t rows = 0;                     // with a class and a weight
  std::vector<std::string> markers;
  std::vector<bool> lowerIsPositive;
  double alpha = 0.05;
  survmeth::RateInterval interval = survmeth::RateInterval::kWilson;
  std::optional<double> prevalence;
  std::optional<survmeth::RocCosts> costs;
  bool table = false;  // print the thresholds
  survmeth::RocResult result;
};

// One line for each method used.
std::vector<std::string> rocMethods(const RocReport& report);
std::string intervalName(survmeth::RateInterval interval);

std::string rocText(const RocReport& report);
void addRocJson(const RocReport& report, Json& json);
void addRocFiles(const RocReport& report, const std::string& folder, Output& output);

// The picture, as a script for gnuplot.
std::string rocPlot(const RocReport& report, const std::string& file);

}  // namespace cli

#endif  // CLI_ROC_REPORT_H_
