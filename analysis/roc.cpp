// survmeth roc: declaration, run and description.
#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/classes.h"
#include "analysis/weights.h"
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

Result fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  Result result{classesOf(*data.labels(request.classColumn), request.positive), {}};
  roc::Request asked{result.classes.positive, {}, {}, request.alpha, request.interval,
                     request.prevalence,      {}};
  if (const auto& c = request.cost; !c.empty()) asked.costs = {c[0], c[1], c[2], c[3]};
  for (const std::string& name : request.markers) {
    const bool lower = std::count(request.lower.begin(), request.lower.end(), name) > 0;
    asked.markers.push_back({data.numbers(name)->numbers, lower});
  }
  if (!request.weight.empty()) asked.weight = data.numbers(request.weight)->numbers;
  progress.at(0);
  result.found = roc::curves(asked);
  return result;
}

// What the curve of `name` lacks.
void noteCurve(const Curve& curve, const std::string& name, const Result& result,
               std::vector<report::Note>& notes) {
  if (const std::size_t missing = result.found.rows - curve.rows) {
    notes.push_back({"markerMissing",
                     quote(name) + " is missing in " + grouped(missing) + " of " +
                         counted(result.found.rows, "row", "rows") + ": no part in its curve",
                     {name}});
  }
  if (!curve.belowHalf()) return;
  const std::string side = curve.lowerIsPositive ? "high" : "low";
  const std::string but = curve.lowerIsPositive
                              ? ", although --lower-is-positive names it"
                              : "; --lower-is-positive " + quote(name) + " turns its curve round";
  notes.push_back({"areaBelowHalf",
                   "the area of " + quote(name) + " is below 0.5: " + side + " values go with " +
                       quote(result.classes.name()) + but,
                   {name}});
}

std::vector<report::Note> notesOf(const Result& result, const Request& request) {
  const roc::Result& found = result.found;
  std::vector<report::Note> notes = result.classes.notes;
  noteZeroWeights(result.classes.positive.size() - found.rows, notes);
  constexpr const char* kLost =
      ": areas and rates are weighted, standard errors, intervals and tests do not exist";
  if (!found.weightsAreCounts) notes.push_back({"weightsAreNoCounts", found.reason + kLost});
  const auto noLimits = [&](const auto& its, std::string of, std::vector<std::string> names) {
    if (its.reason.empty() || !found.weightsAreCounts) return;
    of = "no limits and no test of the " + of + " exist: " + its.reason;
    notes.push_back({"noLimits", std::move(of), std::move(names)});
  };
  const auto& names = request.markers;
  for (std::size_t m = 0; m < names.size(); ++m) {
    noteCurve(found.curves[m], names[m], result, notes);
    noLimits(found.curves[m], "area of " + quote(names[m]), {names[m]});
  }
  for (const Comparison& pair : found.comparisons) {
    const std::string &first = names[pair.first], &second = names[pair.second];
    noLimits(pair, "difference of " + quote(first) + " and " + quote(second), {first, second});
  }
  return notes;
}

std::vector<report::Method> methodsOf(const Result& result, const Request& request) {
  constexpr const char* kDeLong = "DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845";
  const bool counts = result.found.weightsAreCounts;
  const std::string prevalence = request.prevalence ? "prevalence " + brief(*request.prevalence)
                                                    : "the prevalence of the rows";
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
  add(true, "predictive values: at " + prevalence);
  add(true, "cuts: sensitivity + specificity - 1, chosen on these rows and so optimistic",
      "Youden, Cancer 3 (1950) 32-35");
  add(counts && request.markers.size() > 1,
      "comparison: DeLong's paired test on the rows that have both markers; limits are not "
      "adjusted for the number of pairs",
      kDeLong);
  if (const auto& c = request.cost; !c.empty()) {
    const std::string whom =
        request.prevalence ? "as many subjects as there are rows, at " + prevalence : "all rows";
    add(true, "cost: of " + whom + ", tp " + brief(c[0]) + ", fp " + brief(c[1]) + ", fn " +
                  brief(c[2]) + ", tn " + brief(c[3]));
  }
  add(!request.weight.empty(), counts ? "weights: frequencies, a row of weight w counts as w rows"
                                      : "weights: areas and rates are weighted");
  return methods;
}

report::Column directions(const Result& result, bool cheapest = false) {
  return report::columnOf(key::kPositiveWhen, "positive when", kLabel, result.found.curves,
                          [cheapest](const Curve& curve) {
                            if (cheapest && curve.cheapest.empty()) return "nobody";
                            return curve.lowerIsPositive ? "low" : "high";
                          });
}

