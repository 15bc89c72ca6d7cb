#include "analysis/cox/predict.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Dist/Dist"
#include "analysis/limits.h"
#include "model/response.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
namespace cox = engine::cox;
using engine::Refusal;
using engine::Role;
using report::Kind;
using text::counted;
using text::quote;

constexpr std::size_t kShownRows = 100;

// The code that the fit has for each of the new data's strata.
std::vector<std::uint32_t> strataOf(const CoxSaved& fit, const model::ModelData& data) {
  std::vector<std::uint32_t> codes;
  for (std::size_t s = 0; s < data.strataNames.size(); ++s) {
    const auto found = std::find(fit.strata.begin(), fit.strata.end(), data.strataNames[s]);
    if (found == fit.strata.end()) {
      const auto row = std::find(data.stratum.begin(), data.stratum.end(), s);
      throw Refusal(Role::kStrata, static_cast<std::size_t>(row - data.stratum.begin()),
                    "the fit has no stratum " + quote(data.strataNames[s]), Refusal::kNone,
                    "one of " + text::nearestFirst(data.strataNames[s], fit.strata));
    }
    codes.push_back(static_cast<std::uint32_t>(found - fit.strata.begin()));
  }
  return codes;
}

// sqrt(d' V d), columns without a coefficient left out.
double errorOf(const CoxSaved& fit, const std::vector<double>& away) {
  double variance = 0;
  for (std::size_t j = 0; j < away.size(); ++j) {
    for (std::size_t m = 0; m < away.size(); ++m) {
      if (std::isnan(fit.coefficients[j]) || std::isnan(fit.coefficients[m])) continue;
      variance += away[j] * away[m] * fit.covariance(j, m);
    }
  }
  return std::sqrt(variance);
}

void addSurvival(const std::vector<cox::HazardValue>& values, const CoxPredictRequest& request,
                 double z, CoxPredictions& made) {
  for (const cox::HazardValue& value : values) {
    const double survival = numerics::exp(-value.hazard);
    const engine::curves::Interval limits =
        engine::curves::survivalLimits(survival, z * value.standardError, request.limits);
    made.survival.push_back(survival);
    made.survivalError.push_back(survival * value.standardError);
    made.lower.push_back(limits.lower);
    made.upper.push_back(limits.upper);
  }
}

CoxPredictions fitPredictions(const frame::Frame& data, const CoxPredictRequest& request,
                              numerics::Progress&) {
  return predictCox(*request.fit, data, request);
}

void check(const CoxPredictRequest& request) {
  if (request.at.empty() || request.fit->hazard) return;
  throw BadOption("at",
                  "the fit has no survival curve, for its ties are treated exactly; expected a fit "
                  "with --ties efron or breslow");
}

void wantColumns(const CoxPredictRequest& request, const std::vector<std::string>&,
                 std::vector<frame::Wanted>& wanted) {
  for (const frame::Wanted& each : request.fit->columns) wanted.push_back(each);
}

std::vector<std::uint32_t> completeRows(const frame::Frame& data,
                                        const CoxPredictRequest& request) {
  return model::completeRows(request.fit->coding.formula(), data);
}

report::Table riskTable(const CoxPredictions& made, double z, const std::string& level) {
  std::vector<double> risk, lower, upper;
  for (std::size_t i = 0; i < made.line.size(); ++i) {
    const double centre = made.predictor[i], spread = z * made.standardError[i];
    risk.push_back(numerics::exp(centre));
    lower.push_back(numerics::exp(centre - spread));
    upper.push_back(numerics::exp(centre + spread));
  }
  report::Table table =
      report::tableOf("predictions", "Risk relative to the means of the covariates",
                      {report::numberColumn(key::kLine, "line", Kind::kCount, made.line)});
  if (!made.stratum.empty()) {
    table.columns.push_back(report::labelColumn(key::kStratum, "stratum", made.stratum));
  }
  const auto add = [&table](const char* name, const std::string& heading,
                            const std::vector<double>& values) {
    table.columns.push_back(report::numberColumn(name, heading, Kind::kEstimate, values));
  };
  add(key::kLinearPredictor, "linear predictor", made.predictor);
  add(key::kStandardError, "std. error", made.standardError);
  add(key::kRisk, "risk", risk);
  add(key::kLower, level + " lower", lower);
  add(key::kUpper, level + " upper", upper);
  return table;
}

report::Table survivalTable(const CoxPredictions& made, const std::vector<double>& at,
                            const std::string& level) {
  std::vector<double> line, time;
  for (const double each : made.line) {
    line.insert(line.end(), at.size(), each);
    time.insert(time.end(), at.begin(), at.end());
  }
  const auto column = [](const char* name, const std::string& heading,
                         const std::vector<double>& values) {
    return report::numberColumn(name, heading, Kind::kProbability, values);
  };
  return report::tableOf("survival", "Survival",
                         {report::numberColumn(key::kLine, "line", Kind::kCount, line),
                          report::numberColumn(key::kTime, "time", Kind::kTime, time),
                          column(key::kSurvival, "survival", made.survival),
                          column(key::kStandardError, "std. error", made.survivalError),
                          column(key::kLower, level + " lower", made.lower),
                          column(key::kUpper, level + " upper", made.upper)});
}

