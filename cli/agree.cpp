#include "cli/agree.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <memory>
#include <span>

#include "analysis/agreement.h"
#include "analysis/invalidRequest.h"
#include "cli/scatter.h"
#include "cli/shell/gnuplot.h"
#include "cli/shell/numbers.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

using survmeth::AgreementResult;
using survmeth::BoundedValue;
using survmeth::DifferenceKind;

struct Options : Common {
  std::string first, second, replicates;
  std::string difference = "absolute";
};

DifferenceKind kindOf(const std::string& name) {
  if (name == "relative") return DifferenceKind::kRelative;
  if (name == "ratio") return DifferenceKind::kRatio;
  if (name == "absolute") return DifferenceKind::kAbsolute;
  throw Problem("--difference: there is no difference " + quote(name) + "; expected one of " +
                nearestFirst(name, {"absolute", "relative", "ratio"}));
}

// What a difference is, in the names of the columns.
std::string differenceName(const Options& o) {
  if (o.difference == "ratio") return o.second + " / " + o.first;
  const std::string difference = o.second + " - " + o.first;
  return o.difference == "relative" ? "(" + difference + ") / |mean|" : difference;
}

Json bounded(const BoundedValue& value) {
  return {{"value", number(value.value)},
          {"lower", number(value.lower)},
          {"upper", number(value.upper)}};
}

void boundedRow(TextTable& table, const std::string& name, const BoundedValue& value) {
  table.row({name, brief(value.value), brief(value.lower), brief(value.upper)});
}

void writeAgreement(Session& session, const Options& o, const Table& table,
                    const AgreementResult& result) {
  const std::string level = confidence(o.alpha) + "%";
  if (!o.out.empty()) {
    session.output.folder(o.out);
    CsvWriter summary({"statistic", "value", "lower", "upper"});
    const auto row = [&summary](const char* name, const BoundedValue& value) {
      summary.cell(name);
      summary.cell(value.value);
      summary.cell(value.lower);
      summary.cell(value.upper);
      summary.endRow();
    };
    row("bias", result.bias);
    row("sd of the differences", {result.sd, NAN, NAN});
    row("lower limit of agreement", result.lowerLimit);
    row("upper limit of agreement", result.upperLimit);
    session.output.file(o.out + "/agreement.csv", summary.text());
    CsvWriter pairs({"line", "first", "second", "mean", "difference"});
    for (std::size_t i = 0; i < table.rows; ++i) {
      pairs.cell(static_cast<double>(table.line(i)));
      pairs.cell(table.columns[0].numbers[i]);
      pairs.cell(table.columns[1].numbers[i]);
      pairs.cell(result.means[i]);
      pairs.cell(result.differences[i]);
      pairs.endRow();
    }
    session.output.file(o.out + "/pairs.csv", pairs.text());
  }
  if (!o.plot.empty()) {
    session.output.figure(
        o.plot, [script = levelScatter(
                     pictureOf(o.plot), "Agreement of " + o.first + " and " + o.second,
                     "mean of " + o.first + " and " + o.second, differenceName(o), result.means,
                     result.differences,
                     {{"upper limit", result.upperLimit.value, result.upperLimit.lower,
                       result.upperLimit.upper, false},
                      {"bias", result.bias.value, result.bias.lower, result.bias.upper, true},
                      {"lower limit", result.lowerLimit.value, result.lowerLimit.lower,
                       result.lowerLimit.upper, false}})] { return gnuplot(script); });
  }
  if (o.json) {
    Json json = session.json(table);
    json["method"] = "Bland-Altman, limits by the normal quantile";
    json["first"] = o.first;
    json["second"] = o.second;
    json["difference"] = o.difference;
    json["alpha"] = number(o.alpha);
    json["pairs"] = result.pairs;
    json["excluded"] = result.excluded;
    json["bias"] = bounded(result.bias);
    json["sd"] = number(result.sd);
    json["limitsOfAgreement"] = {{"lower", bounded(result.lowerLimit)},
                                 {"upper", bounded(result.upperLimit)}};
    json["means"] = numbers(result.means);
    json["differences"] = numbers(result.differences);
    json["notes"] = session.notes();
    session.output.text() += written(json);
    return;
  }
  std::string& text = session.output.text();
  text += "Agreement of " + o.first + " and " + o.second + " (Bland-Altman)\n";
  text +=
      "Difference: " + differenceName(o) + ", " + counted(result.pairs, "pair", "pairs") + "\n\n";
  TextTable values({{""}, {"estimate", kRight}, {level + " lower", kRight}, {"upper", kRight}});
  boundedRow(values, "bias", result.bias);
  values.row({"sd of the differences", brief(result.sd), "", ""});
  boundedRow(values, "lower limit of agreement", result.lowerLimit);
  boundedRow(values, "upper limit of agreement", result.upperLimit);
  text += values.text();
  text +=
      "\nLimits of agreement: bias -+ " +
      brief((result.upperLimit.value - result.bias.value) / (result.sd > 0 ? result.sd : NAN), 4) +
      " sd, the normal quantile; intervals by Student's t.\n";
}

