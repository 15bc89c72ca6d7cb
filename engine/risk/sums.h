// Sums over risk sets and sums over the times at which a row is at risk, without a subtraction:
// risks that differ by many powers of ten lose no digits, with late entry or without, and by any
// number of powers where rows and times have units of their own.
#ifndef ENGINE_RISK_SUMS_H_
#define ENGINE_RISK_SUMS_H_

#include <limits>
#include <span>
#include <vector>

#include "engine/risk/arrangement.h"
#include "engine/risk/stays.h"
#include "numerics/gram.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::risk {

// A unit for each row and each event time where values lie beyond what one unit can hold: value i
// is value[i] exp(256 row[i]), sums at time k are in units of exp(256 time[k]). No row at risk at
// time k may have a larger unit than the time has.
struct Scales {
  std::vector<double> row, time;  // whole numbers; both empty: one unit for all
  bool empty() const { return row.empty(); }
};

inline constexpr double kScaleStep = 256.0;

// exp(-256 steps) for a whole number of steps from 0 on.
double scaleFactor(double steps);

// A sum in the largest unit of its terms.
class ScaledSum {
 public:
  void add(double term, double scale) {
    if (scale > scale_) {
      sum_.multiplyBy(scaleFactor(scale - scale_));
      scale_ = scale;
    }
    sum_.add(term * scaleFactor(scale_ - scale));
  }
  double value() const { return sum_.value(); }
  double scale() const { return scale_; }  // minus infinity without terms

 private:
  numerics::RunningSum sum_;
  double scale_ = -std::numeric_limits<double>::infinity();
};

// A row that is at risk from its stratum's first event time on adds to a sum that runs down from
// its last time. Another row is at risk at the times a .. b; at the highest binary place in which
// a and b differ stands a time m between them, and the row adds to a sum that runs up from a to
// m - 1 and to one that runs down from b to m. Every sum therefore only grows.
//
// Cost O(rows + times) without late entry, else O(rows + times log(times)) at most: places at
//      which no row is split are passed over. The rows are read once, in their order, and three
//      numbers an event time are held on the way
class Sums {
 public:
  explicit Sums(const Arrangement& arrangement);

  // For each event time the sum of value[i] over the rows at risk that do not fail then, and over
  // those that fail.
  //
  // In   value[rows]
  // Out  others[times], failing[times]
  void overRiskSets(std::span<const double> value, std::span<double> others,
                    std::span<double> failing, const Scales& scales = {}) const;

  // The same, where rows enter late, of factor[i] x(i, column) and of the columns that follow, each
  // with the bits that it has by itself.
  //
  // In   columns  1 .. kAbreast
  // Out  others[times * columns], failing[times * columns]: of each time the columns side by side
  static constexpr std::size_t kAbreast = 4;
  void overRiskSets(std::span<const double> factor, const numerics::BlockedColumns& x,
                    std::size_t column, std::size_t columns, std::span<double> others,
                    std::span<double> failing) const;

  // For each event time the largest value[i] of the rows at risk, those that fail included.
  std::vector<double> largestInRiskSets(std::span<const double> value) const;

  // For each row the sum of at[k] over the event times at which it is at risk; at the time of its
  // own event `own` counts instead. With scales they are in units of exp(-256 time[k]), sum[i] in
  // units of exp(-256 row[i]).
  //
  // In   at[times], own[times]
  // Out  sum[rows]
  void overTimes(std::span<const double> at, std::span<const double> own, std::span<double> sum,
                 const Scales& scales = {}) const;

 private:
  void sumScaled(std::span<const double> value, std::span<double> others, std::span<double> failing,
                 const Scales& scales) const;
  void sumTimesScaled(std::span<const double> at, std::span<const double> own,
                      std::span<double> sum, const Scales& scales) const;
  void sumWithoutEntry(std::span<const double> value, std::span<double> others,
                       std::span<double> failing) const;

  const Arrangement& arrangement_;
  std::vector<std::uint32_t> tied_;  // times of more than one event, ascending
  Stays stays_;                      // empty without late entry
};

}  // namespace survmeth::engine::risk

#endif  // ENGINE_RISK_SUMS_H_