report::Report describe(const CoxPredictions& made, const CoxPredictRequest& request) {
  const std::string level = report::confidence(request.alpha);
  const double z = InvCDFNormalStd(1 - request.alpha / 2);
  report::Report report;
  report.title = "Predictions of a proportional-hazards fit";
  const auto [least, most] = std::minmax_element(made.predictor.begin(), made.predictor.end());
  report.summary = counted(made.line.size(), "row", "rows") + ". Their risks are " +
                   report::brief(numerics::exp(*least), 3) + " to " +
                   report::brief(numerics::exp(*most), 3) +
                   " times that at the means of the fit's covariates.";
  report.facts = {{key::kLevel, "", Kind::kProbability, 1 - request.alpha}};
  report.tables = {riskTable(made, z, level)};
  report.methods = {
      {"linear predictor: x'b less its value at the means of the fit's covariates, offsets added; "
       "risk: its exponential; limits: " +
           level + ", Wald, of the linear predictor",
       ""}};
  if (!request.at.empty()) {
    report.tables.push_back(survivalTable(made, request.at, level));
    report.methods.push_back(
        {"survival: exp(-H), H the cumulative hazard of the row's stratum at its covariates, by "
         "the fit's treatment of ties; standard error: Tsiatis, with that of the coefficients; "
         "limits: " +
             level + " " + limitsName(request.limits),
         "Tsiatis, Ann Statist 9 (1981) 93-108"});
    const auto absent = std::count_if(made.survival.begin(), made.survival.end(),
                                      [](double survival) { return std::isnan(survival); });
    if (absent > 0) {
      report.notes.push_back(
          {"afterFollowUp",
           counted(static_cast<std::size_t>(absent), "survival is", "survivals are") +
               " unknown: the time is after the last of the fit's stratum",
           {}});
    }
  }
  if (made.line.size() > kShownRows) {
    for (report::Table& table : report.tables) table.display = report::Display::kFilesOnly;
    report.notes.push_back({"manyRows",
                            "more than " + std::to_string(kShownRows) +
                                " rows: the predictions are in --json and --out",
                            {}});
  }
  return report;
}

}  // namespace

CoxPredictions predictCox(const CoxSaved& fit, const frame::Frame& data,
                          const CoxPredictRequest& request) {
  const model::ModelData model = model::modelData(fit.coding, data);
  const engine::Design& design = model.design.design;
  const std::vector<std::uint32_t> codes = strataOf(fit, model);
  const double z = InvCDFNormalStd(1 - request.alpha / 2);
  std::optional<cox::BaselineHazard> hazard;
  if (fit.hazard && !request.at.empty()) hazard.emplace(*fit.hazard);
  CoxPredictions made;
  std::vector<double> x(design.size()), away(design.size());
  for (std::size_t i = 0; i < data.rows; ++i) {
    const double offset = model.offset.empty() ? 0 : model.offset[i];
    double predictor = offset;
    for (std::size_t j = 0; j < x.size(); ++j) {
      x[j] = design.columns[j][i];
      away[j] = x[j] - fit.mean[j];
      if (!std::isnan(fit.coefficients[j])) predictor += away[j] * fit.coefficients[j];
    }
    made.line.push_back(static_cast<double>(data.lines.line(i)));
    if (!codes.empty()) made.stratum.push_back(model.strataNames[model.stratum[i]]);
    made.predictor.push_back(predictor);
    made.standardError.push_back(errorOf(fit, away));
    if (!hazard) continue;
    const std::uint32_t stratum = codes.empty() ? 0 : codes[model.stratum[i]];
    addSurvival(hazard->at(x, offset, stratum, request.at), request, z, made);
  }
  return made;
}

Declaration coxPredictDeclaration() {
  return declare<CoxPredictRequest, CoxPredictions>("predict",
                                                    "Predictions for new data from a saved fit")
      .numbers("at", &CoxPredictRequest::at,
               {.least = 0, .ascending = true, .expected = "ascending numbers not below 0"},
               "Times of predicted survival")
      .choice("conf", &CoxPredictRequest::limits,
              {{"log-log", engine::curves::Scale::kLogLog},
               {"log", engine::curves::Scale::kLog},
               {"plain", engine::curves::Scale::kPlain}},
              "Limits of survival")
      .number("alpha", &CoxPredictRequest::alpha, between(0, 1),
              "Significance level; limits have level 1 - A", "A")
      .without("0.05")
      .tables({"predictions", "survival"})
      .details(
          "The new data have the columns of the fit's covariates and strata. A level or a stratum "
          "that the fit does not know is an error that names it.")
      .example("survmeth predict lung.fit data/lung.csv --at 180,365")
      .follows(&CoxPredictRequest::fit)
      .check(check)
      .adjustColumns(wantColumns)
      .completeRows(completeRows)
      .fit(fitPredictions)
      .describe(describe);
}

}  // namespace survmeth::analysis
