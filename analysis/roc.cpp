// survmeth roc: declaration, run and description.
#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/classes.h"
#include "engine/roc/curves.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
namespace roc = engine::roc;
using engine::Role;
using report::brief;
using enum report::Kind;
using enum roc::RateInterval;
using roc::Comparison, roc::Curve, roc::Threshold;
using text::counted, text::grouped, text::quote;

struct Request {
  std::string classColumn, positive, weight;
  std::vector<std::string> markers, lower;
  roc::RateInterval interval = kWilson;
  double alpha = 0.05;
  std::optional<double> prevalence;
  std::vector<double> cost;
  bool table = false;

  std::string level() const { return report::confidence(alpha); }
};

struct Result {
  Classes classes;
  roc::Result found;
};

void check(const Request& request) {
  if (!request.cost.empty() && request.cost.size() != 4) {
    throw BadOption("cost", "there are " + std::to_string(request.cost.size()) +
                                " numbers; expected four: of a true positive, a false positive, a "
                                "false negative, a true negative");
  }
  requireAmong(request.lower, request.markers, "lower-is-positive", "marker");
}

Result fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  Result result{classesOf(*data.labels(request.classColumn), request.positive), {}};
  roc::Request asked{result.classes.positive, {}, {}, request.alpha, request.interval,
                     request.prevalence,      {}};
  if (const auto& cost = request.cost; !cost.empty()) {
    asked.costs = {cost[0], cost[1], cost[2], cost[3]};
  }
  for (const std::string& name : request.markers) {
    const bool lower =
        std::find(request.lower.begin(), request.lower.end(), name) != request.lower.end();
    asked.markers.push_back({data.numbers(name)->numbers, lower});
  }
  if (!request.weight.empty()) asked.weight = data.numbers(request.weight)->numbers;
  progress.at(0);
  result.found = roc::curves(asked);
  return result;
}

std::vector<report::Note> notesOf(const Result& result, const Request& request) {
  const roc::Result& found = result.found;
  std::vector<report::Note> notes = result.classes.notes;
  const auto add = [&](const char* code, std::string text, std::vector<std::string> names = {}) {
    notes.push_back({code, std::move(text), std::move(names)});
  };
  if (const std::size_t zeros = result.classes.positive.size() - found.rows) {
    add("zeroWeights", counted(zeros, "row has", "rows have") + " weight 0 and no effect");
  }
  if (!found.weightsAreCounts) {
    add("weightsAreNoCounts", found.reason +
                                  ": areas and rates are weighted, standard errors, "
                                  "intervals and tests do not exist");
  }
  const auto noLimits = [&](const std::string& of, const std::string& reason,
                            std::vector<std::string> names) {
    if (reason.empty() || !found.weightsAreCounts) return;
    add("noLimits", "no limits and no test of the " + of + " exist: " + reason, std::move(names));
  };
  for (std::size_t m = 0; m < found.curves.size(); ++m) {
    const Curve& curve = found.curves[m];
    const std::string &marker = request.markers[m], name = quote(marker);
    const std::string with = " values go with " + quote(result.classes.name());
    if (curve.rows < found.rows) {
      add("markerMissing",
          name + " is missing in " + grouped(found.rows - curve.rows) + " of " +
              counted(found.rows, "row", "rows") + ": no part in its curve",
          {marker});
    }
    if (curve.belowHalf()) {
      add("areaBelowHalf",
          "the area of " + name + " is below 0.5: " +
              (curve.lowerIsPositive
                   ? "high" + with + ", although --lower-is-positive names it"
                   : "low" + with + "; --lower-is-positive " + name + " turns its curve round"),
          {marker});
    }
    noLimits("area of " + name, curve.reason, {marker});
  }
  for (const Comparison& pair : found.comparisons) {
    const std::string &first = request.markers[pair.first], &second = request.markers[pair.second];
    noLimits("difference of " + quote(first) + " and " + quote(second), pair.reason,
             {first, second});
  }
  return notes;
}

