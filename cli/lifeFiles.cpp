// survmeth life for programs: JSON and CSV. The layouts are promised in docs/json.md.
#include <array>

#include "cli/lifeReport.h"

namespace cli {
namespace {

using survmeth::Comparison;
using survmeth::LifeInterval;
using survmeth::SurvivalCurve;

constexpr std::array<const char*, 3> kTestKeys = {"logRank", "gehanBreslow", "taroneWare"};

Json curveJson(const SurvivalCurve& curve) {
  std::vector<double> errors(curve.time.size());
  for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = curve.standardError(i);
  Json json;
  json["time"] = numbers(curve.time);
  json["atRisk"] = numbers(curve.atRisk);
  json["events"] = numbers(curve.eventsAt);
  json["censored"] = numbers(curve.censoredAt);
  json["survival"] = numbers(curve.survival);
  json["standardError"] = numbers(errors);
  json["lower"] = numbers(curve.lower);
  json["upper"] = numbers(curve.upper);
  return json;
}

// The columns of an actuarial table, for both forms.
struct IntervalColumn {
  const char* name;
  double LifeInterval::*member;
};
constexpr IntervalColumn kIntervalColumns[] = {
    {"lower", &LifeInterval::lower},
    {"upper", &LifeInterval::upper},
    {"entering", &LifeInterval::entering},
    {"events", &LifeInterval::events},
    {"censored", &LifeInterval::censored},
    {"effective", &LifeInterval::effective},
    {"conditional", &LifeInterval::conditional},
    {"survivalAtStart", &LifeInterval::survivalAtStart},
    {"survivalAtEnd", &LifeInterval::survivalAtEnd},
    {"standardError", &LifeInterval::standardError},
    {"lowerLimit", &LifeInterval::lowerLimit},
    {"upperLimit", &LifeInterval::upperLimit},
    {"density", &LifeInterval::density},
    {"densityError", &LifeInterval::densityError},
    {"hazard", &LifeInterval::hazard},
    {"hazardError", &LifeInterval::hazardError},
    {"medianResidual", &LifeInterval::medianResidual},
    {"medianResidualError", &LifeInterval::medianResidualError},
};

Json intervalsJson(const std::vector<LifeInterval>& table) {
  Json json;
  for (const IntervalColumn& column : kIntervalColumns) {
    std::vector<double> values;
    for (const LifeInterval& row : table) values.push_back(row.*column.member);
    json[column.name] = numbers(values);
  }
  return json;
}

Json comparisonJson(const LifeReport& report) {
  const Comparison& comparison = report.result.comparison;
  Json json;
  json["degreesOfFreedom"] = number(comparison.degreesOfFreedom);
  for (std::size_t t = 0; t < kTestKeys.size(); ++t) {
    json[kTestKeys[t]] = {{"chiSquare", number(comparison.tests[t].chiSquare)},
                          {"pValue", number(comparison.tests[t].pValue)}};
  }
  json["reason"] = comparison.reason.empty() ? Json() : Json(comparison.reason);
  json["groups"] = Json::array();
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    json["groups"].push_back({{"group", report.labels[g]},
                              {"included", static_cast<bool>(comparison.included[g])},
                              {"observed", number(comparison.observed[g])},
                              {"expected", number(comparison.expected[g])}});
  }
  return json;
}

std::string summaryCsv(const LifeReport& report) {
  CsvWriter csv({"group", "rows", "n", "events", "censored", "median", "lower", "upper"});
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    const SurvivalCurve& curve = report.result.curves[g];
    csv.cell(report.labels[g]);
    csv.cell(static_cast<double>(curve.rows));
    for (const double value : {curve.n, curve.events, curve.censored, curve.median.value,
                               curve.median.lower, curve.median.upper}) {
      csv.cell(value);
    }
    csv.endRow();
  }
  return std::move(csv.text());
}

std::string curvesCsv(const LifeReport& report) {
  CsvWriter csv({"group", "time", "atRisk", "events", "censored", "survival", "standardError",
                 "lower", "upper"});
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    const SurvivalCurve& curve = report.result.curves[g];
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      csv.cell(report.labels[g]);
      for (const double value :
           {curve.time[i], curve.atRisk[i], curve.eventsAt[i], curve.censoredAt[i],
            curve.survival[i], curve.standardError(i), curve.lower[i], curve.upper[i]}) {
        csv.cell(value);
      }
      csv.endRow();
    }
  }
  return std::move(csv.text());
}

std::string testsCsv(const LifeReport& report) {
  const Comparison& comparison = report.result.comparison;
  CsvWriter csv({"test", "chiSquare", "degreesOfFreedom", "pValue"});
  for (std::size_t t = 0; t < kTestKeys.size(); ++t) {
    csv.cell(kTestKeys[t]);
    csv.cell(comparison.tests[t].chiSquare);
    csv.cell(comparison.degreesOfFreedom);
    csv.cell(comparison.tests[t].pValue);
    csv.endRow();
  }
  return std::move(csv.text());
}

std::string intervalsCsv(const LifeReport& report) {
  CsvWriter csv({"group"});
  std::string& text = csv.text();
  text.pop_back();
  for (const IntervalColumn& column : kIntervalColumns) (text += ',') += column.name;
  text += '\n';
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    for (const LifeInterval& row : report.intervals[g]) {
      csv.cell(report.labels[g]);
      for (const IntervalColumn& column : kIntervalColumns) csv.cell(row.*column.member);
      csv.endRow();
    }
  }
  return std::move(text);
}

}  // namespace

void addLifeJson(const LifeReport& report, Json& json) {
  json["columns"] = {{"time", report.time},
                     {"event", report.event},
                     {"eventLabels", report.eventLabels},
                     {"group", report.group.empty() ? Json() : Json(report.group)},
                     {"weight", report.weight.empty() ? Json() : Json(report.weight)}};
  json["alpha"] = number(report.alpha);
  json["limits"] = limitsName(report.limits);
  json["methods"] = lifeMethods(report);
  json["groups"] = Json::array();
  for (std::size_t g = 0; g < report.labels.size(); ++g) {
    const SurvivalCurve& curve = report.result.curves[g];
    Json group;
    group["group"] = report.labels[g];
    group["rows"] = curve.rows;
    group["n"] = number(curve.n);
    group["events"] = number(curve.events);
    group["censored"] = number(curve.censored);
    group["median"] = {{"value", number(curve.median.value)},
                       {"lower", number(curve.median.lower)},
                       {"upper", number(curve.median.upper)}};
    if (report.table == LifeTableKind::kKaplanMeier) group["kaplanMeier"] = curveJson(curve);
    if (report.table == LifeTableKind::kActuarial) {
      group["actuarial"] = intervalsJson(report.intervals[g]);
    }
    json["groups"].push_back(std::move(group));
  }
  json["comparison"] = report.labels.size() < 2 ? Json() : comparisonJson(report);
}

void addLifeFiles(const LifeReport& report, const std::string& folder, Output& output) {
  output.folder(folder);
  output.file(folder + "/summary.csv", summaryCsv(report));
  output.file(folder + "/kaplan-meier.csv", curvesCsv(report));
  if (report.labels.size() > 1) output.file(folder + "/tests.csv", testsCsv(report));
  if (report.table == LifeTableKind::kActuarial) {
    output.file(folder + "/actuarial.csv", intervalsCsv(report));
  }
}

}  // namespace cli
