#include "analysis/rocTables.h"

#include <cmath>
#include <utility>

#include "report/build.h"
#include "report/numbers.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using enum report::Kind;

const char* direction(const RocCurve& curve) { return curve.lowerIsPositive ? "low" : "high"; }

report::Column directions(const RocAnswer& answer) {
  return report::columnOf(key::kPositiveWhen, "positive when", kLabel, answer.result.curves,
                          direction);
}

report::Column markers(const RocAnswer& answer) {
  return report::labelColumn(key::kMarker, "marker", answer.markers);
}

// Sensitivity to likelihood ratios, as both tables of cuts have them.
template <class Rows>
void addRates(Rows& rows, const std::string& level) {
  rows.column(key::kSensitivity, "sensitivity", kProbability, &RocThreshold::sensitivity)
      .limits(level, kProbability, &RocThreshold::sensitivity, key::kSensitivityLower,
              key::kSensitivityUpper)
      .column(key::kSpecificity, "specificity", kProbability, &RocThreshold::specificity)
      .limits(level, kProbability, &RocThreshold::specificity, key::kSpecificityLower,
              key::kSpecificityUpper)
      .column(key::kPositivePredictiveValue, "PPV", kProbability, &RocThreshold::positiveValue)
      .column(key::kNegativePredictiveValue, "NPV", kProbability, &RocThreshold::negativeValue)
      .column(key::kPositiveLikelihoodRatio, "LR+", kEstimate, &RocThreshold::positiveRatio)
      .column(key::kNegativeLikelihoodRatio, "LR-", kEstimate, &RocThreshold::negativeRatio);
}

}  // namespace

report::Table rocAreaTable(const RocAnswer& answer, const std::string& level) {
  return report::rowsOf("areas", "Area under the curve", answer.result.curves)
      .with(markers(answer))
      .with(directions(answer))
      .column(key::kRows, "rows", kCount, &RocCurve::rows)
      .column(key::kPositives, "positives", kCount, &RocCurve::positives)
      .column(key::kNegatives, "negatives", kCount, &RocCurve::negatives)
      .column(key::kArea, "area", kProbability, &RocCurve::area)
      .column(key::kStandardError, "std error", kProbability, &RocCurve::standardError)
      .limits(level, kProbability, &RocCurve::area)
      .column(key::kZ, "z", kStatistic, &RocCurve::z)
      .column(key::kPValue, "p-value", kPValue, &RocCurve::pValue)
      .column(key::kReason, "why not", kLabel, &RocCurve::reason)
      .table();
}

report::Table rocBestTable(const RocAnswer& answer, const std::string& level) {
  std::vector<std::vector<RocThreshold>> best;
  std::vector<std::string> remarks;
  for (const RocCurve& curve : answer.result.curves) {
    std::vector<RocThreshold>& cuts = best.emplace_back();
    for (const std::size_t k : curve.best) cuts.push_back(curve.thresholds[k]);
    if (!cuts.empty()) continue;
    remarks.push_back("No cut of " + answer.markers[best.size() - 1] + " has an index above 0.");
  }
  auto rows = report::partedRowsOf("best", "Best cut by Youden's index", markers(answer), best);
  rows.with(directions(answer))
      .column(key::kThreshold, "cut", kTime, &RocThreshold::threshold)
      .column(key::kYouden, "Youden", kProbability, &RocThreshold::youden);
  addRates(rows, level);
  report::Table table = rows.table();
  table.partedBy.clear();
  table.remarks = std::move(remarks);
  return table;
}

report::Table rocCostTable(const RocAnswer& answer) {
  struct Cut {
    std::string marker, when;
    double threshold, cost;
  };
  std::vector<Cut> cuts;
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    const RocCurve& curve = answer.result.curves[m];
    for (const std::size_t k : curve.cheapest) {
      cuts.push_back(
          {answer.markers[m], direction(curve), curve.thresholds[k].threshold, curve.leastCost});
    }
    if (curve.cheapest.empty()) {
      cuts.push_back({answer.markers[m], "nobody", kNone, curve.leastCost});
    }
  }
  return report::rowsOf("leastCost", "Least cost", cuts)
      .column(key::kMarker, "marker", kLabel, &Cut::marker)
      .column(key::kPositiveWhen, "positive when", kLabel, &Cut::when)
      .column(key::kThreshold, "cut", kTime, &Cut::threshold)
      .column(key::kCost, "cost", kEstimate, &Cut::cost)
      .table();
}

