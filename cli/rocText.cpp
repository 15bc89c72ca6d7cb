// survmeth roc for people.
#include <algorithm>

#include "cli/rocReport.h"
#include "cli/shell/numbers.h"
#include "cli/shell/session.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

using survmeth::Estimate;
using survmeth::RocComparison;
using survmeth::RocCurve;
using survmeth::RocThreshold;

constexpr std::size_t kMostCuts = 5;  // that are printed for one marker

std::string proportion(double value) { return fixed(value, 4); }

std::string level(const RocReport& report) { return confidence(report.alpha) + "% "; }

// ">= 0.22" or "<= 0.22".
std::string rule(const RocReport& report, std::size_t m, double threshold) {
  return std::string(report.lowerIsPositive[m] ? "<= " : ">= ") + exact(threshold);
}

std::string heading(const RocReport& report) {
  std::string negative;
  for (std::size_t i = 0; i < report.negative.size() && i < 12; ++i) {
    negative += (i > 0 ? ", " : "") + report.negative[i];
  }
  if (report.negative.size() > 12) negative += ", ...";
  std::string columns =
      "class: " + report.classColumn + "; positive: " + report.positive + "; negative: " + negative;
  if (!report.weight.empty()) columns += "; weight: " + report.weight;
  return underlined("ROC curves in " + report.source + ", " + counted(report.rows, "row", "rows")) +
         printable(columns) + "\n\n";
}

std::string areas(const RocReport& report) {
  TextTable table({{"marker"},
                   {"positive when"},
                   {"rows", kRight},
                   {"positives", kRight},
                   {"negatives", kRight},
                   {"area", kRight},
                   {"std error", kRight},
                   {level(report) + "lower", kRight},
                   {level(report) + "upper", kRight},
                   {"z", kRight},
                   {"p-value", kRight}});
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    const RocCurve& curve = report.result.curves[m];
    table.row({report.markers[m], report.lowerIsPositive[m] ? "low" : "high",
               std::to_string(curve.rows), brief(curve.positives), brief(curve.negatives),
               proportion(curve.area.value), proportion(curve.standardError),
               proportion(curve.area.lower), proportion(curve.area.upper), fixed(curve.z, 3),
               pValue(curve.pValue)});
  }
  return "Area under the curve\n" + table.text();
}

void addRate(std::vector<std::string>& cells, const Estimate& rate) {
  for (const double value : {rate.value, rate.lower, rate.upper})
    cells.push_back(proportion(value));
}

std::vector<Heading> rateHeadings(const RocReport& report, std::vector<Heading> first) {
  for (const char* name : {"sensitivity", "specificity"}) {
    first.push_back({name, kRight});
    first.push_back({level(report) + "lower", kRight});
    first.push_back({level(report) + "upper", kRight});
  }
  for (const char* name : {"PPV", "NPV", "LR+", "LR-"}) first.push_back({name, kRight});
  return first;
}

void addRates(std::vector<std::string>& cells, const RocThreshold& row) {
  addRate(cells, row.sensitivity);
  addRate(cells, row.specificity);
  for (const double value : {row.positiveValue, row.negativeValue}) {
    cells.push_back(proportion(value));
  }
  for (const double value : {row.positiveRatio, row.negativeRatio}) {
    cells.push_back(brief(value, 4));
  }
}

std::string cuts(const RocReport& report) {
  TextTable table(rateHeadings(report, {{"marker"}, {"cut"}, {"Youden", kRight}}));
  std::string remarks;
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    const RocCurve& curve = report.result.curves[m];
    const std::string name = printable(report.markers[m]);
    for (std::size_t k = 0; k < std::min(curve.best.size(), kMostCuts); ++k) {
      const RocThreshold& row = curve.thresholds[curve.best[k]];
      std::vector<std::string> cells = {report.markers[m], rule(report, m, row.threshold),
                                        proportion(row.youden)};
      addRates(cells, row);
      table.row(cells);
    }
    if (curve.best.empty()) remarks += "No cut of " + name + " has an index above 0.\n";
    if (curve.best.size() > kMostCuts) {
      remarks += name + " has " + grouped(curve.best.size() - kMostCuts) +
                 " further cuts with the same index.\n";
    }
  }
  return "\nBest cut by Youden's index\n" + table.text() + remarks;
}

