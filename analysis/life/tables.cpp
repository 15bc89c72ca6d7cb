// Counts and medians, tests, the curves themselves, the actuarial table.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::curves::Curve;
using engine::curves::Quantile;
using report::Kind;

report::Table summaryTable(const LifeAnswer& answer, const LifeRequest& request) {
  const auto counts = [&](const char* key, const char* heading, double Curve::*member) {
    return report::columnOf(key, heading, Kind::kCount, answer.curves, member);
  };
  const auto medians = [&](const char* key, const std::string& heading, double Quantile::*member) {
    return report::columnOf(key, heading, Kind::kTime, answer.medians, member);
  };
  const std::string level = report::confidence(request.alpha);
  return report::tableOf(
      "summary", "Median survival",
      {lifeGroups(answer, request),
       report::numberColumn(key::kRows, "rows", Kind::kCount, answer.rows.groups.counts),
       counts(key::kN, "n", &Curve::n), counts(key::kEvents, "events", &Curve::events),
       counts(key::kCensored, "censored", &Curve::censored),
       medians(key::kMedian, "median", &Quantile::time),
       medians(key::kLower, level + " lower", &Quantile::lower),
       medians(key::kUpper, level + " upper", &Quantile::upper)});
}

// A row for each test, with the reason below where none exists.
report::Table testTable(const LifeComparison& comparison) {
  report::Table table = report::rowsOf("tests", "Equal survival?", comparison.tests)
                            .column(key::kTest, "test", Kind::kLabel, &LifeTest::name)
                            .test(&LifeTest::test)
                            .table();
  if (!comparison.exists()) {
    table.remarks.push_back("No comparison test exists: " + comparison.reason + ".");
  }
  return table;
}

// Observed and expected events of each group.
report::Table eventTable(const LifeAnswer& answer, const LifeRequest& request) {
  const LifeComparison& comparison = answer.comparison;
  return report::tableOf(
      "events", "Events by group",
      {lifeGroups(answer, request),
       report::numberColumn(key::kObserved, "observed", Kind::kCount, comparison.observed),
       report::numberColumn(key::kExpected, "expected", Kind::kEstimate, comparison.expected),
       report::columnOf(key::kIncluded, "in the tests", Kind::kLabel, comparison.included,
                        [](bool included) { return included ? "yes" : "no"; })});
}

// What heads the parts of a long table: nothing where there is one.
report::Column partsOf(const LifeAnswer& answer, const LifeRequest& request) {
  return report::labelColumn(key::kGroup, text::joined(request.group), answer.rows.groups.labels);
}

// A row for each interval of each group.
report::Table intervalTable(const LifeAnswer& answer, const LifeRequest& request) {
  using Row = LifeInterval;
  using enum Kind;
  return report::partedRowsOf("actuarial", "Actuarial table", partsOf(answer, request),
                              answer.intervals)
      .column(key::kIntervalStart, request.time + " from", kTime, &Row::lower)
      .column(key::kIntervalEnd, "to below", kTime, &Row::upper)
      .column(key::kEntering, "entering", kCount, &Row::entering)
      .column(key::kEvents, "events", kCount, &Row::events)
      .column(key::kCensored, "censored", kCount, &Row::censored)
      .column(key::kEffective, "effective", kCount, &Row::effective)
      .column(key::kEventProbability, "event probability", kProbability, &Row::conditional)
      .column(key::kSurvivalAtStart, "survival at start", kProbability, &Row::survivalAtStart)
      .column(key::kSurvivalAtEnd, "survival at end", kProbability, &Row::survivalAtEnd)
      .column(key::kStandardError, "std error", kProbability, &Row::standardError)
      .limits(report::confidence(request.alpha), kProbability, &Row::limits)
      .column(key::kDensity, "density", kEstimate, &Row::density)
      .column(key::kDensityStandardError, "std error", kEstimate, &Row::densityError)
      .column(key::kHazard, "hazard", kEstimate, &Row::hazard)
      .column(key::kHazardStandardError, "std error", kEstimate, &Row::hazardError)
      .column(key::kMedianResidual, "median residual", kTime, &Row::medianResidual)
      .column(key::kMedianResidualStandardError, "std error", kTime, &Row::medianResidualError)
      .table();
}

}  // namespace

report::Column lifeGroups(const LifeAnswer& answer, const LifeRequest& request) {
  return report::labelColumn(key::kGroup,
                             request.group.empty() ? "group" : text::joined(request.group),
                             answer.rows.groups.labels);
}

void addLifeTables(const LifeAnswer& answer, const LifeRequest& request, report::Report& report) {
  report.tables.push_back(summaryTable(answer, request));
  if (answer.rows.several()) {
    report.tables.push_back(testTable(answer.comparison));
    report.tables.push_back(eventTable(answer, request));
  }
  if (!answer.intervals.empty()) report.tables.push_back(intervalTable(answer, request));
}

report::Table lifeCurveTable(const LifeAnswer& answer, const LifeRequest& request) {
  const std::string level = report::confidence(request.alpha);
  const auto standardErrors = [](const Curve& curve) {
    std::vector<double> errors(curve.time.size());
    for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = curve.standardError(i);
    return errors;
  };
  return report::partedRowsOf("kaplanMeier", "Kaplan-Meier table", partsOf(answer, request),
                              answer.curves, &Curve::time)
      .numbers(key::kTime, request.time, Kind::kTime, &Curve::time)
      .numbers(key::kAtRisk, "at risk", Kind::kCount, &Curve::atRisk)
      .numbers(key::kEvents, "events", Kind::kCount, &Curve::eventsAt)
      .numbers(key::kCensored, "censored", Kind::kCount, &Curve::censoredAt)
      .numbers(key::kSurvival, "survival", Kind::kProbability, &Curve::survival)
      .numbers(key::kStandardError, "std error", Kind::kProbability, standardErrors)
      .numbers(key::kLower, level + " lower", Kind::kProbability, &Curve::lower)
      .numbers(key::kUpper, level + " upper", Kind::kProbability, &Curve::upper)
      .table();
}

}  // namespace survmeth::analysis
