// Right-censored rows of a frame, as the analyses of survival read them.
#ifndef ANALYSIS_CENSORED_ROWS_H_
#define ANALYSIS_CENSORED_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/survivalData.h"
#include "engine/input.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "report/report.h"

namespace survmeth::analysis {

// Names of columns; group and weight may be empty. The values that are events, else those that
// mean so (model/coding.h).
struct CensoredColumns {
  std::string time, event, weight;
  std::vector<std::string> group;  // crossed
  std::vector<std::string> eventValues;
};

struct CensoredRows {
  frame::Column time, weight;  // those of the data
  std::vector<std::uint8_t> event;
  std::vector<std::string> eventLabels;  // that are events
  std::string eventNote;                 // what was taken for an event, where that is not plain
  frame::Labels groups;                  // "all" where there is no column

  SurvivalData data() const;
  // "1, yes"; does not exist where no row is an event.
  report::Fact eventFact(const std::string& column) const;
  // Weights that are not whole, and weights of 0.
  void noteWeights(std::vector<report::Note>& notes) const;
  // A refusal of a group that is there for want of a group column or that only the weights empty,
  // in the words of the columns; others as they are.
  engine::Refusal worded(const engine::Refusal& refused) const;
};

// Throws engine::Refusal of events that mean neither and of an empty group. Cost O(rows).
CensoredRows censoredRowsOf(const frame::Frame& data, const CensoredColumns& columns);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CENSORED_ROWS_H_
