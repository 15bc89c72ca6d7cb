// What survmeth states is asked, what it finds and how it says it.
#ifndef ANALYSIS_STATES_STATES_H_
#define ANALYSIS_STATES_STATES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "engine/states/estimate.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::analysis {

enum class StateErrors { kGreenwood, kRobust };

struct StatesRequest {
  std::string id, entry, exit, from, to, censor;       // a row for each stay
  std::string illnessTime, illness, deathTime, death;  // a row for each subject
  std::vector<std::string> group;                      // crossed
  std::string weights, cluster;
  engine::WeightKind weightsAre = engine::WeightKind::kFrequencies;
  StateErrors variance = StateErrors::kGreenwood;
  std::string initial;  // a state in which all are at the start, or states with probabilities
  double start = 0, alpha = 0.05;
  std::vector<double> at;
  std::optional<double> tau;

  bool wide() const {
    return !illnessTime.empty() || !illness.empty() || !deathTime.empty() || !death.empty();
  }
};

struct StatesAnswer {
  std::vector<std::string> states;  // labels, in order
  std::vector<std::size_t> rows;    // in each state
  std::size_t subjects = 0;
  std::string gaps;         // in words
  std::string eventNote;    // what was taken for ill or dead, where that is not plain
  std::size_t unknown = 0;  // subjects whose illness is followed less long than their life
  frame::Labels group;      // one of all rows where there is no column of groups
  std::vector<engine::states::Estimates> found;  // of each group
  std::vector<double> at;

  bool several() const { return group.labels.size() > 1; }
  bool robust() const { return found.front().robust; }
};

// Throws engine::Refusal, of faults of histories with their lines.
StatesAnswer fitStates(const frame::Frame& data, const StatesRequest& request,
                       numerics::Progress& progress);

report::Report describeStates(const StatesAnswer& answer, const StatesRequest& request);

// "probabilities" and "hazards": a row for each time of each state and of each transition.
std::optional<report::Table> stateTable(const StatesAnswer& answer, const StatesRequest& request);
std::optional<report::Table> transitionTable(const StatesAnswer& answer,
                                             const StatesRequest& request);
// "states": a panel for each group, the probabilities one above the other.
std::optional<report::Figure> stateFigure(const StatesAnswer& answer, const StatesRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_STATES_STATES_H_
