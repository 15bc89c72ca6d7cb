// survmeth life: declaration, run and description.

#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/curveFigure.h"
#include "analysis/curveReadings.h"
#include "analysis/curveTables.h"
#include "analysis/lifeTable.h"
#include "analysis/survivalCurves.h"
#include "frame/labels.h"
#include "model/coding.h"
#include "report/build.h"
#include "report/keys.h"
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

enum class Printed { kNone, kKaplanMeier, kActuarial };

struct Request {
  std::string time, event, weight;
  std::vector<std::string> group;  // crossed
  std::vector<std::string> eventValues;
  double alpha = 0.05;
  CurveLimits limits = CurveLimits::kLogLog;
  Printed table = Printed::kNone;
  std::optional<double> width;
  std::vector<double> bounds;
  std::vector<double> quantiles, at;
  std::optional<double> tau;

  bool intervals() const { return width || !bounds.empty(); }
};

struct Result {
  std::vector<std::string> eventLabels;
  std::string eventNote;
  std::vector<std::string> groups;  // "all" for one without a column
  bool wholeWeights = true;
  std::size_t zeroWeights = 0;
  CurveResult survival;
  std::vector<std::vector<LifeInterval>> intervals;  // where they are asked for
  Readings readings;                                 // likewise
};

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

// An empty group is more likely a mistake than a group nobody wants to see.
void requireGroups(const frame::Labels& groups, std::span<const double> weight) {
  std::vector<double> totals(groups.counts.begin(), groups.counts.end());
  if (!weight.empty()) {
    totals.assign(totals.size(), 0);
    for (std::size_t i = 0; i < weight.size(); ++i) totals[groups.codes[i]] += weight[i];
  }
  for (std::size_t g = 0; g < totals.size(); ++g) {
    if (totals[g] > 0) continue;
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "the group " + quote(groups.labels[g]) + " is empty: its rows have " +
                      (groups.counts[g] == 0 ? "missing cells" : "weight 0"),
                  Refusal::kNone, "at least one complete row in each group");
  }
}

[[noreturn]] void refuse(const Refusal& refused, const Request& request,
                         const std::vector<std::string>& groups) {
  if (refused.role() == Role::kIntervals) {
    throw BadOption(request.bounds.empty() ? "width" : "bounds", refused.what());
  }
  if (refused.role() == Role::kGroup && groups.size() == 1) {
    throw Refusal(Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
                  "at least one above 0");
  }
  if (refused.role() == Role::kGroup && refused.column() != Refusal::kNone) {
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "the weights of the group " + quote(groups[refused.column()]) +
                      " vanish beside the largest weights");
  }
  throw Refusal(refused);
}

