// What survmeth predict says.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Dist/Dist"
#include "analysis/cox/predict.h"
#include "analysis/limits.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::cox::HazardValue;
using report::Kind;
using text::counted;

constexpr std::size_t kShownRows = 100;

report::Column lineColumn(const CoxPredictions& made) {
  return report::numberColumn(key::kLine, "line", Kind::kCount, made.line);
}

std::string referenceName(CoxReference reference) {
  switch (reference) {
    case CoxReference::kMeans:
      return "the means of the fit's covariates";
    case CoxReference::kStrata:
      return "the means of the covariates in the row's stratum";
    case CoxReference::kZero:
      break;
  }
  return "covariates of 0";
}

report::Table riskTable(const CoxPredictions& made, const CoxPredictRequest& request, double z,
                        const std::string& level) {
  std::vector<double> risk, lower, upper;
  for (std::size_t i = 0; i < made.line.size(); ++i) {
    const double centre = made.predictor[i], spread = z * made.standardError[i];
    risk.push_back(numerics::exp(centre));
    lower.push_back(numerics::exp(centre - spread));
    upper.push_back(numerics::exp(centre + spread));
  }
  const std::string to = request.centre == CoxReference::kMeans ? "the means of the covariates"
                                                                : referenceName(request.centre);
  report::Table table =
      report::tableOf("predictions", "Risk relative to " + to, {lineColumn(made)});
  if (!made.stratum.empty()) {
    table.columns.push_back(report::labelColumn(key::kStratum, "stratum", made.stratum));
  }
  const auto add = [&table](const char* name, const std::string& heading,
                            const std::vector<double>& values) {
    table.columns.push_back(report::numberColumn(name, heading, Kind::kEstimate, values));
  };
  add(key::kLinearPredictor, "linear predictor", made.predictor);
  add(key::kStandardError, "std error", made.standardError);
  add(key::kRisk, "risk", risk);
  add(key::kLower, level + " lower", lower);
  add(key::kUpper, level + " upper", upper);
  return table;
}

report::Table termTable(const CoxPredictions& made) {
  std::vector<double> line, value, error;
  std::vector<std::string> name;
  for (std::size_t i = 0; i < made.line.size(); ++i) {
    for (const CoxPredictedTerm& term : made.terms) {
      line.push_back(made.line[i]);
      name.push_back(term.name);
      value.push_back(term.value[i]);
      error.push_back(term.standardError[i]);
    }
  }
  return report::tableOf(
      "terms", "Parts of the linear predictor",
      {report::numberColumn(key::kLine, "line", Kind::kCount, line),
       report::labelColumn(key::kName, "term", std::move(name)),
       report::numberColumn(key::kEstimate, "part", Kind::kEstimate, value),
       report::numberColumn(key::kStandardError, "std error", Kind::kEstimate, error)});
}

report::Table expectedTable(const CoxPredictions& made) {
  const auto of = [&made](const char* key, const char* heading, Kind kind, auto cell) {
    return report::columnOf(key, heading, kind, made.expected, cell);
  };
  return report::tableOf(
      "expected", "Expected events in the time of each row",
      {lineColumn(made), of(key::kExpected, "expected", Kind::kEstimate, &HazardValue::hazard),
       of(key::kStandardError, "std error", Kind::kEstimate, &HazardValue::standardError),
       of(key::kSurvival, "survival", Kind::kProbability,
          [](const HazardValue& each) { return numerics::exp(-each.hazard); })});
}

