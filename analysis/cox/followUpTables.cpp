// Tables of what is asked besides the coefficients: proportionality, hazards, residuals.
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/describe.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
namespace key = report::key;
using report::Kind;

}  // namespace

report::Table coxProportionalityTable(const CoxAnswer& answer, const CoxRequest&) {
  const cox::Proportionality& test = answer.zph->test;
  std::vector<std::string> names;
  std::vector<double> chiSquare, degrees, p;
  const auto add = [&](const std::string& name, const cox::ChiSquareTest& each) {
    names.push_back(name);
    chiSquare.push_back(each.chiSquare);
    const bool exists = each.chiSquare == each.chiSquare;
    degrees.push_back(exists ? static_cast<double>(each.degreesOfFreedom) : kNone);
    p.push_back(each.pValue);
  };
  for (const cox::TermTest& each : test.terms) add(answer.terms[each.term], each.test);
  add("all terms", test.global);
  return report::tableOf(
      "proportionality", "Proportional hazards?",
      {report::labelColumn(key::kName, "term", std::move(names)),
       report::numberColumn(key::kChiSquare, "chi-square", Kind::kStatistic, chiSquare),
       report::numberColumn(key::kDegreesOfFreedom, "df", Kind::kCount, degrees),
       report::numberColumn(key::kPValue, "p-value", Kind::kPValue, p)});
}

report::Table coxBaselineTable(const CoxAnswer& answer, const CoxRequest& request) {
  std::vector<std::string> stratum;
  std::vector<double> time, hazard, error, survival;
  for (const CoxBaseline& baseline : answer.baseline) {
    const cox::CumulativeHazard& at = baseline.hazard;
    stratum.insert(stratum.end(), at.time.size(), baseline.stratum);
    time.insert(time.end(), at.time.begin(), at.time.end());
    hazard.insert(hazard.end(), at.hazard.begin(), at.hazard.end());
    error.insert(error.end(), at.standardError.begin(), at.standardError.end());
    for (const double each : at.hazard) survival.push_back(numerics::exp(-each));
  }
  report::Table table = report::tableOf(
      "baseline",
      request.origin == CoxOrigin::kMeans ? "Baseline at the means of the covariates"
                                          : "Baseline at covariates of 0",
      {report::labelColumn(key::kStratum, "stratum", std::move(stratum)),
       report::numberColumn(key::kTime, "time", Kind::kTime, time),
       report::numberColumn(key::kCumulativeHazard, "cumulative hazard", Kind::kEstimate, hazard),
       report::numberColumn(key::kStandardError, "std error", Kind::kEstimate, error),
       report::numberColumn(key::kSurvival, "survival", Kind::kProbability, survival)});
  table.display = report::Display::kFilesOnly;
  return table;
}

report::Table coxResidualTable(const CoxAnswer& answer, const CoxRequest&) {
  const CoxResiduals& residuals = *answer.residuals;
  report::Table table = report::tableOf("residuals", "Residuals", {});
  if (residuals.cluster.empty()) {
    table.columns = {report::numberColumn(key::kLine, "line", Kind::kCount, residuals.line),
                     report::numberColumn(key::kTime, "time", Kind::kTime, residuals.time),
                     report::numberColumn(key::kEvent, "event", Kind::kCount, residuals.event)};
  } else {
    table.caption = "Residuals of clusters";
    table.columns = {report::labelColumn(key::kCluster, "cluster", residuals.cluster)};
  }
  for (const CoxResiduals::Column& column : residuals.columns) {
    const std::string name =
        column.covariate.empty() ? column.kind : column.kind + " " + column.covariate;
    table.columns.push_back(report::numberColumn(name, name, Kind::kEstimate, column.values));
  }
  table.display = report::Display::kFilesOnly;
  return table;
}

}  // namespace survmeth::analysis
