// Tables, figure and declaration of survmeth states.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "analysis/all.h"
#include "analysis/estimate.h"
#include "analysis/states/states.h"
#include "engine/incidence/curve.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Role;
using report::Kind;

// A probability, or a time, with limits.
struct Row {
  double time = kNone, atRisk = kNone;
  double value = kNone, standardError = kNone, lower = kNone, upper = kNone;
};

// The probability of a state with `count` times behind it.
Row rowOf(const StatesAnswer& answer, std::size_t state, std::size_t count, double time, double z) {
  Row row;
  row.time = time;
  if (count == 0) {
    row.value = answer.found.initial[state];
    row.standardError = 0;
    return row;
  }
  const auto& of = answer.found.states[state];
  row.atRisk = of.atRisk[count - 1];
  row.value = of.probability[count - 1];
  row.standardError = std::sqrt(of.variance[count - 1]);
  const auto limits =
      engine::incidence::limits(row.value, row.standardError, z, engine::curves::Scale::kLogLog);
  row.lower = limits.lower;
  row.upper = limits.upper;
  return row;
}

report::Table table(const char* id, std::string caption, const std::vector<std::string>& states,
                    const std::vector<Row>& rows, double alpha) {
  return report::rowsOf(id, std::move(caption), rows)
      .with(report::labelColumn(key::kState, "state", states))
      .column(key::kTime, "time", Kind::kTime, &Row::time)
      .column(key::kProbability, "probability", Kind::kProbability, &Row::value)
      .column(key::kStandardError, "std error", Kind::kProbability, &Row::standardError)
      .limits(report::confidence(alpha), Kind::kProbability, [](const Row& row) { return row; })
      .table();
}

report::Table probabilitiesAt(const StatesAnswer& answer, const StatesRequest& request) {
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  std::vector<std::string> states;
  std::vector<Row> rows;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    for (const double time : answer.at) {
      const auto& times = answer.found.time;
      const auto after = std::upper_bound(times.begin(), times.end(), time);
      states.push_back(answer.states[j]);
      rows.push_back(
          time < request.start
              ? Row{time}
              : rowOf(answer, j, static_cast<std::size_t>(after - times.begin()), time, z));
    }
  }
  return table("probabilitiesAt", "Probability of each state", states, rows, request.alpha);
}

report::Table staysTable(const StatesAnswer& answer, const StatesRequest& request) {
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  std::vector<Row> rows;
  for (const auto& stay : answer.found.stays) {
    rows.push_back({kNone, kNone, stay.time, stay.standardError, stay.time - z * stay.standardError,
                    stay.time + z * stay.standardError});
  }
  return report::rowsOf("timeInState",
                        "Time in each state from " + text::brief(request.start) + " to " +
                            text::brief(*request.tau),
                        rows)
      .with(report::labelColumn(key::kState, "state", answer.states))
      .column(key::kTimeInState, "time", Kind::kEstimate, &Row::value)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Row::standardError)
      .limits(report::confidence(request.alpha), Kind::kEstimate,
              [](const Row& row) { return row; })
      .table();
}

report::Table stateSummary(const StatesAnswer& answer) {
  std::vector<std::string> absorbing;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    absorbing.emplace_back(answer.rows[j] == 0 ? "yes" : "no");
  }
  return report::tableOf("states", "States",
                         {report::labelColumn(key::kState, "state", answer.states),
                          report::numberColumn(key::kRows, "rows", Kind::kCount, answer.rows),
                          report::labelColumn(key::kAbsorbing, "for good", absorbing),
                          report::numberColumn(key::kProbability, "at the start",
                                               Kind::kProbability, answer.found.initial)});
}

report::Table transitionSummary(const StatesAnswer& answer) {
  using engine::states::Transition;
  const auto label = [&](std::uint32_t Transition::*member) {
    return [&answer, member](const Transition& each) { return answer.states[each.*member]; };
  };
  return report::rowsOf("transitions", "Transitions", answer.found.transitions)
      .column(key::kFrom, "from", Kind::kLabel, label(&Transition::from))
      .column(key::kTo, "to", Kind::kLabel, label(&Transition::to))
      .column(key::kEvents, "events", Kind::kCount, &Transition::events)
      .column(key::kCumulativeHazard, "cumulative hazard", Kind::kEstimate,
              [](const Transition& each) { return each.hazard.back(); })
      .column(key::kStandardError, "std error", Kind::kEstimate,
              [](const Transition& each) { return std::sqrt(each.hazardVariance.back()); })
      .table();
}

}  // namespace