// Columns of points: a time, the survival with its error and limits, the hazard likewise.
void addSurvivalColumns(const std::vector<const CoxSurvival*>& points, const std::string& level,
                        report::Table& table) {
  const auto add = [&](const char* name, const std::string& heading, Kind kind,
                       double CoxSurvival::*member) {
    table.columns.push_back(report::columnOf(
        name, heading, kind, points, [member](const CoxSurvival* each) { return each->*member; }));
  };
  add(key::kTime, "time", Kind::kTime, &CoxSurvival::time);
  add(key::kSurvival, "survival", Kind::kProbability, &CoxSurvival::survival);
  add(key::kStandardError, "std error", Kind::kProbability, &CoxSurvival::error);
  add(key::kLower, level + " lower", Kind::kProbability, &CoxSurvival::lower);
  add(key::kUpper, level + " upper", Kind::kProbability, &CoxSurvival::upper);
  add(key::kCumulativeHazard, "cum. hazard", Kind::kEstimate, &CoxSurvival::hazard);
  add(key::kCumulativeHazardStandardError, "its error", Kind::kEstimate, &CoxSurvival::hazardError);
  add(key::kCumulativeHazardLower, "its lower", Kind::kEstimate, &CoxSurvival::hazardLower);
  add(key::kCumulativeHazardUpper, "its upper", Kind::kEstimate, &CoxSurvival::hazardUpper);
}

report::Table survivalTable(const CoxPredictions& made, const CoxPredictRequest& request,
                            const std::string& level) {
  std::vector<std::string> who;
  std::vector<const CoxSurvival*> points;
  for (std::size_t i = 0; i < made.at.size(); ++i) {
    for (const CoxSurvival& each : made.at[i]) {
      who.push_back(made.who[i]);
      points.push_back(&each);
    }
  }
  report::Table table = report::tableOf("survival", "Survival", {coxWhoColumn(request, who)});
  addSurvivalColumns(points, level, table);
  return table;
}

report::Table quantileTable(const CoxPredictions& made, const CoxPredictRequest& request,
                            const std::string& level) {
  using engine::curves::Quantile;
  std::vector<std::string> who;
  std::vector<Quantile> all;
  for (std::size_t i = 0; i < made.quantiles.size(); ++i) {
    for (const Quantile& each : made.quantiles[i]) {
      who.push_back(made.who[i]);
      all.push_back(each);
    }
  }
  return report::rowsOf("quantiles", "Times by which a share has failed", all)
      .with(coxWhoColumn(request, who))
      .column(key::kProbability, "share", Kind::kProbability, &Quantile::probability)
      .column(key::kTime, "time", Kind::kTime, &Quantile::time)
      .limits(level, Kind::kTime, [](const Quantile& each) { return each; })
      .table();
}

std::vector<report::Method> methodsOf(const CoxPredictRequest& request, const std::string& level) {
  std::vector<report::Method> methods = {
      {"linear predictor: x'b less its value at " + referenceName(request.centre) +
           ", offsets added; risk: its exponential; limits: " + level +
           ", Wald, of the linear predictor",
       ""}};
  if (request.parts) {
    methods.push_back({"terms: the term's part of x'b less that at " +
                           referenceName(request.centre) +
                           "; its standard error is that of "
                           "this difference",
                       ""});
  }
  if (!request.at.empty() || !request.quantiles.empty() || request.curves ||
      !request.subject.empty()) {
    methods.push_back(
        {"survival: exp(-H), H the cumulative hazard of the row's stratum at its covariates, by "
         "the fit's treatment of ties; standard error: Tsiatis, with that of the coefficients; "
         "limits: " +
             level + " " + limitsName(request.survivalLimits) + ", of H minus their logarithms",
         "Tsiatis, Ann Statist 9 (1981) 93-108"});
  }
  if (!request.subject.empty()) {
    methods.push_back(
        {"subjects: H gathers along the subject's rows, each in (entry, exit] with its covariates; "
         "survival is that of a subject at risk from its first entry on",
         "Andersen & Gill, Ann Statist 10 (1982) 1100-1120"});
  }
  if (!request.quantiles.empty()) {
    methods.push_back(
        {"quantiles: where survival falls to one less the share, the middle where it "
         "runs there; limits: where the limits of survival do",
         "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"});
  }
  if (request.bootstrap) {
    methods.push_back(
        {"bootstrapped survival: of fits of the rows drawn, of which knots and centres are learnt "
         "anew; a replicate that ends before the time does not count",
         "Davison & Hinkley, Bootstrap Methods and their Application (1997), ch. 5"});
  }
  if (request.expected) {
    methods.push_back({"expected events: the cumulative hazard of the row in its time at risk",
                       "Therneau & Grambsch, Modeling Survival Data (2000), 10.2"});
  }
  return methods;
}

