// survmeth roc for programs: JSON and CSV. The layouts are promised in docs/json.md.
#include "cli/rocReport.h"

namespace cli {
namespace {

using survmeth::Estimate;
using survmeth::RocComparison;
using survmeth::RocCurve;
using survmeth::RocThreshold;

// The columns of the table of thresholds, for both forms.
struct ThresholdColumn {
  const char* name;
  double (*value)(const RocThreshold& row);
};
constexpr ThresholdColumn kThresholdColumns[] = {
    {"threshold", [](const RocThreshold& row) { return row.threshold; }},
    {"truePositives", [](const RocThreshold& row) { return row.tp; }},
    {"falsePositives", [](const RocThreshold& row) { return row.fp; }},
    {"falseNegatives", [](const RocThreshold& row) { return row.fn; }},
    {"trueNegatives", [](const RocThreshold& row) { return row.tn; }},
    {"sensitivity", [](const RocThreshold& row) { return row.sensitivity.value; }},
    {"sensitivityLower", [](const RocThreshold& row) { return row.sensitivity.lower; }},
    {"sensitivityUpper", [](const RocThreshold& row) { return row.sensitivity.upper; }},
    {"specificity", [](const RocThreshold& row) { return row.specificity.value; }},
    {"specificityLower", [](const RocThreshold& row) { return row.specificity.lower; }},
    {"specificityUpper", [](const RocThreshold& row) { return row.specificity.upper; }},
    {"youden", [](const RocThreshold& row) { return row.youden; }},
    {"positivePredictiveValue", [](const RocThreshold& row) { return row.positiveValue; }},
    {"negativePredictiveValue", [](const RocThreshold& row) { return row.negativeValue; }},
    {"positiveLikelihoodRatio", [](const RocThreshold& row) { return row.positiveRatio; }},
    {"negativeLikelihoodRatio", [](const RocThreshold& row) { return row.negativeRatio; }},
};
constexpr ThresholdColumn kCostColumn = {"cost", [](const RocThreshold& row) { return row.cost; }};

std::vector<ThresholdColumn> columnsOf(const RocReport& report) {
  std::vector<ThresholdColumn> columns(std::begin(kThresholdColumns), std::end(kThresholdColumns));
  if (report.costs) columns.push_back(kCostColumn);
  return columns;
}

const char* direction(const RocReport& report, std::size_t m) {
  return report.lowerIsPositive[m] ? "low" : "high";
}

Json estimateJson(const Estimate& estimate) {
  return {{"value", number(estimate.value)},
          {"lower", number(estimate.lower)},
          {"upper", number(estimate.upper)}};
}

Json reasonJson(const std::string& reason) { return reason.empty() ? Json() : Json(reason); }

Json cutsJson(const char* what, double value, const RocCurve& curve,
              const std::vector<std::size_t>& cuts) {
  std::vector<double> thresholds;
  for (const std::size_t k : cuts) thresholds.push_back(curve.thresholds[k].threshold);
  return {{what, number(value)}, {"thresholds", numbers(thresholds)}};
}

Json markerJson(const RocReport& report, std::size_t m) {
  const RocCurve& curve = report.result.curves[m];
  Json json;
  json["marker"] = report.markers[m];
  json["positiveWhen"] = direction(report, m);
  json["rows"] = curve.rows;
  json["positives"] = number(curve.positives);
  json["negatives"] = number(curve.negatives);
  json["area"] = estimateJson(curve.area);
  json["standardError"] = number(curve.standardError);
  json["z"] = number(curve.z);
  json["pValue"] = number(curve.pValue);
  json["reason"] = reasonJson(curve.reason);
  const double index =
      curve.best.empty() ? survmeth::kNone : curve.thresholds[curve.best.front()].youden;
  json["best"] = cutsJson("youden", index, curve, curve.best);
  json["leastCost"] =
      report.costs ? cutsJson("cost", curve.leastCost, curve, curve.cheapest) : Json();
  for (const ThresholdColumn& column : columnsOf(report)) {
    std::vector<double> values;
    for (const RocThreshold& row : curve.thresholds) values.push_back(column.value(row));
    json["thresholds"][column.name] = numbers(values);
  }
  return json;
}

std::string areasCsv(const RocReport& report) {
  CsvWriter csv({"marker", "positiveWhen", "rows", "positives", "negatives", "area",
                 "standardError", "lower", "upper", "z", "pValue"});
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    const RocCurve& curve = report.result.curves[m];
    csv.cell(report.markers[m]);
    csv.cell(direction(report, m));
    for (const double value :
         {static_cast<double>(curve.rows), curve.positives, curve.negatives, curve.area.value,
          curve.standardError, curve.area.lower, curve.area.upper, curve.z, curve.pValue}) {
      csv.cell(value);
    }
    csv.endRow();
  }
  return std::move(csv.text());
}

std::string thresholdsCsv(const RocReport& report) {
  CsvWriter csv({"marker"});
  std::string& text = csv.text();
  text.pop_back();
  const std::vector<ThresholdColumn> columns = columnsOf(report);
  for (const ThresholdColumn& column : columns) (text += ',') += column.name;
  text += '\n';
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    for (const RocThreshold& row : report.result.curves[m].thresholds) {
      csv.cell(report.markers[m]);
      for (const ThresholdColumn& column : columns) csv.cell(column.value(row));
      csv.endRow();
    }
  }
  return std::move(text);
}

