// survmeth life: declaration, run and description.
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/censoredRows.h"
#include "analysis/curveReadings.h"
#include "analysis/curveTables.h"
#include "analysis/lifeTable.h"
#include "analysis/survivalCurves.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Refusal;
using engine::Role;
using report::Kind;
using text::counted;
using text::quote;
using enum CurveLimits;

enum class Printed { kNone, kKaplanMeier, kActuarial };

struct Request : CensoredColumns {
  double alpha = 0.05;
  CurveLimits limits = kLogLog;
  Printed table = Printed::kNone;
  std::optional<double> width;
  std::vector<double> bounds;
  std::vector<double> quantiles, at;
  std::optional<double> tau;

  bool intervals() const { return width || !bounds.empty(); }
};

struct Result {
  CensoredRows rows;
  CurveResult survival;
  std::vector<std::vector<LifeInterval>> intervals;  // where they are asked for
  Readings readings;                                 // likewise

  bool several() const { return rows.groups.labels.size() > 1; }
};

CurveNames namesOf(const Result& result, const Request& request) {
  return {request.time, text::joined(request.group), result.rows.groups.labels, request.alpha};
}

void check(const Request& request) {
  if (request.width && !request.bounds.empty()) {
    throw BadOption("width", "excludes --bounds; expected one of the two");
  }
  const std::string intervals = request.width ? "--width" : "--bounds";
  if (request.table == Printed::kKaplanMeier && request.intervals()) {
    throw BadOption("table", "km has no intervals; expected actuarial with " + intervals);
  }
  if (request.table == Printed::kActuarial && !request.intervals()) {
    throw BadOption("table", "actuarial needs intervals; expected --width or --bounds");
  }
}

Result fit(const frame::Frame& data, const Request& request, numerics::Progress&) {
  Result result{censoredRowsOf(data, request), {}, {}, {}};
  const SurvivalData rows = result.rows.data();
  try {
    result.survival = survivalCurves({rows, request.alpha, request.limits});
    result.readings = readingsOf(rows, {request.quantiles, request.at, request.tau}, request.alpha,
                                 request.limits);
    if (request.intervals()) {
      result.intervals = lifeTables(
          {rows, request.alpha, request.limits, request.width.value_or(0), request.bounds});
    }
  } catch (const Refusal& refused) {
    if (refused.role() != Role::kIntervals) throw result.rows.worded(refused);
    throw BadOption(request.bounds.empty() ? "width" : "bounds", refused.what());
  }
  return result;
}

std::vector<report::Method> methodsOf(const Result& result, const Request& request) {
  std::vector<report::Method> methods = {
      {"curve: product-limit (Kaplan-Meier); standard error: Greenwood",
       "Kaplan & Meier, JASA 53 (1958) 457-481"},
      {"limits: " + report::confidence(request.alpha) + " " + limitsName(request.limits) +
           " from the Greenwood sum",
       ""},
      {"median: where the curve crosses 1/2, the middle where it runs at 1/2; limits: where the "
       "curve's limits do",
       "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"}};
  if (result.several()) {
    methods.push_back(
        {"tests: weighted log-rank family with hypergeometric variance; weight 1 (log-rank), "
         "number at risk (Gehan-Breslow), its square root (Tarone-Ware)",
         "Tarone & Ware, Biometrika 64 (1977) 156-160"});
  }
  if (!result.intervals.empty()) {
    methods.push_back(
        {"actuarial table: intervals [from, to), the censored at risk for half of theirs; "
         "standard errors: Greenwood, Gehan",
         "Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644"});
  }
  if (!request.weight.empty()) methods.push_back({"weights: frequencies of the rows", ""});
  return methods;
}

