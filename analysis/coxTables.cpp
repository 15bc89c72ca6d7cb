#include "analysis/coxTables.h"

#include <algorithm>

#include "analysis/estimate.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using report::Kind;

template <class Member>
report::Column coefficientColumn(const CoxModel& model, const char* key, const std::string& heading,
                                 Kind kind, Member member) {
  return report::columnOf(key, heading, kind, model.coefficients,
                          [member](const CoxCoefficient& c) { return c.*member; });
}

report::Table testTable(const CoxModel& model) {
  const Test* const tests[] = {&model.likelihoodRatio, &model.score, &model.wald};
  const auto column = [&tests](const char* key, const char* heading, Kind kind, auto member) {
    return report::columnOf(key, heading, kind, tests,
                            [member](const Test* test) { return test->*member; });
  };
  return report::tableOf(
      "tests", "All coefficients 0?",
      {report::labelColumn(key::kTest, "test", {"likelihood ratio", "score", "Wald"}),
       column(key::kChiSquare, "chi-square", Kind::kStatistic, &Test::chiSquare),
       column(key::kDegreesOfFreedom, "df", Kind::kCount, &Test::degreesOfFreedom),
       column(key::kPValue, "p-value", Kind::kPValue, &Test::pValue)});
}

report::Table removedTable(const CoxModel& model) {
  const auto column = [&model](const char* key, const char* heading, Kind kind, auto member) {
    return report::columnOf(key, heading, kind, model.removed,
                            [member](const CoxRemoval& removal) { return removal.*member; });
  };
  report::Table table = report::tableOf(
      "removed", "Removed, in order (Wald test at the time)",
      {column(key::kName, "covariate", Kind::kLabel, &CoxRemoval::name),
       column(key::kChiSquare, "chi-square", Kind::kStatistic, &CoxRemoval::chiSquare),
       column(key::kPValue, "p-value", Kind::kPValue, &CoxRemoval::p)});
  if (model.removed.empty()) table.remarks.emplace_back("Nothing was removed.");
  return table;
}

// The factor of which a coefficient is a level, with its reference level; nullptr for numbers.
const std::pair<std::string, std::string>* referenceOf(const CoxAnswer& answer,
                                                       const std::string& name) {
  for (const auto& reference : answer.references) {
    if (name.starts_with(reference.first + "=")) return &reference;
  }
  return nullptr;
}

}  // namespace

void addCoxTables(const CoxAnswer& answer, const std::string& level, bool selected,
                  report::Report& report) {
  const CoxModel& model = answer.model;
  report.tables.push_back(report::tableOf(
      "coefficients", "Coefficients and hazard ratios",
      {coefficientColumn(model, key::kName, "covariate", Kind::kLabel, &CoxCoefficient::name),
       coefficientColumn(model, key::kCoef, "coef", Kind::kEstimate, &CoxCoefficient::coef),
       coefficientColumn(model, key::kStandardError, "std error", Kind::kEstimate,
                         &CoxCoefficient::se),
       coefficientColumn(model, key::kZ, "z", Kind::kStatistic, &CoxCoefficient::z),
       coefficientColumn(model, key::kPValue, "p-value", Kind::kPValue, &CoxCoefficient::p),
       coefficientColumn(model, key::kHazardRatio, "hazard ratio", Kind::kEstimate,
                         &CoxCoefficient::hazardRatio),
       coefficientColumn(model, key::kLower, level + " lower", Kind::kEstimate,
                         &CoxCoefficient::lower),
       coefficientColumn(model, key::kUpper, level + " upper", Kind::kEstimate,
                         &CoxCoefficient::upper),
       report::numberColumn(key::kMean, "mean", Kind::kTime, model.centre)}));
  report.tables.push_back(testTable(model));
  if (selected) report.tables.push_back(removedTable(model));
}

report::Table coxBaselineTable(const CoxAnswer& answer) {
  std::vector<std::string> stratum;
  std::vector<double> time, hazard, survival;
  for (std::size_t s = 0; s < answer.model.baseline.size(); ++s) {
    const CoxBaseline& baseline = answer.model.baseline[s];
    stratum.insert(stratum.end(), baseline.time.size(),
                   answer.strata.empty() ? "all" : answer.strata[s]);
    time.insert(time.end(), baseline.time.begin(), baseline.time.end());
    hazard.insert(hazard.end(), baseline.cumulativeHazard.begin(), baseline.cumulativeHazard.end());
    survival.insert(survival.end(), baseline.survival.begin(), baseline.survival.end());
  }
  report::Table table = report::tableOf(
      "baseline", "Baseline at the means of the covariates",
      {report::labelColumn(key::kStratum, "stratum", std::move(stratum)),
       report::numberColumn(key::kTime, "time", Kind::kTime, time),
       report::numberColumn(key::kCumulativeHazard, "cumulative hazard", Kind::kEstimate, hazard),
       report::numberColumn(key::kSurvival, "survival", Kind::kProbability, survival)});
  table.display = report::Display::kFilesOnly;
  return table;
}