std::string comparisonsCsv(const RocReport& report) {
  CsvWriter csv({"first", "second", "rows", "positives", "negatives", "firstArea", "secondArea",
                 "difference", "standardError", "lower", "upper", "z", "pValue"});
  for (const RocComparison& pair : report.result.comparisons) {
    csv.cell(report.markers[pair.first]);
    csv.cell(report.markers[pair.second]);
    for (const double value :
         {static_cast<double>(pair.rows), pair.positives, pair.negatives, pair.firstArea,
          pair.secondArea, pair.difference.value, pair.standardError, pair.difference.lower,
          pair.difference.upper, pair.z, pair.pValue}) {
      csv.cell(value);
    }
    csv.endRow();
  }
  return std::move(csv.text());
}

}  // namespace

void addRocJson(const RocReport& report, Json& json) {
  json["columns"] = {{"class", report.classColumn},
                     {"weight", report.weight.empty() ? Json() : Json(report.weight)}};
  json["positive"] = report.positive;
  json["negative"] = report.negative;
  json["alpha"] = number(report.alpha);
  json["interval"] = intervalName(report.interval);
  json["prevalence"] = report.prevalence ? number(*report.prevalence) : Json();
  json["costs"] = Json();
  if (report.costs) {
    json["costs"] = {{"truePositive", number(report.costs->tp)},
                     {"falsePositive", number(report.costs->fp)},
                     {"falseNegative", number(report.costs->fn)},
                     {"trueNegative", number(report.costs->tn)}};
  }
  json["methods"] = rocMethods(report);
  json["markers"] = Json::array();
  for (std::size_t m = 0; m < report.markers.size(); ++m) {
    json["markers"].push_back(markerJson(report, m));
  }
  json["comparisons"] = Json::array();
  for (const RocComparison& pair : report.result.comparisons) {
    json["comparisons"].push_back({{"first", report.markers[pair.first]},
                                   {"second", report.markers[pair.second]},
                                   {"rows", pair.rows},
                                   {"positives", number(pair.positives)},
                                   {"negatives", number(pair.negatives)},
                                   {"firstArea", number(pair.firstArea)},
                                   {"secondArea", number(pair.secondArea)},
                                   {"difference", estimateJson(pair.difference)},
                                   {"standardError", number(pair.standardError)},
                                   {"z", number(pair.z)},
                                   {"pValue", number(pair.pValue)},
                                   {"reason", reasonJson(pair.reason)}});
  }
}

void addRocFiles(const RocReport& report, const std::string& folder, Output& output) {
  output.folder(folder);
  output.file(folder + "/areas.csv", areasCsv(report));
  output.file(folder + "/thresholds.csv", thresholdsCsv(report));
  if (!report.result.comparisons.empty()) {
    output.file(folder + "/comparisons.csv", comparisonsCsv(report));
  }
}

}  // namespace cli
