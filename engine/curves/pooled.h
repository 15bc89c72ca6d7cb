// Strata in the order of time: what the tests of equal survival run over.
#ifndef ENGINE_CURVES_POOLED_H_
#define ENGINE_CURVES_POOLED_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/curves/sample.h"
#include "numerics/doubleDouble.h"

namespace survmeth::engine::curves {

// The rows of positive weight, numbered by stratum and exit, so that whoever runs over them in the
// order of time reads memory in order. All arrays are of these rows.
struct Pooled {
  Pooled(const Response& response, const Rows& rows, const Groups& groups, double tieTolerance);

  // In the order of the response's checkedCodes, which the curves and several tests share.
  Pooled(const risk::TimeCodes& codes, const Response& response, const Rows& rows,
         const Groups& groups);

  std::size_t rows() const { return exit.size(); }
  std::uint32_t stratumOf(std::uint32_t row) const { return stratum.empty() ? 0 : stratum[row]; }
  double weightOf(std::uint32_t row) const { return weight.empty() ? 1.0 : weight[row]; }
  // Adds a weight to a sum, or takes it off where below 0: the sum in twice the precision.
  void add(numerics::DoubleDouble& sum, double w) const {
    if (exact) {
      sum.hi += w;
    } else {
      sum = sum + w;
    }
  }

  std::vector<std::uint32_t> source;  // the caller's row
  std::size_t groupCount = 1;
  std::vector<std::uint32_t> group, stratum;  // stratum empty where there is one
  std::vector<double> weight;                 // empty: 1
  bool exact = true;                          // a double holds every sum of these weights
  std::vector<std::uint8_t> event;
  std::vector<std::uint32_t> exit, entry;      // codes; entry empty without entries
  std::vector<std::uint32_t> byExit, byEntry;  // by stratum, then time; byExit is 0, 1, ...
};

// Rows of one stratum within orders like Pooled's.
struct StratumRows {
  std::span<const std::uint32_t> byExit, byEntry;
};

// The rows of two groups alone, in the same orders.
class PairedRows {
 public:
  explicit PairedRows(const Pooled& pooled);

  // Valid until the next call.
  StratumRows of(std::uint32_t first, std::uint32_t second);

 private:
  using Places = std::vector<std::vector<std::uint32_t>>;  // in an order, by group
  const Pooled& pooled_;
  Places exits_, entries_;
  std::vector<std::uint32_t> byExit_, byEntry_;
};

// An event time of one stratum.
struct PooledTime {
  std::uint32_t code;
  double atRisk, events, surviving;
};

// The next stratum's rows at the front of the two orders, which are shortened by them.
StratumRows nextStratum(const Pooled& pooled, StratumRows& rest);

// Event times of the stratum, ascending.
std::vector<PooledTime> eventTimes(const Pooled& pooled, const StratumRows& rows);

// Of one group at each of these times: weight at risk and weight of the events.
struct GroupShare {
  double atRisk = 0.0, events = 0.0;
};
std::vector<GroupShare> sharesOf(const Pooled& pooled, const StratumRows& rows,
                                 std::span<const PooledTime> times, std::uint32_t group);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_POOLED_H_
