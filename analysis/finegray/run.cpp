#include "analysis/cox/run.h"

#include <algorithm>
#include <utility>

#include "analysis/finegray/finegray.h"
#include "analysis/option.h"
#include "engine/curves/limits.h"
#include "engine/finegray/hazards.h"
#include "frame/labels.h"
#include "numerics/partOfProgress.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace finegray = engine::finegray;
using engine::Refusal;
using engine::Role;
using text::quote;

// The formula with its status column taken out, which has more values than yes and no.
model::Formula formulaOf(const FineGrayRequest& request, const std::vector<std::string>& columns,
                         std::string& status) {
  model::Formula formula = coxFormula(request, columns);
  if (!formula.event || formula.event->kind != frame::Expression::Kind::kName) {
    throw BadOption("formula",
                    "the status is no column by itself; expected Surv(time, status) ~ terms, the "
                    "type of event in --event");
  }
  status = formula.event->text;
  formula.event.reset();
  return formula;
}

// Labels that a person names are never taken for missing.
CoxRequest withNames(const FineGrayRequest& request) {
  CoxRequest named = request;
  for (const std::string* label : {&request.cause, &request.censor}) {
    if (!label->empty()) named.eventValues.push_back(*label);
  }
  return named;
}

// Columns as the engine takes them.
struct Input {
  model::Coding coding;
  model::ModelData model;
  std::vector<std::uint32_t> event;    // causes 1, 2, ... in the order of the statuses
  std::vector<std::uint32_t> causeOf;  // of each status
  frame::Labels cluster, censoring;
  engine::Response response;
  engine::Rows rows;
  finegray::Groups groups;
};

void takeRows(const frame::Frame& data, const FineGrayRequest& request, Input& input) {
  input.rows = input.model.rows();
  input.rows.weightKind = request.weightsAre;
  if (!request.weights.empty()) {
    input.rows.weight = data.numbers(request.weights)->numbers;
    const auto& weight = input.rows.weight;
    if (std::none_of(weight.begin(), weight.end(), [](double w) { return w > 0; })) {
      throw Refusal(Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
                    "at least one above 0");
    }
  }
  if (!request.cluster.empty()) {
    input.cluster = frame::labelsOf(*data.labels(request.cluster));
    input.rows.cluster = input.cluster.codes;
    input.rows.clusters = input.cluster.labels.size();
  }
  if (!request.censoring.empty()) {
    input.censoring = frame::labelsOf(*data.labels(request.censoring));
    input.groups = {input.censoring.codes, input.censoring.labels.size()};
  }
}

void takeEvents(const model::EventTypes& event, Input& input) {
  std::uint32_t causes = 0;
  input.causeOf.assign(event.status.labels.size(), 0);
  for (std::size_t status = 0; status < input.causeOf.size(); ++status) {
    if (event.censored != status) input.causeOf[status] = ++causes;
  }
  for (const std::uint32_t each : event.events) {
    input.event.push_back(each == 0 ? 0 : input.causeOf[each - 1]);
  }
  input.response = {input.model.entry.numbers, input.model.exit.numbers, input.event,
                    std::max(causes, 1u)};
}

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += i + 1 < names.size() ? ", " : " and ";
    list += quote(names[i]);
  }
  return list;
}

void requireAnswer(const std::string& label, const std::vector<engine::Outcome>& outcomes) {
  if (outcomes.empty()) return;
  const engine::Outcome& outcome = outcomes.front();
  const std::string of = "event " + quote(label) + ": ";
  if (outcome.code == "collinear") {
    const bool constant = outcome.names.size() == 1;
    throw Refusal(
        Role::kFormula, Refusal::kNone,
        of + "the covariate " + quote(outcome.names[0]) +
            (constant
                 ? " does not vary among those at risk at its events"
                 : " follows from " + listed({outcome.names.begin() + 1, outcome.names.end()})),
        Refusal::kNone, constant ? "covariates that vary" : "a model without one of them");
  }
  if (outcome.code == "separated") {
    throw Refusal(Role::kFormula, Refusal::kNone,
                  of + "the likelihood rises without end along " + listed(outcome.names) +
                      ": at every event the row that fails stands out by it",
                  Refusal::kNone, "a model without it");
  }
  throw Refusal(Role::kRequest, Refusal::kNone, of + outcome.text);
}