// Cuts of each curve, and what stands beside them.
enum class Beside { kAll, kRates, kCost };
template <class Cuts>
report::Table cutTable(const char* id, const char* caption, const Result& result,
                       const Request& request, Cuts cuts, Beside beside) {
  const report::Column markers = report::labelColumn(key::kMarker, "marker", request.markers);
  auto rows = report::partedRowsOf(id, caption, markers, result.found.curves, cuts);
  rows.with(directions(result, beside == Beside::kCost))
      .column(key::kThreshold, "cut", kTime, &Threshold::threshold);
  if (beside == Beside::kAll) {
    rows.column(key::kTruePositives, "tp", kCount, &Threshold::tp)
        .column(key::kFalsePositives, "fp", kCount, &Threshold::fp)
        .column(key::kFalseNegatives, "fn", kCount, &Threshold::fn)
        .column(key::kTrueNegatives, "tn", kCount, &Threshold::tn);
  }
  if (beside != Beside::kCost) {
    rows.column(key::kYouden, "Youden", kProbability, &Threshold::youden)
        .estimated(key::kSensitivity, "sensitivity", request.level(), kProbability,
                   &Threshold::sensitivity, key::kSensitivityLower, key::kSensitivityUpper)
        .estimated(key::kSpecificity, "specificity", request.level(), kProbability,
                   &Threshold::specificity, key::kSpecificityLower, key::kSpecificityUpper)
        .column(key::kPositivePredictiveValue, "PPV", kProbability, &Threshold::positiveValue)
        .column(key::kNegativePredictiveValue, "NPV", kProbability, &Threshold::negativeValue)
        .column(key::kPositiveLikelihoodRatio, "LR+", kEstimate, &Threshold::positiveRatio)
        .column(key::kNegativeLikelihoodRatio, "LR-", kEstimate, &Threshold::negativeRatio);
  }
  if (beside != Beside::kRates && !request.cost.empty()) {
    rows.column(key::kCost, "cost", kEstimate, &Threshold::cost);
  }
  return beside == Beside::kAll ? rows.table() : rows.unparted();
}

report::Table thresholdTable(const Result& result, const Request& request) {
  return cutTable("thresholds", "Thresholds", result, request, &Curve::thresholds, Beside::kAll);
}

report::Table bestTable(const Result& result, const Request& request) {
  report::Table table = cutTable("best", "Best cut by Youden's index", result, request,
                                 &Curve::bestCuts, Beside::kRates);
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    if (!result.found.curves[m].best.empty()) continue;
    table.remarks.push_back("No cut of " + request.markers[m] + " has an index above 0.");
  }
  return table;
}

report::Table areaTable(const Result& result, const Request& request) {
  return report::rowsOf("areas", "Area under the curve", result.found.curves)
      .with(report::labelColumn(key::kMarker, "marker", request.markers))
      .with(directions(result))
      .column(key::kRows, "rows", kCount, &Curve::rows)
      .column(key::kPositives, "positives", kCount, &Curve::positives)
      .column(key::kNegatives, "negatives", kCount, &Curve::negatives)
      .tested(key::kArea, "area", request.level(), kProbability, &Curve::area)
      .table();
}

report::Table comparisonTable(const Result& result, const Request& request) {
  return report::rowsOf("comparisons", "Equal areas?", result.found.comparisons)
      .label(key::kFirst, "first", request.markers, &Comparison::first)
      .label(key::kSecond, "second", request.markers, &Comparison::second)
      .column(key::kRows, "rows", kCount, &Comparison::rows)
      .column(key::kPositives, "positives", kCount, &Comparison::positives)
      .column(key::kNegatives, "negatives", kCount, &Comparison::negatives)
      .column(key::kFirstArea, "first area", kProbability, &Comparison::firstArea)
      .column(key::kSecondArea, "second area", kProbability, &Comparison::secondArea)
      .tested(key::kDifference, "difference", request.level(), kProbability,
              &Comparison::difference)
      .table();
}

// The curves, with the line of chance.
report::Figure figureOf(const Result& result, const Request& request) {
  report::Panel panel = report::unitSquare("1 - specificity", "sensitivity");
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    const Curve& curve = result.found.curves[m];
    const std::string area = ", area " + report::fixedWithLimits(curve.area, request.level(), 3);
    auto [x, y] = curve.points();
    panel.series.push_back(report::lineOf(request.markers[m] + area, std::move(x), std::move(y)));
  }
  panel.series.push_back(report::guideOf("", {0, 1}, {0, 1}));
  const std::string positive = request.classColumn + " = " + result.classes.name();
  return report::figureOf("roc", "ROC curves, positive: " + positive, "", std::move(panel));
}

report::Report describe(const Result& result, const Request& request) {
  report::Report report;
  report.title = "ROC curves of " + counted(request.markers.size(), "marker", "markers");
  for (std::size_t m = 0; m < request.markers.size(); ++m) {
    const std::string limits = request.level() + " limits";
    const std::string area = report::fixedWithLimits(result.found.curves[m].area, limits, 3);
    report.summary += (m > 0 ? " " : "") + request.markers[m] + ": area " + area + ".";
  }
  report.facts = result.classes.facts();
  report.tables = {areaTable(result, request), bestTable(result, request)};
  if (!request.cost.empty()) {
    report.tables.push_back(
        cutTable("leastCost", "Least cost", result, request, &Curve::cheapestCuts, Beside::kCost));
  }
  if (request.markers.size() > 1) report.tables.push_back(comparisonTable(result, request));
  report.methods = methodsOf(result, request);
  report.notes = notesOf(result, request);
  return report;
}

}  // namespace

Declaration rocDeclaration() {
  return declare<Request, Result>(
             "roc", "ROC curves of markers, the areas under them and their comparison")
      .column("class", &Request::classColumn, Role::kClass, labels(),
              "Column that tells the positives from the negatives")
      .required()
      .label("positive", &Request::positive, "class",
             "The label of the positives, all others negative")
      .without("1, true, yes or dead; or 2 against 1")
      .columns("marker", &Request::markers, Role::kMarker, mayBeMissing(numbers()),
               "Columns of the markers")
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
      .numbers(
          "cost", &Request::cost,
          numbersOf(
              4, "four: of a true positive, a false positive, a false negative, a true negative"),
          "Costs of a true positive, false positive, false negative, true negative", "TP,FP,FN,TN")
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
      .check([](const Request& request) {
        requireAmong(request.lower, request.markers, "lower-is-positive", "marker");
      })
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