std::string costs(const RocReport& report) {
  if (!report.costs) return {};
  TextTable table({{"marker"}, {"cut"}, {"cost", kRight}});
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    const RocCurve& curve = report.result.curves[m];
    for (std::size_t k = 0; k < std::min(curve.cheapest.size(), kMostCuts); ++k) {
      table.row({report.markers[m], rule(report, m, curve.thresholds[curve.cheapest[k]].threshold),
                 brief(curve.leastCost)});
    }
    if (curve.cheapest.empty()) {
      table.row({report.markers[m], "nobody positive", brief(curve.leastCost)});
    }
  }
  return "\nLeast cost\n" + table.text();
}

std::string comparisons(const RocReport& report) {
  if (report.result.comparisons.empty()) return {};
  TextTable table({{"areas compared"},
                   {"rows", kRight},
                   {"first", kRight},
                   {"second", kRight},
                   {"difference", kRight},
                   {"std error", kRight},
                   {level(report) + "lower", kRight},
                   {level(report) + "upper", kRight},
                   {"z", kRight},
                   {"p-value", kRight}});
  for (const RocComparison& pair : report.result.comparisons) {
    table.row({report.markers[pair.first] + " - " + report.markers[pair.second],
               std::to_string(pair.rows), proportion(pair.firstArea), proportion(pair.secondArea),
               proportion(pair.difference.value), proportion(pair.standardError),
               proportion(pair.difference.lower), proportion(pair.difference.upper),
               fixed(pair.z, 3), pValue(pair.pValue)});
  }
  return "\nEqual areas?\n" + table.text();
}

std::string thresholds(const RocReport& report) {
  std::string text;
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    std::vector<Heading> headings = {{"positive when"}};
    for (const char* name : {"tp", "fp", "fn", "tn"}) headings.push_back({name, kRight});
    headings = rateHeadings(report, std::move(headings));
    if (report.costs) headings.push_back({"cost", kRight});
    TextTable table(headings);
    for (const RocThreshold& row : report.result.curves[m].thresholds) {
      std::vector<std::string> cells = {rule(report, m, row.threshold)};
      for (const double count : {row.tp, row.fp, row.fn, row.tn}) cells.push_back(brief(count));
      addRates(cells, row);
      if (report.costs) cells.push_back(brief(row.cost));
      table.row(cells);
    }
    text += "\nThresholds of " + printable(report.markers[m]) + "\n" + table.text();
  }
  return text;
}

}  // namespace

std::string intervalName(survmeth::RateInterval interval) {
  switch (interval) {
    case survmeth::RateInterval::kWilson:
      return "wilson";
    case survmeth::RateInterval::kWald:
      return "wald";
    case survmeth::RateInterval::kClopperPearson:
      return "clopper-pearson";
    case survmeth::RateInterval::kAgresti:
      break;
  }
  return "agresti";
}

std::vector<std::string> rocMethods(const RocReport& report) {
  const bool counts = report.result.weightsAreCounts;
  std::vector<std::string> methods = {
      "area: trapezoidal, the share of pairs in which the positive has the higher (or lower) "
      "value, ties one half"};
  if (counts) {
    methods.push_back("standard error: DeLong; test: area 0.5, normal");
    const char* names[] = {"Wilson's score", "Wald", "Clopper-Pearson (exact)", "Agresti-Coull"};
    methods.push_back("sensitivity and specificity: " + level(report) +
                      names[static_cast<std::size_t>(report.interval)] + " limits");
  }
  methods.push_back("predictive values: at " + (report.prevalence
                                                    ? "prevalence " + brief(*report.prevalence)
                                                    : "the prevalence of the rows"));
  if (counts && report.result.curves.size() > 1) {
    methods.push_back(
        "comparison: DeLong's paired test on the rows that have both markers; limits are not "
        "adjusted for the number of pairs");
  }
  if (report.costs) {
    const survmeth::RocCosts& cost = *report.costs;
    const std::string subjects =
        report.prevalence
            ? "of as many subjects as there are rows, at prevalence " + brief(*report.prevalence)
            : "of all rows";
    methods.push_back("cost: " + subjects + ", tp " + brief(cost.tp) + ", fp " + brief(cost.fp) +
                      ", fn " + brief(cost.fn) + ", tn " + brief(cost.tn));
  }
  if (!report.weight.empty()) {
    methods.push_back(counts ? "weights: frequencies, a row of weight w counts as w rows"
                             : "weights: areas and rates are weighted");
  }
  return methods;
}

std::string rocText(const RocReport& report) {
  std::string text =
      heading(report) + areas(report) + cuts(report) + costs(report) + comparisons(report);
  if (report.table) text += thresholds(report);
  text += "\nMethods\n";
  for (const std::string& method : rocMethods(report)) text += "  " + method + "\n";
  return text;
}

}  // namespace cli
