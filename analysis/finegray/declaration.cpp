// The declaration of survmeth finegray.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/finegray/finegray.h"
#include "analysis/finegray/predict.h"

namespace survmeth::analysis {

using engine::Role;
using engine::WeightKind;
using engine::cox::TimeTransform;
using engine::finegray::CensoringTies;
using engine::finegray::Errors;

namespace {

// Nothing is drawn along without new data.
void check(const FineGrayRequest& request) {
  if (request.curves && request.newData.empty()) {
    throw BadOption("curves", "stands without --newdata; expected both or none");
  }
}

// What is wanted of new data, beside the fit.
std::shared_ptr<FineGrayPredictRequest> newDataOf(const frame::Frame& data,
                                                  const FineGrayAnswer& answer,
                                                  const FineGrayRequest& request,
                                                  numerics::Progress& progress) {
  auto made = std::make_shared<FineGrayPredictRequest>();
  made->fit = std::make_shared<const FineGraySaved>(fineGraySaved(data, answer, request, progress));
  made->at = request.incidenceTimes;
  made->scale = request.incidenceScale;
  made->alpha = request.alpha;
  made->curves = request.curves;
  return made;
}

}  // namespace

Declaration finegrayDeclaration() {
  return declare<FineGrayRequest, FineGrayAnswer>(
             "finegray", "Regression of subdistribution hazards under competing risks")
      .formula("formula", &FineGrayRequest::formula,
               "Response and terms: Surv(time, status) ~ age + sex + strata(site); docs/formula.md")
      .required()
      .label("censor", &FineGrayRequest::censor, "", "The status of the censored, or none", "CODE")
      .without("0, censored, alive, no or false")
      .label("event", &FineGrayRequest::cause, "", "The type of event; the others compete", "CODE")
      .without("each in turn")
      .texts("factor", &FineGrayRequest::factors, Role::kValue,
             "Covariates whose cells are labels, also where numbers")
      .texts("reference", &FineGrayRequest::references, Role::kValue,
             "Reference levels of factors, as COL=LEVEL; else the first in order", "COL=LEVEL")
      .column("censoring", &FineGrayRequest::censoring, Role::kStrata, labels(),
              "Column of strata with censoring curves of their own")
      .choice("censoring-ties", &FineGrayRequest::censoringTies,
              {{"at-risk", CensoringTies::kAtRisk}, {"after-events", CensoringTies::kAfterEvents}},
              "Whether those with an event are at risk of the censorings of its time")
      .choice("errors", &FineGrayRequest::errors,
              {{"estimated-weights", Errors::kEstimatedWeights}, {"sandwich", Errors::kSandwich}},
              "Whether standard errors count that the censoring curve is an estimate")
      .column("weights", &FineGrayRequest::weights, Role::kWeight, numbersFrom(0),
              "Column with the weights of rows")
      .choice<WeightKind>(
          "weights-are", &FineGrayRequest::weightsAre,
          {{"frequencies", WeightKind::kFrequencies}, {"sampling", WeightKind::kSampling}},
          "What weights mean")
      .column("cluster", &FineGrayRequest::cluster, Role::kCluster, labels(),
              "Column of rows that belong together")
      .flag("cause-specific", &FineGrayRequest::causeSpecific,
            "Also proportional hazards of each type, the others censored")
      .choice<std::optional<TimeTransform>>("zph", &FineGrayRequest::zph,
                                            {{"none", std::nullopt},
                                             {"incidence", TimeTransform::kKaplanMeier},
                                             {"rank", TimeTransform::kRank},
                                             {"identity", TimeTransform::kIdentity},
                                             {"log", TimeTransform::kLog}},
                                            "Test of proportional subdistribution hazards against "
                                            "this function of time")
      .numbers("at", &FineGrayRequest::incidenceTimes,
               {.least = 0, .ascending = true, .expected = "ascending numbers not below 0"},
               "Times of the incidence at the covariates' means and of the new data")
      .choice("conf", &FineGrayRequest::incidenceScale, incidenceScales(), "Limits of incidence")
      .data("newdata", &FineGrayRequest::newData,
            "File of new data, of whose rows the incidence is predicted; read as FILE is, without "
            "--where")
      .newData<FineGrayPredictRequest>(
          newDataOf, {{"save", "newdata"}, {"incidenceAt", "predictedIncidenceAt"}})
      .table("curves", &FineGrayRequest::curves, "curves",
             "File for the curves of the new data at all event times (CSV)")
      .alpha(&FineGrayRequest::alpha)
      .details(
          "The status in Surv(time, status) or Surv(entry, exit, status) is a column whose values "
          "are censoring and the types of events. Without --event each type is fitted in turn, the "
          "others competing. Files hold the incidence at the covariates' means and residuals.")
      .example(
          "survmeth finegray data/pbc.csv --formula 'Surv(time, status) ~ age + log(bili) + "
          "edema' --event 2")
      .tables({"fits", "coefficients", "tests", "proportionality", "incidenceAt", "causeSpecific"})
      .longTable("baseline", fineGrayBaseline)
      .longTable("residuals", fineGrayResiduals)
      .tables({"predictions", "predictedIncidenceAt", "curves"})
      .figure("incidence", fineGrayFigure)
      .figure("schoenfeld", fineGraySchoenfeld)
      .figures({"predictedIncidence"})
      .save<FineGraySaved>(fineGraySaved, writeFineGraySaved, readFineGraySaved,
                           fineGrayPredictDeclaration())
      .leastRows(2)
      .check(check)
      .adjustColumns(wantFineGrayColumns)
      .completeRows(fineGrayRows)
      .fit(fitFineGray)
      .describe(describeFineGray);
}

}  // namespace survmeth::analysis
