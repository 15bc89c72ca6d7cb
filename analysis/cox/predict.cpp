// The declaration of survmeth predict: its options, and the columns that they need.
#include "analysis/cox/predict.h"

#include <algorithm>
#include <utility>

#include "frame/expression.h"
#include "model/response.h"
#include "numerics/partOfProgress.h"

namespace survmeth::analysis {
namespace {

CoxPredictions fitPredictions(const frame::Frame& data, const CoxPredictRequest& request,
                              numerics::Progress& progress) {
  if (!request.bootstrap) return predictCox(*request.fit, data, request, progress);
  numerics::PartOfProgress own(progress, 0, 20), rest(progress, 1, 20, 20);
  CoxPredictions made = predictCox(*request.fit, data, request, own);
  made.bootstrap = request.bootstrap(data, rest);
  return made;
}

void check(const CoxPredictRequest& request) {
  const std::pair<const char*, bool> ofHazards[] = {{"at", !request.at.empty()},
                                                    {"quantiles", !request.quantiles.empty()},
                                                    {"expected", request.expected},
                                                    {"curves", request.curves},
                                                    {"id", !request.subject.empty()}};
  for (const auto& [option, given] : ofHazards) {
    if (!given || request.fit->hazard) continue;
    throw BadOption(option,
                    "the fit has no survival curve, for its ties are treated exactly; expected a "
                    "fit with --ties efron or breslow");
  }
  if (!request.subject.empty() && !request.fit->entry) {
    throw BadOption("id",
                    "the fit has no entry times, by which rows of a subject follow each other; "
                    "expected a fit of Surv(entry, exit, status)");
  }
  if (request.centre == CoxReference::kStrata && request.fit->strata.empty()) {
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
  auto made = declare<CoxPredictRequest, CoxPredictions>(
      "predict", "Predictions for new data from a saved fit");
  addWishes<CoxPredictRequest, CoxPredictions>(made, "reference",
                                               [](const CoxPredictRequest&) { return true; });
  return made
      .column("id", &CoxPredictRequest::subject, engine::Role::kSubject, labels(), kSubjectHelp)
      .number("alpha", &CoxPredictRequest::alpha, between(0, 1),
              "Significance level; limits have level 1 - A", "A")
      .without("0.05")
      .tables({"predictions", "terms", "expected", "survival", "survivalBootstrap", "quantiles"})
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
