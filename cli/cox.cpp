// Options, reading and checks of survmeth cox.
#include "cli/cox.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <memory>

#include "analysis/invalidRequest.h"
#include "cli/coxReport.h"
#include "cli/shell/coding.h"
#include "cli/shell/lists.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"

namespace cli {
namespace {

struct Options : Common {
  std::string time, event, eventValue, covariates, factor, strata, select, remove, residuals,
      baseline;
};

constexpr const char* kExample =
    "Example:\n"
    "  survmeth cox data/lung.csv --time time --event status --covariates age,sex,ph.ecog\n"
    "  survmeth cox data/veteran.csv --time time --event status --covariates karno,age \\\n"
    "      --strata celltype --plot hazard-ratios.svg\n"
    "\n"
    "A column with text, and one named in --factor, becomes one indicator for each level but the\n"
    "first in sorted order. Rows with a missing cell are left out and counted; docs/data.md says\n"
    "how data are read. Tied times are treated as Breslow does;\n"
    "the baseline holds at the covariates' means.";

double thresholdOption(const Options& options) {
  if (options.select.empty() && options.remove.empty()) return 0;
  if (options.select.empty()) throw Problem("--remove needs --select backward");
  if (options.select != "backward") {
    throw Problem("--select: there is no selection " + quote(options.select) +
                  "; expected backward");
  }
  if (options.remove.empty()) return 0.1;
  const std::optional<double> p = parseNumber(options.remove);
  if (!p || !(*p > 0 && *p < 1)) {
    throw Problem("--remove: " + quote(options.remove) +
                  " is not a p-value; expected a number between 0 and 1");
  }
  return *p;
}

std::vector<std::string> factorOption(const std::string& list,
                                      const std::vector<std::string>& covariates) {
  if (list.empty()) return {};
  std::vector<std::string> factors = columnNames("--factor", list);
  for (const std::string& name : factors) {
    if (std::find(covariates.begin(), covariates.end(), name) != covariates.end()) continue;
    throw Problem("--factor: " + quote(name) + " is no covariate; expected one of " +
                  nearestFirst(name, covariates));
  }
  return factors;
}

// The columns of the model: numbers as they are, text as indicators against its first level.
std::deque<std::vector<double>> designOf(const Table& table, std::size_t firstCovariate,
                                         std::size_t count,
                                         std::vector<survmeth::CoxCovariate>& covariates) {
  std::deque<std::vector<double>> made;
  for (std::size_t j = firstCovariate; j < firstCovariate + count; ++j) {
    const Column& column = table.columns[j];
    if (!column.isText) {
      covariates.push_back({column.name, column.numbers});
      continue;
    }
    const Groups levels = groupsOf(column);
    std::vector<std::uint32_t> present;
    for (std::uint32_t level = 0; level < levels.labels.size(); ++level) {
      if (levels.counts[level] > 0) present.push_back(level);
    }
    if (present.size() < 2) {
      covariates.push_back({column.name, made.emplace_back(table.rows, 0.0)});
      continue;
    }
    constexpr std::size_t kMostLevels = 100;
    if (present.size() > kMostLevels) {
      throw problemAt({table.source, 0, column.name},
                      "the column has " + grouped(present.size()) + " levels",
                      "numbers, or at most " + std::to_string(kMostLevels) + " levels");
    }
    for (std::size_t k = 1; k < present.size(); ++k) {
      std::vector<double>& indicator = made.emplace_back(table.rows);
      for (std::size_t i = 0; i < table.rows; ++i) {
        indicator[i] = levels.codes[i] == present[k] ? 1 : 0;
      }
      covariates.push_back({column.name + "=" + levels.labels[present[k]], indicator});
    }
  }
  return made;
}

void addModelNotes(const survmeth::CoxModel& model, bool strata, Session& session) {
  std::size_t asked = model.removed.size();
  for (const survmeth::CoxCoefficient& c : model.coefficients) {
    asked += c.constant ? 0 : 1;
    if (!c.constant) continue;
    session.note("the covariate " + quote(c.name) + " does not vary" +
                 (strata ? " within any stratum" : "") + " and has no coefficient");
  }
  if (asked <= model.events) return;
  session.note("there are more covariates than events (" + grouped(asked) + " and " +
               grouped(model.events) + "): the estimates are unreliable");
}

void run(const Options& options, Session& session) {
  reserveOutputs(options, session,
                 {{"--residuals", options.residuals}, {"--baseline", options.baseline}});
  CoxReport report;
  report.removeAt = thresholdOption(options);
  report.selected = !options.select.empty();
  const std::vector<std::string> names = columnNames("--covariates", options.covariates);
  const std::vector<std::string> factors = factorOption(options.factor, names);
  const std::vector<std::string> named = eventValues(options.eventValue);
  std::vector<Wanted> wanted = {{.name = options.time, .cells = Cells::kNumbers, .least = 0},
                                {.name = options.event, .cells = Cells::kText, .named = named}};
  for (const std::string& name : names) {
    const bool isFactor = std::find(factors.begin(), factors.end(), name) != factors.end();
    wanted.push_back({.name = name,
                      .cells = isFactor ? Cells::kText : Cells::kEither,
                      .labelsOption = "--factor"});
  }
  if (!options.strata.empty()) wanted.push_back({.name = options.strata, .cells = Cells::kText});
  const Table table = readTable(options.file, wanted, options.missing);
  requireRows(table, 2);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);

