// What survmeth states is asked, what it finds and how it says it.
#ifndef ANALYSIS_STATES_STATES_H_
#define ANALYSIS_STATES_STATES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "engine/states/estimate.h"
#include "frame/frame.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::analysis {

struct StatesRequest {
  std::string id, entry, exit, from, to, censor, weights;
  std::string initial;  // state in which all are at the start
  double start = 0, alpha = 0.05;
  std::vector<double> at;
  std::optional<double> tau;
};

struct StatesAnswer {
  std::vector<std::string> states;  // labels, in order
  std::vector<std::size_t> rows;    // in each state
  std::size_t subjects = 0;
  std::string gaps;        // in words
  bool censoring = false;  // whether a label says that nothing was seen
  engine::states::Estimates found;
  std::vector<double> at;
};

// Throws engine::Refusal, of faults of histories with their lines.
StatesAnswer fitStates(const frame::Frame& data, const StatesRequest& request,
                       numerics::Progress& progress);

report::Report describeStates(const StatesAnswer& answer, const StatesRequest& request);

// "probabilities" and "hazards": a row for each time of each state and of each transition.
std::optional<report::Table> stateTable(const StatesAnswer& answer, const StatesRequest& request);
std::optional<report::Table> transitionTable(const StatesAnswer& answer,
                                             const StatesRequest& request);
// "states": the probabilities one above the other.
std::optional<report::Figure> stateFigure(const StatesAnswer& answer, const StatesRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_STATES_STATES_H_
