// survmeth cox: declaration, run and description.
#include "analysis/cox.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "analysis/coxDesign.h"
#include "analysis/coxModel.h"
#include "analysis/coxTables.h"
#include "frame/labels.h"
#include "model/coding.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Refusal;
using engine::Role;
using report::Kind;
using text::counted;
using text::quote;

enum class Selection { kNone, kBackward };

struct Request {
  std::string time, event, strata;
  std::vector<std::string> eventValues, covariates, factors;
  Selection select = Selection::kNone;
  std::optional<double> remove;
  double alpha = 0.05;
  bool residuals = false, baseline = false;
};

void check(const Request& request) {
  if (request.remove && request.select == Selection::kNone) {
    throw BadOption("remove", "stands without --select backward; expected both or none");
  }
  for (const std::string& name : request.factors) {
    const auto& covariates = request.covariates;
    if (std::find(covariates.begin(), covariates.end(), name) != covariates.end()) continue;
    throw BadOption("factor", quote(name) + " is no covariate; expected one of " +
                                  text::nearestFirst(name, covariates));
  }
}

// A covariate that a person names in --factor is labels whatever its cells look like.
void readFactors(const Request& request, std::vector<frame::Wanted>& wanted) {
  for (frame::Wanted& want : wanted) {
    if (want.cells != frame::Cells::kEither) continue;
    const auto& factors = request.factors;
    if (std::find(factors.begin(), factors.end(), want.name) != factors.end()) {
      want.cells = frame::Cells::kText;
    }
    want.labelsOption = "--factor";
  }
}

CoxAnswer fit(const frame::Frame& data, const Request& request, numerics::Progress& progress) {
  CoxAnswer answer;
  const frame::Column& eventColumn = *data.labels(request.event);
  model::YesNo events = model::yesNoOf(eventColumn, request.eventValues, model::kEvents);
  if (events.labels.empty()) {
    throw Refusal(Role::kEvent, Refusal::kNone, "no row is an event", Refusal::kNone,
                  "at least one event among the complete rows");
  }
  const CoxDesign design = coxDesignOf(data, request.covariates, request.factors);
  answer.references = design.references;
  answer.eventNote = events.note;
  CoxRequest asked;
  asked.time = data.numbers(request.time)->numbers;
  asked.event = events.rows;
  asked.alpha = request.alpha;
  asked.covariates = design.covariates;
  frame::Labels strata;
  if (!request.strata.empty()) {
    strata = frame::labelsOf(*data.labels(request.strata));
    asked.stratum = strata.codes;
    asked.strata = strata.labels.size();
    answer.strata = strata.labels;
  }
  if (request.select == Selection::kBackward) asked.removeAt = request.remove.value_or(0.1);
  asked.baseline = request.baseline;
  asked.residuals = request.residuals;
  progress.at(0);
  try {
    answer.model = coxModel(asked);
  } catch (const NoSuchModel& none) {
    throw Refusal(Role::kRequest, Refusal::kNone, none.what());
  }
  if (request.residuals) {
    for (std::size_t i = 0; i < data.rows; ++i) {
      answer.rows.line.push_back(static_cast<double>(data.lines.line(i)));
      answer.rows.event.push_back(eventColumn.levels[eventColumn.codes[i]]);
    }
    answer.rows.time.assign(asked.time.begin(), asked.time.end());
  }
  return answer;
}

report::Report describe(const CoxAnswer& answer, const Request& request) {
  const CoxModel& model = answer.model;
  const std::string level = report::brief(100 * (1 - request.alpha), 4) + "%";
  report::Report report;
  report.title = "Proportional-hazards regression";
  report.summary = counted(model.events, "event", "events") + " in " +
                   counted(model.n, "row", "rows") + ". All coefficients 0? Likelihood ratio: " +
                   report::pValueInWords(model.likelihoodRatio.pValue) + ".";
  report.facts = {
      {key::kN, "Rows", Kind::kCount, static_cast<double>(model.n)},
      {key::kEvents, "Events", Kind::kCount, static_cast<double>(model.events)},
      {key::kNullLogLikelihood, "Log-likelihood without covariates", Kind::kStatistic,
       model.logLikNull},
      {key::kLogLikelihood, "Log-likelihood", Kind::kStatistic, model.logLik},
      {key::kIterations, "Iterations", Kind::kCount, static_cast<double>(model.iterations)},
      {key::kConcordance, "Concordance (Harrell)", Kind::kProbability, model.concordance}};
  addCoxTables(answer, level, request.select == Selection::kBackward, report);
  if (request.baseline) report.tables.push_back(coxBaselineTable(answer));
  if (request.residuals) report.tables.push_back(coxResidualTable(answer, request.time));
  report.figures = {coxForest(answer, level)};
  report.methods = {{"model: Cox regression, Breslow's treatment of ties",
                     "Cox, J R Stat Soc B 34 (1972) 187-220; Breslow, Biometrics 30 (1974) 89-99"},
                    {"limits: " + level + ", Wald, of the hazard ratio", ""},
                    {"baseline: at the means of the covariates", ""},
                    {"concordance: of the pairs within strata whose order is known, the share in "
                     "which the higher "
                     "risk fails first",
                     "Harrell et al., Stat Med 15 (1996) 361-387"}};
  if (request.select == Selection::kBackward) {
    report.methods.push_back(
        {"selection: backward, the covariate with the largest Wald p-value goes while that is at "
         "least " +
             report::brief(request.remove.value_or(0.1)) +
             "; intervals and p-values after selection are optimistic",
         ""});
  }
  for (const auto& [column, reference] : answer.references) {
    report.methods.push_back({"reference level of " + column + ": " + reference, ""});
  }
  addCoxNotes(answer, report);
  return report;
}

}  // namespace

Declaration coxDeclaration() {
  return declare<Request, CoxAnswer>("cox", "Proportional-hazards (Cox) regression")
      .column("time", &Request::time, Role::kTime, numbersFrom(0), "Column with the times")
      .required()
      .column("event", &Request::event, Role::kEvent, labels(),
              "Column that says which rows are events")
      .required()
      .labels("event-value", &Request::eventValues, "event",
              "The values that are events; all others are censored")
      .columns("covariates", &Request::covariates, Role::kCovariate, either(),
               "Columns of the model, separated by commas")
      .required()
      .texts("factor", &Request::factors, Role::kValue,
             "Covariates whose cells are labels, also where numbers")
      .column("strata", &Request::strata, Role::kStrata, labels(),
              "Column of strata, each with its own baseline")
      .choice("select", &Request::select,
              {{"none", Selection::kNone}, {"backward", Selection::kBackward}},
              "Removal of covariates by their Wald p-values")
      .number("remove", &Request::remove, between(0, 1),
              "Smallest p-value at which a covariate is removed", "P")
      .without("0.1")
      .number("alpha", &Request::alpha, between(0, 1),
              "Significance level; intervals have level 1 - A", "A")
      .without("0.05")
      .table("residuals", &Request::residuals, "residuals",
             "File for martingale, deviance and Schoenfeld residuals (CSV)")
      .table("baseline", &Request::baseline, "baseline",
             "File for the baseline hazard and survival (CSV)")
      .tables({"coefficients", "tests", "removed", "baseline", "residuals"})
      .figures({"hazardRatios"})
      .details(
          "A column with text, and one named in --factor, becomes one indicator for each level "
          "but the first in sorted order, its reference.")
      .example("survmeth cox data/lung.csv --time time --event status --covariates age,sex,ph.ecog")
      .leastRows(2)
      .check(check)
      .adjustColumns(readFactors)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
