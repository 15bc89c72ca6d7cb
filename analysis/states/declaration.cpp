// The declaration of survmeth states.
#include "analysis/all.h"
#include "analysis/declare.h"
#include "analysis/states/states.h"

namespace survmeth::analysis {
namespace {

using engine::Role;
using engine::WeightKind;

struct Given {
  const char* option;
  const std::string& column;
};

void checkWide(const StatesRequest& request) {
  for (const Given& each :
       {Given{"illness-time", request.illnessTime}, Given{"illness", request.illness},
        Given{"death-time", request.deathTime}, Given{"death", request.death}}) {
    if (each.column.empty()) {
      throw BadOption(each.option,
                      "is missing; expected all of --illness-time, --illness, --death-time and "
                      "--death");
    }
  }
  for (const Given& each : {Given{"exit", request.exit}, Given{"from", request.from},
                            Given{"to", request.to}, Given{"censor", request.censor}}) {
    requireAlone(!each.column.empty(), each.option, "illness-time");
  }
}

void check(const StatesRequest& request) {
  if (request.wide()) {
    checkWide(request);
  } else {
    for (const Given& each :
         {Given{"id", request.id}, Given{"entry", request.entry}, Given{"exit", request.exit},
          Given{"from", request.from}, Given{"to", request.to}}) {
      if (each.column.empty()) {
        throw BadOption(each.option,
                        "is missing; expected --id, --entry, --exit, --from and --to, or "
                        "--illness-time, --illness, --death-time and --death");
      }
    }
  }
  if (request.weightsAre == WeightKind::kSampling && request.weights.empty()) {
    throw BadOption("weights-are", "sampling stands without --weights; expected both or none");
  }
  if (!request.tau || *request.tau > request.start) return;
  throw BadOption("tau", "is not after the start; expected a time behind --start");
}

}  // namespace

Declaration statesDeclaration() {
  return declare<StatesRequest, StatesAnswer>(
             "states", "Probabilities of states that subjects pass through, and times in them")
      .column("id", &StatesRequest::id, Role::kSubject, labels(), "Column of subjects")
      .column("entry", &StatesRequest::entry, Role::kEntry, numbers(),
              "Column with the times at which rows begin")
      .column("exit", &StatesRequest::exit, Role::kTime, numbers(),
              "Column with the times at which they end")
      .column("from", &StatesRequest::from, Role::kFirst, labels(),
              "Column of the states in which rows are")
      .column("to", &StatesRequest::to, Role::kEvent, labels(),
              "Column of the states to which they lead, or that of the censored")
      .label("censor", &StatesRequest::censor, "to",
             "What stands in --to where no transition was seen", "CODE")
      .without("censored, cens or none")
      .column("illness-time", &StatesRequest::illnessTime, Role::kFirst, numbers(),
              "Column with the times of illness, or to which a subject is seen free of it")
      .column("illness", &StatesRequest::illness, Role::kSecond, labels(),
              "Column that says whether the subject falls ill")
      .column("death-time", &StatesRequest::deathTime, Role::kTime, numbers(),
              "Column with the times of death, or to which a subject is seen alive")
      .column("death", &StatesRequest::death, Role::kEvent, labels(),
              "Column that says whether it dies")
      .crossed("group", &StatesRequest::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination")
      .column("weights", &StatesRequest::weights, Role::kWeight, numbersFrom(0),
              "Column with the weights of rows, numbers from 0")
      .choice("weights-are", &StatesRequest::weightsAre,
              {{"frequencies", WeightKind::kFrequencies}, {"sampling", WeightKind::kSampling}},
              "What weights mean; sampling implies robust standard errors")
      .column("cluster", &StatesRequest::cluster, Role::kCluster, labels(),
              "Column of subjects that belong together; implies robust standard errors")
      .choice("variance", &StatesRequest::variance,
              {{"greenwood", StateErrors::kGreenwood}, {"robust", StateErrors::kRobust}},
              "Standard errors")
      .number("start", &StatesRequest::start, anyNumber(), "Time from which on probabilities are",
              "T")
      .without("0")
      .label("initial", &StatesRequest::initial, "from",
             "State in which all are at the start, or states with probabilities, a=0.7,b=0.3",
             "STATE")
      .without("as those who are at risk then")
      .alpha(&StatesRequest::alpha)
      .numbers("at", &StatesRequest::at,
               {.ascending = true, .expected = "ascending numbers, separated by commas"},
               "Times at which probabilities are given and groups compared with the first")
      .without("the last transition")
      .number("tau", &StatesRequest::tau, anyNumber(),
              "Time up to which the time in states is given", "T")
      .details(
          "A row for each stay of a subject in a state: from its entry to its exit, and the state "
          "that follows. Rows of a subject that overlap, or that begin in another state than the "
          "one before leads to, are refused with their lines; gaps are noted. Or a row for each "
          "subject with the times and statuses of an illness and of death: the states are healthy, "
          "ill and dead, and times that cannot be are refused with their lines.")
      .example(
          "survmeth states data/ventilation.csv --id id --entry entry --exit exit --from from --to "
          "to "
          "--at 10,30 --tau 60")
      .tables({"states", "transitions", "probabilitiesAt", "differences", "timeInState",
               "timeDifferences"})
      .longTable("probabilities", stateTable)
      .longTable("hazards", transitionTable)
      .figure("states", stateFigure)
      .leastRows(1)
      .check(check)
      .fit(fitStates)
      .describe(describeStates);
}

}  // namespace survmeth::analysis
