// The columns of survmeth states as the engine takes them.
#ifndef ANALYSIS_STATES_COLUMNS_H_
#define ANALYSIS_STATES_COLUMNS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/states/states.h"
#include "model/response.h"

namespace survmeth::analysis {

// Stays in states; of a row for each subject up to two.
struct StateColumns {
  std::vector<double> entry, exit, weight;
  model::DatedTimes dated;
  std::vector<std::uint32_t> from, to;
  frame::Labels subject, cluster;     // codes of the data's rows
  std::vector<std::uint32_t> source;  // of each stay: row of the data
};

// The place of a row, for messages: "line 7".
std::string placeOf(const frame::Frame& data, std::size_t row);

// Faults in one sentence, the first five of them.
class FaultList {
 public:
  void add(const std::string& words, std::size_t row);
  bool empty() const { return count_ == 0; }
  std::size_t firstRow() const { return first_; }
  std::string words() const;

 private:
  std::string list_;
  std::size_t count_ = 0, first_ = 0;
};

// A row for each stay. Sets the answer's states.
//
// Throws engine::Refusal of labels that contradict one another.
void takeStays(const frame::Frame& data, const StatesRequest& request, StateColumns& columns,
               StatesAnswer& answer);

// A row for each subject: "healthy", "ill", "dead". Who is ill by the entry begins there.
//
// Throws engine::Refusal of statuses that say neither, of subjects with several rows, and of times
// that cannot be: of no length, an illness behind the death or at it.
void takeSubjects(const frame::Frame& data, const StatesRequest& request, StateColumns& columns,
                  StatesAnswer& answer);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_STATES_COLUMNS_H_
