#include "cli/selftest.h"

#include <sys/utsname.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <utility>

#include "cli/outputs.h"
#include "cli/referenceCase.h"
#include "cli/run.h"
#include "cli/shell/installed.h"
#include "cli/shell/problem.h"
#include "cli/version.h"
#include "report/build.h"
#include "report/html.h"
#include "report/json.h"
#include "report/keys.h"
#include "report/text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;
namespace key = survmeth::report::key;
namespace report = survmeth::report;
using report::Kind;

struct Typed {
  std::string cases, html;
  bool json = false, date = false;
};

// A line of the table.
struct Line {
  std::string name, quantity, source, tolerance;
  Comparison comparison;
};

std::vector<std::string> casesIn(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code error;
  for (const auto& each : fs::directory_iterator(folder, error)) {
    if (each.path().extension() == ".json") files.push_back(each.path().string());
  }
  if (error) throw Problem(folder + ": cannot be read: " + error.message());
  if (files.empty()) throw Problem(folder + " holds no case; expected files *.json");
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<Line> linesOf(const ReferenceCase& reference, Session& session) {
  std::vector<report::Report> reports;
  std::string failed;
  try {
    reports = performPlan(reference.plan, reference.file);
  } catch (const Problem& problem) {
    failed = problem.what();
    session.output.lack(failed);
  }
  std::vector<Line> lines;
  for (const Quantity& quantity : reference.quantities) {
    const bool number = std::holds_alternative<double>(quantity.expected);
    Line line{reference.name, quantity.name(), quantity.source,
              number ? report::exact(quantity.tolerance) : "",
              failed.empty() ? compare(reference, quantity, reports) : notObtained(quantity)};
    if (!line.comparison.agrees && failed.empty()) {
      session.output.lack(line.name + ": " + line.quantity + ": expected " +
                          line.comparison.expected + ", got " + line.comparison.obtained);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

report::Table tableOf(const std::vector<Line>& lines) {
  const auto column = [&lines](const char* name, const char* heading, auto cell) {
    return report::columnOf(name, heading, Kind::kLabel, lines, cell);
  };
  report::Table table = report::tableOf(
      "quantities", "Quantities",
      {column(key::kCase, "", [](const Line& line) { return line.name; }),
       column(key::kQuantity, "quantity", [](const Line& line) { return line.quantity; }),
       column(key::kExpected, "expected",
              [](const Line& line) { return line.comparison.expected; }),
       column(key::kObtained, "got", [](const Line& line) { return line.comparison.obtained; }),
       column(key::kDifference, "difference",
              [](const Line& line) { return line.comparison.difference; }),
       column(key::kTolerance, "tolerance", [](const Line& line) { return line.tolerance; }),
       column(key::kResult, "result",
              [](const Line& line) {
                return std::string(line.comparison.agrees ? "agrees" : "DIFFERS");
              }),
       column(key::kSource, "source", [](const Line& line) { return line.source; })});
  table.partedBy = key::kCase;
  return table;
}

report::Report reportOf(const std::vector<ReferenceCase>& cases, const std::vector<Line>& lines) {
  const auto agreeing = static_cast<double>(std::count_if(
      lines.begin(), lines.end(), [](const Line& line) { return line.comparison.agrees; }));
  const auto all = static_cast<double>(lines.size());
  report::Report made;
  made.analysis = "selftest";
  made.title = std::string("Self-test of survmeth ") + kVersion;
  made.summary = agreeing == all
                     ? "All " + report::brief(all) + " quantities agree with their references."
                     : report::brief(all - agreeing) + " of " + report::brief(all) +
                           " quantities DIFFER from their references.";
  made.facts = {{key::kCases, "Cases", Kind::kCount, static_cast<double>(cases.size())},
                {key::kQuantities, "Quantities", Kind::kCount, all},
                {key::kAgreeing, "Agree", Kind::kCount, agreeing},
                {key::kDiffering, "Differ", Kind::kCount, all - agreeing}};
  made.tables = {tableOf(lines)};
  made.methods = {
      {"difference: of the expected number's size, by itself where that is 0; a "
       "quantity agrees where it is not above the tolerance",
       ""}};
  for (const ReferenceCase& each : cases) {
    made.methods.push_back({each.name + ": " + each.title, each.software});
  }
  return made;
}

// What a record has beside the results, on this machine.
void addRecord(const Typed& typed, report::Report& report) {
  struct utsname machine {};
  const bool known = uname(&machine) == 0;
  report.facts.push_back(
      {key::kProgram, "Program", Kind::kLabel,
       std::string("survmeth ") + kVersion + ", " + std::to_string(8 * sizeof(void*)) + " bits"});
  report.facts.push_back({key::kMachine, "Machine", Kind::kLabel,
                          known ? report::Value(std::string(machine.sysname) + " " +
                                                machine.release + ", " + machine.machine)
                                : report::Value()});
  if (!typed.date) return;
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[sizeof "2026-01-31 23:59 UTC"];
  if (std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &utc) > 0) {
    report.facts.push_back({key::kDate, "Date", Kind::kLabel, std::string(text)});
  }
}

void run(const Typed& typed, Session& session) {
  if (typed.date && typed.html.empty()) {
    throw Problem("--date stands without --html; expected both or none");
  }
  if (!typed.html.empty()) session.output.reserve("--html", typed.html);
  std::vector<ReferenceCase> cases;
  for (const std::string& file :
       casesIn(typed.cases.empty() ? sharedFolder() + "/selftest" : typed.cases)) {
    cases.push_back(readReferenceCase(file));
  }
  std::vector<Line> lines;
  for (const ReferenceCase& each : cases) {
    for (Line& line : linesOf(each, session)) lines.push_back(std::move(line));
  }
  report::Report report = reportOf(cases, lines);
  session.output.text() = typed.json ? report::toJson(report, {.version = kVersion})
                                     : report::toText(report, {.width = terminalWidth()});
  if (typed.html.empty()) return;
  addRecord(typed, report);
  session.output.file(typed.html, report::toHtml(report, {.version = kVersion}));
}

}  // namespace

Run addSelftest(CLI::App& app) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("--cases", typed->cases, "Folder of other cases (default those that ship)")
      ->type_name("DIR");
  app.add_flag("--json", typed->json, "Print JSON (docs/report.md) and nothing else");
  app.add_option("--html", typed->html, "Write a record with program and machine as HTML")
      ->type_name("FILE");
  app.add_flag("--date", typed->date, "Put date and time into the record");
  app.footer(
      "Runs analyses of public data and compares their numbers with those of other programs.\n"
      "Ends with 0 where all agree, with 1 where one differs.\n"
      "docs/selftest.md describes cases and record.");
  return [typed](Session& session) { run(*typed, session); };
}

}  // namespace cli
