// Right-censored data as the facade takes them: columns as they stand in the data, unsorted.
#ifndef ANALYSIS_SURVIVAL_DATA_H_
#define ANALYSIS_SURVIVAL_DATA_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace survmeth {

struct SurvivalData {
  std::span<const double> time;          // finite, not negative
  std::span<const std::uint8_t> event;   // 0 censored, anything else an event
  std::span<const double> weight;        // frequencies, finite, not negative; empty: 1 each
  std::span<const std::uint32_t> group;  // 0 .. groups - 1; empty: one group
  std::size_t groups = 1;
};

// What happened at one time.
struct TimeCounts {
  double time = 0;
  double events = 0;
  double censored = 0;
};

// The data of each group by distinct time.
//
// Sums of weights are exact: unless all weights are whole numbers, each is rounded to a multiple of
// the spacing of doubles at their sum. So the last row of a group always has exactly its own
// events and censorings at risk, and a curve that ends in an event ends at exactly 0.
class Tally {
 public:
  // Throws engine::Refusal: columns of different length ("time"), fewer than two rows ("time"), a
  // time, weight or group out of its range (with the row's index), a group without rows, with a
  // total weight of 0, or with weights that are lost beside the others' ("group", with the group's
  // index).
  explicit Tally(const SurvivalData& data);

  std::size_t groups() const { return starts_.size() - 1; }
  std::size_t rows(std::size_t group) const { return starts_[group + 1] - starts_[group]; }

  // Ascending distinct times, those of rows with weight 0 left out. Cost O(rows).
  std::vector<TimeCounts> counts(std::size_t group) const;

 private:
  double weightOf(std::size_t row) const;

  SurvivalData data_;
  double quantum_ = 0;               // what weights are multiples of; 0: left as they are
  std::vector<std::size_t> starts_;  // of each group in rows_
  std::vector<std::uint32_t> rows_;  // rows by group, in input order
};

}  // namespace survmeth

#endif  // ANALYSIS_SURVIVAL_DATA_H_