void runRepeatability(Session& session, const Options& o) {
  const Table table = readTable(
      o.file, {{.name = o.first}, {.name = o.replicates, .cells = Cells::kText}}, o.missing);
  requireRows(table, 2);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);
  const Groups groups = groupsOf(table.columns[1]);
  survmeth::RepeatabilityResult result;
  try {
    result = survmeth::repeatability({.values = table.columns[0].numbers,
                                      .subject = groups.codes,
                                      .subjects = groups.labels.size(),
                                      .alpha = o.alpha});
  } catch (const survmeth::InvalidRequest& refused) {
    throw problemAt({table.source, 0, o.replicates}, refused.what(),
                    "at least one subject with two values");
  }
  if (!(result.withinSd.value > 0)) {
    session.note("all replicates are the same: the standard deviation is 0 and has no interval");
  }
  if (!o.out.empty()) {
    session.output.folder(o.out);
    CsvWriter csv({"statistic", "value", "lower", "upper"});
    csv.cell("within-subject sd");
    csv.cell(result.withinSd.value);
    csv.cell(result.withinSd.lower);
    csv.cell(result.withinSd.upper);
    csv.endRow();
    csv.cell("repeatability coefficient");
    csv.cell(result.repeatability);
    csv.cell(NAN);
    csv.cell(NAN);
    csv.endRow();
    session.output.file(o.out + "/repeatability.csv", csv.text());
  }
  if (o.json) {
    Json json = session.json(table);
    json["method"] = "one-way analysis of variance, chi-square interval";
    json["measurement"] = o.first;
    json["subject"] = o.replicates;
    json["alpha"] = number(o.alpha);
    json["subjects"] = result.subjects;
    json["values"] = result.values;
    json["degreesOfFreedom"] = number(result.degreesOfFreedom);
    json["withinSd"] = bounded(result.withinSd);
    json["repeatability"] = number(result.repeatability);
    json["notes"] = session.notes();
    session.output.text() += written(json);
    return;
  }
  std::string& text = session.output.text();
  text += "Repeatability of " + o.first + " within " + o.replicates +
          " (one-way analysis of variance)\n";
  text += grouped(result.values) + " values of " + counted(result.subjects, "subject", "subjects") +
          ", " + brief(result.degreesOfFreedom) + " degrees of freedom\n\n";
  TextTable values(
      {{""}, {"estimate", kRight}, {confidence(o.alpha) + "% lower", kRight}, {"upper", kRight}});
  boundedRow(values, "within-subject sd", result.withinSd);
  values.row({"repeatability coefficient", brief(result.repeatability), "", ""});
  text += values.text();
  text +=
      "\nInterval by the chi-square law. Two values of one subject differ by less than the\n"
      "coefficient with probability " +
      confidence(o.alpha) + "%.\n";
}

void runAgreement(Session& session, const Options& o) {
  const DifferenceKind kind = kindOf(o.difference);
  const Table table = readTable(o.file, {{.name = o.first}, {.name = o.second}}, o.missing);
  requireRows(table, 3);
  if (const std::string left = leftOutNote(table); !left.empty()) session.note(left);
  AgreementResult result;
  try {
    result = survmeth::agreement({.first = table.columns[0].numbers,
                                  .second = table.columns[1].numbers,
                                  .kind = kind,
                                  .alpha = o.alpha});
  } catch (const survmeth::InvalidRequest& refused) {
    throw problemAt({table.source, 0, refused.member() == "second" ? o.second : o.first},
                    refused.what(), "at least three pairs with a difference");
  }
  for (std::size_t c = 0; c < 2; ++c) {
    const std::vector<double>& values = table.columns[c].numbers;
    if (std::find_if(values.begin(), values.end(), [&](double v) { return v != values[0]; }) ==
        values.end()) {
      session.note("every value of " + quote(table.columns[c].name) + " is " + brief(values[0]) +
                   ": agreement is judged at that value only");
    }
  }
  if (result.excluded > 0) {
    session.note(counted(result.excluded, "pair has", "pairs have") +
                 " no such difference (denominator 0) and no part in the analysis");
  }
  writeAgreement(session, o, table, result);
}

}  // namespace

Run declareAgree(CLI::App& app) {
  auto o = std::make_shared<Options>();
  addFile(app, *o);
  app.add_option("--first", o->first, "Column of the first method, or of the only one")
      ->required()
      ->type_name("COL");
  CLI::Option* second =
      app.add_option("--second", o->second, "Column of the second method")->type_name("COL");
  CLI::Option* difference =
      app.add_option("--difference", o->difference,
                     "absolute (second - first), relative (over the size of the mean) or ratio "
                     "(second / first); default absolute")
          ->type_name("KIND");
  CLI::Option* replicates =
      app.add_option("--replicates", o->replicates,
                     "Column of the subject: repeatability of the first method alone")
          ->type_name("COL");
  addMissing(app, *o);
  addAlpha(app, *o);
  addJson(app, *o);
  addOut(app, *o, "Folder for agreement.csv and pairs.csv, or repeatability.csv",
         {"agreement.csv", "pairs.csv", "repeatability.csv"});
  addPlot(app, *o, "Difference against mean, with bias and limits");
  replicates->excludes(second);
  replicates->excludes(difference);
  app.footer("Example: survmeth agree data/pefr.csv --first wright1 --second mini1");
  return [o](Session& session) {
    reserveOutputs(*o, session);
    if (!o->replicates.empty()) {
      if (!o->plot.empty()) throw Problem("--plot draws two methods; --replicates has only one");
      runRepeatability(session, *o);
    } else {
      if (o->second.empty()) {
        throw Problem(
            "--second is missing; expected the column of the second method, or "
            "--replicates with the column of the subject");
      }
      runAgreement(session, *o);
    }
  };
}

}  // namespace cli
