// Powers: the special values of C's Annex F, and results that are exact.
#include <gtest/gtest.h>

#include <cmath>

#include "exact.h"
#include "numerics/elementary.h"

namespace numerics_tests {
namespace {

using survmeth::numerics::pow;

constexpr double kAll[] = {0.0,        -0.0,     1.0,       -1.0,      2.5,        -2.5, kSmallest,
                           -kSmallest, kLargest, -kLargest, kInfinity, -kInfinity, kNan, 3.0};

TEST(Pow, WithExponentZeroAndOfOneIsOneWhateverTheOtherIs) {
  for (const double x : kAll) {
    EXPECT_TRUE(same(pow(x, 0.0), 1.0)) << x;
    EXPECT_TRUE(same(pow(x, -0.0), 1.0)) << x;
    EXPECT_TRUE(same(pow(1.0, x), 1.0)) << x;
  }
}

TEST(Pow, OfNotANumberIsNotANumberElsewhere) {
  for (const double x : {0.0, -1.0, 2.0, kInfinity, -kInfinity}) {
    EXPECT_TRUE(same(pow(x, kNan), kNan)) << x;
  }
  for (const double y : {1.0, -1.0, 2.5, kInfinity, -kInfinity}) {
    EXPECT_TRUE(same(pow(kNan, y), kNan)) << y;
  }
}

TEST(Pow, OfZeroKeepsItsSignUnderOddExponentsOnly) {
  EXPECT_TRUE(same(pow(0.0, 3.0), 0.0));
  EXPECT_TRUE(same(pow(-0.0, 3.0), -0.0));
  EXPECT_TRUE(same(pow(-0.0, 2.0), 0.0));
  EXPECT_TRUE(same(pow(-0.0, 0.5), 0.0));
  EXPECT_TRUE(same(pow(-0.0, 0x1p53), 0.0));
  EXPECT_TRUE(same(pow(0.0, -3.0), kInfinity));
  EXPECT_TRUE(same(pow(-0.0, -3.0), -kInfinity));
  EXPECT_TRUE(same(pow(-0.0, -2.0), kInfinity));
  EXPECT_TRUE(same(pow(-0.0, -0.5), kInfinity));
  EXPECT_TRUE(same(pow(0.0, -kInfinity), kInfinity));
  EXPECT_TRUE(same(pow(-0.0, kInfinity), 0.0));
}

TEST(Pow, OfInfinityMirrorsThatOfZero) {
  EXPECT_TRUE(same(pow(kInfinity, 0.5), kInfinity));
  EXPECT_TRUE(same(pow(kInfinity, -0.5), 0.0));
  EXPECT_TRUE(same(pow(-kInfinity, 3.0), -kInfinity));
  EXPECT_TRUE(same(pow(-kInfinity, 2.0), kInfinity));
  EXPECT_TRUE(same(pow(-kInfinity, 0.5), kInfinity));
  EXPECT_TRUE(same(pow(-kInfinity, -3.0), -0.0));
  EXPECT_TRUE(same(pow(-kInfinity, -2.5), 0.0));
}

TEST(Pow, WithInfiniteExponentDependsOnTheSizeOfTheBaseOnly) {
  for (const double sign : {1.0, -1.0}) {
    EXPECT_TRUE(same(pow(sign * 2.0, kInfinity), kInfinity));
    EXPECT_TRUE(same(pow(sign * 2.0, -kInfinity), 0.0));
    EXPECT_TRUE(same(pow(sign * 0.5, kInfinity), 0.0));
    EXPECT_TRUE(same(pow(sign * 0.5, -kInfinity), kInfinity));
    EXPECT_TRUE(same(pow(sign, kInfinity), 1.0));
    EXPECT_TRUE(same(pow(sign, -kInfinity), 1.0));
  }
}

TEST(Pow, OfANegativeNumberWantsAWholeExponent) {
  EXPECT_TRUE(same(pow(-2.0, 3.0), -8.0));
  EXPECT_TRUE(same(pow(-2.0, 4.0), 16.0));
  EXPECT_TRUE(same(pow(-2.0, -3.0), -0.125));
  EXPECT_TRUE(same(pow(-2.0, 0.5), kNan));
  EXPECT_TRUE(same(pow(-kSmallest, -1.5), kNan));
  EXPECT_TRUE(same(pow(-1.0, 0x1.fffffffffffffp+52), -1.0));  // 2^53 - 1, the largest odd one
  EXPECT_TRUE(same(pow(-1.0, 0x1p53), 1.0));
  EXPECT_TRUE(same(pow(-1.0, -0x1.0000000000001p+53), 1.0));
  EXPECT_TRUE(same(pow(-1.0, 0.5), kNan));
}

TEST(Pow, LeavesTheRangeOnEitherSide) {
  EXPECT_TRUE(same(pow(2.0, 1024.0), kInfinity));
  EXPECT_TRUE(same(pow(2.0, -1076.0), 0.0));
  EXPECT_TRUE(same(pow(-2.0, 1025.0), -kInfinity));
  EXPECT_TRUE(same(pow(-2.0, -1077.0), -0.0));
  EXPECT_TRUE(same(pow(0x1.0000000000001p+0, kLargest), kInfinity));
  EXPECT_TRUE(same(pow(0x1.0000000000001p+0, -kLargest), 0.0));
  EXPECT_TRUE(same(pow(0x1.fffffffffffffp-1, kLargest), 0.0));
  EXPECT_TRUE(same(pow(3.0, kSmallest), 1.0));
}

TEST(Pow, OfTwoIsExactOverTheWholeRange) {
  for (int k = -1074; k <= 1023; ++k) EXPECT_TRUE(same(pow(2.0, k), std::ldexp(1.0, k))) << k;
}

TEST(Pow, IsExactWhereThePowerIsADouble) {
  double product = 1.0;
  for (int k = 1; k <= 22; ++k) {
    product *= 10.0;
    EXPECT_TRUE(same(pow(10.0, k), product)) << k;
  }
  EXPECT_TRUE(same(pow(3.0, 33.0), 5559060566555523.0));
  EXPECT_TRUE(same(pow(0.5, -10.0), 1024.0));
  for (int k = 1; k <= 5000; ++k) {
    const double x = 18987.0 * k;  // below 2^26.5, so that the square fits
    EXPECT_TRUE(same(pow(x, 2.0), x * x)) << x;
    EXPECT_TRUE(same(pow(x * x, 0.5), x)) << x;
    EXPECT_TRUE(same(pow(1.0 / x, 1.0), 1.0 / x)) << x;
  }
}

}  // namespace
}  // namespace numerics_tests
