// The order that every sort is made of, on keys that nowhere rise.
#include "Klikro/order.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using klikro::sortedOrder;
using Order = std::vector<std::uint32_t>;

TEST(SortedOrder, FallingKeysAreTurnedRound) {
  const std::vector<double> keys{9, 4, 2, -1};
  EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), (Order{3, 2, 1, 0}));
}

TEST(SortedOrder, EqualKeysOfAFallingRunKeepTheirOrder) {
  const std::vector<double> keys{9, 9, 4, 0.0, -0.0, 0.0};
  EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), (Order{3, 4, 5, 2, 0, 1}));
}

TEST(SortedOrder, NaNAheadOfFallingKeysComesLast) {
  const std::vector<double> keys{std::nan(""), std::nan(""), 4, 2};
  EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), (Order{3, 2, 0, 1}));
}

TEST(SortedOrder, RisingKeysFallWhereDescending) {
  const std::vector<double> keys{1, 2, 2, 3};
  EXPECT_EQ(sortedOrder(keys.data(), keys.size(), true), (Order{3, 1, 2, 0}));
  EXPECT_TRUE(sortedOrder(keys.data(), keys.size(), false).empty());
}

TEST(SortedOrder, NoKeysAreInOrder) {
  EXPECT_TRUE(sortedOrder(nullptr, 0, false).empty());
  const double one = 3.0;
  EXPECT_TRUE(sortedOrder(&one, 1, true).empty());
}

}  // namespace
