#include "engine/curves/sample.h"

#include <string>

#include "numerics/doubleDouble.h"

namespace survmeth::engine::curves {
namespace {

using numerics::DoubleDouble;

// Rows by group, their order within a group kept; rows of weight 0 left out.
std::vector<std::uint32_t> byGroup(const std::vector<std::uint32_t>& order, const Rows& rows,
                                   const Groups& groups, std::vector<std::size_t>& firstRow) {
  const auto takesPart = [&](std::uint32_t row) {
    return rows.weight.empty() || rows.weight[row] > 0.0;
  };
  firstRow.assign(groups.size() + 1, 0);
  for (const std::uint32_t row : order) {
    if (takesPart(row)) ++firstRow[groups[row] + std::size_t{1}];
  }
  for (std::size_t g = 0; g < groups.size(); ++g) firstRow[g + 1] += firstRow[g];
  std::vector<std::size_t> next(firstRow.begin(), firstRow.end() - 1);
  std::vector<std::uint32_t> sorted(firstRow.back());
  for (const std::uint32_t row : order) {
    if (takesPart(row)) sorted[next[groups[row]]++] = row;
  }
  return sorted;
}

}  // namespace

void check(const Response& response, const Rows& rows, const Groups& groups, const char* who) {
  risk::check(response, rows, {});
  if (response.causes != 1) {
    throw Refusal(Role::kEvent, Refusal::kNone, std::string(who) + " take one kind of event");
  }
  checkGroups(response, rows, groups, who);
}

void checkGroups(const Response& response, const Rows& rows, const Groups& groups,
                 const char* who) {
  if (!rows.offset.empty()) {
    throw Refusal(Role::kOffset, Refusal::kNone, std::string(who) + " take no offset");
  }
  if (groups.code.empty()) return;
  if (groups.code.size() != response.rows()) {
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "group has " + std::to_string(groups.code.size()) + " rows, the response has " +
                      std::to_string(response.rows()));
  }
  for (std::size_t i = 0; i < groups.code.size(); ++i) {
    if (groups.code[i] < groups.count) continue;
    throw Refusal(Role::kGroup, i,
                  "group code " + std::to_string(groups.code[i]) + " is not below " +
                      std::to_string(groups.count));
  }
}

risk::TimeCodes checkedCodes(const Response& response, const Rows& rows, const Groups& groups,
                             double tieTolerance, const char* who) {
  check(response, rows, groups, who);
  return {response, tieTolerance};
}

Sample::Sample(const Response& response, const Rows& rows, const Groups& groups,
               double tieTolerance, Ending ending)
    : Sample(checkedCodes(response, rows, groups, tieTolerance, "Curves"), response, rows, groups,
             ending) {}

Sample::Sample(const risk::TimeCodes& codes, const Response& response, const Rows& rows,
               const Groups& groups, Ending ending) {
  source = byGroup(codes.exitOrder, rows, groups, firstRow);
  const std::size_t n = source.size();
  event.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    event[i] = (response.event[source[i]] != 0) == (ending == Ending::kEvent) ? 1 : 0;
  }
  if (!rows.weight.empty()) {
    weight.resize(n);
    for (std::size_t i = 0; i < n; ++i) weight[i] = rows.weight[source[i]];
  }
  findTimes(codes);
  if (!response.entry.empty()) {
    std::vector<std::size_t> starts;
    const std::vector<std::uint32_t> byEntry = byGroup(codes.entryOrder, rows, groups, starts);
    std::vector<std::uint32_t> entryOfRow(response.rows());
    for (std::size_t g = 0; g < this->groups(); ++g) {
      std::size_t at = first[g];
      for (std::size_t i = starts[g]; i < starts[g + 1]; ++i) {
        while (at < first[g + 1] && timeCode_[at] <= codes.entry[byEntry[i]]) ++at;
        entryOfRow[byEntry[i]] = static_cast<std::uint32_t>(at);
      }
    }
    entryAt.resize(n);
    for (std::size_t i = 0; i < n; ++i) entryAt[i] = entryOfRow[source[i]];
  }
  timeCode_ = {};
  const std::size_t m = times();
  atRisk.resize(m);
  surviving.resize(m);
  events.resize(m);
  censored.resize(m);
  eventRows.assign(m, 0);
  weight.empty() ? countRows() : countAtRisk();
}

