// survmeth roc: declaration, run and description.

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/refusal.h"
#include "analysis/rocTables.h"
#include "model/coding.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Refusal;
using engine::Role;
using report::brief;
using report::Kind;
using text::counted;
using text::grouped;
using text::quote;

struct Request {
  std::string classColumn, positive, weight;
  std::vector<std::string> markers, lower;
  RateInterval interval = RateInterval::kWilson;
  double alpha = 0.05;
  std::optional<double> prevalence;
  std::vector<double> cost;
  bool table = false;
};

constexpr double kRounding = 1e-12;     // of a weighted area
constexpr std::size_t kMostNamed = 12;  // negative labels in a note

void check(const Request& request) {
  if (!request.cost.empty() && request.cost.size() != 4) {
    throw BadOption("cost", "there are " + std::to_string(request.cost.size()) +
                                " numbers; expected four: of a true positive, a false positive, a "
                                "false negative, a true negative");
  }
  for (const std::string& name : request.lower) {
    const auto& markers = request.markers;
    if (std::find(markers.begin(), markers.end(), name) != markers.end()) continue;
    throw BadOption("lower-is-positive", quote(name) + " is no marker; expected one of " +
                                             text::nearestFirst(name, markers));
  }
}

// The class of each row; notes what the negatives are when that is not plain.
std::vector<std::uint8_t> classesOf(const frame::Column& column, const Request& request,
                                    RocAnswer& answer) {
  std::vector<std::string> named;
  if (!request.positive.empty()) named.push_back(request.positive);
  model::YesNo coded = model::yesNoOf(column, named, model::kPositives);
  if (!coded.note.empty()) answer.note("classCoding", coded.note);
  if (coded.labels.empty() || coded.others.empty()) {
    throw Refusal(Role::kClass, Refusal::kNone,
                  std::string(coded.labels.empty() ? "no" : "every") + " complete row " +
                      (named.empty() ? "means yes" : "holds " + quote(request.positive)),
                  Refusal::kNone, "positive and negative rows");
  }
  answer.positive = text::joined(coded.labels);
  answer.negative = std::move(coded.others);
  const auto& labels = answer.negative;
  if (labels.size() > kMostNamed) {
    answer.note("severalNegatives", grouped(labels.size()) + " different labels are negative");
  } else if (labels.size() > 1) {
    std::string names;
    for (const std::string& label : labels) names += (names.empty() ? "" : ", ") + quote(label);
    answer.note("severalNegatives", "several labels are negative: " + names, labels);
  }
  return std::move(coded.rows);
}

void addWeightNotes(std::span<const double> weights, RocAnswer& answer) {
  const auto zeros = static_cast<std::size_t>(std::count(weights.begin(), weights.end(), 0.0));
  answer.rows -= zeros;
  if (zeros > 0) {
    answer.note("zeroWeights", counted(zeros, "row has", "rows have") + " weight 0 and no effect");
  }
  if (answer.result.weightsAreCounts) return;
  const bool whole =
      std::all_of(weights.begin(), weights.end(), [](double w) { return w == std::trunc(w); });
  answer.note(
      "weightsAreNoCounts",
      std::string(whole ? "the weights add up to more than 10,000,000"
                        : "the weights are not whole numbers") +
          ": areas and rates are weighted, standard errors, intervals and tests do not exist");
}

void addMarkerNotes(RocAnswer& answer) {
  const bool counts = answer.result.weightsAreCounts;
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    const RocCurve& curve = answer.result.curves[m];
    const std::string& name = answer.markers[m];
    if (curve.rows < answer.rows) {
      answer.note("markerMissing",
                  quote(name) + " is missing in " + grouped(answer.rows - curve.rows) + " of " +
                      counted(answer.rows, "row", "rows") + ": no part in its curve",
                  {name});
    }
    if (0.5 - curve.area.value > kRounding) {
      answer.note("areaBelowHalf",
                  "the area of " + quote(name) + " is below 0.5: " +
                      (curve.lowerIsPositive
                           ? "high values go with " + quote(answer.positive) +
                                 ", although --lower-is-positive names it"
                           : "low values go with " + quote(answer.positive) +
                                 "; --lower-is-positive " + quote(name) + " turns its curve round"),
                  {name});
    }
    if (!curve.reason.empty() && counts) {
      answer.note("noLimits",
                  "no limits and no test of the area of " + quote(name) + " exist: " + curve.reason,
                  {name});
    }
  }
  for (const RocComparison& pair : answer.result.comparisons) {
    if (pair.reason.empty() || !counts) continue;
    const std::string &first = answer.markers[pair.first], &second = answer.markers[pair.second];
    answer.note("noLimits",
                "no limits and no test of the difference of " + quote(first) + " and " +
                    quote(second) + " exist: " + pair.reason,
                {first, second});
  }
}

