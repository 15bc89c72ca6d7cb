// What survmeth incidence says, and both declarations.
#include "analysis/incidence/describe.h"

#include <string>
#include <utility>

#include "analysis/all.h"
#include "analysis/eventTables.h"
#include "analysis/limits.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using engine::Role;
using engine::WeightKind;
using engine::curves::Scale;
using engine::incidence::Variance;

report::Method varianceMethod(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  if (answer.robust) {
    return {std::string("standard errors: infinitesimal jackknife, by ") +
                (request.cluster.empty() ? "row" : "cluster of " + request.cluster),
            ""};
  }
  if (request.variance == Variance::kDelta) {
    return {
        "standard errors: delta method, all events of a time together multinomial "
        "(Greenwood's type)",
        "Marubini & Valsecchi, Analysing Survival Data (1995) 10.2"};
  }
  return {"standard errors: Aalen's, each type of event by itself, corrected for ties",
          "Aalen, Annals of Statistics 6 (1978) 534-545"};
}

// Why groups are not tested; empty where they are.
std::string untested(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  if (!answer.several()) return {};
  if (!request.entry.empty()) return "late entry";
  if (!request.cluster.empty()) return "clusters";
  const bool sampling = !request.weights.empty() && request.weightsAre == WeightKind::kSampling;
  return sampling ? "sampling weights" : "";
}

void addNotes(const IncidenceAnswer& answer, const IncidenceRequest& request,
              report::Report& report) {
  const auto add = [&report](const char* code, const std::string& text) {
    report.notes.push_back({code, text});
  };
  if (!answer.event.censored) add("noneCensored", "no row is censored");
  if (answer.types.empty()) {
    add("noEvents", "no row is an event: there is no incidence");
  } else if (!answer.event.competing()) {
    add("oneEventType", "there is only one type of event: nothing competes with it");
  }
  const std::string why = untested(answer, request);
  if (!why.empty()) {
    add("noTest", "the groups are not tested: Gray's test takes no " + why);
  } else if (answer.several()) {
    noteGray(answer, report);
  }
  if (request.kaplanMeier && answer.event.competing()) {
    add("overstates",
        "1 - Kaplan-Meier takes those with another event for censored, as if this one could still "
        "come to them: it overstates the probability of the event");
  }
}

void check(const IncidenceRequest& request) {
  if (request.group.empty()) {
    if (!request.strata.empty()) {
      throw BadOption("strata", "are those of the test of groups; expected --group");
    }
    if (request.pairs != Pairs::kNone) {
      throw BadOption("pairs", "are of groups; expected --group");
    }
  }
}

template <class Made>
void addData(Made& made) {
  made.column("time", &IncidenceRequest::time, Role::kTime, numbersFrom(0),
              "Column of times, numbers from 0")
      .required()
      .column("status", &IncidenceRequest::status, Role::kEvent, labels(),
              "Column that says how each row ends, text or numbers")
      .required()
      .crossed("group", &IncidenceRequest::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination");
}

template <class Made>
void addEvents(Made& made, const char* event) {
  made.label("censor", &IncidenceRequest::censor, "status", "The status of the censored, or none",
             "CODE")
      .without("0, censored, alive, no or false")
      .label("event", &IncidenceRequest::event, "status", event, "CODE")
      .without("each in turn")
      .number("rho", &IncidenceRequest::rho, anyNumber(),
              "Weight (1 - pooled incidence)^R: above 0 early events count more", "R")
      .without("0");
}

}  // namespace

report::Report describeIncidence(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  const std::string group = text::joined(request.group);
  report::Report report;
  report.title = "Cumulative incidence" + (group.empty() ? "" : " by " + group);
  for (const IncidenceOfType& type : answer.types) {
    if (!report.summary.empty()) report.summary += " ";
    double events = 0;
    for (const auto& curve : answer.curves) events += curve.causes[type.cause].events;
    report.summary += type.label + ": " + report::brief(events);
    report.summary += events == 1 ? " event" : " events";
    if (type.test && type.test->reason.empty()) {
      report.summary += ", Gray's test " + report::pValueInWords(type.test->pValue);
    }
    report.summary += ".";
  }
  report.facts = {censorFact(answer.event), report::levelFact(request.alpha)};
  if (answer.several()) {
    report.tables.push_back(groupStatusTable(answer.group, answer.event, group, request.status));
  }
  report.tables.push_back(statusTable(answer.event, request.status));
  report.methods = {{"curves: Aalen-Johansen, the sum of S(t-) d / n over the times of events, S "
                     "free of any event",
                     "Aalen & Johansen, Scandinavian Journal of Statistics 5 (1978) 141-150"},
                    varianceMethod(answer, request),
                    {"limits: " + report::confidence(request.alpha) + " " +
                         limitsName(request.scale) + " around the incidence",
                     "Choudhury, Statistics in Medicine 21 (2002) 1129-1144"}};
  if (answer.several() && untested(answer, request).empty()) {
    report.tables.push_back(grayTable(answer));
    report.methods.push_back(grayMethod(request));
  }
  if (!answer.types.empty()) describeIncidenceReadings(answer, request, report);
  if (!request.weights.empty()) {
    report.methods.push_back({request.weightsAre == WeightKind::kSampling
                                  ? "weights: inverse probabilities of the rows"
                                  : "weights: frequencies of the rows",
                              ""});
  }
  addNotes(answer, request, report);
  return report;
}