engine::cox::Fit causeSpecific(const Input& input, std::uint32_t cause,
                               numerics::Progress& progress) {
  std::vector<std::uint32_t> event;
  for (const std::uint32_t each : input.event) event.push_back(each == cause ? 1 : 0);
  engine::cox::Options options;
  options.tieTolerance = 0;
  options.dropAliased = true;
  return engine::cox::fit({input.response.entry, input.response.exit, event, 1}, input.rows,
                          input.model.design.design, options, progress);
}

std::vector<double> meansOf(const Input& input) {
  std::vector<double> means;
  for (const std::span<const double> column : input.model.design.design.columns) {
    double weights = 0, sum = 0;
    for (std::size_t i = 0; i < column.size(); ++i) {
      const double weight = input.rows.weight.empty() ? 1 : input.rows.weight[i];
      weights += weight;
      sum += weight * column[i];
    }
    means.push_back(sum / weights);
  }
  return means;
}

FineGrayProportionality proportionalityOf(const FineGrayRequest& request, const finegray::Fit& fit,
                                          numerics::Progress& progress) {
  FineGrayProportionality result;
  result.test = finegray::testProportionality(fit, *request.zph, progress);
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  for (const engine::cox::TermResiduals& term : result.test.scaledTerms) {
    result.smooth.push_back(smoothOf(result.test.transformed, term.value, term.variance, z));
  }
  return result;
}

void takeIncidences(const FineGrayRequest& request, const FineGrayAnswer& answer,
                    FineGrayOfType& type, numerics::Progress& progress) {
  const engine::cox::BaselineHazard& hazard = type.hazard(progress);
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  for (const std::uint32_t stratum : hazard.strata()) {
    const auto values = hazard.at(answer.means, 0, stratum, request.incidenceTimes);
    std::vector<IncidenceAtTime>& at = type.at.emplace_back();
    for (std::size_t i = 0; i < values.size(); ++i) {
      at.push_back(incidenceOf(request.incidenceTimes[i], values[i], z, request.incidenceScale));
    }
  }
}

}  // namespace

void wantFineGrayColumns(const FineGrayRequest& request, const std::vector<std::string>& header,
                         std::vector<frame::Wanted>& wanted) {
  std::string status;
  formulaOf(request, header, status);
  wantCoxColumns(withNames(request), header, wanted);
}

std::vector<std::uint32_t> fineGrayRows(const frame::Frame& data, const FineGrayRequest& request) {
  return coxRows(data, request);
}

FineGrayAnswer fitFineGray(const frame::Frame& data, const FineGrayRequest& request,
                           numerics::Progress& progress) {
  FineGrayAnswer answer;
  Input input;
  const model::Formula formula = formulaOf(request, frame::columnNames(data), answer.status);
  answer.event = model::eventTypesOf(*data.labels(answer.status), request.censor, request.cause);
  input.coding = model::Coding::learn(formula, data, coxCoding(request));
  requireCoxLevels(request, input.coding);
  input.model = model::modelData(input.coding, data);
  requireCoxUnits(input.model.design.design);
  takeRows(data, request, input);
  takeEvents(answer.event, input);
  answer.names = input.model.design.design.names;
  answer.terms = input.model.design.design.termNames;
  answer.strata = input.model.strataNames;
  answer.means = meansOf(input);
  answer.coding = input.coding;
  answer.alpha = request.alpha;
  const std::size_t count = answer.event.types.size();
  for (std::size_t i = 0; i < count; ++i) {
    numerics::PartOfProgress part(progress, i, count);
    FineGrayOfType& type = answer.types.emplace_back();
    type.label = answer.event.status.labels[answer.event.types[i]];
    finegray::Options options;
    options.cause = input.causeOf[answer.event.types[i]];
    options.censoringTies = request.censoringTies;
    options.errors = request.errors;
    const std::size_t zph = request.zph ? 2 : 0, at = request.incidenceTimes.empty() ? 0 : 1;
    const std::size_t parts = 4 + zph + at + (request.causeSpecific ? 1 : 0);
    numerics::PartOfProgress fitting(part, 0, 4, parts), testing(part, 4, 4 + zph, parts),
        reading(part, 4 + zph, 4 + zph + at, parts), beside(part, 4 + zph + at, parts, parts);
    type.fit = finegray::fit(input.response, input.rows, input.model.design.design, input.groups,
                             options, fitting);
    requireAnswer(type.label, type.fit.outcomes);
    if (request.zph) type.zph = proportionalityOf(request, type.fit, testing);
    if (!request.incidenceTimes.empty()) takeIncidences(request, answer, type, reading);
    if (request.causeSpecific) type.causeSpecific = causeSpecific(input, options.cause, beside);
  }
  return answer;
}

}  // namespace survmeth::analysis