RocAnswer fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  RocAnswer answer;
  answer.markers = request.markers;
  answer.rows = data.rows;
  const std::vector<std::uint8_t> positive =
      classesOf(*data.labels(request.classColumn), request, answer);
  RocRequest asked;
  asked.positive = positive;
  asked.alpha = request.alpha;
  asked.interval = request.interval;
  asked.prevalence = request.prevalence;
  if (!request.cost.empty()) {
    answer.costs = {request.cost[0], request.cost[1], request.cost[2], request.cost[3]};
    asked.costs = *answer.costs;
  }
  for (const std::string& name : request.markers) {
    const bool lower =
        std::find(request.lower.begin(), request.lower.end(), name) != request.lower.end();
    asked.markers.push_back({data.numbers(name)->numbers, lower});
  }
  if (!request.weight.empty()) asked.weight = data.numbers(request.weight)->numbers;
  progress.at(0);
  try {
    answer.result = rocCurves(asked);
  } catch (const Refusal& refused) {
    if (refused.role() != Role::kMarker) throw;
    throw expecting(refused, "positive and negative rows with a weight above 0");
  }
  if (!request.weight.empty()) addWeightNotes(asked.weight, answer);
  addMarkerNotes(answer);
  return answer;
}

std::vector<report::Method> methodsOf(const RocAnswer& answer, const Request& request,
                                      const std::string& level) {
  constexpr std::array<const char*, 4> kNames = {"Wilson's score", "Wald",
                                                 "Clopper-Pearson (exact)", "Agresti-Coull"};
  const bool counts = answer.result.weightsAreCounts;
  const char* delong = "DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845";
  std::vector<report::Method> methods = {
      {"area: trapezoidal, the share of pairs in which the positive has the higher (or lower) "
       "value, "
       "ties one half",
       ""}};
  if (counts) {
    methods.push_back({"standard error: DeLong; test: area 0.5, normal", delong});
    methods.push_back({"sensitivity and specificity: " + level + " " +
                           kNames[static_cast<std::size_t>(request.interval)] + " limits",
                       ""});
  }
  methods.push_back(
      {"predictive values: at " + (request.prevalence ? "prevalence " + brief(*request.prevalence)
                                                      : "the prevalence of the rows"),
       ""});
  methods.push_back({"cuts: sensitivity + specificity - 1, chosen on these rows and so optimistic",
                     "Youden, Cancer 3 (1950) 32-35"});
  if (counts && answer.markers.size() > 1) {
    methods.push_back(
        {"comparison: DeLong's paired test on the rows that have both markers; limits are not "
         "adjusted for the number of pairs",
         delong});
  }
  if (answer.costs) {
    const RocCosts& cost = *answer.costs;
    methods.push_back(
        {"cost: " +
             (request.prevalence ? "of as many subjects as there are rows, at prevalence " +
                                       brief(*request.prevalence)
                                 : std::string("of all rows")) +
             ", tp " + brief(cost.tp) + ", fp " + brief(cost.fp) + ", fn " + brief(cost.fn) +
             ", tn " + brief(cost.tn),
         ""});
  }
  if (!request.weight.empty()) {
    methods.push_back({counts ? "weights: frequencies, a row of weight w counts as w rows"
                              : "weights: areas and rates are weighted",
                       ""});
  }
  return methods;
}

report::Report describe(const RocAnswer& answer, const Request& request) {
  const std::string level = report::confidence(request.alpha);
  report::Report report;
  report.title = "ROC curves of " + counted(answer.markers.size(), "marker", "markers");
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    report.summary += (m > 0 ? " " : "") + answer.markers[m] + ": " +
                      rocAreaInWords(answer.result.curves[m], level, "limits ") + ".";
  }
  report.facts = {{key::kPositive, "Positive", Kind::kLabel, answer.positive},
                  {key::kNegative, "Negative", Kind::kLabel, text::joined(answer.negative)}};
  report.tables = {rocAreaTable(answer, level), rocBestTable(answer, level)};
  if (answer.costs) report.tables.push_back(rocCostTable(answer));
  if (answer.markers.size() > 1) report.tables.push_back(rocComparisonTable(answer, level));
  report.methods = methodsOf(answer, request, level);
  report.notes = answer.notes;
  return report;
}

}  // namespace

Declaration rocDeclaration() {
  frame::Wanted marker = numbers();
  marker.mayBeMissing = true;
  return declare<Request, RocAnswer>(
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
              {{"wilson", RateInterval::kWilson},
               {"wald", RateInterval::kWald},
               {"clopper-pearson", RateInterval::kClopperPearson},
               {"agresti", RateInterval::kAgresti}},
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
      .longTable(
          "thresholds",
          [](const RocAnswer& answer, const Request& request) {
            return rocThresholdTable(answer, report::confidence(request.alpha));
          },
          [](const Request& request) { return request.table; })
      .figure("roc",
              [](const RocAnswer& answer, const Request& request) {
                return rocFigure(answer, request.classColumn, report::confidence(request.alpha));
              })
      .leastRows(2)
      .check(check)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
