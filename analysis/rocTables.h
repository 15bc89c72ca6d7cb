// What survmeth roc found, and the tables and the figure that show it.
#ifndef ANALYSIS_ROC_TABLES_H_
#define ANALYSIS_ROC_TABLES_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/rocCurve.h"
#include "report/report.h"

namespace survmeth::analysis {

struct RocAnswer {
  RocResult result;
  std::string positive;               // label of the positives
  std::vector<std::string> negative;  // labels of the others
  std::vector<std::string> markers;
  std::size_t rows = 0;  // with a class and a weight above 0
  std::optional<RocCosts> costs;
  std::vector<report::Note> notes;

  void note(const char* code, const std::string& text, std::vector<std::string> names = {}) {
    notes.push_back({code, text, std::move(names)});
  }
};

// `level` is that of the limits: "95%".
report::Table rocAreaTable(const RocAnswer& answer, const std::string& level);
report::Table rocBestTable(const RocAnswer& answer, const std::string& level);
report::Table rocCostTable(const RocAnswer& answer);
report::Table rocComparisonTable(const RocAnswer& answer, const std::string& level);
report::Table rocThresholdTable(const RocAnswer& answer, const std::string& level);

// "area 0.731 (95% limits 0.626 to 0.836)", `limits` being "limits ".
std::string rocAreaInWords(const RocCurve& curve, const std::string& level, const char* limits);

// The curves on equal axes with the line of chance; steps that print cannot tell apart are one.
report::Figure rocFigure(const RocAnswer& answer, const std::string& classColumn,
                         const std::string& level);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_ROC_TABLES_H_
