#include "cli/gray.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>

#include "analysis/grayTest.h"
#include "analysis/invalidRequest.h"
#include "cli/shell/coding.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

struct Options : Common {
  std::string time, status, group, censor, event;
  double rho = 0;
};

constexpr const char* kExample =
    "Example:\n"
    "  survmeth gray data/pbc.csv --time time --status status --group trt\n"
    "\n"
    "Each row ends in an event of one type or is censored; the status column, text or numbers,\n"
    "says which. Without --event each type is tested in turn, the others competing. Rows with a\n"
    "missing cell are left out and counted. docs/data.md says how data are read.";

// The more groups, the longer the work: it grows with their square.
constexpr std::size_t kMostGroups = 100;

// The codes and groups that complete rows hold, and how many rows hold each.
struct Codes {
  std::vector<std::string> labels;
  std::vector<std::uint32_t> codes;  // of each row, into labels
  std::vector<std::size_t> counts;
};

Codes presentIn(const Column& column) {
  const Groups all = groupsOf(column);
  Codes present;
  std::vector<std::uint32_t> place(all.labels.size());
  for (std::size_t i = 0; i < all.labels.size(); ++i) {
    place[i] = static_cast<std::uint32_t>(present.labels.size());
    if (all.counts[i] == 0) continue;
    present.labels.push_back(all.labels[i]);
    present.counts.push_back(all.counts[i]);
  }
  for (const std::uint32_t code : all.codes) present.codes.push_back(place[code]);
  return present;
}

struct Test {
  std::size_t code;  // into GrayReport::status.labels
  survmeth::GrayResult result;
};

struct GrayReport {
  std::string source;
  Codes status, group;
  std::optional<std::size_t> censored;           // into status.labels; none: nobody is
  std::vector<std::vector<std::size_t>> counts;  // by group and status
  std::vector<Test> tests;
};

std::string listed(const Codes& status) {
  std::string text;
  for (std::size_t i = 0; i < status.labels.size() && i < 12; ++i) {
    text += (i > 0 ? ", " : "") + quote(status.labels[i]) + " (" +
            counted(status.counts[i], "row", "rows") + ")";
  }
  return status.labels.size() > 12
             ? text + " and " + std::to_string(status.labels.size() - 12) + " more"
             : text;
}

std::optional<std::size_t> find(const Codes& status, const std::string& wanted) {
  for (std::size_t i = 0; i < status.labels.size(); ++i) {
    if (sameValue(status.labels[i], wanted)) return i;
  }
  return std::nullopt;
}

// Which code is censoring.
std::optional<std::size_t> censorOption(const Options& o, const Table& table, const Codes& status) {
  const Place place{table.source, 0, o.status};
  if (!o.censor.empty()) {
    const std::optional<std::size_t> found = find(status, o.censor);
    if (found || o.censor == "none") return found;
    throw problemAt(place, "no row holds " + quote(o.censor),
                    "one of " + nearestFirst(o.censor, status.labels) +
                        " in --censor, or none where no row is censored");
  }
  std::optional<std::size_t> found;
  bool one = true;
  for (std::size_t i = 0; i < status.labels.size(); ++i) {
    if (answerOf(status.labels[i]) != Answer::kNo) continue;
    one = !found;
    found = i;
  }
  if (found && one) return found;
  throw problemAt(
      place,
      std::string(found ? "more than one code" : "no code") +
          " says that a row is censored (0, censored, alive, no or false); the codes are " +
          listed(status),
      "the code of the censored in --censor, or --censor none");
}

// The types to be tested.
std::vector<std::size_t> eventOption(const Options& o, const Table& table,
                                     const GrayReport& report) {
  const Place place{table.source, 0, o.status};
  std::vector<std::size_t> types;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < report.status.labels.size(); ++i) {
    if (report.censored == i) continue;
    types.push_back(i);
    names.push_back(report.status.labels[i]);
  }
  if (o.event.empty()) return types;
  const std::optional<std::size_t> wanted = find(report.status, o.event);
  if (!wanted) {
    throw problemAt(place, "no row holds " + quote(o.event),
                    names.empty() ? "a type of event; every row is censored"
                                  : "one of " + nearestFirst(o.event, names) + " in --event");
  }
  if (wanted == report.censored) {
    throw problemAt(place, quote(o.event) + " is the code of the censored",
                    "one of " + nearestFirst(o.event, names) + " in --event");
  }
  return {*wanted};
}

