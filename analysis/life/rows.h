// Rows of a frame as survmeth life reads them.
#ifndef ANALYSIS_LIFE_ROWS_H_
#define ANALYSIS_LIFE_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/life/request.h"
#include "engine/curves/sample.h"
#include "engine/input.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "report/report.h"

namespace survmeth::analysis {

struct LifeRows {
  frame::Column time, weight;            // those of the data
  std::vector<std::uint32_t> event;      // 0 or 1
  std::vector<std::string> eventLabels;  // that are events
  std::string eventNote;                 // what was taken for an event, where that is not plain
  frame::Labels groups;                  // "all" where there is no column

  engine::Response response() const { return {{}, time.numbers, event, 1}; }
  engine::Rows rows() const;
  engine::curves::Groups groupCodes() const { return {groups.codes, groups.labels.size()}; }
  bool several() const { return groups.labels.size() > 1; }

  // Whether every weight is a whole number; so are no weights.
  bool wholeWeights() const;
  // "1, yes"; does not exist where no row is an event.
  report::Fact eventFact(const std::string& column) const;
  // Weights that are not whole, and weights of 0.
  void noteWeights(std::vector<report::Note>& notes) const;
};

// Throws engine::Refusal of events that mean neither, of a group that is empty or that only the
// weights empty, of weights whose sum is not finite. Cost O(rows).
LifeRows lifeRowsOf(const frame::Frame& data, const LifeRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_ROWS_H_
