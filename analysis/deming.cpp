// survmeth deming: declaration, run and description.
#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>

#include "analysis/all.h"
#include "analysis/demingFit.h"
#include "analysis/estimateTable.h"
#include "analysis/refusal.h"
#include "analysis/twoMethods.h"
#include "report/build.h"
#include "report/numbers.h"

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

Result fit(const frame::Frame& data, const Request& request, numerics::Progress&) {
  Result result{pairsOf(data, request.first, request.second), {}, {}};
  result.line = expecting("at least three pairs that vary together", [&] {
    return demingFit(
        {result.pairs.first.numbers, result.pairs.second.numbers, request.ratio, request.alpha});
  });
  if (result.line.without) {
    result.without =
        (data.fromFile ? "line " : "row ") + std::to_string(data.lines.line(*result.line.without));
  }
  return result;
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
         report::confidence(request.alpha) + " interval of the intercept " +
         holds(line.intercept, 0) + ", that of the slope " + holds(line.slope, 1) + ".";
}

report::Report describe(const Result& result, const Request& request) {
  const DemingResult& line = result.line;
  const bool limits = line.reason.empty();
  report::Report report;
  report.title = "Deming regression of " + request.second + " on " + request.first;
  report.summary = summaryOf(line, request);
  report.facts = {
      report::levelFact(request.alpha),
      report::countFact(key::kPairs, "Pairs", line.pairs),
      {key::kRatio, "Error variance of " + request.first + " over that of " + request.second,
       Kind::kEstimate, request.ratio},
      {key::kCorrelation, "Correlation", Kind::kProbability, line.correlation},
      {key::kReason, "", Kind::kLabel, limits ? report::Value() : report::Value(line.reason)}};
  report.tables = {estimateTable(
      "coefficients", request.second + " = intercept + slope " + request.first, key::kName,
      request.alpha,
      {{"intercept", line.intercept, line.interceptSe}, {"slope", line.slope, line.slopeSe}},
      Errors::kShown)};
  report.methods = {
      {"line: Deming regression, both methods with error, its ratio of variances taken as known",
       "Deming, Statistical Adjustment of Data (1943)"}};
  noteConstants({&result.pairs.second}, "the line is flat and there is no correlation", report);
  if (limits) {
    report.methods.push_back({"standard errors by the jackknife, limits by Student's t with " +
                                  std::to_string(line.pairs - 2) + " degrees of freedom",
                              "Linnet, Clin Chem 39 (1993) 424-432"});
  } else {
    report.notes.push_back(
        {"noInterval", "neither interval exists: " + line.reason +
                           (result.without.empty() ? "" : " (without " + result.without + ")")});
  }
  return report;
}

report::Table residualTable(const Result& result, const Request&) {
  return pairTable(
      "residuals", "Pairs and their points on the line", result.pairs,
      {report::borrowedColumn(key::kFitted, "fitted", Kind::kTime, result.line.fitted),
       report::borrowedColumn(key::kResidual, "residual", Kind::kEstimate, result.line.residuals)});
}

// Ranges of two methods, one over the other, from which on their units are not the same.
constexpr double kFarApart = 20;

// The pairs with the line over the range of the first method, beside the line of identity.
report::Figure figureOf(const Result& result, const Request& request) {
  const std::span<const double> x = result.pairs.first.numbers, y = result.pairs.second.numbers;
  const double intercept = result.line.intercept.value, slope = result.line.slope.value;
  const auto [left, right] = extentOf(x);
  const auto [bottom, top] = extentOf(y);
  const double least = std::min(left, bottom), most = std::max(right, top);
  report::Panel panel = report::panelOf(request.first, request.second);
  // Methods in units far apart would be a line along an axis.
  const double wide = right - left, tall = top - bottom;
  panel.equalUnits = wide < kFarApart * tall && tall < kFarApart * wide;
  panel.series = {report::guideOf("identity", {least, most}, {least, most}),
                  report::lineOf("Deming line", {left, right},
                                 {intercept + slope * left, intercept + slope * right}),
                  pointsAt(x, y)};
  return report::figureOf("deming",
                          "Deming regression of " + request.second + " on " + request.first, "",
                          std::move(panel));
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
      .alpha(&Request::alpha)
      .details(
          "The ratio is taken as known: 1 says that both methods are equally precise, and no "
          "interval holds its uncertainty.")
      .example("survmeth deming data/pefr.csv --first wright1 --second mini1")
      .tables({"coefficients"})
      .longTable("residuals", residualTable)
      .figure("deming", figureOf)
      .leastRows(3)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
