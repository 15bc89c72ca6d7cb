// The shared checks of requests.
#include "analysis/checks.h"

#include <algorithm>
#include <cmath>

#include "analysis/invalidRequest.h"

namespace survmeth {

void require(bool holds, const char* member, const char* what) {
  if (!holds) throw InvalidRequest(member, what);
}

void requireRows(std::size_t rows, std::size_t least, const char* member, const char* tooFew) {
  require(rows >= least, member, tooFew);
  require(rows <= kMostRows, member, "there are too many rows");
}

void requireAlpha(double alpha) {
  require(alpha > 0 && alpha < 1, "alpha", "the significance level is not between 0 and 1");
}

void requireFinite(std::span<const double> values, const char* member) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i])) throw InvalidRequest(member, "a value is not finite", i);
  }
}

void requireTimes(std::span<const double> times) {
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (!std::isfinite(times[i]) || times[i] < 0) {
      throw InvalidRequest("time", "a time is negative or not finite", i);
    }
  }
}

void requireWeights(std::span<const double> weights) {
  double total = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!std::isfinite(weights[i]) || weights[i] < 0) {
      throw InvalidRequest("weight", "a weight is negative or not finite", i);
    }
    total += weights[i];
  }
  require(std::isfinite(total), "weight", "the weights' sum is not finite");
}

void requireCodes(std::span<const std::uint32_t> codes, std::size_t count, const char* member) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] < count) continue;
    throw InvalidRequest(member, std::string("a ") + member + " code is out of range", i);
  }
}

void requireSpread(std::span<const double> column, const char* member) {
  const auto [least, most] = std::minmax_element(column.begin(), column.end());
  require(*least != *most, member, "all values are the same");
}

}  // namespace survmeth