// Survivals and expectations after the last time of the fit.
void noteAbsent(const CoxPredictions& made, const CoxPredictRequest& request,
                report::Report& report) {
  std::size_t survivals = 0, expectations = 0;
  for (const auto& times : made.at) {
    for (const CoxSurvival& each : times) survivals += std::isnan(each.survival) ? 1 : 0;
  }
  for (const HazardValue& each : made.expected) expectations += std::isnan(each.hazard) ? 1 : 0;
  if (survivals > 0) {
    report.notes.push_back({"afterFollowUp",
                            counted(survivals, "survival is", "survivals are") +
                                " unknown: the time is after the last of the " +
                                (request.subject.empty() ? "" : "subject, or of the ") +
                                "fit's stratum",
                            {}});
  }
  if (expectations > 0) {
    report.notes.push_back({"afterFollowUp",
                            counted(expectations, "expectation is", "expectations are") +
                                " unknown: the row ends after the last time of the fit's stratum",
                            {}});
  }
}

}  // namespace

report::Report describeCoxPredictions(const CoxPredictions& made,
                                      const CoxPredictRequest& request) {
  const std::string level = report::confidence(request.alpha);
  const double z = InvCDFNormalStd(1 - request.alpha / 2);
  report::Report report;
  report.title = "Predictions of a proportional-hazards fit";
  const auto [least, most] = std::minmax_element(made.predictor.begin(), made.predictor.end());
  report.summary = counted(made.line.size(), "row", "rows");
  if (!request.subject.empty()) {
    report.summary += " of " + counted(made.who.size(), "subject", "subjects");
  }
  report.summary += ". Their risks are " + report::brief(numerics::exp(*least), 3) + " to " +
                    report::brief(numerics::exp(*most), 3) + " times that at " +
                    referenceName(request.centre) + ".";
  report.facts = {report::levelFact(request.alpha)};
  report.tables = {riskTable(made, request, z, level)};
  if (request.parts) report.tables.push_back(termTable(made));
  if (request.expected) report.tables.push_back(expectedTable(made));
  if (!request.at.empty()) report.tables.push_back(survivalTable(made, request, level));
  if (made.bootstrap) report.tables.push_back(coxSurvivalBootstrapTable(made, request));
  if (!request.quantiles.empty()) report.tables.push_back(quantileTable(made, request, level));
  report.methods = methodsOf(request, level);
  noteAbsent(made, request, report);
  if (made.line.size() > kShownRows) {
    for (report::Table& table : report.tables) table.display = report::Display::kFilesOnly;
    report.notes.push_back({"manyRows",
                            "more than " + std::to_string(kShownRows) +
                                " rows: the predictions are in --json and --out",
                            {}});
  }
  return report;
}

std::optional<report::Table> coxCurveTable(const CoxPredictions& made,
                                           const CoxPredictRequest& request) {
  if (!request.curves) return std::nullopt;
  std::vector<std::string> who, stratum;
  std::vector<const CoxSurvival*> points;
  for (const CoxPredictedCurve& curve : made.curves) {
    for (const CoxSurvival& point : curve.points) {
      who.push_back(curve.name);
      stratum.push_back(curve.stratum);
      points.push_back(&point);
    }
  }
  report::Table table =
      report::tableOf("curves", "Survival at every event time", {coxWhoColumn(request, who)});
  if (!made.stratum.empty()) {
    table.columns.push_back(report::labelColumn(key::kStratum, "stratum", std::move(stratum)));
  }
  addSurvivalColumns(points, report::confidence(request.alpha), table);
  return table;
}

}  // namespace survmeth::analysis
