// survmeth life for people.
#include <array>
#include <cmath>

#include "cli/lifeReport.h"
#include "cli/shell/numbers.h"
#include "cli/shell/session.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

using survmeth::Comparison;
using survmeth::LifeInterval;
using survmeth::SurvivalCurve;

constexpr int kSurvivalDecimals = 4;
constexpr std::array<const char*, 3> kTestNames = {"Log-rank", "Gehan-Breslow", "Tarone-Ware"};

std::string probability(double value) { return fixed(value, kSurvivalDecimals); }

std::string heading(const LifeReport& report) {
  std::string text =
      underlined("Survival in " + report.source + ", " + counted(report.rows, "row", "rows"));
  std::string columns = "time: " + report.time + "; event: " + report.event +
                        (report.eventLabels.empty() ? " (none)" : " = " + report.eventLabels);
  if (!report.group.empty()) columns += "; group: " + report.group;
  if (!report.weight.empty()) columns += "; weight: " + report.weight;
  return text + printable(columns) + "\n\n";
}

std::string groupName(const LifeReport& report, std::size_t g) {
  return printable(report.group.empty() ? report.labels[g]
                                        : report.group + " = " + report.labels[g]);
}

std::string medians(const LifeReport& report) {
  const std::string level = confidence(report.alpha) + "% ";
  TextTable table({{report.group.empty() ? "group" : report.group},
                   {"n", kRight},
                   {"events", kRight},
                   {"median", kRight},
                   {level + "lower", kRight},
                   {level + "upper", kRight}});
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    const SurvivalCurve& curve = report.result.curves[g];
    table.row({report.labels[g], brief(curve.n), brief(curve.events), brief(curve.median.value),
               brief(curve.median.lower), brief(curve.median.upper)});
  }
  return table.text();
}

std::string tests(const LifeReport& report) {
  const Comparison& comparison = report.result.comparison;
  if (report.labels.size() < 2) return {};
  if (!comparison.reason.empty()) {
    return "\nNo comparison test exists: " + comparison.reason + ".\n";
  }
  TextTable expected({{report.group}, {"observed", kRight}, {"expected", kRight}});
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    if (!comparison.included[g]) continue;
    expected.row(
        {report.labels[g], brief(comparison.observed[g]), fixed(comparison.expected[g], 3)});
  }
  TextTable table({{"test"}, {"chi-square", kRight}, {"df", kRight}, {"p-value", kRight}});
  for (std::size_t t = 0; t < kTestNames.size(); ++t) {
    table.row({kTestNames[t], fixed(comparison.tests[t].chiSquare, 3),
               brief(comparison.degreesOfFreedom), pValue(comparison.tests[t].pValue)});
  }
  return "\nComparison of the groups\n" + table.text() + "\nEvents\n" + expected.text();
}

std::string kaplanMeier(const LifeReport& report) {
  const std::string level = confidence(report.alpha) + "% ";
  std::string text;
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    const SurvivalCurve& curve = report.result.curves[g];
    TextTable table({{report.time, kRight},
                     {"at risk", kRight},
                     {"events", kRight},
                     {"censored", kRight},
                     {"survival", kRight},
                     {"std error", kRight},
                     {level + "lower", kRight},
                     {level + "upper", kRight}});
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      table.row({brief(curve.time[i]), brief(curve.atRisk[i]), brief(curve.eventsAt[i]),
                 brief(curve.censoredAt[i]), probability(curve.survival[i]),
                 probability(curve.standardError(i)), probability(curve.lower[i]),
                 probability(curve.upper[i])});
    }
    text += "\nKaplan-Meier table, " + groupName(report, g) + "\n" + table.text();
  }
  return text;
}

std::string actuarial(const LifeReport& report) {
  const std::string level = confidence(report.alpha) + "% ";
  std::string text;
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    TextTable table({{report.time},
                     {"entering", kRight},
                     {"events", kRight},
                     {"censored", kRight},
                     {"effective", kRight},
                     {"survival at end", kRight},
                     {"std error", kRight},
                     {level + "lower", kRight},
                     {level + "upper", kRight},
                     {"hazard", kRight},
                     {"std error", kRight}});
    for (const LifeInterval& row : report.intervals[g]) {
      table.row({"[" + brief(row.lower) + ", " + brief(row.upper) + ")", brief(row.entering),
                 brief(row.events), brief(row.censored), brief(row.effective),
                 probability(row.survivalAtEnd), probability(row.standardError),
                 probability(row.lowerLimit), probability(row.upperLimit), brief(row.hazard, 4),
                 brief(row.hazardError, 4)});
    }
    text += "\nActuarial table, " + groupName(report, g) + "\n" + table.text();
  }
  return text;
}

}  // namespace

std::string limitsName(survmeth::CurveLimits limits) {
  switch (limits) {
    case survmeth::CurveLimits::kLogLog:
      return "log-log";
    case survmeth::CurveLimits::kLog:
      return "log";
    case survmeth::CurveLimits::kPlain:
      break;
  }
  return "plain";
}

std::vector<std::string> lifeMethods(const LifeReport& report) {
  const std::string level = confidence(report.alpha) + "% ";
  std::vector<std::string> methods = {
      "curve: product-limit (Kaplan-Meier); standard error: Greenwood",
      "limits: " + level + limitsName(report.limits) + " from the Greenwood sum",
      "median: where the curve crosses 1/2, the middle where it runs at 1/2; limits: where the "
      "curve's limits do"};
  if (report.labels.size() > 1) {
    methods.push_back(
        "tests: weighted log-rank family with hypergeometric variance; weight 1 (log-rank), number "
        "at risk (Gehan-Breslow), its square root (Tarone-Ware)");
  }
  if (report.table == LifeTableKind::kActuarial) {
    methods.push_back(
        "actuarial table: intervals [lower, upper), the censored at risk for half of theirs; "
        "standard errors: Greenwood, Gehan");
  }
  if (!report.weight.empty()) methods.push_back("weights: frequencies of the rows");
  return methods;
}

std::string lifeText(const LifeReport& report) {
  std::string text = heading(report) + medians(report) + tests(report);
  if (report.table == LifeTableKind::kKaplanMeier) text += kaplanMeier(report);
  if (report.table == LifeTableKind::kActuarial) text += actuarial(report);
  text += "\nMethods\n";
  for (const std::string& method : lifeMethods(report)) text += "  " + method + "\n";
  return text;
}

}  // namespace cli
