// The rows of a response in the order in which risk sets change, and the event times at which each
// row is at risk: what proportional hazards and subdistribution hazards share.
#ifndef ENGINE_RISK_ARRANGEMENT_H_
#define ENGINE_RISK_ARRANGEMENT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/input.h"
#include "numerics/largeArray.h"

namespace survmeth::engine::risk {

// Times that differ by no more than rounding are one: 0.1 + 0.2 and 0.3. The square root of the
// distance of neighbouring doubles at 1; R's default too.
inline constexpr double kTieTolerance = 0x1p-26;

// Throws a Refusal where the columns have not as many rows as the response, where a number is not
// finite, a row's entry is not before its exit, a weight is negative, or a code is outside its
// range. Cost one pass over everything.
void check(const Response& response, const Rows& rows, const Design& design);

// Codes of times: rows of one code are tied. Neighbours among all distinct entries and exits are
// tied where they differ by no more than `tolerance`, absolutely or in units of the mean absolute
// distinct time, and so is a chain of such neighbours; its time is the smallest of them.
//
// In   response   checked
//      tolerance  0: equal times only
// Edge a row whose entry and exit become one is refused
// Cost O(n) in radix passes
struct TimeCodes {
  TimeCodes(const Response& response, double tolerance);
  std::vector<std::uint32_t> exitOrder;   // rows by exit, ascending, stable
  std::vector<std::uint32_t> entryOrder;  // rows by entry; empty without entries
  std::vector<std::uint32_t> exit;        // n, code of each row's exit
  std::vector<std::uint32_t> entry;       // n, or empty
  std::vector<double> time;               // of each code, ascending
};

// Rows by stratum, then by exit, at one time events before the others. Strata without rows and
// rows of weight 0 take no part. Event times are numbered through: all of the first stratum, in
// ascending order, then those of the next.
struct Arrangement {
  Arrangement(const Response& response, const Rows& rows, double tieTolerance);

  std::size_t rows() const { return source.size(); }
  std::size_t times() const { return time.size(); }
  std::size_t strata() const { return stratumCode.size(); }

  // Of each row in the new order.
  std::vector<std::uint32_t> source;  // the caller's row
  std::vector<double> weight;
  bool weighted = false;       // whether a weight is not 1
  std::vector<double> offset;  // empty: none
  // The first event time at which it is at risk; empty where everybody is from the stratum's first.
  numerics::LargeArray<std::uint32_t> first;
  // One past the last such time; end == first: never at risk.
  numerics::LargeArray<std::uint32_t> end;
  numerics::LargeArray<std::uint8_t> event;
  numerics::LargeArray<std::uint32_t> rowStratum;  // index of its stratum among those with rows

  numerics::LargeArray<std::uint32_t> exitCode;   // codes of the rows' times, as TimeCodes
  numerics::LargeArray<std::uint32_t> entryCode;  // empty without entries
  std::vector<double> codeTime;

  // Of each event time.
  std::vector<double> time;
  std::vector<std::uint32_t> firstEvent;  // row; the events of time k are rows
  std::vector<std::uint32_t> events;      // firstEvent[k] .. firstEvent[k] + events[k] - 1
  std::vector<double> eventWeight;        // sum of the events' weights
  std::vector<std::uint32_t> timeStratum;
  std::vector<std::uint32_t> timeCode;

  // Of each stratum with rows.
  std::vector<std::uint32_t> stratumCode;  // the caller's
  std::vector<std::uint32_t> stratumRow;   // its first row; one more element: all rows
  std::vector<std::uint32_t> stratumTime;  // its first event time; one more: all times

  bool lateEntry() const { return !first.empty(); }
  std::uint32_t firstTime(std::size_t row) const {
    return first.empty() ? stratumTime[rowStratum[row]] : first[row];
  }

 private:
  void reserveTimes(std::size_t distinct, std::size_t strataCodes);
  void findFirst();
  void eventsFirst(const Response& response, const std::vector<std::uint32_t>& starts);
};

}  // namespace survmeth::engine::risk

#endif  // ENGINE_RISK_ARRANGEMENT_H_
