#include "analysis/rocTables.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using report::Kind;

// A threshold and the marker it belongs to.
struct Cut {
  std::size_t marker;
  const RocThreshold* row;
};

std::string direction(const RocAnswer& answer, std::size_t marker) {
  return answer.lowerIsPositive[marker] ? "low" : "high";
}

report::Column markerColumn(const RocAnswer& answer, const std::vector<Cut>& cuts) {
  return report::columnOf(key::kMarker, "marker", Kind::kLabel, cuts,
                          [&](const Cut& cut) { return answer.markers[cut.marker]; });
}

report::Column directionColumn(const RocAnswer& answer, const std::vector<Cut>& cuts) {
  return report::columnOf(key::kPositiveWhen, "positive when", Kind::kLabel, cuts,
                          [&](const Cut& cut) { return direction(answer, cut.marker); });
}

template <class Of>
report::Column cutColumn(const char* key, const std::string& heading, Kind kind,
                         const std::vector<Cut>& cuts, Of of) {
  return report::columnOf(key, heading, kind, cuts, [of](const Cut& cut) { return of(*cut.row); });
}

// Sensitivity to likelihood ratios, as both tables of cuts have them.
void addRates(const std::vector<Cut>& cuts, const std::string& level, report::Table& table) {
  const auto add = [&](const char* key, const std::string& heading, Kind kind, auto of) {
    table.columns.push_back(cutColumn(key, heading, kind, cuts, of));
  };
  const auto kind = Kind::kProbability;
  add(key::kSensitivity, "sensitivity", kind, [](const auto& r) { return r.sensitivity.value; });
  add(key::kSensitivityLower, level + " lower", kind,
      [](const auto& r) { return r.sensitivity.lower; });
  add(key::kSensitivityUpper, level + " upper", kind,
      [](const auto& r) { return r.sensitivity.upper; });
  add(key::kSpecificity, "specificity", kind, [](const auto& r) { return r.specificity.value; });
  add(key::kSpecificityLower, level + " lower", kind,
      [](const auto& r) { return r.specificity.lower; });
  add(key::kSpecificityUpper, level + " upper", kind,
      [](const auto& r) { return r.specificity.upper; });
  add(key::kPositivePredictiveValue, "PPV", kind, [](const auto& r) { return r.positiveValue; });
  add(key::kNegativePredictiveValue, "NPV", kind, [](const auto& r) { return r.negativeValue; });
  add(key::kPositiveLikelihoodRatio, "LR+", Kind::kEstimate,
      [](const auto& r) { return r.positiveRatio; });
  add(key::kNegativeLikelihoodRatio, "LR-", Kind::kEstimate,
      [](const auto& r) { return r.negativeRatio; });
}

constexpr auto kThreshold = [](const RocThreshold& row) { return row.threshold; };
constexpr auto kYouden = [](const RocThreshold& row) { return row.youden; };

}  // namespace

report::Table rocAreaTable(const RocAnswer& answer, const std::string& level) {
  const auto& curves = answer.result.curves;
  std::vector<std::string> directions;
  for (std::size_t m = 0; m < curves.size(); ++m) directions.push_back(direction(answer, m));
  const auto column = [&curves](const char* key, const std::string& heading, Kind kind, auto of) {
    return report::columnOf(key, heading, kind, curves, of);
  };
  return report::tableOf(
      "areas", "Area under the curve",
      {report::labelColumn(key::kMarker, "marker", answer.markers),
       report::labelColumn(key::kPositiveWhen, "positive when", std::move(directions)),
       column(key::kRows, "rows", Kind::kCount,
              [](const RocCurve& c) { return static_cast<double>(c.rows); }),
       column(key::kPositives, "positives", Kind::kCount,
              [](const RocCurve& c) { return c.positives; }),
       column(key::kNegatives, "negatives", Kind::kCount,
              [](const RocCurve& c) { return c.negatives; }),
       column(key::kArea, "area", Kind::kProbability,
              [](const RocCurve& c) { return c.area.value; }),
       column(key::kStandardError, "std error", Kind::kProbability,
              [](const RocCurve& c) { return c.standardError; }),
       column(key::kLower, level + " lower", Kind::kProbability,
              [](const RocCurve& c) { return c.area.lower; }),
       column(key::kUpper, level + " upper", Kind::kProbability,
              [](const RocCurve& c) { return c.area.upper; }),
       column(key::kZ, "z", Kind::kStatistic, [](const RocCurve& c) { return c.z; }),
       column(key::kPValue, "p-value", Kind::kPValue, [](const RocCurve& c) { return c.pValue; }),
       column(key::kReason, "why not", Kind::kLabel, [](const RocCurve& c) { return c.reason; })});
}

