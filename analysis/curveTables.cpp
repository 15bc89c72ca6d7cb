#include "analysis/curveTables.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "analysis/stepFigure.h"
#include "report/build.h"
#include "report/numbers.h"

namespace survmeth::analysis {

namespace key = report::key;
using report::Kind;

report::Table medianTable(const CurveResult& result, const CurveNames& names) {
  return report::rowsOf("summary", "Median survival", result.curves)
      .with(report::labelColumn(key::kGroup, names.group.empty() ? "group" : names.group,
                                names.labels))
      .column(key::kRows, "rows", Kind::kCount, &SurvivalCurve::rows)
      .column(key::kN, "n", Kind::kCount, &SurvivalCurve::n)
      .column(key::kEvents, "events", Kind::kCount, &SurvivalCurve::events)
      .column(key::kCensored, "censored", Kind::kCount, &SurvivalCurve::censored)
      .column(key::kMedian, "median", Kind::kTime, &SurvivalCurve::median)
      .limits(report::confidence(names.alpha), Kind::kTime, &SurvivalCurve::median)
      .table();
}

std::string mediansInWords(const CurveResult& result, const CurveNames& names) {
  constexpr std::size_t kMostGroups = 4;
  if (names.labels.size() > kMostGroups) return {};
  const auto words = [](double value, const char* none) {
    return std::isnan(value) ? none : report::brief(value);
  };
  std::string said;
  std::string limits = report::confidence(names.alpha) + " limits ";  // said once
  for (std::size_t g = 0; g < names.labels.size(); ++g) {
    const Estimate& median = result.curves[g].median;
    said += g > 0 ? ", " : " Median time to it: ";
    if (!names.group.empty()) said += names.labels[g] + " ";
    said += words(median.value, "not reached");
    if (std::isnan(median.lower) && std::isnan(median.upper)) continue;
    said += " (" + std::exchange(limits, "") + words(median.lower, "no lower limit") + " to " +
            words(median.upper, "no upper limit") + ")";
  }
  return said + ".";
}

report::Table kaplanMeierTable(const CurveResult& result, const CurveNames& names) {
  const std::string level = report::confidence(names.alpha);
  return report::partedRowsOf("kaplanMeier", "Kaplan-Meier table",
                              report::labelColumn(key::kGroup, names.group, names.labels),
                              result.curves, &SurvivalCurve::time)
      .numbers(key::kTime, names.time, Kind::kTime, &SurvivalCurve::time)
      .numbers(key::kAtRisk, "at risk", Kind::kCount, &SurvivalCurve::atRisk)
      .numbers(key::kEvents, "events", Kind::kCount, &SurvivalCurve::eventsAt)
      .numbers(key::kCensored, "censored", Kind::kCount, &SurvivalCurve::censoredAt)
      .numbers(key::kSurvival, "survival", Kind::kProbability, &SurvivalCurve::survival)
      .numbers(key::kStandardError, "std error", Kind::kProbability, &SurvivalCurve::standardErrors)
      .numbers(key::kLower, level + " lower", Kind::kProbability, &SurvivalCurve::lower)
      .numbers(key::kUpper, level + " upper", Kind::kProbability, &SurvivalCurve::upper)
      .table();
}

report::Figure survivalFigure(const CurveResult& result, CurveLimits limits,
                              const CurveNames& names) {
  const bool several = result.curves.size() > 1;
  std::vector<StepCurve> curves;
  for (const SurvivalCurve& each : result.curves) {
    curves.push_back({several ? names.labels[curves.size()] : "", each.time, each.survival,
                      each.lower, each.upper, each.censoredAt, each.atRisk});
  }
  std::string title = names.group.empty() ? "Survival" : "Survival by " + names.group;
  if (several && result.comparison.reason.empty()) {
    const Test& logRank = result.comparison[CurveTest::kLogRank];
    title += ", log-rank " + report::pValueInWords(logRank.pValue);
  }
  report::Panel panel = stepPanel(names.time, "Survival", 1, curves);
  panel.y.most = 1;
  report::RiskTable atRisk = riskTableOf(panel, names.labels, curves);
  report::Figure figure =
      report::figureOf("survival", std::move(title),
                       "Kaplan-Meier curves with " + report::confidence(names.alpha) + " limits (" +
                           limitsName(limits) + "); a tick is a censoring.",
                       std::move(panel));
  figure.riskTable = std::move(atRisk);
  return figure;
}

}  // namespace survmeth::analysis