std::vector<report::Method> methodsOf(const Result& result, const Request& request) {
  constexpr const char* kDeLong = "DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845";
  const bool counts = result.found.weightsAreCounts;
  const std::string prevalence =
      request.prevalence ? "prevalence " + brief(*request.prevalence) : "";
  std::vector<report::Method> methods;
  const auto add = [&](bool holds, std::string text, const char* source = "") {
    if (holds) methods.push_back({std::move(text), source});
  };
  add(true,
      "area: trapezoidal, the share of pairs in which the positive has the higher (or lower) "
      "value, ties one half");
  add(counts, "standard error: DeLong; test: area 0.5, normal", kDeLong);
  add(counts, "sensitivity and specificity: " + request.level() + " " +
                  intervalName(request.interval) + " limits");
  add(true,
      "predictive values: at " + (request.prevalence ? prevalence : "the prevalence of the rows"));
  add(true, "cuts: sensitivity + specificity - 1, chosen on these rows and so optimistic",
      "Youden, Cancer 3 (1950) 32-35");
  add(counts && request.markers.size() > 1,
      "comparison: DeLong's paired test on the rows that have both markers; limits are not "
      "adjusted for the number of pairs",
      kDeLong);
  if (const auto& cost = request.cost; !cost.empty()) {
    add(true, "cost: of " +
                  (request.prevalence ? "as many subjects as there are rows, at " + prevalence
                                      : "all rows") +
                  ", tp " + brief(cost[0]) + ", fp " + brief(cost[1]) + ", fn " + brief(cost[2]) +
                  ", tn " + brief(cost[3]));
  }
  add(!request.weight.empty(), counts ? "weights: frequencies, a row of weight w counts as w rows"
                                      : "weights: areas and rates are weighted");
  return methods;
}

const char* direction(const Curve& curve) { return curve.lowerIsPositive ? "low" : "high"; }

report::Column directions(const Result& result) {
  return report::columnOf(key::kPositiveWhen, "positive when", kLabel, result.found.curves,
                          direction);
}

report::Column markers(const Request& request) {
  return report::labelColumn(key::kMarker, "marker", request.markers);
}

// The cuts that `cuts` gives of each curve, with their counts or without.
template <class Cuts>
report::Table cutTable(const char* id, const char* caption, const Result& result,
                       const Request& request, Cuts cuts, bool counts) {
  const std::string level = request.level();
  auto rows = report::partedRowsOf(id, caption, markers(request), result.found.curves, cuts);
  rows.with(directions(result)).column(key::kThreshold, "cut", kTime, &Threshold::threshold);
  if (counts) {
    rows.column(key::kTruePositives, "tp", kCount, &Threshold::tp)
        .column(key::kFalsePositives, "fp", kCount, &Threshold::fp)
        .column(key::kFalseNegatives, "fn", kCount, &Threshold::fn)
        .column(key::kTrueNegatives, "tn", kCount, &Threshold::tn);
  }
  rows.column(key::kYouden, "Youden", kProbability, &Threshold::youden)
      .column(key::kSensitivity, "sensitivity", kProbability, &Threshold::sensitivity)
      .limits(level, kProbability, &Threshold::sensitivity, key::kSensitivityLower,
              key::kSensitivityUpper)
      .column(key::kSpecificity, "specificity", kProbability, &Threshold::specificity)
      .limits(level, kProbability, &Threshold::specificity, key::kSpecificityLower,
              key::kSpecificityUpper)
      .column(key::kPositivePredictiveValue, "PPV", kProbability, &Threshold::positiveValue)
      .column(key::kNegativePredictiveValue, "NPV", kProbability, &Threshold::negativeValue)
      .column(key::kPositiveLikelihoodRatio, "LR+", kEstimate, &Threshold::positiveRatio)
      .column(key::kNegativeLikelihoodRatio, "LR-", kEstimate, &Threshold::negativeRatio);
  if (counts && !request.cost.empty()) rows.column(key::kCost, "cost", kEstimate, &Threshold::cost);
  return rows.table();
}

report::Table thresholdTable(const Result& result, const Request& request) {
  return cutTable("thresholds", "Thresholds", result, request, &Curve::thresholds, true);
}

report::Table bestTable(const Result& result, const Request& request) {
  report::Table table =
      cutTable("best", "Best cut by Youden's index", result, request, &Curve::bestCuts, false);
  table.partedBy.clear();
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    if (!result.found.curves[m].best.empty()) continue;
    table.remarks.push_back("No cut of " + request.markers[m] + " has an index above 0.");
  }
  return table;
}

report::Table costTable(const Result& result, const Request& request) {
  const auto when = [](const Curve& curve) {
    return curve.cheapest.empty() ? "nobody" : direction(curve);
  };
  const auto& curves = result.found.curves;
  return report::partedRowsOf("leastCost", "Least cost", markers(request), curves,
                              &Curve::cheapestCuts)
      .with(report::columnOf(key::kPositiveWhen, "positive when", kLabel, curves, when))
      .column(key::kThreshold, "cut", kTime, &Threshold::threshold)
      .column(key::kCost, "cost", kEstimate, &Threshold::cost)
      .unparted();
}

report::Table areaTable(const Result& result, const Request& request) {
  return report::rowsOf("areas", "Area under the curve", result.found.curves)
      .with(markers(request))
      .with(directions(result))
      .column(key::kRows, "rows", kCount, &Curve::rows)
      .column(key::kPositives, "positives", kCount, &Curve::positives)
      .column(key::kNegatives, "negatives", kCount, &Curve::negatives)
      .tested(key::kArea, "area", request.level(), kProbability, &Curve::area)
      .table();
}

