#include "analysis/curveTables.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "report/build.h"
#include "report/keys.h"
#include "text/numbers.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using report::Kind;

// The column of groups: each label as often as its group has rows.
template <class Size>
report::Column groupColumn(const CurveNames& names, Size sizeOf) {
  std::size_t rows = 0;
  for (std::size_t g = 0; g < names.labels.size(); ++g) rows += sizeOf(g);
  std::vector<std::string> labels;
  labels.reserve(rows);
  for (std::size_t g = 0; g < names.labels.size(); ++g) {
    labels.insert(labels.end(), sizeOf(g), names.labels[g]);
  }
  return report::labelColumn(key::kGroup, names.group, std::move(labels));
}

report::Table partedTable(std::string id, std::string caption, report::Column group) {
  report::Table table = report::tableOf(std::move(id), std::move(caption), {});
  table.columns.push_back(std::move(group));
  table.partedBy = key::kGroup;
  return table;
}

}  // namespace

std::string limitsName(CurveLimits limits) {
  switch (limits) {
    case CurveLimits::kLogLog:
      return "log-log";
    case CurveLimits::kLog:
      return "log";
    case CurveLimits::kPlain:
      break;
  }
  return "plain";
}

report::Table medianTable(const std::vector<SurvivalCurve>& curves, const CurveNames& names) {
  const std::string level = report::confidence(names.alpha) + " ";
  const auto column = [&](const char* key, std::string heading, Kind kind, auto cell) {
    return report::columnOf(key, std::move(heading), kind, curves, cell);
  };
  using Curve = const SurvivalCurve&;
  return report::tableOf(
      "summary", "Median survival",
      {report::labelColumn(key::kGroup, names.group.empty() ? "group" : names.group, names.labels),
       column(key::kRows, "rows", Kind::kCount,
              [](Curve curve) { return static_cast<double>(curve.rows); }),
       column(key::kN, "n", Kind::kCount, [](Curve curve) { return curve.n; }),
       column(key::kEvents, "events", Kind::kCount, [](Curve curve) { return curve.events; }),
       column(key::kCensored, "censored", Kind::kCount, [](Curve curve) { return curve.censored; }),
       column(key::kMedian, "median", Kind::kTime, [](Curve curve) { return curve.median.value; }),
       column(key::kLower, level + "lower", Kind::kTime,
              [](Curve curve) { return curve.median.lower; }),
       column(key::kUpper, level + "upper", Kind::kTime,
              [](Curve curve) { return curve.median.upper; })});
}

report::Table curveTestTable(const Comparison& comparison) {
  const auto& tests = comparison.tests;
  report::Table table = report::tableOf(
      "tests", "Equal survival?",
      {report::labelColumn(key::kTest, "test", {"Log-rank", "Gehan-Breslow", "Tarone-Ware"}),
       report::columnOf(key::kChiSquare, "chi-square", Kind::kStatistic, tests,
                        [](const Test& test) { return test.chiSquare; }),
       report::columnOf(key::kDegreesOfFreedom, "df", Kind::kCount, tests,
                        [](const Test& test) { return test.degreesOfFreedom; }),
       report::columnOf(key::kPValue, "p-value", Kind::kPValue, tests,
                        [](const Test& test) { return test.pValue; })});
  if (!comparison.reason.empty()) {
    table.remarks.push_back("No comparison test exists: " + comparison.reason + ".");
  }
  return table;
}

report::Table groupEventTable(const Comparison& comparison, const CurveNames& names) {
  return report::tableOf(
      "events", "Events by group",
      {report::labelColumn(key::kGroup, names.group, names.labels),
       report::numberColumn(key::kObserved, "observed", Kind::kCount, comparison.observed),
       report::numberColumn(key::kExpected, "expected", Kind::kEstimate, comparison.expected),
       report::columnOf(key::kIncluded, "in the tests", Kind::kLabel, comparison.included,
                        [](bool included) { return included ? "yes" : "no"; })});
}

