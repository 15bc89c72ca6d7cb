// Options, reading and checks of survmeth roc.
#include "cli/roc.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

#include "analysis/invalidRequest.h"
#include "cli/rocReport.h"
#include "cli/shell/coding.h"
#include "cli/shell/lists.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"

namespace cli {
namespace {

using survmeth::RateInterval;

struct Options : Common {
  std::optional<std::string> positive;
  std::string classColumn, markers, lower, weight, interval, prevalence, cost;
  bool table = false;
};

constexpr const char* kExample =
    "Example:\n"
    "  survmeth roc data/sah.csv --class outcome --positive Poor --marker wfns,s100b,ndka\n"
    "\n"
    "A row is called positive at or above a threshold, or at or below it for a marker named in\n"
    "--lower-is-positive. A missing marker leaves a row out of that marker's curve only; two\n"
    "markers are compared on the rows that have both. docs/data.md says how data are read.";

constexpr RateInterval kIntervals[] = {RateInterval::kWilson, RateInterval::kWald,
                                       RateInterval::kClopperPearson, RateInterval::kAgresti};

constexpr double kRounding = 1e-12;  // of a weighted area

RateInterval intervalOption(const std::string& text) {
  if (text.empty()) return RateInterval::kWilson;
  std::vector<std::string> names;
  for (const RateInterval interval : kIntervals) {
    names.push_back(intervalName(interval));
    if (text == names.back()) return interval;
  }
  throw Problem("--ci: there is no interval " + quote(text) + "; expected one of " +
                nearestFirst(text, names));
}

std::optional<double> prevalenceOption(const std::string& text) {
  if (text.empty()) return std::nullopt;
  const std::optional<double> value = parseNumber(text);
  if (value && *value > 0 && *value < 1) return value;
  throw Problem("--prevalence: " + quote(text) +
                " is not a prevalence; expected a number between 0 and 1");
}

std::optional<survmeth::RocCosts> costOption(const std::string& text) {
  if (text.empty()) return std::nullopt;
  std::vector<double> costs;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::optional<double> cost = parseNumber(text.substr(start, comma - start));
    if (!cost) break;
    costs.push_back(*cost);
    start = comma + 1;
  }
  if (start <= text.size() || costs.size() != 4) {
    throw Problem("--cost: " + quote(text) +
                  " is not a list of costs; expected four numbers, separated by commas: of a true "
                  "positive, a false positive, a false negative, a true negative");
  }
  return survmeth::RocCosts{costs[0], costs[1], costs[2], costs[3]};
}

std::vector<bool> lowerOption(const std::string& list, const std::vector<std::string>& markers) {
  std::vector<bool> lower(markers.size(), false);
  if (list.empty()) return lower;
  for (const std::string& name : columnNames("--lower-is-positive", list)) {
    const auto found = std::find(markers.begin(), markers.end(), name);
    if (found == markers.end()) {
      throw Problem("--lower-is-positive: " + quote(name) + " is no marker; expected one of " +
                    nearestFirst(name, markers));
    }
    lower[static_cast<std::size_t>(found - markers.begin())] = true;
  }
  return lower;
}

std::vector<std::string> namedPositive(const Options& o) {
  return o.positive ? std::vector<std::string>{*o.positive} : std::vector<std::string>();
}

// The class of each row; notes what the negatives are when that is not plain.
std::vector<std::uint8_t> classesOf(const Options& o, const Table& table, RocReport& report,
                                    Session& session) {
  const Column& column = table.columns[0];
  const Place place{table.source, 0, column.name};
  const YesNo coded = yesNoOf(table, column, namedPositive(o), kPositives);
  if (!coded.note.empty()) session.note(coded.note);
  std::vector<std::size_t> counts(column.labels.size(), 0);
  for (const std::uint32_t code : column.codes) ++counts[code];
  const auto positives =
      static_cast<std::size_t>(std::count(coded.rows.begin(), coded.rows.end(), 1));
  report.positive = o.positive.value_or("");
  for (std::size_t i = 0; !o.positive && i < counts.size(); ++i) {
    if (!coded.labels[i] || counts[i] == 0) continue;
    report.positive += (report.positive.empty() ? "" : ", ") + column.labels[i];
  }
  if (positives == 0 || positives == table.rows) {
    throw problemAt(place,
                    std::string(positives == 0 ? "no" : "every") + " complete row " +
                        (o.positive ? "holds " + quote(*o.positive) : "means yes"),
                    "positive and negative rows");
  }
  std::string names;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (coded.labels[i] || counts[i] == 0) continue;
    report.negative.push_back(column.labels[i]);
    names += (names.empty() ? "" : ", ") + quote(column.labels[i]) + " (" +
             counted(counts[i], "row", "rows") + ")";
  }
  if (report.negative.size() > 1 && report.negative.size() <= 12) {
    session.note("several labels are negative: " + names);
  } else if (report.negative.size() > 12) {
    session.note(grouped(report.negative.size()) + " different labels are negative");
  }
  return coded.rows;
}

void addWeightNotes(const Column& weight, const RocReport& report, Session& session) {
  const auto zeros =
      static_cast<std::size_t>(std::count(weight.numbers.begin(), weight.numbers.end(), 0.0));
  if (zeros > 0) session.note(counted(zeros, "row has", "rows have") + " weight 0 and no effect");
  if (report.result.weightsAreCounts) return;
  const bool whole = std::all_of(weight.numbers.begin(), weight.numbers.end(),
                                 [](double w) { return w == std::trunc(w); });
  session.note(std::string(whole ? "the weights add up to more than 10,000,000"
                                 : "the weights are not whole numbers") +
               ": areas and rates are weighted, standard errors, intervals and tests do not exist");
}

