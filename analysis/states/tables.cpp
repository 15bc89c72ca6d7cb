#include "analysis/states/tables.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "analysis/estimate.h"
#include "engine/incidence/curve.h"
#include "report/build.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::curves::Contrast;
using engine::states::Estimates;
using engine::states::Transition;
using report::Kind;

double quantile(const StatesRequest& request) {
  return engine::curves::normalQuantile(1 - request.alpha);
}

// A probability, or a time, with limits.
struct Row {
  double time = kNone, atRisk = kNone;
  double value = kNone, standardError = kNone, lower = kNone, upper = kNone;
};

// What two groups differ by.
struct Difference : Contrast {
  double time = kNone;
};

// The probability of a state with `count` times behind it.
Row rowOf(const Estimates& found, std::size_t state, std::size_t count, double time, double z) {
  Row row;
  row.time = time;
  if (count == 0) {
    row.value = found.initial[state];
    row.standardError = 0;
    return row;
  }
  const auto& of = found.states[state];
  row.atRisk = of.atRisk[count - 1];
  row.value = of.probability[count - 1];
  row.standardError = std::sqrt(of.variance[count - 1]);
  const auto limits =
      engine::incidence::limits(row.value, row.standardError, z, engine::curves::Scale::kLogLog);
  row.lower = limits.lower;
  row.upper = limits.upper;
  return row;
}

Row rowAt(const Estimates& found, std::size_t state, double time, const StatesRequest& request) {
  if (time < request.start) return {time};
  const auto after = std::upper_bound(found.time.begin(), found.time.end(), time);
  return rowOf(found, state, static_cast<std::size_t>(after - found.time.begin()), time,
               quantile(request));
}

// Rows that each belong to a group, where there are several, and a state or transition.
template <class Item>
struct Table {
  explicit Table(bool ofTransitions = false) : transitions(ofTransitions) {}
  bool transitions;
  std::vector<std::string> groups, first, second;  // second: of a transition
  std::vector<Item> items;

  void add(const StatesAnswer& answer, std::size_t group, const std::string& of, const Item& item) {
    if (answer.several()) groups.push_back(answer.group.labels[group]);
    first.push_back(of);
    items.push_back(item);
  }
  report::Rows<std::vector<Item>> begun(const char* id, std::string caption,
                                        const StatesRequest& request) const {
    report::Rows<std::vector<Item>> rows(id, std::move(caption), items);
    if (!groups.empty()) {
      rows.with(report::labelColumn(key::kGroup, text::joined(request.group), groups));
    }
    if (!transitions) {
      rows.with(report::labelColumn(key::kState, "state", first));
    } else {
      rows.with(report::labelColumn(key::kFrom, "from", first));
      rows.with(report::labelColumn(key::kTo, "to", second));
    }
    return rows;
  }
};

report::Table differencesOf(const char* id, std::string caption, const Table<Difference>& table,
                            bool timed, const StatesRequest& request) {
  auto rows = table.begun(id, std::move(caption), request);
  if (timed) rows.column(key::kTime, "time", Kind::kTime, &Difference::time);
  return rows.column(key::kEstimate, "estimate", Kind::kEstimate, &Difference::estimate)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Difference::standardError)
      .limits(report::confidence(request.alpha), Kind::kEstimate,
              [](const Difference& row) { return row; })
      .column(key::kZ, "z", Kind::kStatistic, &Difference::z)
      .column(key::kPValue, "p-value", Kind::kPValue, &Difference::pValue)
      .table();
}

Contrast differenceOf(double first, double firstError, double second, double secondError,
                      double z) {
  return engine::curves::difference(
      second - first, std::sqrt(firstError * firstError + secondError * secondError), z);
}

}  // namespace

report::Table stateSummary(const StatesAnswer& answer, const StatesRequest& request) {
  struct State {
    double rows, probability;
    std::string absorbing;
  };
  Table<State> table;
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    for (std::size_t j = 0; j < answer.states.size(); ++j) {
      table.add(answer, g, answer.states[j],
                {static_cast<double>(answer.rows[j]), answer.found[g].initial[j],
                 answer.rows[j] == 0 ? "yes" : "no"});
    }
  }
  auto rows = table.begun("states", "States", request);
  if (!answer.several()) rows.column(key::kRows, "rows", Kind::kCount, &State::rows);
  return rows.column(key::kAbsorbing, "for good", Kind::kLabel, &State::absorbing)
      .column(key::kProbability, "at the start", Kind::kProbability, &State::probability)
      .table();
}

report::Table transitionSummary(const StatesAnswer& answer, const StatesRequest& request) {
  struct Sum {
    double events, hazard, standardError;
  };
  Table<Sum> table(true);
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    for (const Transition& each : answer.found[g].transitions) {
      table.add(answer, g, answer.states[each.from],
                {each.events, each.hazard.back(), std::sqrt(each.hazardVariance.back())});
      table.second.push_back(answer.states[each.to]);
    }
  }
  return table.begun("transitions", "Transitions", request)
      .column(key::kEvents, "events", Kind::kCount, &Sum::events)
      .column(key::kCumulativeHazard, "cumulative hazard", Kind::kEstimate, &Sum::hazard)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Sum::standardError)
      .table();
}