  const Column& eventColumn = table.columns[1];
  const YesNo coded = yesNoOf(table, eventColumn, named, kEvents);
  if (!coded.note.empty()) session.note(coded.note);
  const std::vector<std::uint8_t>& events = coded.rows;
  if (std::find(events.begin(), events.end(), 1) == events.end()) {
    throw problemAt({table.source, 0, eventColumn.name}, "no row is an event",
                    "at least one event among the complete rows");
  }

  survmeth::CoxRequest request;
  request.time = table.columns[0].numbers;
  request.event = events;
  request.alpha = options.alpha;
  const auto made = designOf(table, 2, names.size(), request.covariates);
  Groups strata;
  if (!options.strata.empty()) {
    strata = groupsOf(table.columns.back());
    request.stratum = strata.codes;
    request.strata = strata.labels.size();
    for (std::size_t s = 0; s < strata.labels.size(); ++s) {
      if (strata.counts[s] > 0) report.stratumNames.push_back(strata.labels[s]);
    }
  }
  if (report.selected) request.removeAt = report.removeAt;
  request.baseline = !options.baseline.empty();
  request.residuals = !options.residuals.empty();
  report.time = options.time;
  report.event = options.event;
  report.strata = options.strata;
  report.alpha = options.alpha;
  try {
    report.model = survmeth::coxModel(request);
  } catch (const survmeth::NoSuchModel& none) {
    throw Problem(table.source + ": " + none.what());
  } catch (const survmeth::InvalidRequest& refused) {
    throw problemAt({table.source, 0, ""}, refused.what());
  }
  addModelNotes(report.model, report.stratumNames.size() > 1, session);
  if (!options.residuals.empty()) {
    session.output.file(options.residuals, coxResiduals(table, report));
  }
  if (!options.baseline.empty()) session.output.file(options.baseline, coxBaseline(report));
  if (!options.plot.empty()) session.output.figure(options.plot, coxPlot(options.plot, report));
  session.output.text() +=
      options.json ? written(coxJson(session, table, report)) : coxText(report);
}

}  // namespace

Run declareCox(CLI::App& app) {
  auto o = std::make_shared<Options>();
  addFile(app, *o);
  const auto column = [&app](const char* name, std::string& value, const char* what) {
    return app.add_option(name, value, what)->type_name("COL");
  };
  column("--time", o->time, "Column with the times")->required();
  column("--event", o->event, "Column that says which rows are events")->required();
  app.add_option("--event-value", o->eventValue,
                 "The values that are events, separated by commas; all others are censored")
      ->type_name("V,W,...");
  app.add_option("--covariates", o->covariates, "Columns of the model, separated by commas")
      ->required()
      ->type_name("A,B,...");
  app.add_option("--factor", o->factor, "Covariates whose cells are labels, also where numbers")
      ->type_name("A,B,...");
  column("--strata", o->strata, "Column of strata, each with its own baseline");
  app.add_option("--select", o->select, "backward: remove covariates by their Wald p-values")
      ->type_name("backward");
  app.add_option("--remove", o->remove,
                 "Smallest p-value at which a covariate is removed (default 0.1)")
      ->type_name("P");
  addMissing(app, *o);
  addAlpha(app, *o);
  app.add_option("--residuals", o->residuals,
                 "File for martingale, deviance and Schoenfeld residuals (CSV)")
      ->type_name("FILE");
  app.add_option("--baseline", o->baseline, "File for the baseline hazard and survival (CSV)")
      ->type_name("FILE");
  addJson(app, *o);
  addPlot(app, *o, "Hazard ratios with their limits");
  app.footer(kExample);
  return [o](Session& session) { run(*o, session); };
}

}  // namespace cli
