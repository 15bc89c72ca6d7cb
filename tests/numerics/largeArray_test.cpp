// Memory for long arrays: where it begins, and that it holds what is written.
#include "numerics/largeArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>

namespace survmeth::numerics {
namespace {

constexpr std::size_t kMega = std::size_t{1} << 20;

std::uintptr_t placeOf(const LargeArray<double>& array) {
  return reinterpret_cast<std::uintptr_t>(array.data());
}

TEST(LargeArray, BeginsOnACacheLineAndFromFourMegabytesOnALargePage) {
  const std::size_t numbers = kMega / sizeof(double);
  for (const std::size_t count : {std::size_t{1}, std::size_t{7}, numbers, 4 * numbers - 1}) {
    EXPECT_EQ(placeOf(LargeArray<double>(count)) % 64, 0U) << count;
  }
  for (const std::size_t count : {4 * numbers, 5 * numbers + 3, 9 * numbers}) {
    EXPECT_EQ(placeOf(LargeArray<double>(count)) % (2 * kMega), 0U) << count;
  }
}

TEST(LargeArray, HoldsWhatIsWrittenThroughGrowthCopyAndRelease) {
  for (int round = 0; round < 3; ++round) {
    LargeArray<std::uint32_t> array(kMega + 5);
    std::iota(array.begin(), array.end(), 0U);
    array.resize(3 * kMega);
    const LargeArray<std::uint32_t> copy = array;
    for (std::uint32_t i = 0; i < kMega + 5; ++i) ASSERT_EQ(copy[i], i);
  }
}

TEST(LargeArray, FillsWithAValueThatIsGiven) {
  LargeArray<double> array(3, 2.0);
  array.resize(600'000, 0.5);
  EXPECT_EQ(array[2], 2.0);
  EXPECT_EQ(array[3], 0.5);
  EXPECT_EQ(array.back(), 0.5);
  array.assign(10, 1.5);
  EXPECT_EQ(array.back(), 1.5);
}

TEST(LargeArray, RefusesWhatNoMemoryHolds) {
  LargeAllocator<double> allocator;
  EXPECT_THROW((void)allocator.allocate(static_cast<std::size_t>(-1) / 4), std::bad_alloc);
}

}  // namespace
}  // namespace survmeth::numerics