report::Table comparisonTable(const Result& result, const Request& request) {
  const auto nameOf = [&](std::size_t Comparison::*marker) {
    return [&request, marker](const Comparison& pair) { return request.markers[pair.*marker]; };
  };
  return report::rowsOf("comparisons", "Equal areas?", result.found.comparisons)
      .column(key::kFirst, "first", kLabel, nameOf(&Comparison::first))
      .column(key::kSecond, "second", kLabel, nameOf(&Comparison::second))
      .column(key::kRows, "rows", kCount, &Comparison::rows)
      .column(key::kPositives, "positives", kCount, &Comparison::positives)
      .column(key::kNegatives, "negatives", kCount, &Comparison::negatives)
      .column(key::kFirstArea, "first area", kProbability, &Comparison::firstArea)
      .column(key::kSecondArea, "second area", kProbability, &Comparison::secondArea)
      .tested(key::kDifference, "difference", request.level(), kProbability,
              &Comparison::difference)
      .table();
}

// The curves on equal axes with the line of chance.
report::Figure figureOf(const Result& result, const Request& request) {
  // Steps closer than this part of the axes are one in print; large data are thinned to that.
  constexpr double kStep = 1.0 / 2000;
  report::Panel panel = report::panelOf("1 - specificity", "sensitivity");
  panel.equalUnits = true;
  panel.x.least = panel.y.least = 0;
  panel.x.most = panel.y.most = 1;
  for (const Curve& curve : result.found.curves) {
    report::Series& series = panel.series.emplace_back();
    series.name = request.markers[panel.series.size() - 1] + ", area " +
                  report::fixedWithLimits(curve.area, request.level(), 3);
    auto [x, y] = curve.points(kStep);
    series.x = std::move(x);
    series.y = std::move(y);
  }
  report::Series& chance = panel.series.emplace_back();
  chance.guide = true;
  chance.x = chance.y = {0, 1};
  return report::figureOf(
      "roc", "ROC curves, positive: " + request.classColumn + " = " + result.classes.name(), "",
      std::move(panel));
}

report::Report describe(const Result& result, const Request& request) {
  report::Report report;
  report.title = "ROC curves of " + counted(request.markers.size(), "marker", "markers");
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    report.summary +=
        (m > 0 ? " " : "") + request.markers[m] + ": " + "area " +
        report::fixedWithLimits(result.found.curves[m].area, request.level() + " limits", 3) + ".";
  }
  report.facts = result.classes.facts();
  report.tables = {areaTable(result, request), bestTable(result, request)};
  if (!request.cost.empty()) report.tables.push_back(costTable(result, request));
  if (request.markers.size() > 1) report.tables.push_back(comparisonTable(result, request));
  report.methods = methodsOf(result, request);
  report.notes = notesOf(result, request);
  return report;
}

}  // namespace

Declaration rocDeclaration() {
  frame::Wanted marker = numbers();
  marker.mayBeMissing = true;
  return declare<Request, Result>(
             "roc", "ROC curves of markers, the areas under them and their comparison")
      .column("class", &Request::classColumn, Role::kClass, labels(),
              "Column that tells the positives from the negatives")
      .required()
      .label("positive", &Request::positive, "class",
             "The label of the positives, all others negative")
      .without("1, true, yes or dead; or 2 against 1")
      .columns("marker", &Request::markers, Role::kMarker, marker, "Columns of the markers")
      .required()
      .texts("lower-is-positive", &Request::lower, Role::kValue,
             "Markers whose low values speak for positive")
      .column("weight", &Request::weight, Role::kWeight, numbersFrom(0),
              "Column of frequencies, numbers from 0")
      .choice("ci", &Request::interval,
              {{"wilson", kWilson},
               {"wald", kWald},
               {"clopper-pearson", kClopperPearson},
               {"agresti", kAgresti}},
              "Limits of sensitivity and specificity")
      .alpha(&Request::alpha)
      .number("prevalence", &Request::prevalence, between(0, 1),
              "Prevalence for predictive values and costs", "P")
      .without("that of the rows")
      .numbers("cost", &Request::cost, anyNumber(),
               "Costs of a true positive, false positive, false negative, true negative",
               "TP,FP,FN,TN")
      .flag("table", &Request::table, "Also print the table of thresholds")
      .details(
          "A row is called positive at or above a threshold, or at or below it for a marker "
          "named in --lower-is-positive. A missing marker leaves a row out of that marker's "
          "curve only; two markers are compared on the rows that have both.")
      .example("survmeth roc data/sah.csv --class outcome --positive Poor --marker wfns,s100b,ndka")
      .tables({"areas", "best", "leastCost", "comparisons"})
      .longTable("thresholds", thresholdTable, [](const Request& request) { return request.table; })
      .figure("roc", figureOf)
      .leastRows(2)
      .check(check)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
