// survmeth gray: declaration, run and description.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/eventTables.h"
#include "analysis/grayTest.h"
#include "analysis/groups.h"
#include "analysis/incidenceCurves.h"
#include "analysis/stepFigure.h"
#include "frame/labels.h"
#include "model/eventTypes.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Role;
using report::Kind;
using text::counted;
using text::quote;

struct Request {
  std::string time, status, censor, event;
  std::vector<std::string> group;  // crossed
  double rho = 0;
};

struct EventTest {
  std::uint32_t event;  // as the rows hold it
  std::string label;
  GrayResult result;
};

struct Result {
  model::EventTypes event;
  frame::Labels group;
  frame::Column time;
  std::vector<EventTest> tests;
};

// The more groups, the longer the work: it grows with their square.
constexpr std::size_t kMostGroups = 100;

Result fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  Result result;
  result.event = model::eventTypesOf(*data.labels(request.status), request.censor, request.event);
  result.group = groupsOf(data, request.group);
  result.time = *data.numbers(request.time);
  requireSeveral(result.group, kMostGroups);
  for (const std::size_t type : result.event.types) {
    progress.at(static_cast<double>(result.tests.size()) /
                static_cast<double>(result.event.types.size()));
    const std::uint32_t event = static_cast<std::uint32_t>(type) + 1;
    result.tests.push_back({event, result.event.status.labels[type],
                            grayTest({result.time.numbers, result.event.events, result.group.codes,
                                      result.group.labels.size(), event, request.rho})});
  }
  return result;
}

void addNotes(const Result& result, report::Report& report) {
  const auto add = [&report](const char* code, const std::string& text,
                             std::vector<std::string> names = {}) {
    report.notes.push_back({code, text, std::move(names)});
  };
  if (!result.event.censored) add("noneCensored", "no row is censored");
  if (result.tests.empty()) {
    add("noEvents", "no row is an event: there is nothing to test");
  } else if (!result.event.competing()) {
    add("oneEventType", "there is only one type of event: nothing competes with it");
  }
  for (const EventTest& test : result.tests) {
    if (!test.result.reason.empty()) {
      add("noTest", "no test of event " + quote(test.label) + " exists: " + test.result.reason,
          {test.label});
      continue;
    }
    for (std::size_t g = 0; g < result.group.labels.size(); ++g) {
      const std::string& group = result.group.labels[g];
      if (test.result.included[g]) continue;
      add("groupNotIncluded",
          "the group " + quote(group) + " has no part in the test of event " + quote(test.label) +
              ": nobody in it is at risk at such an event",
          {test.label, group});
    }
  }
}

report::Table testTable(const Result& result) {
  report::Table table = report::rowsOf("tests", "Equal cumulative incidence?", result.tests)
                            .column(key::kEvent, "event", Kind::kLabel, &EventTest::label)
                            .test(&EventTest::result)
                            .table();
  if (result.tests.empty()) table.remarks = {"No test exists: no row is an event."};
  for (const EventTest& test : result.tests) {
    if (test.result.reason.empty()) continue;
    table.remarks.push_back("No test of event " + quote(test.label) +
                            " exists: " + test.result.reason + ".");
  }
  return table;
}

// A panel for each type of event.
std::optional<report::Figure> figureOf(const Result& result, const Request& request) {
  if (result.tests.empty()) return {};
  report::Figure figure;
  figure.id = "incidence";
  figure.title = "Cumulative incidence by " + text::joined(request.group);
  figure.caption = "Aalen-Johansen curves, other events competing; a tick is a censoring.";
  for (const EventTest& test : result.tests) {
    const std::vector<IncidenceCurve> found =
        incidenceCurves({result.time.numbers, result.event.events, result.group.codes,
                         result.group.labels.size(), test.event});
    std::vector<StepCurve> curves;
    for (const IncidenceCurve& each : found) {
      curves.push_back({result.group.labels[curves.size()],
                        each.time,
                        each.incidence,
                        {},
                        {},
                        each.censored,
                        each.atRisk});
    }
    report::Panel& panel =
        figure.panels.emplace_back(stepPanel(request.time, "Cumulative incidence", 0, curves));
    panel.title = request.status + " " + test.label;
    if (test.result.reason.empty()) {
      panel.title += ", Gray's test " + report::pValueInWords(test.result.pValue);
    }
    if (!figure.riskTable) figure.riskTable = riskTableOf(panel, result.group.labels, curves);
  }
  return figure;
}

report::Report describe(const Result& result, const Request& request) {
  report::Report report;
  report.title = "Gray's test by " + text::joined(request.group);
  report.summary = "Is the cumulative incidence of each type of event the same in " +
                   counted(result.group.labels.size(), "group", "groups") + " of " +
                   text::joined(request.group) + "?";
  for (const EventTest& test : result.tests) {
    if (!test.result.reason.empty()) continue;
    report.summary += " " + test.label + ": " + report::pValueInWords(test.result.pValue) + ".";
  }
  report.facts = {censorFact(result.event)};
  report.tables = {
      groupStatusTable(result.group, result.event, text::joined(request.group), request.status),
      statusTable(result.event, request.status), testTable(result)};
  report.methods = {
      {"test: Gray's K-sample test of equal cumulative incidence, " +
           (request.rho == 0 ? std::string("all times weighed alike")
                             : "weight (1 - pooled incidence)^" + report::brief(request.rho)) +
           "; other types compete",
       "Gray, Annals of Statistics 16 (1988) 1141-1154"}};
  addNotes(result, report);
  return report;
}

}  // namespace

Declaration grayDeclaration() {
  return declare<Request, Result>("gray",
                                  "Gray's test of equal cumulative incidence under competing risks")
      .column("time", &Request::time, Role::kTime, numbersFrom(0),
              "Column of times, numbers from 0")
      .required()
      .column("status", &Request::status, Role::kEvent, labels(),
              "Column that says how each row ends, text or numbers")
      .required()
      .crossed("group", &Request::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination")
      .required()
      .label("censor", &Request::censor, "status", "The status of the censored, or none", "CODE")
      .without("0, censored, alive, no or false")
      .label("event", &Request::event, "status", "The type of event to be tested", "CODE")
      .without("each in turn")
      .number("rho", &Request::rho, anyNumber(),
              "Weight (1 - pooled incidence)^R: above 0 early events count more", "R")
      .without("0")
      .details(
          "Each row ends in an event of one type or is censored; the status column says which. "
          "Without --event each type is tested in turn, the others competing.")
      .example("survmeth gray data/pbc.csv --time time --status status --group trt")
      .tables({"groups", "statuses", "tests"})
      .figure("incidence", figureOf)
      .leastRows(2)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