Declaration incidenceDeclaration() {
  auto made = declare<IncidenceRequest, IncidenceAnswer>(
      "incidence", "Cumulative incidence of competing events and the tests that compare groups");
  addData(made);
  addEvents(made, "The type of event that is shown; the others compete");
  made.column("entry", &IncidenceRequest::entry, Role::kEntry, numbers(),
              "Column with the times from which on rows are at risk")
      .column("weights", &IncidenceRequest::weights, Role::kWeight, numbersFrom(0),
              "Column with the weights of rows")
      .choice("weights-are", &IncidenceRequest::weightsAre,
              {{"frequencies", WeightKind::kFrequencies}, {"sampling", WeightKind::kSampling}},
              "What weights mean; sampling implies robust standard errors")
      .column("cluster", &IncidenceRequest::cluster, Role::kCluster, labels(),
              "Column of rows that belong together; implies robust standard errors")
      .column("strata", &IncidenceRequest::strata, Role::kStrata, labels(),
              "Column of strata within which groups are compared")
      .choice("pairs", &IncidenceRequest::pairs, pairChoices(),
              "Tests of each two groups, and how their p-values are adjusted")
      .choice(
          "variance", &IncidenceRequest::variance,
          {{"aalen", Variance::kAalen}, {"delta", Variance::kDelta}, {"robust", Variance::kRobust}},
          "Standard errors")
      .choice("conf", &IncidenceRequest::scale,
              {{"log-log", Scale::kLogLog},
               {"log", Scale::kLog},
               {"plain", Scale::kPlain},
               {"arcsine", Scale::kArcsine}},
              "Limits")
      .alpha(&IncidenceRequest::alpha)
      .numbers("at", &IncidenceRequest::at,
               {.least = 0,
                .ascending = true,
                .expected = "ascending numbers from 0, separated by commas"},
               "Times at which incidences are given and groups compared with the first")
      .without("the last time up to which all groups are followed")
      .number("tau", &IncidenceRequest::tau, above(0),
              "Time up to which the mean time lost to each type of event is given", "T")
      .flag("curves", &IncidenceRequest::curves, "Also print the curves")
      .flag("kaplan-meier", &IncidenceRequest::kaplanMeier,
            "Also 1 - Kaplan-Meier, other events taken for censored, which overstates")
      .details(
          "Each row ends in an event of one type or is censored; the status column says which. "
          "Without --event each type is shown in turn, the others competing. Files always hold "
          "the curves, with the cumulative hazard of the type alone.")
      .example(
          "survmeth incidence data/pbc.csv --time time --status status --group trt --at "
          "365,1826 --tau 3650")
      .tables({"groups", "statuses", "tests", "pairs", "incidenceAt", "differences", "timeLost",
               "timeLostContrasts"})
      .longTable(
          "incidence",
          [](const IncidenceAnswer& answer, const IncidenceRequest& request) {
            return std::optional(incidenceTable(answer, request));
          },
          [](const IncidenceRequest& request) { return request.curves; })
      .figure("incidence", incidenceFigure)
      .figure("stacked", stackedFigure);
  return made.leastRows(2).check(check).fit(fitIncidence).describe(describeIncidence);
}

Declaration grayDeclaration() {
  auto made = declare<IncidenceRequest, IncidenceAnswer>(
      "gray", "Gray's test of equal cumulative incidence under competing risks");
  addData(made);
  made.required();
  addEvents(made, "The type of event to be tested");
  return made
      .details(
          "Each row ends in an event of one type or is censored; the status column says which. "
          "Without --event each type is tested in turn, the others competing.")
      .example("survmeth gray data/pbc.csv --time time --status status --group trt")
      .tables({"groups", "statuses", "tests"})
      .figure("incidence", grayFigure)
      .leastRows(2)
      .fit(fitGray)
      .describe(describeGray);
}

}  // namespace survmeth::analysis
