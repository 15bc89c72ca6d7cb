// Ascending order: sorted, stable, every kind of double.
#include "numerics/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

namespace survmeth::numerics {
namespace {

std::vector<std::uint32_t> stableOrder(const std::vector<double>& values) {
  std::vector<std::uint32_t> order(values.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
  return order;
}

// A few digits of a linear congruence: many equal values, both signs.
std::vector<double> scattered(std::size_t count, std::uint64_t distinct, double unit) {
  std::vector<double> values;
  std::uint64_t state = 1;
  for (std::size_t i = 0; i < count; ++i) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    values.push_back(
        (static_cast<double>((state >> 33) % distinct) - static_cast<double>(distinct) / 2.0) *
        unit);
  }
  return values;
}

TEST(AscendingOrder, AgreesWithAStableComparisonSort) {
  for (const std::size_t count : {0U, 1U, 2U, 511U, 512U, 5000U}) {
    for (const std::uint64_t distinct : {3U, 1000000007U}) {
      const std::vector<double> values = scattered(count, distinct, 0.37);
      EXPECT_EQ(ascendingOrder(values), stableOrder(values)) << count << " of " << distinct;
    }
  }
}

TEST(AscendingOrder, InfinitiesAndSubnormalNumbersHaveTheirPlaces) {
  const double tiny = std::numeric_limits<double>::denorm_min();
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> values;
  for (int i = 0; i < 200; ++i)
    values.insert(values.end(), {infinity, tiny, -tiny, -infinity, 1e308});
  EXPECT_EQ(ascendingOrder(values), stableOrder(values));
}

TEST(AscendingOrder, BothZerosAreEqual) {
  std::vector<double> values(1000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = i % 3 == 0 ? -0.0 : 0.0;
  EXPECT_EQ(ascendingOrder(values), stableOrder(values));
}

}  // namespace
}  // namespace survmeth::numerics