Result fit(const frame::Frame& data, const Request& request, numerics::Progress&) {
  Result result;
  model::YesNo events =
      model::yesNoOf(*data.labels(request.event), request.eventValues, model::kEvents);
  result.eventLabels = std::move(events.labels);
  result.eventNote = std::move(events.note);
  SurvivalData survival;
  survival.time = data.numbers(request.time)->numbers;
  survival.event = events.rows;
  if (!request.weight.empty()) survival.weight = data.numbers(request.weight)->numbers;
  for (const double weight : survival.weight) {
    result.wholeWeights = result.wholeWeights && weight == std::trunc(weight);
    result.zeroWeights += weight == 0 ? 1 : 0;
  }
  frame::Labels groups{{"all"}, {}, {data.rows}};
  if (!request.group.empty()) {
    groups = request.group.size() == 1 ? frame::allLabelsOf(*data.labels(request.group.front()))
                                       : frame::crossedLabels(data, request.group);
    requireGroups(groups, survival.weight);
    survival.group = groups.codes;
    survival.groups = groups.labels.size();
  }
  try {
    result.survival = survivalCurves({survival, request.alpha, request.limits});
    result.readings = readingsOf(survival, {request.quantiles, request.at, request.tau},
                                 request.alpha, request.limits);
    if (request.intervals()) {
      result.intervals = lifeTables(
          {survival, request.alpha, request.limits, request.width.value_or(0), request.bounds});
    }
  } catch (const Refusal& refused) {
    refuse(refused, request, groups.labels);
  }
  result.groups = std::move(groups.labels);
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
  if (result.groups.size() > 1) {
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
  const auto add = [&notes](const char* code, std::string text,
                            std::vector<std::string> names = {}) {
    notes.push_back({code, std::move(text), std::move(names)});
  };
  double events = 0, censored = 0;
  for (const SurvivalCurve& curve : result.survival.curves) {
    events += curve.events;
    censored += curve.censored;
  }
  if (!result.eventNote.empty()) add("eventCoding", result.eventNote);
  if (!(events > 0)) {
    add("noEvents", "no row is an event: the curves stay at 1 and there is no median");
  }
  if (!(censored > 0)) add("noneCensored", "every row is an event, none is censored");
  if (!result.wholeWeights) {
    add("fractionalWeights", "weights are not all whole numbers; they are taken as frequencies");
  }
  if (result.zeroWeights > 0) {
    add("zeroWeights",
        counted(result.zeroWeights, "row has", "rows have") + " weight 0 and no effect");
  }
  const Comparison& comparison = result.survival.comparison;
  if (result.groups.size() < 2) return notes;
  if (!comparison.reason.empty()) add("noTest", "no comparison test exists: " + comparison.reason);
  for (std::size_t g = 0; g < result.groups.size(); ++g) {
    if (comparison.included[g] || !comparison.reason.empty()) continue;
    add("groupNotIncluded",
        "the group " + quote(result.groups[g]) +
            " has no part in the tests: nobody in it is at risk at an event time",
        {result.groups[g]});
  }
  return notes;
}

std::string summaryOf(const Result& result, const CurveNames& names) {
  const std::vector<SurvivalCurve>& curves = result.survival.curves;
  double n = 0, events = 0;
  for (const SurvivalCurve& curve : curves) {
    n += curve.n;
    events += curve.events;
  }
  std::string text = report::brief(events) + " of " + report::brief(n) + " had the event." +
                     mediansInWords(curves, names);
  const Comparison& comparison = result.survival.comparison;
  if (result.groups.size() < 2 || !comparison.reason.empty()) return text;
  return text + " Log-rank test of equal survival in " +
         counted(result.groups.size(), "group", "groups") + ": " +
         report::pValueInWords(comparison[CurveTest::kLogRank].pValue) + ".";
}

report::Report describe(const Result& result, const Request& request) {
  const CurveNames names{request.time, text::joined(request.group), result.groups, request.alpha};
  report::Report report;
  report.title = names.group.empty() ? "Survival" : "Survival by " + names.group;
  report.summary = summaryOf(result, names);
  std::string labels;
  for (const std::string& label : result.eventLabels) {
    labels += (labels.empty() ? "" : ", ") + label;
  }
  const report::Value events = labels.empty() ? report::Value() : report::Value(labels);
  report.facts = {{key::kEventLabels, "Event where " + request.event + " is", Kind::kLabel, events},
                  {key::kLevel, "", Kind::kProbability, 1 - request.alpha}};
  report.tables.push_back(medianTable(result.survival.curves, names));
  if (result.groups.size() > 1) {
    report.tables.push_back(curveTestTable(result.survival.comparison));
    report.tables.push_back(groupEventTable(result.survival.comparison, names));
  }
  report.tables.push_back(kaplanMeierTable(result.survival.curves, names));
  if (request.table != Printed::kKaplanMeier) {
    report.tables.back().display = report::Display::kFilesOnly;
  }
  if (!result.intervals.empty()) report.tables.push_back(actuarialTable(result.intervals, names));
  report.figures = {survivalFigure(result.survival, request.limits, names)};
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
      .choice("conf", &Request::limits,
              {{limitsName(CurveLimits::kLogLog), CurveLimits::kLogLog},
               {limitsName(CurveLimits::kLog), CurveLimits::kLog},
               {limitsName(CurveLimits::kPlain), CurveLimits::kPlain}},
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
      .tables({"summary", "tests", "events", "kaplanMeier", "actuarial", "quantiles", "survivalAt",
               "restrictedMeans", "meanContrasts"})
      .figures({"survival"})
      .leastRows(2)
      .check(check)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
