// What survmeth states says.
#include <string>

#include "analysis/states/tables.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

report::Method errorsMethod(const StatesAnswer& answer, const StatesRequest& request) {
  if (answer.robust()) {
    const std::string of = !request.cluster.empty() ? "cluster of " + request.cluster : "subject";
    return {"standard errors: infinitesimal jackknife, by " + of +
                (request.initial.empty() ? "; those of the probabilities at the start count" : "") +
                "; limits: log-log",
            ""};
  }
  return {
      "standard errors: Greenwood's type, the transitions out of a state at one time "
      "multinomial; the probabilities at the start taken as given; limits: log-log",
      "Andersen, Borgan, Gill & Keiding, Statistical Models Based on Counting Processes (1993) "
      "IV.4"};
}

void addNotes(const StatesAnswer& answer, report::Report& report, bool anyTransition) {
  const auto add = [&report](const char* code, const std::string& text) {
    report.notes.push_back({code, text});
  };
  if (!answer.eventNote.empty()) add("eventCoding", answer.eventNote);
  if (answer.unknown > 0) {
    add("illnessUnknown",
        text::counted(answer.unknown, "subject is", "subjects are") +
            " followed for the illness less long than for the death; they count as free of it "
            "until then");
  }
  if (!answer.gaps.empty()) {
    add("subjectGaps", "nobody observes some subjects between rows: " + answer.gaps);
  }
  if (!anyTransition) add("noEvents", "no transition is seen after the start");
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    if (!answer.found[g].extended) continue;
    report.notes.push_back(
        {"beyondFollowUp",
         (answer.several() ? "follow-up of the group " + text::quote(answer.group.labels[g])
                           : std::string("follow-up")) +
             " ends before tau; the times in states take the probabilities as constant from there",
         answer.several() ? std::vector<std::string>{answer.group.labels[g]}
                          : std::vector<std::string>{}});
  }
}

}  // namespace

report::Report describeStates(const StatesAnswer& answer, const StatesRequest& request) {
  report::Report report;
  report.title = "Probabilities of states";
  if (answer.several()) report.title += " by " + text::joined(request.group);
  double events = 0;
  bool anyTransition = false;
  for (const auto& found : answer.found) {
    for (const auto& transition : found.transitions) events += transition.events;
    anyTransition = anyTransition || !found.transitions.empty();
  }
  report.summary = text::counted(answer.subjects, "subject", "subjects") + " pass through " +
                   text::counted(answer.states.size(), "state", "states") + " by " +
                   report::brief(events) + (events == 1 ? " transition" : " transitions") +
                   " after " + report::brief(request.start) + ".";
  report.facts = {report::levelFact(request.alpha)};
  report.tables = {stateSummary(answer, request), transitionSummary(answer, request),
                   probabilitiesAt(answer, request)};
  if (answer.several()) report.tables.push_back(probabilityDifferences(answer, request));
  report.methods = {
      {"probabilities: Aalen-Johansen, the product of I + dA over the times of transitions from "
       "those of the states at the start",
       "Aalen & Johansen, Scandinavian Journal of Statistics 5 (1978) 141-150"},
      errorsMethod(answer, request),
      {"hazards: Nelson-Aalen of each transition", "Aalen, Annals of Statistics 6 (1978) 701-726"}};
  if (request.tau) {
    report.tables.push_back(staysTable(answer, request));
    if (answer.several()) report.tables.push_back(stayDifferences(answer, request));
    report.methods.push_back({"time in a state: area under its probability", ""});
  }
  if (answer.several()) {
    report.methods.push_back({"differences: of independent groups, normal as they are", ""});
  }
  if (request.wide()) {
    report.methods.push_back({"states: healthy from the entry to " + request.illnessTime +
                                  ", ill from there to " + request.deathTime,
                              ""});
  }
  if (!request.weights.empty()) {
    report.methods.push_back({request.weightsAre == engine::WeightKind::kSampling
                                  ? "weights: inverse probabilities of the rows"
                                  : "weights: frequencies of the rows",
                              ""});
  }
  addNotes(answer, report, anyTransition);
  return report;
}

}  // namespace survmeth::analysis