void Sample::findTimes(const risk::TimeCodes& codes) {
  exitAt.resize(rows());
  for (std::size_t i = 0; i < rows(); ++i) exitAt[i] = codes.exit[source[i]];
  std::size_t changes = 0;
  for (std::size_t i = 1; i < rows(); ++i) changes += exitAt[i] != exitAt[i - 1] ? 1 : 0;
  time.reserve(changes + firstRow.size());
  timeCode_.reserve(time.capacity());
  for (std::size_t g = 0; g + 1 < firstRow.size(); ++g) {
    first.push_back(time.size());
    for (std::size_t i = firstRow[g]; i < firstRow[g + 1]; ++i) {
      const std::uint32_t code = exitAt[i];
      if (time.size() == first.back() || timeCode_.back() != code) {
        time.push_back(codes.time[code]);
        timeCode_.push_back(code);
      }
      exitAt[i] = static_cast<std::uint32_t>(time.size() - 1);
    }
  }
  first.push_back(time.size());
}

// From the last time of each group to its first: rows join at their exit and leave before their
// entry.
void Sample::countRows() {
  const std::size_t m = times();
  std::vector<std::uint32_t> entering(entryAt.empty() ? 0 : m);
  for (const std::uint32_t at : entryAt) ++entering[at];
  for (std::size_t g = 0; g < groups(); ++g) {
    std::uint32_t count = 0;
    std::size_t row = firstRow[g + 1];
    for (std::size_t k = first[g + 1]; k-- > first[g];) {
      const std::size_t stop = row;
      std::uint32_t failing = 0;
      for (; row > firstRow[g] && exitAt[row - 1] == k; --row) failing += event[row - 1];
      const auto ending = static_cast<std::uint32_t>(stop - row);
      count += ending;
      eventRows[k] = failing;
      events[k] = failing;
      censored[k] = ending - failing;
      atRisk[k] = count;
      surviving[k] = count - failing;
      if (!entering.empty()) count -= entering[k];
    }
  }
}

// The same in twice the precision, so that what has left takes nothing from those that stay.
void Sample::countAtRisk() {
  const std::size_t m = times();
  // What enters just before time k leaves the sum behind time k - 1, on the way down.
  std::vector<DoubleDouble> entering(entryAt.empty() ? 0 : m);
  std::vector<std::uint32_t> rowsEntering(entryAt.empty() ? 0 : m);
  for (std::size_t i = 0; i < entryAt.size(); ++i) {
    entering[entryAt[i]] = entering[entryAt[i]] + weightOf(i);
    ++rowsEntering[entryAt[i]];
  }
  for (std::size_t g = 0; g < groups(); ++g) {
    DoubleDouble sum;
    std::uint32_t count = 0;
    std::size_t row = firstRow[g + 1];
    for (std::size_t k = first[g + 1]; k-- > first[g];) {
      DoubleDouble failing;
      DoubleDouble leaving;
      for (; row > firstRow[g] && exitAt[row - 1] == k; --row) {
        DoubleDouble& to = event[row - 1] != 0 ? failing : leaving;
        to = to + weightOf(row - 1);
        eventRows[k] += event[row - 1];
        ++count;
      }
      const DoubleDouble others = sum + leaving;
      sum = others + failing;
      events[k] = failing.hi;
      censored[k] = leaving.hi;
      atRisk[k] = sum.hi;
      surviving[k] = others.hi;
      if (eventRows[k] == count) {
        surviving[k] = 0.0;
        atRisk[k] = events[k];
      }
      if (!entering.empty()) {
        sum = sum - entering[k];
        count -= rowsEntering[k];
      }
      if (count == 0) sum = {};
    }
  }
}

}  // namespace survmeth::engine::curves