GrayReport analyse(const Options& o, const Table& table, Session& session) {
  GrayReport report;
  report.source = table.source;
  report.status = presentIn(table.columns[1]);
  report.group = presentIn(table.columns[2]);
  report.censored = censorOption(o, table, report.status);
  const std::vector<std::size_t> types = eventOption(o, table, report);
  const std::size_t groups = report.group.labels.size();
  if (groups < 2 || groups > kMostGroups) {
    throw problemAt({table.source, 0, o.group},
                    groups < 2
                        ? "all complete rows are in the group " + quote(report.group.labels.front())
                        : "there are " + grouped(groups) + " groups",
                    "2 to " + std::to_string(kMostGroups) + " groups");
  }
  if (!report.censored) session.note("no row is censored");
  if (types.empty()) session.note("no row is an event: there is nothing to test");
  if (report.status.labels.size() - (report.censored ? 1 : 0) == 1) {
    session.note("there is only one type of event: nothing competes with it");
  }

  std::vector<std::uint32_t> status(table.rows);
  report.counts.assign(groups, std::vector<std::size_t>(report.status.labels.size(), 0));
  for (std::size_t i = 0; i < table.rows; ++i) {
    const std::uint32_t code = report.status.codes[i];
    status[i] = report.censored == code ? 0 : code + 1;
    ++report.counts[report.group.codes[i]][code];
  }
  for (const std::size_t type : types) {
    Test test{type, survmeth::grayTest({.time = table.columns[0].numbers,
                                        .status = status,
                                        .group = report.group.codes,
                                        .groups = groups,
                                        .event = static_cast<std::uint32_t>(type) + 1,
                                        .rho = o.rho})};
    const std::string name = quote(report.status.labels[type]);
    if (!test.result.reason.empty()) {
      session.note("no test of event " + name + " exists: " + test.result.reason);
    } else {
      for (std::size_t g = 0; g < groups; ++g) {
        if (test.result.included[g]) continue;
        session.note("the group " + quote(report.group.labels[g]) +
                     " has no part in the test of event " + name +
                     ": nobody in it is at risk at such an event");
      }
    }
    report.tests.push_back(std::move(test));
  }
  return report;
}

std::string methodOf(const Options& o) {
  return "Gray's K-sample test of equal cumulative incidence, " +
         (o.rho == 0 ? "all times weighed alike"
                     : "weight (1 - pooled incidence)^" + brief(o.rho)) +
         "; other types compete";
}

std::string textOf(const Options& o, const Table& table, const GrayReport& report) {
  const auto codeName = [&report](std::size_t i) {
    return report.status.labels[i] + (report.censored == i ? " (censored)" : "");
  };
  std::string text =
      underlined("Gray's test in " + report.source + ", " + counted(table.rows, "row", "rows"));
  text += printable("time: " + o.time + "; status: " + o.status + "; group: " + o.group) + "\n\n";
  std::vector<Heading> headings = {{o.group}, {"n", kRight}};
  std::vector<std::string> all = {"all", std::to_string(table.rows)};
  for (std::size_t i = 0; i < report.status.labels.size(); ++i) {
    headings.push_back({o.status + " " + codeName(i), kRight});
    all.push_back(std::to_string(report.status.counts[i]));
  }
  TextTable counts(headings);
  for (std::size_t g = 0; g < report.counts.size(); ++g) {
    std::vector<std::string> row = {report.group.labels[g], std::to_string(report.group.counts[g])};
    for (const std::size_t count : report.counts[g]) row.push_back(std::to_string(count));
    counts.row(row);
  }
  counts.row(all);
  text += counts.text() + "\nEqual cumulative incidence?\n";
  if (report.tests.empty()) return text + "No test exists: no row is an event.\n";
  TextTable tests({{"event"}, {"chi-square", kRight}, {"df", kRight}, {"p-value", kRight}});
  std::string reasons;
  for (const Test& test : report.tests) {
    tests.row({report.status.labels[test.code], fixed(test.result.chiSquare, 3),
               brief(test.result.degreesOfFreedom), pValue(test.result.pValue)});
    if (test.result.reason.empty()) continue;
    reasons += "No test of event " + printable(quote(report.status.labels[test.code])) +
               " exists: " + test.result.reason + ".\n";
  }
  return text + tests.text() + reasons + "\nMethods\n  " + methodOf(o) + "\n";
}

