#include "cli/deming.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>

#include "analysis/demingFit.h"
#include "analysis/invalidRequest.h"
#include "cli/scatter.h"
#include "cli/shell/gnuplot.h"
#include "cli/shell/numbers.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

using survmeth::BoundedValue;
using survmeth::DemingResult;

struct Options : Common {
  std::string first, second;
  double ratio = 1;
};

Json coefficient(const BoundedValue& value, double se) {
  return {{"value", number(value.value)},
          {"standardError", number(se)},
          {"lower", number(value.lower)},
          {"upper", number(value.upper)}};
}

void writeFiles(Session& session, const Options& o, const Table& table,
                const DemingResult& result) {
  session.output.folder(o.out);
  CsvWriter summary({"coefficient", "value", "standard error", "lower", "upper"});
  const auto row = [&summary](const char* name, const BoundedValue& value, double se) {
    summary.cell(name);
    summary.cell(value.value);
    summary.cell(se);
    summary.cell(value.lower);
    summary.cell(value.upper);
    summary.endRow();
  };
  row("intercept", result.intercept, result.interceptSe);
  row("slope", result.slope, result.slopeSe);
  session.output.file(o.out + "/deming.csv", summary.text());
  CsvWriter residuals({"line", "first", "second", "fitted", "residual"});
  for (std::size_t i = 0; i < table.rows; ++i) {
    residuals.cell(static_cast<double>(table.line(i)));
    residuals.cell(table.columns[0].numbers[i]);
    residuals.cell(table.columns[1].numbers[i]);
    residuals.cell(result.fitted[i]);
    residuals.cell(result.residuals[i]);
    residuals.endRow();
  }
  session.output.file(o.out + "/residuals.csv", residuals.text());
}

void writeJson(Session& session, const Options& o, const Table& table, const DemingResult& result) {
  Json json = session.json(table);
  json["method"] = "Deming regression, jackknife intervals";
  json["first"] = o.first;
  json["second"] = o.second;
  json["ratio"] = number(o.ratio);
  json["alpha"] = number(o.alpha);
  json["pairs"] = result.pairs;
  json["correlation"] = number(result.correlation);
  json["intercept"] = coefficient(result.intercept, result.interceptSe);
  json["slope"] = coefficient(result.slope, result.slopeSe);
  json["reason"] = result.reason.empty() ? Json() : Json(result.reason);
  json["fitted"] = numbers(result.fitted);
  json["residuals"] = numbers(result.residuals);
  json["notes"] = session.notes();
  session.output.text() += written(json);
}

void run(Session& session, const Options& o) {
  reserveOutputs(o, session);
  const Table table = readTable(o.file, {{.name = o.first}, {.name = o.second}}, o.missing);
  requireRows(table, 3);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);
  DemingResult result;
  try {
    result = survmeth::demingFit({.first = table.columns[0].numbers,
                                  .second = table.columns[1].numbers,
                                  .ratio = o.ratio,
                                  .alpha = o.alpha});
  } catch (const survmeth::InvalidRequest& refused) {
    throw problemAt({table.source, 0, refused.member() == "second" ? o.second : o.first},
                    refused.what(), "at least three pairs that vary together");
  }
  if (!result.reason.empty()) {
    const std::string where =
        result.without ? " (without line " + std::to_string(table.line(*result.without)) + ")" : "";
    session.note("neither interval exists: " + result.reason + where);
  }
  if (!o.out.empty()) writeFiles(session, o, table, result);
  if (!o.plot.empty()) {
    session.output.figure(
        o.plot, [script = lineScatter(
                     pictureOf(o.plot), "Deming regression of " + o.second + " on " + o.first,
                     o.first, o.second, table.columns[0].numbers, table.columns[1].numbers,
                     result.intercept.value, result.slope.value)] { return gnuplot(script); });
  }
  if (o.json) {
    writeJson(session, o, table, result);
    return;
  }
  std::string& text = session.output.text();
  text += "Deming regression of " + o.second + " on " + o.first + "\n";
  text += counted(result.pairs, "pair", "pairs") + ", error variance of " + o.first +
          " over that of " + o.second + ": " + brief(o.ratio) + ", correlation " +
          fixed(result.correlation, 4) + "\n\n";
  TextTable values({{""},
                    {"estimate", kRight},
                    {"std. error", kRight},
                    {confidence(o.alpha) + "% lower", kRight},
                    {"upper", kRight}});
  const auto row = [&values](const char* name, const BoundedValue& value, double se) {
    values.row({name, brief(value.value), brief(se), brief(value.lower), brief(value.upper)});
  };
  row("intercept", result.intercept, result.interceptSe);
  row("slope", result.slope, result.slopeSe);
  text += values.text();
  text += "\nStandard errors by the jackknife, limits by Student's t with " +
          std::to_string(result.pairs - 2) + " degrees of freedom.\n";
}

}  // namespace

Run declareDeming(CLI::App& app) {
  auto o = std::make_shared<Options>();
  addFile(app, *o);
  app.add_option("--first", o->first, "Column of the first method (x)")
      ->required()
      ->type_name("COL");
  app.add_option("--second", o->second, "Column of the second method (y)")
      ->required()
      ->type_name("COL");
  app.add_option_function<std::string>(
         "--ratio",
         [o = o.get()](const std::string& text) {
           const std::optional<double> ratio = parseNumber(text);
           if (!ratio || !(*ratio > 0)) {
             throw Problem("--ratio: " + quote(text) +
                           " is not a ratio of variances; expected a number above 0");
           }
           o->ratio = *ratio;
         },
         "Error variance of the first method over that of the second (default 1)")
      ->type_name("L");
  addMissing(app, *o);
  addAlpha(app, *o);
  addJson(app, *o);
  addOut(app, *o, "Folder for deming.csv and residuals.csv", {"deming.csv", "residuals.csv"});
  addPlot(app, *o, "Both methods with the line and the line of identity");
  app.footer("Example: survmeth deming data/pefr.csv --first wright1 --second mini1");
  return [o](Session& session) { run(session, *o); };
}

}  // namespace cli