report::Report describeStates(const StatesAnswer& answer, const StatesRequest& request) {
  report::Report report;
  report.title = "Probabilities of states";
  double events = 0;
  for (const auto& transition : answer.found.transitions) events += transition.events;
  report.summary = text::counted(answer.subjects, "subject", "subjects") + " pass through " +
                   text::counted(answer.states.size(), "state", "states") + " by " +
                   report::brief(events) + (events == 1 ? " transition" : " transitions") +
                   " after " + report::brief(request.start) + ".";
  report.facts = {report::levelFact(request.alpha)};
  report.tables = {stateSummary(answer), transitionSummary(answer),
                   probabilitiesAt(answer, request)};
  report.methods = {
      {"probabilities: Aalen-Johansen, the product of I + dA over the times of transitions from "
       "those of the states at the start",
       "Aalen & Johansen, Scandinavian Journal of Statistics 5 (1978) 141-150"},
      {"standard errors: Greenwood's type, the transitions out of a state at one time multinomial; "
       "the probabilities at the start taken as given; limits: log-log",
       "Andersen, Borgan, Gill & Keiding, Statistical Models Based on Counting Processes (1993) "
       "IV.4"},
      {"hazards: Nelson-Aalen of each transition", "Aalen, Annals of Statistics 6 (1978) 701-726"}};
  if (request.tau) {
    report.tables.push_back(staysTable(answer, request));
    report.methods.push_back({"time in a state: area under its probability", ""});
  }
  if (!request.weights.empty()) {
    report.methods.push_back({"weights: frequencies of the rows", ""});
  }
  if (!answer.gaps.empty()) {
    report.notes.push_back(
        {"subjectGaps", "nobody observes some subjects between rows: " + answer.gaps});
  }
  if (answer.found.transitions.empty()) {
    report.notes.push_back({"noEvents", "no transition is seen after the start"});
  }
  if (answer.found.extended) {
    report.notes.push_back({"beyondFollowUp",
                            "follow-up ends before tau; the times in states take the "
                            "probabilities as constant from there"});
  }
  return report;
}

std::optional<report::Table> stateTable(const StatesAnswer& answer, const StatesRequest& request) {
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  std::vector<std::string> states;
  std::vector<Row> rows;
  std::vector<double> atRisk;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    for (std::size_t i = 0; i < answer.found.time.size(); ++i) {
      states.push_back(answer.states[j]);
      rows.push_back(rowOf(answer, j, i + 1, answer.found.time[i], z));
      atRisk.push_back(rows.back().atRisk);
    }
  }
  report::Table made =
      table("probabilities", "Probabilities of the states", states, rows, request.alpha);
  made.columns.insert(made.columns.begin() + 2,
                      report::numberColumn(key::kAtRisk, "at risk", Kind::kCount, atRisk));
  return made;
}

std::optional<report::Table> transitionTable(const StatesAnswer& answer, const StatesRequest&) {
  std::vector<std::string> from, to;
  std::vector<double> time, hazard, error;
  for (const auto& transition : answer.found.transitions) {
    for (std::size_t i = 0; i < transition.time.size(); ++i) {
      from.push_back(answer.states[transition.from]);
      to.push_back(answer.states[transition.to]);
      time.push_back(transition.time[i]);
      hazard.push_back(transition.hazard[i]);
      error.push_back(std::sqrt(transition.hazardVariance[i]));
    }
  }
  return report::tableOf(
      "hazards", "Cumulative hazards of the transitions",
      {report::labelColumn(key::kFrom, "from", std::move(from)),
       report::labelColumn(key::kTo, "to", std::move(to)),
       report::numberColumn(key::kTime, "time", Kind::kTime, time),
       report::numberColumn(key::kCumulativeHazard, "hazard", Kind::kEstimate, hazard),
       report::numberColumn(key::kStandardError, "std error", Kind::kEstimate, error)});
}