report::Table kaplanMeierTable(const std::vector<SurvivalCurve>& curves, const CurveNames& names) {
  report::Table table =
      partedTable("kaplanMeier", "Kaplan-Meier table",
                  groupColumn(names, [&](std::size_t g) { return curves[g].time.size(); }));
  const std::size_t rows = table.rows();
  const auto add = [&](const char* key, std::string heading, Kind kind, const auto& append) {
    std::vector<double> values;
    values.reserve(rows);
    for (const SurvivalCurve& curve : curves) append(curve, values);
    table.columns.push_back({key, std::move(heading), kind, std::move(values)});
  };
  const auto member = [](const std::vector<double> SurvivalCurve::*which) {
    return [which](const SurvivalCurve& curve, std::vector<double>& values) {
      values.insert(values.end(), (curve.*which).begin(), (curve.*which).end());
    };
  };
  const std::string level = report::confidence(names.alpha) + " ";
  add(key::kTime, names.time, Kind::kTime, member(&SurvivalCurve::time));
  add(key::kAtRisk, "at risk", Kind::kCount, member(&SurvivalCurve::atRisk));
  add(key::kEvents, "events", Kind::kCount, member(&SurvivalCurve::eventsAt));
  add(key::kCensored, "censored", Kind::kCount, member(&SurvivalCurve::censoredAt));
  add(key::kSurvival, "survival", Kind::kProbability, member(&SurvivalCurve::survival));
  add(key::kStandardError, "std error", Kind::kProbability,
      [](const SurvivalCurve& curve, std::vector<double>& values) {
        for (std::size_t i = 0; i < curve.time.size(); ++i) {
          values.push_back(curve.standardError(i));
        }
      });
  add(key::kLower, level + "lower", Kind::kProbability, member(&SurvivalCurve::lower));
  add(key::kUpper, level + "upper", Kind::kProbability, member(&SurvivalCurve::upper));
  return table;
}

report::Table actuarialTable(const std::vector<std::vector<LifeInterval>>& intervals,
                             const CurveNames& names) {
  const std::string level = report::confidence(names.alpha) + " ";
  const struct {
    const char* key;
    std::string heading;
    Kind kind;
    double LifeInterval::*member;
  } columns[] = {
      {key::kIntervalStart, names.time + " from", Kind::kTime, &LifeInterval::lower},
      {key::kIntervalEnd, "to below", Kind::kTime, &LifeInterval::upper},
      {key::kEntering, "entering", Kind::kCount, &LifeInterval::entering},
      {key::kEvents, "events", Kind::kCount, &LifeInterval::events},
      {key::kCensored, "censored", Kind::kCount, &LifeInterval::censored},
      {key::kEffective, "effective", Kind::kCount, &LifeInterval::effective},
      {key::kEventProbability, "event probability", Kind::kProbability, &LifeInterval::conditional},
      {key::kSurvivalAtStart, "survival at start", Kind::kProbability,
       &LifeInterval::survivalAtStart},
      {key::kSurvivalAtEnd, "survival at end", Kind::kProbability, &LifeInterval::survivalAtEnd},
      {key::kStandardError, "std error", Kind::kProbability, &LifeInterval::standardError},
      {key::kLower, level + "lower", Kind::kProbability, &LifeInterval::lowerLimit},
      {key::kUpper, level + "upper", Kind::kProbability, &LifeInterval::upperLimit},
      {key::kDensity, "density", Kind::kEstimate, &LifeInterval::density},
      {key::kDensityStandardError, "std error", Kind::kEstimate, &LifeInterval::densityError},
      {key::kHazard, "hazard", Kind::kEstimate, &LifeInterval::hazard},
      {key::kHazardStandardError, "std error", Kind::kEstimate, &LifeInterval::hazardError},
      {key::kMedianResidual, "median residual", Kind::kTime, &LifeInterval::medianResidual},
      {key::kMedianResidualStandardError, "std error", Kind::kTime,
       &LifeInterval::medianResidualError},
  };
  report::Table table =
      partedTable("actuarial", "Actuarial table",
                  groupColumn(names, [&](std::size_t g) { return intervals[g].size(); }));
  for (const auto& column : columns) {
    std::vector<double> values;
    for (const std::vector<LifeInterval>& rows : intervals) {
      for (const LifeInterval& row : rows) values.push_back(row.*column.member);
    }
    table.columns.push_back({column.key, column.heading, column.kind, std::move(values)});
  }
  return table;
}

std::string mediansInWords(const std::vector<SurvivalCurve>& curves, const CurveNames& names) {
  constexpr std::size_t kMostGroups = 4;
  if (curves.size() > kMostGroups) return {};
  std::string said = " Median time to it: ";
  std::string limits = report::confidence(names.alpha) + " limits ";  // said once
  for (std::size_t g = 0; g < curves.size(); ++g) {
    const Estimate& median = curves[g].median;
    if (g > 0) said += ", ";
    if (!names.group.empty()) said += names.labels[g] + " ";
    said += std::isnan(median.value) ? "not reached" : text::brief(median.value);
    if (std::isnan(median.lower) && std::isnan(median.upper)) continue;
    said += " (" + limits;
    said += std::isnan(median.lower) ? "no lower limit" : text::brief(median.lower);
    said += " to ";
    said += std::isnan(median.upper) ? "no upper limit" : text::brief(median.upper);
    said += ")";
    limits.clear();
  }
  return said + ".";
}

}  // namespace survmeth::analysis
