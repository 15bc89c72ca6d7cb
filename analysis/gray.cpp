// survmeth gray: declaration, run and description.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/eventTables.h"
#include "analysis/grayTest.h"
#include "frame/labels.h"
#include "model/eventTypes.h"
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
using frame::Labels;
using report::Kind;
using text::counted;
using text::quote;

struct Request {
  std::string time, status, censor, event;
  std::vector<std::string> group;  // crossed
  double rho = 0;
};

struct Test {
  std::size_t code;  // into the labels of the status
  GrayResult result;
};

struct Result {
  model::EventTypes event;
  Labels group;
  std::vector<std::vector<std::size_t>> counts;  // by group and status
  std::vector<Test> tests;
};

// The more groups, the longer the work: it grows with their square.
constexpr std::size_t kMostGroups = 100;

Result fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  Result result;
  result.event = model::eventTypesOf(*data.labels(request.status), request.censor, request.event);
  result.group = request.group.size() == 1 ? frame::labelsOf(*data.labels(request.group.front()))
                                           : frame::crossedLabels(data, request.group);
  const std::size_t groups = result.group.labels.size();
  if (groups < 2 || groups > kMostGroups) {
    throw Refusal(Role::kGroup, Refusal::kNone,
                  groups < 2
                      ? "all complete rows are in the group " + quote(result.group.labels.front())
                      : "there are " + text::grouped(groups) + " groups",
                  Refusal::kNone, "2 to " + std::to_string(kMostGroups) + " groups");
  }
  result.counts.assign(groups, std::vector<std::size_t>(result.event.status.labels.size(), 0));
  for (std::size_t i = 0; i < data.rows; ++i) {
    ++result.counts[result.group.codes[i]][result.event.status.codes[i]];
  }
  const std::vector<std::size_t>& types = result.event.types;
  for (std::size_t k = 0; k < types.size(); ++k) {
    progress.at(static_cast<double>(k) / static_cast<double>(types.size()));
    result.tests.push_back({types[k], grayTest({.time = data.numbers(request.time)->numbers,
                                                .status = result.event.events,
                                                .group = result.group.codes,
                                                .groups = groups,
                                                .event = static_cast<std::uint32_t>(types[k]) + 1,
                                                .rho = request.rho})});
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
  for (const Test& test : result.tests) {
    const std::string& event = result.event.status.labels[test.code];
    const std::string& reason = test.result.reason;
    if (!reason.empty()) {
      add("noTest", "no test of event " + quote(event) + " exists: " + reason, {event});
    }
    for (std::size_t g = 0; reason.empty() && g < result.group.labels.size(); ++g) {
      const std::string& group = result.group.labels[g];
      if (test.result.included[g]) continue;
      add("groupNotIncluded",
          "the group " + quote(group) + " has no part in the test of event " + quote(event) +
              ": nobody in it is at risk at such an event",
          {event, group});
    }
  }
}

report::Table groupTable(const Result& result, const Request& request) {
  report::Table table = report::tableOf(
      "groups", "Rows by group and status",
      {report::labelColumn(key::kGroup, text::joined(request.group), result.group.labels),
       report::numberColumn(key::kN, "n", Kind::kCount, result.group.counts)});
  for (std::size_t i = 0; i < result.event.status.labels.size(); ++i) {
    const std::string& label = result.event.status.labels[i];
    table.columns.push_back(report::columnOf(
        std::string(key::kStatus) + " " + label,
        request.status + " " + label + (result.event.censored == i ? " (censored)" : ""),
        Kind::kCount, result.counts, [i](const auto& of) { return static_cast<double>(of[i]); }));
  }
  return table;
}

report::Table testTable(const Result& result) {
  const auto& tests = result.tests;
  report::Table table = report::tableOf(
      "tests", "Equal cumulative incidence?",
      {report::columnOf(key::kEvent, "event", Kind::kLabel, tests,
                        [&](const Test& test) { return result.event.status.labels[test.code]; }),
       report::columnOf(key::kChiSquare, "chi-square", Kind::kStatistic, tests,
                        [](const Test& test) { return test.result.chiSquare; }),
       report::columnOf(key::kDegreesOfFreedom, "df", Kind::kCount, tests,
                        [](const Test& test) { return test.result.degreesOfFreedom; }),
       report::columnOf(key::kPValue, "p-value", Kind::kPValue, tests,
                        [](const Test& test) { return test.result.pValue; })});
  if (tests.empty()) table.remarks.emplace_back("No test exists: no row is an event.");
  for (const Test& test : tests) {
    if (test.result.reason.empty()) continue;
    table.remarks.push_back("No test of event " + quote(result.event.status.labels[test.code]) +
                            " exists: " + test.result.reason + ".");
  }
  return table;
}

report::Report describe(const Result& result, const Request& request) {
  report::Report report;
  report.title = "Gray's test by " + text::joined(request.group);
  report.summary = "Is the cumulative incidence of each type of event the same in " +
                   counted(result.group.labels.size(), "group", "groups") + " of " +
                   text::joined(request.group) + "?";
  for (const Test& test : result.tests) {
    if (!test.result.reason.empty()) continue;
    report.summary += " " + result.event.status.labels[test.code] + ": " +
                      report::pValueInWords(test.result.pValue) + ".";
  }
  const report::Value code = result.event.censored
                                 ? report::Value(result.event.status.labels[*result.event.censored])
                                 : report::Value();
  report.facts = {{key::kCensorCode, "Code of the censored", Kind::kLabel, code}};
  report.tables = {groupTable(result, request), statusTable(result.event, request.status),
                   testTable(result)};
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
      .leastRows(2)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