std::optional<report::Figure> stateFigure(const StatesAnswer& answer,
                                          const StatesRequest& request) {
  constexpr double kStep = 1.0 / 2000;  // of the axis: closer steps are one in print
  const auto& found = answer.found;
  if (found.time.empty()) return {};
  std::vector<std::size_t> corners;
  for (std::size_t i = 0; i < found.time.size(); ++i) {
    bool differs = corners.empty() || i + 1 == found.time.size();
    for (const auto& state : found.states) {
      differs =
          differs || std::fabs(state.probability[i] - state.probability[corners.back()]) > kStep;
    }
    if (differs) corners.push_back(i);
  }
  report::Panel panel = report::panelOf(request.exit, "Probability");
  panel.x.least = request.start;
  panel.x.most = found.time.back();
  panel.y.least = 0;
  panel.y.most = 1;
  panel.y.percent = true;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    report::Series& area = panel.series.emplace_back();
    area.name = answer.states[j];
    area.kind = report::SeriesKind::kArea;
    area.stepped = true;
    area.x = {request.start};
    area.y = {found.initial[j]};
    for (const std::size_t i : corners) {
      area.x.push_back(found.time[i]);
      area.y.push_back(found.states[j].probability[i]);
    }
  }
  return report::figureOf("states", "Probabilities of the states",
                          "Aalen-Johansen estimates, one above the other.", std::move(panel));
}

namespace {

void check(const StatesRequest& request) {
  if (!request.tau || *request.tau > request.start) return;
  throw BadOption("tau", "is not after the start; expected a time behind --start");
}

}  // namespace

Declaration statesDeclaration() {
  return declare<StatesRequest, StatesAnswer>(
             "states", "Probabilities of states that subjects pass through, and times in them")
      .column("id", &StatesRequest::id, Role::kSubject, labels(), "Column of subjects")
      .required()
      .column("entry", &StatesRequest::entry, Role::kEntry, numbers(),
              "Column with the times at which rows begin")
      .required()
      .column("exit", &StatesRequest::exit, Role::kTime, numbers(),
              "Column with the times at which they end")
      .required()
      .column("from", &StatesRequest::from, Role::kGroup, labels(),
              "Column of the states in which rows are")
      .required()
      .column("to", &StatesRequest::to, Role::kEvent, labels(),
              "Column of the states to which they lead, or that of the censored")
      .required()
      .label("censor", &StatesRequest::censor, "to",
             "What stands in --to where no transition was seen", "CODE")
      .without("censored, cens or none")
      .column("weights", &StatesRequest::weights, Role::kWeight, numbersFrom(0),
              "Column of frequencies, numbers from 0")
      .number("start", &StatesRequest::start, anyNumber(), "Time from which on probabilities are",
              "T")
      .without("0")
      .label("initial", &StatesRequest::initial, "from", "State in which all are at the start",
             "STATE")
      .without("as those who are at risk then")
      .alpha(&StatesRequest::alpha)
      .numbers("at", &StatesRequest::at,
               {.ascending = true, .expected = "ascending numbers, separated by commas"},
               "Times at which probabilities are given")
      .without("the last transition")
      .number("tau", &StatesRequest::tau, anyNumber(),
              "Time up to which the time in states is given", "T")
      .details(
          "A row for each stay of a subject in a state: from its entry to its exit, and the state "
          "that follows. Rows of a subject that overlap, or that begin in another state than the "
          "one before leads to, are refused with their lines; gaps are noted.")
      .example(
          "survmeth states data/ventilation.csv --id id --entry entry --exit exit --from from --to "
          "to "
          "--at 10,30 --tau 60")
      .tables({"states", "transitions", "probabilitiesAt", "timeInState"})
      .longTable("probabilities", stateTable)
      .longTable("hazards", transitionTable)
      .figure("states", stateFigure)
      .leastRows(1)
      .check(check)
      .fit(fitStates)
      .describe(describeStates);
}

}  // namespace survmeth::analysis