report::Table rocBestTable(const RocAnswer& answer, const std::string& level) {
  std::vector<Cut> cuts;
  report::Table table = report::tableOf("best", "Best cut by Youden's index", {});
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    const RocCurve& curve = answer.result.curves[m];
    for (const std::size_t k : curve.best) cuts.push_back({m, &curve.thresholds[k]});
    if (!curve.best.empty()) continue;
    table.remarks.push_back("No cut of " + answer.markers[m] + " has an index above 0.");
  }
  table.columns = {markerColumn(answer, cuts), directionColumn(answer, cuts),
                   cutColumn(key::kThreshold, "cut", Kind::kTime, cuts, kThreshold),
                   cutColumn(key::kYouden, "Youden", Kind::kProbability, cuts, kYouden)};
  addRates(cuts, level, table);
  return table;
}

report::Table rocCostTable(const RocAnswer& answer) {
  std::vector<std::string> markers, directions;
  std::vector<double> thresholds, costs;
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    const RocCurve& curve = answer.result.curves[m];
    const auto add = [&](const std::string& when, double threshold) {
      markers.push_back(answer.markers[m]);
      directions.push_back(when);
      thresholds.push_back(threshold);
      costs.push_back(curve.leastCost);
    };
    for (const std::size_t k : curve.cheapest) {
      add(direction(answer, m), curve.thresholds[k].threshold);
    }
    if (curve.cheapest.empty()) add("nobody", kNone);
  }
  return report::tableOf(
      "leastCost", "Least cost",
      {report::labelColumn(key::kMarker, "marker", std::move(markers)),
       report::labelColumn(key::kPositiveWhen, "positive when", std::move(directions)),
       report::numberColumn(key::kThreshold, "cut", Kind::kTime, thresholds),
       report::numberColumn(key::kCost, "cost", Kind::kEstimate, costs)});
}

report::Table rocComparisonTable(const RocAnswer& answer, const std::string& level) {
  const auto& pairs = answer.result.comparisons;
  const auto column = [&pairs](const char* key, const std::string& heading, Kind kind, auto of) {
    return report::columnOf(key, heading, kind, pairs, of);
  };
  const auto kind = Kind::kProbability;
  return report::tableOf(
      "comparisons", "Equal areas?",
      {column(key::kFirst, "first", Kind::kLabel,
              [&](const RocComparison& p) { return answer.markers[p.first]; }),
       column(key::kSecond, "second", Kind::kLabel,
              [&](const RocComparison& p) { return answer.markers[p.second]; }),
       column(key::kRows, "rows", Kind::kCount,
              [](const RocComparison& p) { return static_cast<double>(p.rows); }),
       column(key::kPositives, "positives", Kind::kCount,
              [](const RocComparison& p) { return p.positives; }),
       column(key::kNegatives, "negatives", Kind::kCount,
              [](const RocComparison& p) { return p.negatives; }),
       column(key::kFirstArea, "first area", kind,
              [](const RocComparison& p) { return p.firstArea; }),
       column(key::kSecondArea, "second area", kind,
              [](const RocComparison& p) { return p.secondArea; }),
       column(key::kDifference, "difference", kind,
              [](const RocComparison& p) { return p.difference.value; }),
       column(key::kStandardError, "std error", kind,
              [](const RocComparison& p) { return p.standardError; }),
       column(key::kLower, level + " lower", kind,
              [](const RocComparison& p) { return p.difference.lower; }),
       column(key::kUpper, level + " upper", kind,
              [](const RocComparison& p) { return p.difference.upper; }),
       column(key::kZ, "z", Kind::kStatistic, [](const RocComparison& p) { return p.z; }),
       column(key::kPValue, "p-value", Kind::kPValue,
              [](const RocComparison& p) { return p.pValue; }),
       column(key::kReason, "why not", Kind::kLabel,
              [](const RocComparison& p) { return p.reason; })});
}

