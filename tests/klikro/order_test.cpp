// The order that every sort is made of: keys that nowhere rise, and many keys that differ in their
// last bits only.
#include "Klikro/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
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

Order stableOrder(const std::vector<double>& keys) {
  Order order(keys.size());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [&keys](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
  return order;
}

TEST(SortedOrder, KeysThatDifferInTheirLastBitsAreOrdered) {
  constexpr double step = std::numeric_limits<double>::epsilon();
  std::mt19937_64 random(5);
  for (const unsigned apart : {1u, 3u, 40u, 5000u}) {
    std::vector<double> keys;
    for (int i = 0; i < 20000; ++i) {
      const double common = 1.0 + static_cast<double>(random() % (20000 / apart + 1));
      keys.push_back(common * (1.0 + step * static_cast<double>(random() % apart)));
    }
    EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), stableOrder(keys)) << apart;
  }
}

TEST(SortedOrder, FewValuesAreOrderedWithNaNLast) {
  for (const int values : {2, 3, 8, 9, 10}) {
    std::mt19937_64 random(7);
    std::vector<double> keys;
    for (int i = 0; i < 3000; ++i) keys.push_back(static_cast<double>(random() % values) - 1.0);
    EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), stableOrder(keys)) << values;

    // Not-a-number in every fifth place; the numbers descend before it.
    Order expected;
    for (std::uint32_t i = 0; i < keys.size(); i += 5) keys[i] = std::nan("");
    for (double value = values; value >= -1.0; value -= 1.0) {
      for (std::uint32_t i = 0; i < keys.size(); ++i) {
        if (keys[i] == value) expected.push_back(i);
      }
    }
    for (std::uint32_t i = 0; i < keys.size(); i += 5) expected.push_back(i);
    EXPECT_EQ(sortedOrder(keys.data(), keys.size(), true), expected) << values;
  }
  const std::vector<double> zeros{0.0, 1.0, -0.0, 1.0, 0.0};
  EXPECT_EQ(sortedOrder(zeros.data(), zeros.size(), false), (Order{0, 2, 4, 1, 3}));
}

TEST(SortedOrder, KeysOfAllSizesAreOrdered) {
  std::mt19937_64 random(6);
  std::vector<double> keys;
  for (int i = 0; i < 50000; ++i) {
    const double sign = random() % 2 == 0 ? 1.0 : -1.0;
    keys.push_back(sign * std::ldexp(static_cast<double>(random() % 100),
                                     static_cast<int>(random() % 2100) - 1080));
  }
  keys[100] = std::numeric_limits<double>::infinity();
  keys[200] = -std::numeric_limits<double>::infinity();
  EXPECT_EQ(sortedOrder(keys.data(), keys.size(), false), stableOrder(keys));
}

TEST(SortedOrder, NoKeysAreInOrder) {
  EXPECT_TRUE(sortedOrder(nullptr, 0, false).empty());
  const double one = 3.0;
  EXPECT_TRUE(sortedOrder(&one, 1, true).empty());
}

}  // namespace
