// Which times are one.
#include <algorithm>
#include <cmath>

#include "engine/risk/arrangement.h"
#include "numerics/order.h"

namespace survmeth::engine::risk {
namespace {

// The distinct entries and exits in ascending order.
std::vector<double> distinctTimes(const Response& response,
                                  const std::vector<std::uint32_t>& exitOrder,
                                  const std::vector<std::uint32_t>& entryOrder) {
  std::vector<double> distinct;
  distinct.reserve(exitOrder.size());
  const auto add = [&](double time) {
    if (distinct.empty() || distinct.back() < time) distinct.push_back(time);
  };
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < exitOrder.size() || j < entryOrder.size()) {
    const bool exitNext =
        j == entryOrder.size() ||
        (i < exitOrder.size() && response.exit[exitOrder[i]] <= response.entry[entryOrder[j]]);
    add(exitNext ? response.exit[exitOrder[i++]] : response.entry[entryOrder[j++]]);
  }
  return distinct;
}

// The first time of every chain of neighbours that are tied.
std::vector<double> chains(const std::vector<double>& distinct, double tolerance) {
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

// The codes of values that are read in ascending order.
std::vector<std::uint32_t> codesOf(std::span<const double> values,
                                   const std::vector<std::uint32_t>& order,
                                   const std::vector<double>& starts) {
  std::vector<std::uint32_t> codes(values.size());
  std::uint32_t code = 0;
  for (const std::uint32_t row : order) {
    while (code + std::size_t{1} < starts.size() && starts[code + 1] <= values[row]) ++code;
    codes[row] = code;
  }
  return codes;
}

}  // namespace

TimeCodes::TimeCodes(const Response& response, double tolerance)
    : exitOrder(numerics::ascendingOrder(response.exit)),
      entryOrder(numerics::ascendingOrder(response.entry)) {
  time = chains(distinctTimes(response, exitOrder, entryOrder), tolerance);
  exit = codesOf(response.exit, exitOrder, time);
  if (entryOrder.empty()) return;
  entry = codesOf(response.entry, entryOrder, time);
  for (std::size_t i = 0; i < exit.size(); ++i) {
    if (entry[i] == exit[i]) {
      throw Refusal(Role::kEntry, i, "entry and exit differ by no more than the tolerance of ties");
    }
  }
}

}  // namespace survmeth::engine::risk
