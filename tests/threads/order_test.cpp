// The order of many numbers is the stable one on any number of threads.
#include "numerics/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "numerics/threads.h"

namespace survmeth::numerics {
namespace {

// More than are sorted on one thread. `grid` > 0: many ties.
std::vector<double> numbers(std::size_t n, double grid) {
  std::uint64_t state = n;
  std::vector<double> values(n);
  for (double& value : values) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    value = std::ldexp(static_cast<double>(state >> 11), -50) - 4.0;
    if (grid > 0) value = std::round(value * grid) / grid;
  }
  return values;
}

void expectStableOrder(const std::vector<double>& values) {
  std::vector<std::uint32_t> expected(values.size());
  std::iota(expected.begin(), expected.end(), 0U);
  std::stable_sort(expected.begin(), expected.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
  for (const unsigned count : {1U, 2U, 7U}) {
    setThreads(count);
    std::vector<double> sorted;
    EXPECT_EQ(ascendingOrder(values, sorted), expected) << count << " threads";
    ASSERT_EQ(sorted.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_EQ(sorted[i], values[expected[i]]);
      ASSERT_FALSE(sorted[i] == 0.0 && std::signbit(sorted[i]));
    }
  }
  setThreads(0);
}

TEST(OrderInThreads, IsStable) {
  expectStableOrder(numbers(100000, 0));
  expectStableOrder(numbers(100000, 16));  // rounds to -0, too
  expectStableOrder(numbers(300, 16));
  expectStableOrder({});
}

TEST(OrderInThreads, TellsNumbersApartThatDifferInTheirLastBitsOnly) {
  std::vector<double> values = numbers(100000, 0);
  for (double& value : values) value = 1.0 + value * 0x1p-40;
  expectStableOrder(values);
}

}  // namespace
}  // namespace survmeth::numerics
