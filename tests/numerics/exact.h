// Comparison to the bit: -0 is not 0, and a NaN is like any other.
#ifndef TESTS_NUMERICS_EXACT_H_
#define TESTS_NUMERICS_EXACT_H_

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <ios>
#include <limits>

namespace numerics_tests {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
inline constexpr double kLargest = std::numeric_limits<double>::max();

inline testing::AssertionResult same(double a, double b) {
  if (std::isnan(a) && std::isnan(b)) return testing::AssertionSuccess();
  if (std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b)) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << std::hexfloat << a << " is not " << b;
}

}  // namespace numerics_tests

#endif  // TESTS_NUMERICS_EXACT_H_
