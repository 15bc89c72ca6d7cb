// Which times are one.
#include <algorithm>
#include <cmath>

#include "engine/risk/arrangement.h"
#include "engine/risk/parts.h"
#include "numerics/order.h"

namespace survmeth::engine::risk {
namespace {

// The distinct times of two ascending sequences, ascending.
std::vector<double> distinctTimes(const std::vector<double>& exits,
                                  const std::vector<double>& entries) {
  std::vector<double> distinct;
  distinct.reserve(exits.size());
  const auto add = [&](double time) {
    if (distinct.empty() || distinct.back() < time) distinct.push_back(time);
  };
  std::size_t j = 0;
  for (const double exit : exits) {
    for (; j < entries.size() && entries[j] < exit; ++j) add(entries[j]);
    add(exit);
  }
  return distinct;
}

// The first time of every chain of neighbours that are tied.
std::vector<double> chains(std::vector<double> distinct, double tolerance) {
  if (tolerance <= 0.0) return distinct;
  double mean = 0.0;
  for (const double time : distinct) mean += std::fabs(time);
  mean /= static_cast<double>(distinct.size());
  std::vector<double> starts;
  starts.reserve(distinct.size());
  for (std::size_t i = 0; i < distinct.size(); ++i) {
    const double gap = i == 0 ? 0.0 : distinct[i] - distinct[i - 1];
    if (i == 0 || (gap > tolerance && gap / mean > tolerance)) starts.push_back(distinct[i]);
  }
  return starts;
}

// The codes of the rows' times, which come in ascending order.
std::vector<std::uint32_t> codesOf(const std::vector<double>& sorted,
                                   const std::vector<std::uint32_t>& order,
                                   const std::vector<double>& starts) {
  std::vector<std::uint32_t> codes(order.size());
  inRanges(order.size(), [&](std::size_t begin, std::size_t end) {
    // The last start that is not behind the time; the first start is behind none.
    const auto next = std::upper_bound(starts.begin(), starts.end(), sorted[begin]);
    auto code = static_cast<std::size_t>(next - starts.begin()) - 1;
    for (std::size_t i = begin; i < end; ++i) {
      while (code + 1 < starts.size() && starts[code + 1] <= sorted[i]) ++code;
      codes[order[i]] = static_cast<std::uint32_t>(code);
    }
  });
  return codes;
}

}  // namespace

TimeCodes::TimeCodes(const Response& response, double tolerance) {
  std::vector<double> exits;
  std::vector<double> entries;
  exitOrder = numerics::ascendingOrder(response.exit, exits);
  entryOrder = numerics::ascendingOrder(response.entry, entries);
  time = chains(distinctTimes(exits, entries), tolerance);
  exit = codesOf(exits, exitOrder, time);
  if (entryOrder.empty()) return;
  entry = codesOf(entries, entryOrder, time);
  for (std::size_t i = 0; i < exit.size(); ++i) {
    if (entry[i] == exit[i]) {
      throw Refusal(Role::kEntry, i, "entry and exit differ by no more than the tolerance of ties");
    }
  }
}

}  // namespace survmeth::engine::risk
