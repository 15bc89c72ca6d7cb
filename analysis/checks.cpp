// The shared checks of requests.
#include "analysis/checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

namespace survmeth {

using engine::Refusal;
using engine::Role;

void require(bool holds, engine::Role role, const char* what) {
  if (!holds) throw Refusal(role, Refusal::kNone, what);
}

void requireRows(std::size_t rows, std::size_t least, engine::Role role, const char* tooFew) {
  require(rows >= least, role, tooFew);
  require(rows <= kMostRows, role, "there are too many rows");
}

void requireAlpha(double alpha) {
  require(alpha > 0 && alpha < 1, Role::kAlpha, "the significance level is not between 0 and 1");
}

void requireFinite(std::span<const double> values, engine::Role role) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i])) throw Refusal(role, i, "a value is not finite");
  }
}

void requireTimes(std::span<const double> times) {
  // Counted first, several at a time; where all are, that is all.
  constexpr double kLargest = std::numeric_limits<double>::max();
  const auto count = [&times](auto holds) {
    return std::count_if(times.begin(), times.end(), holds);
  };
  const auto n = static_cast<std::ptrdiff_t>(times.size());
  if (count([](double time) { return time >= 0; }) == n &&
      count([](double time) { return time <= kLargest; }) == n) {
    return;
  }
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (!std::isfinite(times[i]) || times[i] < 0) {
      throw Refusal(Role::kTime, i, "a time is negative or not finite");
    }
  }
}

void requireWeights(std::span<const double> weights) {
  double total = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!std::isfinite(weights[i]) || weights[i] < 0) {
      throw Refusal(Role::kWeight, i, "a weight is negative or not finite");
    }
    total += weights[i];
  }
  require(std::isfinite(total), Role::kWeight, "the weights' sum is not finite");
}

void requireCodes(std::span<const std::uint32_t> codes, std::size_t count, engine::Role role,
                  const char* name) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] < count) continue;
    throw Refusal(role, i, std::string("a ") + name + " code is out of range");
  }
}

void requireSpread(std::span<const double> column, engine::Role role) {
  const auto [least, most] = std::minmax_element(column.begin(), column.end());
  require(*least != *most, role, "all values are the same");
}

}  // namespace survmeth