report::Table rocComparisonTable(const RocAnswer& answer, const std::string& level) {
  using Pair = RocComparison;
  return report::rowsOf("comparisons", "Equal areas?", answer.result.comparisons)
      .column(key::kFirst, "first", kLabel, [&](const Pair& p) { return answer.markers[p.first]; })
      .column(key::kSecond, "second", kLabel,
              [&](const Pair& p) { return answer.markers[p.second]; })
      .column(key::kRows, "rows", kCount, &Pair::rows)
      .column(key::kPositives, "positives", kCount, &Pair::positives)
      .column(key::kNegatives, "negatives", kCount, &Pair::negatives)
      .column(key::kFirstArea, "first area", kProbability, &Pair::firstArea)
      .column(key::kSecondArea, "second area", kProbability, &Pair::secondArea)
      .column(key::kDifference, "difference", kProbability, &Pair::difference)
      .column(key::kStandardError, "std error", kProbability, &Pair::standardError)
      .limits(level, kProbability, &Pair::difference)
      .column(key::kZ, "z", kStatistic, &Pair::z)
      .column(key::kPValue, "p-value", kPValue, &Pair::pValue)
      .column(key::kReason, "why not", kLabel, &Pair::reason)
      .table();
}

report::Table rocThresholdTable(const RocAnswer& answer, const std::string& level) {
  auto rows = report::partedRowsOf("thresholds", "Thresholds", markers(answer),
                                   answer.result.curves, &RocCurve::thresholds);
  rows.with(directions(answer))
      .column(key::kThreshold, "cut", kTime, &RocThreshold::threshold)
      .column(key::kTruePositives, "tp", kCount, &RocThreshold::tp)
      .column(key::kFalsePositives, "fp", kCount, &RocThreshold::fp)
      .column(key::kFalseNegatives, "fn", kCount, &RocThreshold::fn)
      .column(key::kTrueNegatives, "tn", kCount, &RocThreshold::tn)
      .column(key::kYouden, "Youden", kProbability, &RocThreshold::youden);
  addRates(rows, level);
  if (answer.costs) rows.column(key::kCost, "cost", kEstimate, &RocThreshold::cost);
  return rows.table();
}

report::Figure rocFigure(const RocAnswer& answer, const std::string& classColumn,
                         const std::string& level) {
  // Steps closer than this part of the axes are one in print; large data are thinned to that.
  constexpr double kStep = 1.0 / 2000;
  report::Panel panel = report::panelOf("1 - specificity", "sensitivity");
  panel.equalUnits = true;
  panel.x.least = panel.y.least = 0;
  panel.x.most = panel.y.most = 1;
  for (const RocCurve& curve : answer.result.curves) {
    RocCurve::Points points = curve.points(kStep);
    report::Series series;
    series.name = answer.markers[panel.series.size()] + ", " + rocAreaInWords(curve, level, "");
    series.x = std::move(points.x);
    series.y = std::move(points.y);
    panel.series.push_back(std::move(series));
  }
  report::Series chance;
  chance.guide = true;
  chance.x = chance.y = {0, 1};
  panel.series.push_back(std::move(chance));
  return report::figureOf("roc", "ROC curves, positive: " + classColumn + " = " + answer.positive,
                          "", std::move(panel));
}

std::string rocAreaInWords(const RocCurve& curve, const std::string& level, const char* limits) {
  const auto words = [](double area) { return report::fixed(area, 3); };
  std::string said = "area " + words(curve.area.value);
  if (std::isnan(curve.area.lower)) return said;
  return said + " (" + level + " " + limits + words(curve.area.lower) + " to " +
         words(curve.area.upper) + ")";
}

}  // namespace survmeth::analysis