report::Table rocThresholdTable(const RocAnswer& answer, const std::string& level, bool shown) {
  std::vector<Cut> cuts;
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    for (const RocThreshold& row : answer.result.curves[m].thresholds) cuts.push_back({m, &row});
  }
  report::Table table = report::tableOf(
      "thresholds", "Thresholds",
      {markerColumn(answer, cuts), directionColumn(answer, cuts),
       cutColumn(key::kThreshold, "cut", Kind::kTime, cuts, kThreshold),
       cutColumn(key::kTruePositives, "tp", Kind::kCount, cuts, [](const auto& r) { return r.tp; }),
       cutColumn(key::kFalsePositives, "fp", Kind::kCount, cuts,
                 [](const auto& r) { return r.fp; }),
       cutColumn(key::kFalseNegatives, "fn", Kind::kCount, cuts,
                 [](const auto& r) { return r.fn; }),
       cutColumn(key::kTrueNegatives, "tn", Kind::kCount, cuts, [](const auto& r) { return r.tn; }),
       cutColumn(key::kYouden, "Youden", Kind::kProbability, cuts, kYouden)});
  addRates(cuts, level, table);
  if (answer.costs) {
    table.columns.push_back(
        cutColumn(key::kCost, "cost", Kind::kEstimate, cuts, [](const auto& r) { return r.cost; }));
  }
  table.partedBy = key::kMarker;
  if (!shown) table.display = report::Display::kFilesOnly;
  return table;
}

report::Figure rocFigure(const RocAnswer& answer, const std::string& classColumn,
                         const std::string& level) {
  // Steps closer than this part of the axes are one in print; large data are thinned to that.
  constexpr double kStep = 1.0 / 2000;
  report::Panel panel;
  panel.equalUnits = true;
  panel.x.label = "1 - specificity";
  panel.y.label = "sensitivity";
  panel.x.least = panel.y.least = 0;
  panel.x.most = panel.y.most = 1;
  for (std::size_t m = 0; m < answer.markers.size(); ++m) {
    const RocCurve& curve = answer.result.curves[m];
    report::Series series;
    series.name = answer.markers[m] + ", area " + report::fixed(curve.area.value, 3);
    if (!std::isnan(curve.area.lower)) {
      series.name += " (" + level + " " + report::fixed(curve.area.lower, 3) + " to " +
                     report::fixed(curve.area.upper, 3) + ")";
    }
    series.x = {0};
    series.y = {0};
    const std::size_t count = curve.thresholds.size();
    for (std::size_t i = 0; i < count; ++i) {
      const RocThreshold& row = curve.thresholds[answer.lowerIsPositive[m] ? i : count - 1 - i];
      const double x = row.fp / curve.negatives, y = row.tp / curve.positives;
      if (i + 1 < count && x - series.x.back() < kStep && y - series.y.back() < kStep) continue;
      series.x.push_back(x);
      series.y.push_back(y);
    }
    panel.series.push_back(std::move(series));
  }
  report::Series chance;
  chance.guide = true;
  chance.x = {0, 1};
  chance.y = {0, 1};
  panel.series.push_back(std::move(chance));
  report::Figure figure;
  figure.id = "roc";
  figure.title = "ROC curves, positive: " + classColumn + " = " + answer.positive;
  figure.panels.push_back(std::move(panel));
  return figure;
}

}  // namespace survmeth::analysis