Json jsonOf(const Options& o, const Table& table, const GrayReport& report,
            const Session& session) {
  Json json = session.json(table);
  json["columns"] = {{"time", o.time}, {"status", o.status}, {"group", o.group}};
  json["censored"] = report.censored ? Json(report.status.labels[*report.censored]) : Json();
  json["rho"] = number(o.rho);
  json["method"] = methodOf(o);
  json["codes"] = Json::array();
  for (std::size_t i = 0; i < report.status.labels.size(); ++i) {
    json["codes"].push_back({{"code", report.status.labels[i]},
                             {"censored", report.censored == i},
                             {"rows", report.status.counts[i]}});
  }
  json["groups"] = Json::array();
  for (std::size_t g = 0; g < report.counts.size(); ++g) {
    json["groups"].push_back({{"group", report.group.labels[g]},
                              {"n", report.group.counts[g]},
                              {"rows", report.counts[g]}});
  }
  json["tests"] = Json::array();
  for (const Test& test : report.tests) {
    const survmeth::GrayResult& result = test.result;
    Json included = Json::array();
    for (std::size_t g = 0; g < report.counts.size(); ++g) {
      if (result.included[g]) included.push_back(report.group.labels[g]);
    }
    json["tests"].push_back({{"event", report.status.labels[test.code]},
                             {"chiSquare", number(result.chiSquare)},
                             {"degreesOfFreedom", number(result.degreesOfFreedom)},
                             {"pValue", number(result.pValue)},
                             {"reason", result.reason.empty() ? Json() : Json(result.reason)},
                             {"groups", included}});
  }
  json["notes"] = session.notes();
  return json;
}

void run(const Options& o, Session& session) {
  reserveOutputs(o, session);
  const Table table =
      readTable(o.file,
                {{.name = o.time, .cells = Cells::kNumbers, .least = 0},
                 {.name = o.status, .cells = Cells::kText, .named = {o.censor, o.event}},
                 {.name = o.group, .cells = Cells::kText}},
                o.missing);
  requireRows(table, 2);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);
  const GrayReport report = analyse(o, table, session);
  session.output.text() +=
      o.json ? written(jsonOf(o, table, report, session)) : textOf(o, table, report);
}

}  // namespace

Run declareGray(CLI::App& app) {
  auto o = std::make_shared<Options>();
  addFile(app, *o);
  const auto column = [&app](const char* name, std::string& value, const char* what) {
    app.add_option(name, value, what)->required()->type_name("COL");
  };
  column("--time", o->time, "Column of times, numbers from 0");
  column("--status", o->status, "Column that says how each row ends, text or numbers");
  column("--group", o->group, "Column of groups, text or numbers");
  app.add_option("--censor", o->censor,
                 "The status of the censored, or none (default 0, censored, alive, no or false)")
      ->type_name("CODE");
  app.add_option("--event", o->event, "The type of event to be tested (default each in turn)")
      ->type_name("CODE");
  app.add_option_function<std::string>(
         "--rho",
         [o = o.get()](const std::string& text) {
           const std::optional<double> rho = parseNumber(text);
           if (!rho) throw Problem("--rho: " + quote(text) + " is not a number; expected a number");
           o->rho = *rho;
         },
         "Weight (1 - pooled incidence)^R: above 0 early events count more (default 0)")
      ->type_name("R");
  addMissing(app, *o);
  addJson(app, *o);
  app.footer(kExample);
  return [o](Session& session) { run(*o, session); };
}

}  // namespace cli