report::Table probabilitiesAt(const StatesAnswer& answer, const StatesRequest& request) {
  Table<Row> table;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    for (const double time : answer.at) {
      for (std::size_t g = 0; g < answer.found.size(); ++g) {
        table.add(answer, g, answer.states[j], rowAt(answer.found[g], j, time, request));
      }
    }
  }
  return table.begun("probabilitiesAt", "Probability of each state", request)
      .column(key::kTime, "time", Kind::kTime, &Row::time)
      .column(key::kProbability, "probability", Kind::kProbability, &Row::value)
      .column(key::kStandardError, "std error", Kind::kProbability, &Row::standardError)
      .limits(report::confidence(request.alpha), Kind::kProbability,
              [](const Row& row) { return row; })
      .table();
}

report::Table staysTable(const StatesAnswer& answer, const StatesRequest& request) {
  const double z = quantile(request);
  Table<Row> table;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    for (std::size_t g = 0; g < answer.found.size(); ++g) {
      const auto& stay = answer.found[g].stays[j];
      table.add(answer, g, answer.states[j],
                {kNone, kNone, stay.time, stay.standardError, stay.time - z * stay.standardError,
                 stay.time + z * stay.standardError});
    }
  }
  return table
      .begun("timeInState",
             "Time in each state from " + text::brief(request.start) + " to " +
                 text::brief(*request.tau),
             request)
      .column(key::kTimeInState, "time", Kind::kEstimate, &Row::value)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Row::standardError)
      .limits(report::confidence(request.alpha), Kind::kEstimate,
              [](const Row& row) { return row; })
      .table();
}

report::Table probabilityDifferences(const StatesAnswer& answer, const StatesRequest& request) {
  Table<Difference> table;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    for (const double time : answer.at) {
      const Row first = rowAt(answer.found[0], j, time, request);
      for (std::size_t g = 1; g < answer.found.size(); ++g) {
        const Row second = rowAt(answer.found[g], j, time, request);
        table.add(answer, g, answer.states[j],
                  {differenceOf(first.value, first.standardError, second.value,
                                second.standardError, quantile(request)),
                   time});
      }
    }
  }
  return differencesOf("differences",
                       "Differences of probabilities against " + answer.group.labels.front(), table,
                       true, request);
}

report::Table stayDifferences(const StatesAnswer& answer, const StatesRequest& request) {
  Table<Difference> table;
  for (std::size_t j = 0; j < answer.states.size(); ++j) {
    const auto& first = answer.found[0].stays[j];
    for (std::size_t g = 1; g < answer.found.size(); ++g) {
      const auto& second = answer.found[g].stays[j];
      table.add(answer, g, answer.states[j],
                {differenceOf(first.time, first.standardError, second.time, second.standardError,
                              quantile(request)),
                 kNone});
    }
  }
  return differencesOf("timeDifferences",
                       "Differences of times in states against " + answer.group.labels.front(),
                       table, false, request);
}

std::optional<report::Table> stateTable(const StatesAnswer& answer, const StatesRequest& request) {
  const double z = quantile(request);
  Table<Row> table;
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    const Estimates& found = answer.found[g];
    for (std::size_t j = 0; j < answer.states.size(); ++j) {
      for (std::size_t i = 0; i < found.time.size(); ++i) {
        table.add(answer, g, answer.states[j], rowOf(found, j, i + 1, found.time[i], z));
      }
    }
  }
  return table.begun("probabilities", "Probabilities of the states", request)
      .column(key::kTime, "time", Kind::kTime, &Row::time)
      .column(key::kAtRisk, "at risk", Kind::kCount, &Row::atRisk)
      .column(key::kProbability, "probability", Kind::kProbability, &Row::value)
      .column(key::kStandardError, "std error", Kind::kProbability, &Row::standardError)
      .limits(report::confidence(request.alpha), Kind::kProbability,
              [](const Row& row) { return row; })
      .table();
}

std::optional<report::Table> transitionTable(const StatesAnswer& answer,
                                             const StatesRequest& request) {
  struct Step {
    double time, hazard, standardError;
  };
  Table<Step> table(true);
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    for (const Transition& each : answer.found[g].transitions) {
      for (std::size_t i = 0; i < each.time.size(); ++i) {
        table.add(answer, g, answer.states[each.from],
                  {each.time[i], each.hazard[i], std::sqrt(each.hazardVariance[i])});
        table.second.push_back(answer.states[each.to]);
      }
    }
  }
  return table.begun("hazards", "Cumulative hazards of the transitions", request)
      .column(key::kTime, "time", Kind::kTime, &Step::time)
      .column(key::kCumulativeHazard, "hazard", Kind::kEstimate, &Step::hazard)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Step::standardError)
      .table();
}

}  // namespace survmeth::analysis