report::Table coxResidualTable(const CoxAnswer& answer, const std::string& time) {
  const CoxModel& model = answer.model;
  report::Table table = report::tableOf(
      "residuals", "Residuals",
      {report::numberColumn(key::kLine, "line", Kind::kCount, answer.rows.line),
       report::numberColumn(key::kTime, time, Kind::kTime, answer.rows.time),
       report::labelColumn(key::kEvent, "event", answer.rows.event),
       report::numberColumn(key::kMartingale, "martingale", Kind::kEstimate, model.martingale),
       report::numberColumn(key::kDeviance, "deviance", Kind::kEstimate, model.deviance)});
  for (std::size_t j = 0; j < model.coefficients.size(); ++j) {
    const std::string& name = model.coefficients[j].name;
    table.columns.push_back(report::numberColumn(std::string(key::kSchoenfeld) + " " + name,
                                                 "Schoenfeld " + name, Kind::kEstimate,
                                                 model.schoenfeld[j]));
  }
  table.display = report::Display::kFilesOnly;
  return table;
}

report::Figure coxForest(const CoxAnswer& answer, const std::string& level) {
  report::Series points;
  points.kind = report::SeriesKind::kPoints;
  report::Panel panel;
  panel.x.label = "hazard ratio (log scale)";
  panel.x.scale = report::Scale::kLog;
  panel.y.scale = report::Scale::kCategory;
  const auto add = [&](const std::string& group, const std::string& category, double ratio,
                       double lower, double upper, const std::string& label) {
    points.x.push_back(ratio);
    points.y.push_back(static_cast<double>(panel.y.categories.size()));
    points.left.push_back(lower);
    points.right.push_back(upper);
    points.labels.push_back(label);
    panel.y.categories.push_back(category);
    panel.y.categoryGroups.push_back(group);
  };
  std::string group;
  for (const CoxCoefficient& c : answer.model.coefficients) {
    if (c.constant) continue;
    std::string category = c.name;
    const auto* const reference = referenceOf(answer, c.name);
    if (reference == nullptr) {
      group.clear();
    } else {
      category = c.name.substr(reference->first.size() + 1);
      if (group != reference->first) {
        group = reference->first;
        add(group, reference->second + " (reference)", 1, kNone, kNone, "1");
      }
    }
    add(group, category, c.hazardRatio, c.lower, c.upper,
        report::brief(c.hazardRatio, 3) + " (" + report::brief(c.lower, 3) + " to " +
            report::brief(c.upper, 3) + ")");
  }
  panel.series.push_back(std::move(points));
  panel.references.push_back({true, 1, ""});
  report::Figure figure;
  figure.id = "hazardRatios";
  figure.title = "Hazard ratios with " + level + " limits";
  for (const auto& [column, reference] : answer.references) {
    figure.caption +=
        (figure.caption.empty() ? "Reference levels: " : ", ") + column + " " + reference;
  }
  figure.panels.push_back(std::move(panel));
  return figure;
}

void addCoxNotes(const CoxAnswer& answer, report::Report& report) {
  const CoxModel& model = answer.model;
  if (!answer.eventNote.empty()) report.notes.push_back({"eventCoding", answer.eventNote, {}});
  std::size_t asked = model.removed.size();
  for (const CoxCoefficient& c : model.coefficients) {
    asked += c.constant ? 0 : 1;
    if (!c.constant) continue;
    report.notes.push_back({"constant",
                            "the covariate " + text::quote(c.name) + " does not vary" +
                                (answer.strata.size() > 1 ? " within any stratum" : "") +
                                " and has no coefficient",
                            {c.name}});
  }
  if (asked > model.events) {
    report.notes.push_back({"moreCovariatesThanEvents",
                            "there are more covariates than events (" + text::grouped(asked) +
                                " and " + text::grouped(model.events) +
                                "): the estimates are unreliable",
                            {}});
  }
}

}  // namespace survmeth::analysis
