// Options, reading and checks of survmeth life.
#include "cli/life.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

#include "analysis/invalidRequest.h"
#include "cli/lifeReport.h"
#include "cli/shell/coding.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"

namespace cli {
namespace {

struct Options : Common {
  std::string time, event, eventValue, group, weight, table, confidence, width, bounds;
};

constexpr const char* kExample =
    "Example:\n"
    "  survmeth life data/leukemia.csv --time weeks --event relapse --group treatment\n"
    "  survmeth life data/leukemia.csv --time weeks --event relapse --group treatment \\\n"
    "      --table km --plot curves.svg --out results\n"
    "\n"
    "Rows with a missing cell are left out and counted. docs/data.md says how data are read.\n"
    "Methods: product-limit curves, Greenwood variance, log-log limits; the median is where a\n"
    "curve crosses 1/2, its limits where the curve's limits do. docs/json.md has the JSON layout.";

double positiveOption(const char* option, const std::string& text) {
  const std::optional<double> value = parseNumber(text);
  if (!value || !(*value > 0)) {
    throw Problem(std::string(option) + ": " + quote(text) +
                  " is not a positive number; expected "
                  "the width of an interval");
  }
  return *value;
}

std::vector<double> boundsOption(const std::string& text) {
  std::vector<double> bounds;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::string_view part = std::string_view(text).substr(start, comma - start);
    const std::optional<double> bound = parseNumber(part);
    if (!bound || *bound < 0 || (!bounds.empty() && *bound <= bounds.back())) {
      throw Problem("--bounds: " + quote(part) + (bound ? " is out of order" : " is not a number") +
                    "; expected ascending numbers from 0, separated by commas");
    }
    bounds.push_back(*bound);
    start = comma + 1;
  }
  return bounds;
}

survmeth::CurveLimits limitsOption(const std::string& text) {
  for (const auto kind : {survmeth::CurveLimits::kLogLog, survmeth::CurveLimits::kLog,
                          survmeth::CurveLimits::kPlain}) {
    if (text == limitsName(kind)) return kind;
  }
  throw Problem("--conf: there is no kind of limits " + quote(text) + "; expected one of " +
                nearestFirst(text, {"log-log", "log", "plain"}));
}

LifeTableKind tableOption(const Options& options) {
  const bool intervals = !options.width.empty() || !options.bounds.empty();
  if (!options.width.empty() && !options.bounds.empty()) {
    throw Problem("--width and --bounds exclude each other; expected one of the two");
  }
  if (options.table == "km" && intervals) {
    throw Problem("--table km has no intervals; expected --table actuarial with " +
                  std::string(options.width.empty() ? "--bounds" : "--width"));
  }
  if (options.table == "km") return LifeTableKind::kKaplanMeier;
  if (options.table == "actuarial" && !intervals) {
    throw Problem("--table actuarial needs intervals; expected --width or --bounds");
  }
  if (options.table == "actuarial" || (options.table.empty() && intervals)) {
    return LifeTableKind::kActuarial;
  }
  if (options.table.empty()) return LifeTableKind::kNone;
  throw Problem("--table: there is no table " + quote(options.table) + "; expected one of " +
                nearestFirst(options.table, {"km", "actuarial"}));
}

// The columns as the facade takes them, and what messages need to point at them.
struct Input {
  Table table;
  const Column* time = nullptr;
  const Column* event = nullptr;
  const Column* group = nullptr;
  const Column* weight = nullptr;
  std::vector<std::uint8_t> events;
  std::string eventLabels;
  Groups groups;

  survmeth::SurvivalData data() const {
    survmeth::SurvivalData data;
    data.time = time->numbers;
    data.event = events;
    if (weight != nullptr) data.weight = weight->numbers;
    if (group != nullptr) data.group = groups.codes;
    data.groups = groups.labels.size();
    return data;
  }
};

void readEvents(Input& input, const std::vector<std::string>& named, Session& session) {
  YesNo events = yesNoOf(input.table, *input.event, named, kEvents);
  input.events = std::move(events.rows);
  if (!events.note.empty()) session.note(events.note);
  for (std::size_t i = 0; i < events.labels.size(); ++i) {
    if (!events.labels[i]) continue;
    if (!input.eventLabels.empty()) input.eventLabels += ", ";
    input.eventLabels += input.event->labels[i];
  }
}

// What the facade would refuse, said in terms of the file.
void check(const Input& input, Session& session) {
  const std::string& source = input.table.source;
  double events = 0, total = 0;
  bool whole = true;
  std::size_t zeros = 0;
  std::vector<double> groupTotals(input.groups.labels.size(), 0.0);
  for (std::size_t i = 0; i < input.table.rows; ++i) {
    const double weight = input.weight != nullptr ? input.weight->numbers[i] : 1;
    whole = whole && weight == std::trunc(weight);
    zeros += weight == 0 ? 1 : 0;
    total += weight;
    events += input.events[i] != 0 ? weight : 0;
    groupTotals[input.group != nullptr ? input.groups.codes[i] : 0] += weight;
  }
  if (input.group != nullptr) {
    for (std::size_t g = 0; g < groupTotals.size(); ++g) {
      if (groupTotals[g] > 0) continue;
      throw problemAt({source, 0, input.group->name},
                      "the group " + quote(input.groups.labels[g]) + " is empty: its rows " +
                          (input.groups.counts[g] == 0 ? "have missing cells" : "have weight 0"),
                      "at least one complete row in each group");
    }
  }
  if (!(events > 0)) {
    session.note("no row is an event: the curves stay at 1 and there is no median");
  }
  if (events == total) session.note("every row is an event, none is censored");
  if (!whole) session.note("weights are not all whole numbers; they are taken as frequencies");
  if (zeros > 0) session.note(counted(zeros, "row has", "rows have") + " weight 0 and no effect");
}

Input readInput(const Options& options, Session& session) {
  const std::vector<std::string> named = eventValues(options.eventValue);
  std::vector<Wanted> wanted = {{.name = options.time, .cells = Cells::kNumbers, .least = 0},
                                {.name = options.event, .cells = Cells::kText, .named = named}};
  if (!options.group.empty()) wanted.push_back({.name = options.group, .cells = Cells::kText});
  if (!options.weight.empty()) {
    wanted.push_back({.name = options.weight, .cells = Cells::kNumbers, .least = 0});
  }
  Input input;
  input.table = readTable(options.file, wanted, options.missing);
  requireRows(input.table, 2);
  const std::string leftOut = leftOutNote(input.table);
  if (!leftOut.empty()) session.note(leftOut);
  const std::vector<Column>& columns = input.table.columns;
  input.time = &columns[0];
  input.event = &columns[1];
  if (!options.group.empty()) input.group = &columns[2];
  if (!options.weight.empty()) input.weight = &columns.back();
  readEvents(input, named, session);
  if (input.group != nullptr) {
    input.groups = groupsOf(*input.group);
  } else {
    input.groups.labels = {"all"};
  }
  check(input, session);
  return input;
}

void addComparisonNotes(const LifeReport& report, Session& session) {
  const survmeth::Comparison& comparison = report.result.comparison;
  if (report.labels.size() < 2) return;
  if (!comparison.reason.empty()) {
    session.note("no comparison test exists: " + comparison.reason);
    return;
  }
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    if (comparison.included[g]) continue;
    session.note("the group " + quote(report.labels[g]) +
                 " has no part in the tests: nobody in it is at risk at an event time");
  }
}

