// Sizes of arrays that no word holds.
#include "numerics/sizes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>

#include "numerics/squareMatrix.h"

namespace survmeth::numerics {
namespace {

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();

TEST(Product, IsThatOfTheSizes) {
  EXPECT_EQ(product(6, 7), 42u);
  EXPECT_EQ(product(0, kMost), 0u);
  EXPECT_EQ(product(kMost, 0), 0u);
  EXPECT_EQ(product(kMost / 3, 3), kMost / 3 * 3);
}

TEST(Product, BeyondAWordIsRefused) {
  // Half the bits of a word each: the product's lowest word is 0.
  const std::size_t half = std::size_t{1} << (sizeof(std::size_t) * 4);
  try {
    product(half, half);
    ADD_FAILURE() << "a product of 0";
  } catch (const std::length_error& error) {
    EXPECT_EQ(std::string(error.what()), "more elements than there are addresses");
  }
  EXPECT_THROW(SquareMatrix{half}, std::length_error);
}

}  // namespace
}  // namespace survmeth::numerics