std::vector<report::Note> notesOf(const Result& result) {
  std::vector<report::Note> notes;
  const auto add = [&notes](const char* code, std::string text) {
    notes.push_back({code, std::move(text)});
  };
  const CurveResult& found = result.survival;
  if (!result.rows.eventNote.empty()) add("eventCoding", result.rows.eventNote);
  if (!(found.events > 0)) {
    add("noEvents", "no row is an event: the curves stay at 1 and there is no median");
  }
  if (!(found.censored > 0)) add("noneCensored", "every row is an event, none is censored");
  result.rows.noteWeights(notes);
  if (!result.several()) return notes;
  if (!found.comparison.reason.empty()) {
    add("noTest", "no comparison test exists: " + found.comparison.reason);
    return notes;
  }
  for (std::size_t g = 0; g < found.curves.size(); ++g) {
    const std::string& label = result.rows.groups.labels[g];
    if (found.comparison.included[g]) continue;
    add("groupNotIncluded",
        "the group " + quote(label) +
            " has no part in the tests: nobody in it is at risk at an event time");
    notes.back().names = {label};
  }
  return notes;
}

// A row for each test, with the reason below where none exists.
report::Table testTable(const Comparison& comparison) {
  report::Table table = report::rowsOf("tests", "Equal survival?", comparison.tests)
                            .with(report::labelColumn(key::kTest, "test",
                                                      {"Log-rank", "Gehan-Breslow", "Tarone-Ware"}))
                            .test([](const Test& test) { return test; })
                            .table();
  if (!comparison.reason.empty()) {
    table.remarks.push_back("No comparison test exists: " + comparison.reason + ".");
  }
  return table;
}

// Observed and expected events of each group.
report::Table eventTable(const Comparison& comparison, const CurveNames& names) {
  return report::tableOf(
      "events", "Events by group",
      {report::labelColumn(key::kGroup, names.group, names.labels),
       report::numberColumn(key::kObserved, "observed", Kind::kCount, comparison.observed),
       report::numberColumn(key::kExpected, "expected", Kind::kEstimate, comparison.expected),
       report::columnOf(key::kIncluded, "in the tests", Kind::kLabel, comparison.included,
                        [](bool included) { return included ? "yes" : "no"; })});
}

// A row for each interval of each group.
report::Table actuarialTable(const Result& result, const CurveNames& names) {
  using Row = LifeInterval;
  using enum Kind;
  return report::partedRowsOf(
             "actuarial", "Actuarial table",
             report::labelColumn(key::kGroup, names.group, names.labels), result.intervals,
             [](const auto& rows) -> auto& { return rows; })
      .column(key::kIntervalStart, names.time + " from", kTime, &Row::lower)
      .column(key::kIntervalEnd, "to below", kTime, &Row::upper)
      .column(key::kEntering, "entering", kCount, &Row::entering)
      .column(key::kEvents, "events", kCount, &Row::events)
      .column(key::kCensored, "censored", kCount, &Row::censored)
      .column(key::kEffective, "effective", kCount, &Row::effective)
      .column(key::kEventProbability, "event probability", kProbability, &Row::conditional)
      .column(key::kSurvivalAtStart, "survival at start", kProbability, &Row::survivalAtStart)
      .column(key::kSurvivalAtEnd, "survival at end", kProbability, &Row::survivalAtEnd)
      .column(key::kStandardError, "std error", kProbability, &Row::standardError)
      .limits(report::confidence(names.alpha), kProbability, &Row::limits)
      .column(key::kDensity, "density", kEstimate, &Row::density)
      .column(key::kDensityStandardError, "std error", kEstimate, &Row::densityError)
      .column(key::kHazard, "hazard", kEstimate, &Row::hazard)
      .column(key::kHazardStandardError, "std error", kEstimate, &Row::hazardError)
      .column(key::kMedianResidual, "median residual", kTime, &Row::medianResidual)
      .column(key::kMedianResidualStandardError, "std error", kTime, &Row::medianResidualError)
      .table();
}

