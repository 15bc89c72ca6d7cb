// The rows of a response by group and time: who is at risk, who fails, who is censored. All that
// curves, their means and person-time are made of.
#ifndef ENGINE_CURVES_SAMPLE_H_
#define ENGINE_CURVES_SAMPLE_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "engine/input.h"
#include "engine/risk/arrangement.h"

namespace survmeth::engine::curves {

inline constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

// Codes of groups. No code: one group.
struct Groups {
  std::span<const std::uint32_t> code;  // n, 0 .. count - 1; or empty
  std::size_t count = 1;
  std::size_t size() const { return code.empty() ? 1 : count; }
  std::uint32_t operator[](std::size_t row) const { return code.empty() ? 0 : code[row]; }
};

// Throws a Refusal where risk::check does; further for causes other than 1, offsets, and group
// codes outside their range. `who` begins the sentences: "Curves".
void check(const Response& response, const Rows& rows, const Groups& groups, const char* who);
// The group codes and the lack of an offset alone, whatever the causes.
void checkGroups(const Response& response, const Rows& rows, const Groups& groups, const char* who);

// The codes of the response, once all this is checked: for curves and tests that share one sort.
risk::TimeCodes checkedCodes(const Response& response, const Rows& rows, const Groups& groups,
                             double tieTolerance, const char* who);

// What ends a row's time: an event, or, for the length of follow-up, its censoring (the reverse
// Kaplan-Meier estimate; rows that fail at the time of a censoring are still at risk of it).
enum class Ending { kEvent, kCensoring };

// The distinct exits of each group, ascending; group g has times first[g] .. first[g + 1] - 1.
// Rows of weight 0 take no part. Sums of weights are exact to the last bit of the result.
struct Sample {
  Sample(const Response& response, const Rows& rows, const Groups& groups,
         double tieTolerance = risk::kTieTolerance, Ending ending = Ending::kEvent);
  // In the order of the response's checkedCodes. Any cause is an event.
  Sample(const risk::TimeCodes& codes, const Response& response, const Rows& rows,
         const Groups& groups, Ending ending = Ending::kEvent);

  std::size_t groups() const { return first.size() - 1; }
  std::size_t times() const { return time.size(); }
  std::size_t rows() const { return source.size(); }

  std::vector<std::size_t> first;  // groups + 1
  // Of each time.
  std::vector<double> time;
  std::vector<double> atRisk;            // weight of the rows with entry < time <= exit
  std::vector<double> events, censored;  // weights that end here
  std::vector<double> surviving;         // atRisk - events, 0 where all at risk fail
  std::vector<std::uint32_t> eventRows;  // rows that fail

  // Of each row that takes part, by group, then by exit.
  std::vector<std::size_t> firstRow;   // groups + 1
  std::vector<std::uint32_t> source;   // the caller's row
  std::vector<std::uint32_t> exitAt;   // the time at which it ends
  std::vector<std::uint32_t> entryAt;  // the first time at which it is at risk; empty: its group's
  std::vector<double> weight;          // empty: 1
  std::vector<std::uint8_t> event;

  std::uint32_t entryOf(std::size_t row, std::size_t group) const {
    return entryAt.empty() ? static_cast<std::uint32_t>(first[group]) : entryAt[row];
  }
  double weightOf(std::size_t row) const { return weight.empty() ? 1.0 : weight[row]; }

 private:
  void findTimes(const risk::TimeCodes& codes);
  void countRows();    // without weights
  void countAtRisk();  // with them

  std::vector<std::uint32_t> timeCode_;  // only while it is being made
};

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_SAMPLE_H_