void run(const Options& options, Session& session) {
  reserveOutputs(options, session);
  LifeReport report;
  report.table = tableOption(options);
  report.limits = options.confidence.empty() ? survmeth::CurveLimits::kLogLog
                                             : limitsOption(options.confidence);
  const double width = options.width.empty() ? 0 : positiveOption("--width", options.width);
  const std::vector<double> bounds =
      options.bounds.empty() ? std::vector<double>() : boundsOption(options.bounds);

  const Input input = readInput(options, session);
  report.source = input.table.source;
  report.rows = input.table.rows;
  report.time = options.time;
  report.event = options.event;
  report.eventLabels = input.eventLabels;
  report.group = options.group;
  report.weight = options.weight;
  report.labels = input.groups.labels;
  report.alpha = options.alpha;
  try {
    report.result = survmeth::survivalCurves({input.data(), options.alpha, report.limits});
    if (report.table == LifeTableKind::kActuarial) {
      report.intervals =
          survmeth::lifeTables({input.data(), options.alpha, report.limits, width, bounds});
    }
  } catch (const survmeth::InvalidRequest& error) {
    if (error.member() == "width" || error.member() == "bounds") {
      throw Problem("--" + error.member() + ": " + error.what());
    }
    const std::size_t line = error.index() ? input.table.line(*error.index()) : 0;
    throw problemAt({report.source, line, {}}, error.what());
  }
  addComparisonNotes(report, session);
  if (!options.plot.empty()) {
    session.output.figure(options.plot,
                          [script = lifePlot(report, options.plot)] { return gnuplot(script); });
    const std::string note = lifePlotNote(report);
    if (!note.empty()) session.note(note);
  }

  if (options.json) {
    Json json = session.json(input.table);
    addLifeJson(report, json);
    json["notes"] = session.notes();
    session.output.text() = written(json);
  } else {
    session.output.text() = lifeText(report);
  }
  if (!options.out.empty()) addLifeFiles(report, options.out, session.output);
}

}  // namespace

Run declareLife(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  addFile(app, *options);
  app.add_option("--time", options->time, "Column of times, numbers from 0")
      ->required()
      ->type_name("COL");
  app.add_option(
         "--event", options->event,
         "Column of events: 1, true, yes or dead; censored 0, false, no or alive; or 2 and 1")
      ->required()
      ->type_name("COL");
  app.add_option("--event-value", options->eventValue,
                 "The values that are events, separated by commas; all others are censored")
      ->type_name("V,W,...");
  app.add_option("--group", options->group, "Column of groups, text or numbers")->type_name("COL");
  app.add_option("--weight", options->weight, "Column of frequencies, numbers from 0")
      ->type_name("COL");
  addMissing(app, *options);
  addAlpha(app, *options);
  app.add_option("--conf", options->confidence, "Limits: log-log (default), log or plain")
      ->type_name("KIND");
  app.add_option("--table", options->table, "Also print the table: km or actuarial")
      ->type_name("KIND");
  app.add_option("--width", options->width, "Width of the actuarial table's intervals")
      ->type_name("W");
  app.add_option("--bounds", options->bounds, "Bounds of the actuarial table's intervals")
      ->type_name("A,B,C");
  addJson(app, *options);
  addOut(app, *options, "Write summary and tables as CSV files into this folder",
         {"summary.csv", "kaplan-meier.csv", "tests.csv", "actuarial.csv"});
  addPlot(app, *options, "Draw the curves");
  app.footer(kExample);
  return [options](Session& session) { run(*options, session); };
}

}  // namespace cli