report::Report describe(const Result& result, const Request& request) {
  const CurveNames names = namesOf(result, request);
  const CurveResult& found = result.survival;
  report::Report report;
  report.title = names.group.empty() ? "Survival" : "Survival by " + names.group;
  report.summary = report::brief(found.events) + " of " + report::brief(found.n) +
                   " had the event." + mediansInWords(found, names);
  report.facts = {result.rows.eventFact(request.event), report::levelFact(request.alpha)};
  report.tables = {medianTable(found, names)};
  if (result.several()) {
    report.tables.push_back(testTable(found.comparison));
    report.tables.push_back(eventTable(found.comparison, names));
  }
  if (result.several() && found.comparison.reason.empty()) {
    report.summary += " Log-rank test of equal survival in " +
                      counted(found.curves.size(), "group", "groups") + ": " +
                      report::pValueInWords(found.comparison[CurveTest::kLogRank].pValue) + ".";
  }
  if (!result.intervals.empty()) report.tables.push_back(actuarialTable(result, names));
  report.methods = methodsOf(result, request);
  report.notes = notesOf(result);
  describeReadings(result.readings, names, report);
  return report;
}

}  // namespace

Declaration lifeDeclaration() {
  return declare<Request, Result>("life",
                                  "Survival curves, their medians and the tests that compare them")
      .column("time", &Request::time, Role::kTime, numbersFrom(0),
              "Column of times, numbers from 0")
      .required()
      .column("event", &Request::event, Role::kEvent, labels(),
              "Column of events: 1, true, yes or dead; censored 0, false, no or alive; or 2 and 1")
      .required()
      .labels("event-value", &Request::eventValues, "event",
              "The values that are events, separated by commas; all others are censored", "V,W,...")
      .crossed("group", &Request::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination")
      .column("weight", &Request::weight, Role::kWeight, numbersFrom(0),
              "Column of frequencies, numbers from 0")
      .alpha(&Request::alpha)
      .choice(
          "conf", &Request::limits,
          {{limitsName(kLogLog), kLogLog}, {limitsName(kLog), kLog}, {limitsName(kPlain), kPlain}},
          "Limits")
      .choice("table", &Request::table,
              {{"none", Printed::kNone},
               {"km", Printed::kKaplanMeier},
               {"actuarial", Printed::kActuarial}},
              "Also print the table")
      .without("actuarial with --width or --bounds, else none")
      .number("width", &Request::width, above(0), "Width of the actuarial table's intervals", "W")
      .numbers("bounds", &Request::bounds,
               {.least = 0,
                .ascending = true,
                .expected = "ascending numbers from 0, separated by commas"},
               "Bounds of the actuarial table's intervals")
      .numbers("quantiles", &Request::quantiles,
               {.least = 0,
                .most = 1,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers between 0 and 1, separated by commas"},
               "Shares that have failed: the times by which they have, with limits")
      .numbers("at", &Request::at,
               {.least = 0,
                .ascending = true,
                .expected = "ascending numbers from 0, separated by commas"},
               "Times at which survival is given, with limits")
      .number("tau", &Request::tau, above(0),
              "Time to which mean survival is restricted; the groups against the first", "T")
      .details(
          "Product-limit curves, Greenwood variance, log-log limits; the median is where a curve "
          "crosses 1/2, its limits where the curve's limits do. Files always hold the "
          "Kaplan-Meier table.")
      .example("survmeth life data/leukemia.csv --time weeks --event relapse --group treatment")
      .example(
          "survmeth life data/leukemia.csv --time weeks --event relapse --table km --out results "
          "--plot curves.svg")
      .tables({"summary", "tests", "events"})
      .longTable(
          "kaplanMeier",
          [](const Result& result, const Request& request) {
            return kaplanMeierTable(result.survival, namesOf(result, request));
          },
          [](const Request& request) { return request.table == Printed::kKaplanMeier; })
      .tables({"actuarial", "quantiles", "survivalAt", "restrictedMeans", "meanContrasts"})
      .figure("survival",
              [](const Result& result, const Request& request) {
                return survivalFigure(result.survival, request.limits, namesOf(result, request));
              })
      .leastRows(2)
      .check(check)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
