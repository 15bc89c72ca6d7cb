// Sums over risk sets and sums over the times at which a row is at risk, without a subtraction:
// risks that differ by many powers of ten lose no digits, with late entry or without.
#ifndef ENGINE_RISK_SUMS_H_
#define ENGINE_RISK_SUMS_H_

#include <span>
#include <vector>

#include "engine/risk/arrangement.h"

namespace survmeth::engine::risk {

// A row that is at risk from its stratum's first event time on adds to a sum that runs down from
// its last time. Another row is at risk at the times a .. b; at the highest binary place in which
// a and b differ stands a time m between them, and the row adds to a sum that runs up from a to
// m - 1 and to one that runs down from b to m. Every sum therefore only grows.
//
// Cost O(rows + times) without late entry, else O(rows + times log(times)) at most: places at
//      which no row is split are passed over.
class Sums {
 public:
  explicit Sums(const Arrangement& arrangement);

  // For each event time the sum of value[i] over the rows at risk that do not fail then, and over
  // those that fail.
  //
  // In   value[rows]
  // Out  others[times], failing[times]
  void overRiskSets(std::span<const double> value, std::span<double> others,
                    std::span<double> failing) const;

  // For each event time the largest value[i] of the rows at risk, those that fail included.
  std::vector<double> largestInRiskSets(std::span<const double> value) const;

  // For each row the sum of at[k] over the event times at which it is at risk; at the time of its
  // own event `own` counts instead.
  //
  // In   at[times], own[times]
  // Out  sum[rows]
  void overTimes(std::span<const double> at, std::span<const double> own,
                 std::span<double> sum) const;

 private:
  // A row that enters late is at risk, without failing, at the times from .. to.
  struct Stay {
    std::uint32_t row, from, to;
  };
  // Those at risk at more than one time, by the highest place in which the times differ.
  struct Place {
    unsigned bit;
    std::vector<Stay> stays;
  };
  void sumFromStart(std::span<const double> value, std::span<double> others,
                    std::span<double> failing) const;
  void sumWithoutEntry(std::span<const double> value, std::span<double> others,
                       std::span<double> failing) const;

  const Arrangement& arrangement_;
  std::vector<std::uint32_t> tied_;  // times of more than one event, ascending
  // Where rows enter late: those that are at risk, without failing, from their stratum's first
  // time on, and those that enter later, at one time or at more.
  std::vector<std::uint32_t> fromStart_;
  std::vector<Stay> once_;
  std::vector<Place> places_;
};

}  // namespace survmeth::engine::risk

#endif  // ENGINE_RISK_SUMS_H_
