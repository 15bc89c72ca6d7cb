#include <memory>
#include <optional>

#include "analysis/all.h"
#include "analysis/cox/describe.h"
#include "analysis/cox/predict.h"
#include "analysis/cox/procedures.h"
#include "analysis/cox/refit.h"
#include "analysis/cox/request.h"
#include "analysis/cox/run.h"
#include "analysis/cox/saved.h"

namespace survmeth::analysis {
namespace {

using engine::Role;
using engine::WeightKind;
using engine::cox::Ties;
using engine::cox::TimeTransform;

struct ClogitRequest : CoxRequest {
  ClogitRequest() {
    cases = true;
    ties = Ties::kDiscrete;
    tieTolerance = 0;
  }
};

Range share() { return between(0, 1); }

// How covariates are coded.
template <class Declaring>
void addCoding(Declaring& made, const char* eventColumn, const char* events) {
  made.labels("event-value", &CoxRequest::eventValues, eventColumn, events)
      .texts("factor", &CoxRequest::factors, Role::kValue,
             "Covariates whose cells are labels, also where numbers")
      .texts("reference", &CoxRequest::references, Role::kValue,
             "Reference levels of factors, as COL=LEVEL; else the first in order", "COL=LEVEL");
}

// What is asked of a fit, and the end of both declarations.
template <class Request>
void addAnswers(Declaring<Request, CoxAnswer>& made) {
  made.template choice<CoxAliased>("aliased", &CoxRequest::aliased,
                                   {{"refuse", CoxAliased::kRefuse}, {"drop", CoxAliased::kDrop}},
                                   "Covariates that follow from those before them")
      .number("alpha", &CoxRequest::alpha, share(),
              "Significance level; intervals have level 1 - A", "A")
      .without("0.05")
      .template choice<CoxLimits>("limits", &CoxRequest::limits,
                                  {{"wald", CoxLimits::kWald}, {"profile", CoxLimits::kProfile}},
                                  "Limits of the ratios")
      .flag("drop-one", &CoxRequest::dropOne, "Likelihood-ratio test of each term")
      .formula("versus", &CoxRequest::versus,
               "Terms of a second model, nested in this one or this one in it: likelihood ratio")
      .table("covariance", &CoxRequest::covariance, "covariance",
             "File for the covariance of the coefficients (CSV)");
}

// What is wanted of new data, beside the fit.
std::shared_ptr<CoxPredictRequest> newDataOf(const frame::Frame& data, const CoxAnswer& answer,
                                             const CoxRequest& request, numerics::Progress&) {
  auto made = std::make_shared<CoxPredictRequest>();
  static_cast<CoxWishes&>(*made) = request;
  made->alpha = request.alpha;
  made->fit = std::make_shared<const CoxSaved>(coxSaved(data, answer, request));
  if (request.bootstrap && !request.at.empty()) {
    made->bootstrapLimits = coxBootstrapLimits(request);
    // The request lasts no longer than the fit and its data.
    made->bootstrap = [&data, &answer, &request](const frame::Frame& newData,
                                                 numerics::Progress& progress) {
      return bootstrapSurvival(data, request, answer, newData, request, progress);
    };
  }
  return made;
}

template <class Request>
Declaration ended(Declaring<Request, CoxAnswer>& made) {
  return made.leastRows(2)
      .check(checkCox)
      .adjustColumns(wantCoxColumns)
      .completeRows(coxRows)
      .fit(fitCox)
      .describe(describeCox);
}

}  // namespace

Declaration coxDeclaration() {
  auto made = declare<CoxRequest, CoxAnswer>("cox", "Proportional-hazards (Cox) regression");
  made.formula("formula", &CoxRequest::formula,
               "Response and terms: Surv(time, status) ~ age + sex + strata(site); docs/formula.md")
      .column("time", &CoxRequest::time, Role::kTime, numbersFrom(0),
              "Column with the times, in place of a formula")
      .column("event", &CoxRequest::event, Role::kEvent, labels(),
              "Column that says which rows are events, likewise")
      .column("entry", &CoxRequest::entry, Role::kEntry, numbers(),
              "Column with the times from which on rows are at risk, likewise")
      .columns("covariates", &CoxRequest::covariates, Role::kCovariate, either(),
               "Columns of the model, separated by commas, likewise")
      .column("strata", &CoxRequest::strata, Role::kStrata, labels(),
              "Column of strata, each with its own baseline, likewise");
  addCoding(made, "event", "The values that are events; all others are censored");
  made.choice("ties", &CoxRequest::ties,
              {{"efron", Ties::kEfron},
               {"breslow", Ties::kBreslow},
               {"discrete", Ties::kDiscrete},
               {"marginal", Ties::kMarginal}},
              "Treatment of events at one time")
      .number("tie-tolerance", &CoxRequest::tieTolerance,
              {.least = 0, .expected = "a number not below 0"},
              "Difference up to which times are one, also in units of their mean; 0: equal only")
      .without("1.49e-08")
      .column("weights", &CoxRequest::weights, Role::kWeight, numbersFrom(0),
              "Column with the weights of rows")
      .choice("weights-are", &CoxRequest::weightsAre,
              {{"frequencies", WeightKind::kFrequencies}, {"sampling", WeightKind::kSampling}},
              "What weights mean; sampling implies a robust covariance")
      .column("cluster", &CoxRequest::cluster, Role::kCluster, labels(),
              "Column of rows that belong together; implies a robust covariance")
      .flag("robust", &CoxRequest::robust, "Robust covariance, by cluster, subject or row")
      .column("id", &CoxRequest::id, Role::kSubject, labels(),
              "Column of subjects of several rows, which may not overlap; a cluster where one has "
              "several events");
  addAnswers(made);
  made.choice("zph", &CoxRequest::zph,
              {{"none", std::nullopt},
               {"km", TimeTransform::kKaplanMeier},
               {"rank", TimeTransform::kRank},
               {"identity", TimeTransform::kIdentity},
               {"log", TimeTransform::kLog}},
              "Test of proportional hazards against this function of time")
      .table("residuals", &CoxRequest::residuals, "residuals", "File for residuals (CSV)")
      .texts("residual-kinds", &CoxRequest::residualKinds, Role::kValue,
             "Some of martingale, deviance, score, schoenfeld, scaledSchoenfeld, dfbeta, dfbetas")
      .without("martingale,deviance,schoenfeld")
      .flag("by-cluster", &CoxRequest::byCluster, "Residuals summed by cluster or subject")
      .table("baseline", &CoxRequest::baseline, "baseline",
             "File for the baseline hazard and survival (CSV)")
      .choice("baseline-at", &CoxRequest::origin,
              {{"means", CoxOrigin::kMeans}, {"zero", CoxOrigin::kZero}},
              "Covariates of the baseline")
      .choice("select", &CoxRequest::select,
              {{"none", CoxSelection::kNone},
               {"backward", CoxSelection::kBackward},
               {"forward", CoxSelection::kForward},
               {"both", CoxSelection::kBoth}},
              "Selection of terms")
      .text("criterion", &CoxRequest::criterion, Role::kValue,
            "What decides: p (Wald tests), aic or bic", "KIND")
      .without("p")
      .number("remove", &CoxRequest::remove, share(), "Smallest p-value at which a term is removed",
              "P")
      .without("0.1")
      .number("enter", &CoxRequest::enter, share(), "Below this p-value a term comes in", "P")
      .without("0.05")
      .texts("force", &CoxRequest::force, Role::kValue, "Terms that stay in the model", "TERM,TERM")
      .number("bootstrap", &CoxRequest::bootstrap, wholeFrom(2),
              "Replicates of the bootstrap of the coefficients and of survival at --at; clusters "
              "are drawn whole",
              "B")
      .number("seed", &CoxRequest::seed, wholeFrom(0), "Seed of the bootstrap", "N")
      .without("1")
      .text("bootstrap-limits", &CoxRequest::bootstrapLimits, Role::kValue,
            "Its limits: percentile, basic or bca", "KIND")
      .without("percentile")
      .flag("firth", &CoxRequest::firth,
            "Penalise by the information's determinant (Firth): every estimate is finite")
      .number("ridge", &CoxRequest::ridge, {.least = 0, .expected = "a number not below 0"},
              "Ridge of this size on all coefficients, in standard deviations of their columns",
              "THETA")
      .flag("ridge-raw", &CoxRequest::ridgeRaw, "The ridge on coefficients as they are")
      .data(
          "newdata", &CoxRequest::newData,
          "File of new data, of whose rows risk, survival and more are predicted; read as FILE is, "
          "without --where")
      .newData<CoxPredictRequest>(newDataOf, {{"save", "newdata"},
                                              {"reference", "newdata-reference"},
                                              {"id", "newdata-id"},
                                              {"terms", "predictedTerms"}});
  addWishes<CoxRequest, CoxAnswer>(made, "newdata-reference", [](const CoxRequest& request) {
    return !request.newData.empty();
  });
  made.text("newdata-id", &CoxRequest::subject, Role::kValue, kSubjectHelp, "COL");
  made.tables({"coefficients", "tests", "terms", "dropOne", "versus", "steps", "selected",
               "bootstrap", "proportionality", "covariance", "baseline", "residuals"})
      .tables({"predictions", "predictedTerms", "expected", "survival", "survivalBootstrap",
               "quantiles", "curves"})
      .figures({"hazardRatios", "schoenfeld", "predictedSurvival"})
      .details(
          "The model is a formula, or --time, --event and --covariates. A column with text, one in "
          "C(...) and one named in --factor or --reference becomes one indicator for each level "
          "but its reference. \".\" stands for all columns that neither the formula nor an option "
          "names.")
      .example(
          "survmeth cox data/lung.csv --formula 'Surv(time, status) ~ age + sex + ph.ecog' --zph "
          "km");
  made.save<CoxSaved>(
      [](const frame::Frame& data, const CoxAnswer& answer, const CoxRequest& request,
         numerics::Progress&) { return coxSaved(data, answer, request); },
      writeCoxSaved, readCoxSaved, coxPredictDeclaration());
  return ended(made);
}

Declaration clogitDeclaration() {
  auto made = declare<ClogitRequest, CoxAnswer>("clogit",
                                                "Conditional logistic regression of matched sets");
  made.formula("formula", &CoxRequest::formula,
               "Cases and terms: case ~ exposure + strata(set); docs/formula.md")
      .required();
  addCoding(made, "", "The values that are cases; all others are controls");
  addAnswers(made);
  made.tables({"coefficients", "tests", "terms", "dropOne", "versus", "covariance"})
      .figures({"oddsRatios"})
      .details(
          "The likelihood of each set is that of its cases given how many there are: the exact "
          "partial likelihood of proportional hazards at one time. Sets in which all are cases, or "
          "none is, say nothing.")
      .example(
          "survmeth clogit data/infert.csv --formula 'case ~ spontaneous + induced + "
          "strata(stratum)'");
  return ended(made);
}

}  // namespace survmeth::analysis
