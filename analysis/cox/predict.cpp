// The declaration of survmeth predict: its options, and the columns that they need.
#include "analysis/cox/predict.h"

#include <algorithm>
#include <utility>

#include "frame/expression.h"
#include "model/response.h"

namespace survmeth::analysis {
namespace {

CoxPredictions fitPredictions(const frame::Frame& data, const CoxPredictRequest& request,
                              numerics::Progress& progress) {
  return predictCox(*request.fit, data, request, progress);
}

void check(const CoxPredictRequest& request) {
  const std::pair<const char*, bool> ofHazards[] = {{"at", !request.at.empty()},
                                                    {"quantiles", !request.quantiles.empty()},
                                                    {"expected", request.expected},
                                                    {"curves", request.curves},
                                                    {"id", !request.id.empty()}};
  for (const auto& [option, given] : ofHazards) {
    if (!given || request.fit->hazard) continue;
    throw BadOption(option,
                    "the fit has no survival curve, for its ties are treated exactly; expected a "
                    "fit with --ties efron or breslow");
  }
  if (!request.id.empty() && !request.fit->entry) {
    throw BadOption("id",
                    "the fit has no entry times, by which rows of a subject follow each other; "
                    "expected a fit of Surv(entry, exit, status)");
  }
  if (request.reference == CoxReference::kStrata && request.fit->strata.empty()) {
    throw BadOption("reference", "the fit has no strata; expected means or zero");
  }
}

void wantColumns(const CoxPredictRequest& request, const std::vector<std::string>&,
                 std::vector<frame::Wanted>& wanted) {
  for (const frame::Wanted& each : request.fit->columns) wanted.push_back(each);
  if (!request.needsTimes()) return;
  for (const auto* time : {&request.fit->entry, &request.fit->exit}) {
    if (!*time) continue;
    for (const std::string& name : frame::namesIn(**time)) {
      const bool stands = std::any_of(wanted.begin(), wanted.end(), [&](const frame::Wanted& each) {
        return each.name == name && each.cells == frame::Cells::kNumbers;
      });
      if (!stands) wanted.push_back({.name = name, .cells = frame::Cells::kNumbers});
    }
  }
}

std::vector<std::uint32_t> completeRows(const frame::Frame& data,
                                        const CoxPredictRequest& request) {
  return model::completeRows(coxPredictCoding(*request.fit, request).formula(), data);
}

}  // namespace

Declaration coxPredictDeclaration() {
  return declare<CoxPredictRequest, CoxPredictions>("predict",
                                                    "Predictions for new data from a saved fit")
      .numbers("at", &CoxPredictRequest::at,
               {.least = 0, .ascending = true, .expected = "ascending numbers not below 0"},
               "Times of predicted survival")
      .numbers("quantiles", &CoxPredictRequest::quantiles,
               {.least = 0,
                .most = 1,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers between 0 and 1"},
               "Shares that have failed by the times to be predicted; 0.5: the median", "P,Q")
      .choice("conf", &CoxPredictRequest::limits,
              {{"log-log", engine::curves::Scale::kLogLog},
               {"log", engine::curves::Scale::kLog},
               {"plain", engine::curves::Scale::kPlain}},
              "Limits of survival")
      .number("alpha", &CoxPredictRequest::alpha, between(0, 1),
              "Significance level; limits have level 1 - A", "A")
      .without("0.05")
      .choice("reference", &CoxPredictRequest::reference,
              {{"means", CoxReference::kMeans},
               {"strata", CoxReference::kStrata},
               {"zero", CoxReference::kZero}},
              "Covariates at which linear predictors and terms are 0; strata: means of the row's")
      .flag("terms", &CoxPredictRequest::terms, "Each term's part of the linear predictor")
      .flag("expected", &CoxPredictRequest::expected,
            "Expected events in the time of each row, whose columns are the fit's")
      .column("id", &CoxPredictRequest::id, engine::Role::kSubject, labels(),
              "Column of subjects whose rows follow each other: one curve for each subject")
      .table("curves", &CoxPredictRequest::curves, "curves",
             "File for the curves at all event times (CSV)")
      .tables({"predictions", "terms", "expected", "survival", "quantiles"})
      .longTable("curves", coxCurveTable)
      .figure("predictedSurvival", coxCurveFigure)
      .details(
          "The new data have the columns of the fit's covariates and strata. A level or a stratum "
          "that the fit does not know is an error that names it.")
      .example("survmeth predict lung.fit data/lung.csv --at 180,365")
      .follows(&CoxPredictRequest::fit)
      .check(check)
      .adjustColumns(wantColumns)
      .completeRows(completeRows)
      .fit(fitPredictions)
      .describe(describeCoxPredictions);
}

}  // namespace survmeth::analysis