void addMarkerNotes(const RocReport& report, Session& session) {
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    const survmeth::RocCurve& curve = report.result.curves[m];
    const std::string& name = report.markers[m];
    if (curve.rows < report.rows) {
      session.note(quote(name) + " is missing in " + grouped(report.rows - curve.rows) + " of " +
                   counted(report.rows, "row", "rows") + ": no part in its curve");
    }
    if (0.5 - curve.area.value > kRounding) {
      session.note("the area of " + quote(name) + " is below 0.5: " +
                   (report.lowerIsPositive[m]
                        ? "high values go with " + quote(report.positive) +
                              ", although --lower-is-positive names it"
                        : "low values go with " + quote(report.positive) +
                              "; --lower-is-positive " + quote(name) + " turns its curve round"));
    }
    if (!curve.reason.empty() && report.result.weightsAreCounts) {
      session.note("no limits and no test of the area of " + quote(name) +
                   " exist: " + curve.reason);
    }
  }
  for (const survmeth::RocComparison& pair : report.result.comparisons) {
    if (pair.reason.empty() || !report.result.weightsAreCounts) continue;
    session.note("no limits and no test of the difference of " + quote(report.markers[pair.first]) +
                 " and " + quote(report.markers[pair.second]) + " exist: " + pair.reason);
  }
}

void run(const Options& o, Session& session) {
  reserveOutputs(o, session);
  RocReport report;
  report.interval = intervalOption(o.interval);
  report.prevalence = prevalenceOption(o.prevalence);
  report.costs = costOption(o.cost);
  report.markers = columnNames("--marker", o.markers);
  report.lowerIsPositive = lowerOption(o.lower, report.markers);
  report.classColumn = o.classColumn;
  report.weight = o.weight;
  report.alpha = o.alpha;
  report.table = o.table;

  std::vector<Wanted> wanted = {
      {.name = o.classColumn, .cells = Cells::kText, .named = namedPositive(o)}};
  for (const std::string& name : report.markers) {
    wanted.push_back({.name = name, .cells = Cells::kNumbers, .mayBeMissing = true});
  }
  if (!o.weight.empty()) {
    wanted.push_back({.name = o.weight, .cells = Cells::kNumbers, .least = 0});
  }
  const Table table = readTable(o.file, wanted, o.missing);
  requireRows(table, 2);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);
  report.source = table.source;
  report.rows = table.rows;

  const std::vector<std::uint8_t> positive = classesOf(o, table, report, session);
  survmeth::RocRequest request;
  request.positive = positive;
  request.alpha = o.alpha;
  request.interval = report.interval;
  request.prevalence = report.prevalence;
  request.costs = report.costs.value_or(survmeth::RocCosts{});
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    request.markers.push_back({table.columns[m + 1].numbers, report.lowerIsPositive[m]});
  }
  if (!o.weight.empty()) {
    request.weight = table.columns.back().numbers;
    report.rows -=
        static_cast<std::size_t>(std::count(request.weight.begin(), request.weight.end(), 0.0));
  }
  try {
    report.result = survmeth::rocCurves(request);
  } catch (const survmeth::InvalidRequest& refused) {
    if (refused.member() == "marker" && refused.index()) {
      throw problemAt({table.source, 0, report.markers[*refused.index()]}, refused.what(),
                      "positive and negative rows with a weight above 0");
    }
    throw problemAt({table.source, 0, refused.member() == "weight" ? o.weight : ""},
                    refused.what());
  }
  if (!o.weight.empty()) addWeightNotes(table.columns.back(), report, session);
  addMarkerNotes(report, session);
  if (!o.plot.empty())
    session.output.figure(o.plot, [script = rocPlot(report, o.plot)] { return gnuplot(script); });
  if (o.json) {
    Json json = session.json(table);
    addRocJson(report, json);
    json["notes"] = session.notes();
    session.output.text() = written(json);
  } else {
    session.output.text() = rocText(report);
  }
  if (!o.out.empty()) addRocFiles(report, o.out, session.output);
}

}  // namespace

Run declareRoc(CLI::App& app) {
  auto o = std::make_shared<Options>();
  addFile(app, *o);
  app.add_option("--class", o->classColumn, "Column that tells the positives from the negatives")
      ->required()
      ->type_name("COL");
  app.add_option("--positive", o->positive,
                 "The label of the positives, all others negative (default 1, true, yes or dead; "
                 "or 2 against 1)")
      ->type_name("LABEL");
  app.add_option("--marker", o->markers, "Columns of the markers, separated by commas")
      ->required()
      ->type_name("A,B,...");
  app.add_option("--lower-is-positive", o->lower,
                 "Markers whose low values speak for positive, separated by commas")
      ->type_name("A,B,...");
  app.add_option("--weight", o->weight, "Column of frequencies, numbers from 0")->type_name("COL");
  app.add_option("--ci", o->interval,
                 "Limits of sensitivity and specificity: wilson (default), wald, clopper-pearson "
                 "or agresti")
      ->type_name("KIND");
  addMissing(app, *o);
  addAlpha(app, *o);
  app.add_option("--prevalence", o->prevalence,
                 "Prevalence for predictive values and costs (default that of the rows)")
      ->type_name("P");
  app.add_option("--cost", o->cost,
                 "Costs of a true positive, false positive, false negative, true negative")
      ->type_name("TP,FP,FN,TN");
  app.add_flag("--table", o->table, "Also print the table of thresholds");
  addJson(app, *o);
  addOut(app, *o, "Write areas, thresholds and comparisons as CSV files into this folder",
         {"areas.csv", "thresholds.csv", "comparisons.csv"});
  addPlot(app, *o, "Draw the curves");
  app.footer(kExample);
  return [o](Session& session) { run(*o, session); };
}

}  // namespace cli
