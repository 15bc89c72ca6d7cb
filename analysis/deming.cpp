// survmeth deming: declaration, run and description.
#include "analysis/deming.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "analysis/demingFit.h"
#include "analysis/refusal.h"
#include "analysis/twoMethods.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Role;
using report::brief;
using report::Kind;

struct Request {
  std::string first, second;
  double ratio = 1;
  double alpha = 0.05;
};

struct Result {
  Pairs pairs;
  DemingResult line;
  std::string without;  // "line 9", the pair without which there is no line
};

struct Coefficient {
  const char* name;
  Estimate value;
  double standardError;
};

Result fit(const frame::Frame& data, const Request& request, numerics::Progress&) {
  Result result{pairsOf(data, request.first, request.second), {}, {}};
  try {
    result.line = demingFit({.first = result.pairs.first,
                             .second = result.pairs.second,
                             .ratio = request.ratio,
                             .alpha = request.alpha});
  } catch (const engine::Refusal& refused) {
    throw expecting(refused, "at least three pairs that vary together");
  }
  if (result.line.without) {
    result.without =
        (data.fromFile ? "line " : "row ") + std::to_string(data.lines.line(*result.line.without));
  }
  return result;
}

report::Table coefficientTable(const DemingResult& line, const Request& request) {
  const std::vector<Coefficient> rows = {{"intercept", line.intercept, line.interceptSe},
                                         {"slope", line.slope, line.slopeSe}};
  const std::string level = confidence(request.alpha) + " ";
  const auto column = [&rows](const char* key, const std::string& heading, auto cell) {
    return report::columnOf(key, heading, Kind::kEstimate, rows, cell);
  };
  return report::tableOf(
      "coefficients", request.second + " = intercept + slope " + request.first,
      {report::columnOf(key::kName, "", Kind::kLabel, rows,
                        [](const Coefficient& row) { return std::string(row.name); }),
       column(key::kEstimate, "estimate", [](const Coefficient& row) { return row.value.value; }),
       column(key::kStandardError, "std. error",
              [](const Coefficient& row) { return row.standardError; }),
       column(key::kLower, level + "lower", [](const Coefficient& row) { return row.value.lower; }),
       column(key::kUpper, level + "upper",
              [](const Coefficient& row) { return row.value.upper; })});
}

// The line, and whether its intervals hold the coefficients of methods that agree.
std::string summaryOf(const DemingResult& line, const Request& request) {
  const double slope = line.slope.value;
  std::string summary = "The line is " + request.second + " = " + brief(line.intercept.value, 5) +
                        (slope < 0 ? " - " : " + ") + brief(std::fabs(slope), 5) + " times " +
                        request.first + ".";
  if (!line.reason.empty()) return summary + " Its coefficients have no intervals.";
  const auto holds = [](const Estimate& value, double same) {
    return (value.lower <= same && same <= value.upper ? "holds " : "does not hold ") + brief(same);
  };
  return summary + " Methods that measure the same have intercept 0 and slope 1: the " +
         confidence(request.alpha) + " interval of the intercept " + holds(line.intercept, 0) +
         ", that of the slope " + holds(line.slope, 1) + ".";
}

// The pairs with the line over the range of the first method, beside the line of identity.
report::Figure demingFigure(const Result& result, const Request& request) {
  const Pairs& pairs = result.pairs;
  const double intercept = result.line.intercept.value, slope = result.line.slope.value;
  const auto [left, right] = extentOf(pairs.first);
  const auto [bottom, top] = extentOf(pairs.second);
  const double least = std::min(left, bottom), most = std::max(right, top);
  report::Panel panel;
  panel.x.label = request.first;
  panel.y.label = request.second;
  panel.equalUnits = true;
  report::Series identity = lineFrom("identity", least, least, most, most);
  identity.guide = true;
  panel.series = {
      std::move(identity),
      lineFrom("Deming line", left, intercept + slope * left, right, intercept + slope * right),
      pointsAt(pairs.first, pairs.second)};
  report::Figure figure;
  figure.id = "deming";
  figure.title = "Deming regression of " + request.second + " on " + request.first;
  figure.panels.push_back(std::move(panel));
  return figure;
}

void addNotes(const Result& result, const Request& request, report::Report& report) {
  if (isConstant(result.pairs.second)) {
    report.notes.push_back(constantNote(request.second, result.pairs.second.front(),
                                        "the line is flat and there is no correlation"));
  }
  if (result.line.reason.empty()) return;
  const std::string where = result.without.empty() ? "" : " (without " + result.without + ")";
  report.notes.push_back(
      {"noInterval", "neither interval exists: " + result.line.reason + where, {}});
}

report::Report describe(const Result& result, const Request& request) {
  const DemingResult& line = result.line;
  report::Report report;
  report.title = "Deming regression of " + request.second + " on " + request.first;
  report.summary = summaryOf(line, request);
  report.facts = {
      {key::kLevel, "", Kind::kProbability, 1 - request.alpha},
      {key::kPairs, "Pairs", Kind::kCount, static_cast<double>(line.pairs)},
      {key::kRatio, "Error variance of " + request.first + " over that of " + request.second,
       Kind::kEstimate, request.ratio},
      {key::kCorrelation, "Correlation", Kind::kProbability, line.correlation},
      {key::kReason, "", Kind::kLabel,
       line.reason.empty() ? report::Value() : report::Value(line.reason)}};
  report.tables = {
      coefficientTable(line, request),
      pairTable(
          "residuals", "Pairs and their points on the line", result.pairs, request.first,
          request.second,
          {report::numberColumn(key::kFitted, "fitted", Kind::kTime, line.fitted),
           report::numberColumn(key::kResidual, "residual", Kind::kEstimate, line.residuals)})};
  report.methods = {
      {"line: Deming regression, both methods with error, its ratio of variances taken as known",
       "Deming, Statistical Adjustment of Data (1943)"}};
  if (line.reason.empty()) {
    report.methods.push_back({"standard errors by the jackknife, limits by Student's t with " +
                                  std::to_string(line.pairs - 2) + " degrees of freedom",
                              "Linnet, Clin Chem 39 (1993) 424-432"});
  }
  report.figures.push_back(demingFigure(result, request));
  addNotes(result, request, report);
  return report;
}

}  // namespace

Declaration demingDeclaration() {
  return declare<Request, Result>("deming", "Deming regression of one method on another")
      .column("first", &Request::first, Role::kFirst, numbers(), "Column of the first method (x)")
      .required()
      .column("second", &Request::second, Role::kSecond, numbers(),
              "Column of the second method (y)")
      .required()
      .number("ratio", &Request::ratio, above(0),
              "Error variance of the first method over that of the second", "L")
      .without("1")
      .number("alpha", &Request::alpha, between(0, 1),
              "Significance level; intervals have level 1 - A", "A")
      .without("0.05")
      .details(
          "The ratio is taken as known: 1 says that both methods are equally precise, and no "
          "interval holds its uncertainty.")
      .example("survmeth deming data/pefr.csv --first wright1 --second mini1")
      .tables({"coefficients", "residuals"})
      .figures({"deming"})
      .leastRows(3)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
