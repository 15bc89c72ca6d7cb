// The special values of C's Annex F, and results that are exact.
#include <gtest/gtest.h>

#include "exact.h"
#include "numerics/elementary.h"

namespace numerics_tests {
namespace {

namespace numerics = survmeth::numerics;

TEST(Exp, IsOneAtBothZerosAndNextToThem) {
  EXPECT_TRUE(same(numerics::exp(0.0), 1.0));
  EXPECT_TRUE(same(numerics::exp(-0.0), 1.0));
  EXPECT_TRUE(same(numerics::exp(kSmallest), 1.0));
  EXPECT_TRUE(same(numerics::exp(-kSmallest), 1.0));
}

TEST(Exp, IsInfiniteFromHalfALastPlaceAboveTheLargestDouble) {
  // log(2^1024 (1 - 2^-54)) lies between these neighbours.
  EXPECT_LT(numerics::exp(0x1.62e42fefa39efp+9), kInfinity);
  EXPECT_TRUE(same(numerics::exp(0x1.62e42fefa39f0p+9), kInfinity));
  EXPECT_TRUE(same(numerics::exp(1e4), kInfinity));
  EXPECT_TRUE(same(numerics::exp(kLargest), kInfinity));
  EXPECT_TRUE(same(numerics::exp(kInfinity), kInfinity));
}

TEST(Exp, IsZeroFromHalfTheSmallestDoubleDown) {
  // log(2^-1075) lies between these neighbours.
  EXPECT_TRUE(same(numerics::exp(-0x1.74910d52d3051p+9), kSmallest));
  EXPECT_TRUE(same(numerics::exp(-0x1.74910d52d3052p+9), 0.0));
  EXPECT_TRUE(same(numerics::exp(-1e4), 0.0));
  EXPECT_TRUE(same(numerics::exp(-kLargest), 0.0));
  EXPECT_TRUE(same(numerics::exp(-kInfinity), 0.0));
}

TEST(Expm1, KeepsTheSignOfZeroAndWhatIsTooSmallToBend) {
  for (const double x : {0.0, -0.0, kSmallest, -kSmallest, 0x1p-60, -0x1p-1022}) {
    EXPECT_TRUE(same(numerics::expm1(x), x));
  }
}

TEST(Expm1, IsMinusOneFarBelowZeroAndInfiniteWhereExpIs) {
  EXPECT_TRUE(same(numerics::expm1(-38.0), -1.0));
  EXPECT_TRUE(same(numerics::expm1(-1e4), -1.0));
  EXPECT_TRUE(same(numerics::expm1(-kInfinity), -1.0));
  EXPECT_LT(numerics::expm1(0x1.62e42fefa39efp+9), kInfinity);
  EXPECT_TRUE(same(numerics::expm1(0x1.62e42fefa39f0p+9), kInfinity));
  EXPECT_TRUE(same(numerics::expm1(kInfinity), kInfinity));
}

TEST(Log, IsZeroAtOneAndExactlyZero) { EXPECT_TRUE(same(numerics::log(1.0), 0.0)); }

TEST(Log, IsMinusInfinityAtBothZeros) {
  EXPECT_TRUE(same(numerics::log(0.0), -kInfinity));
  EXPECT_TRUE(same(numerics::log(-0.0), -kInfinity));
}

TEST(Log, OfLessThanZeroIsNotANumber) {
  for (const double x : {-kSmallest, -1.0, -kLargest, -kInfinity}) {
    EXPECT_TRUE(same(numerics::log(x), kNan));
  }
}

TEST(Log, ReachesBothEndsOfTheRange) {
  EXPECT_TRUE(same(numerics::log(kInfinity), kInfinity));
  // -1074 ln 2 and 1024 ln 2, from 50 digits
  EXPECT_TRUE(same(numerics::log(kSmallest), -0x1.74385446d71c3p+9));
  EXPECT_TRUE(same(numerics::log(kLargest), 0x1.62e42fefa39efp+9));
}

TEST(Log1p, KeepsTheSignOfZeroAndWhatIsTooSmallToBend) {
  for (const double x : {0.0, -0.0, kSmallest, -kSmallest, 0x1p-60, -0x1p-1022}) {
    EXPECT_TRUE(same(numerics::log1p(x), x));
  }
}

TEST(Log1p, IsMinusInfinityAtMinusOneAndNotANumberBelow) {
  EXPECT_TRUE(same(numerics::log1p(-1.0), -kInfinity));
  for (const double x : {-0x1.0000000000001p+0, -2.0, -kLargest, -kInfinity}) {
    EXPECT_TRUE(same(numerics::log1p(x), kNan));
  }
}

TEST(Log1p, IsTheLogarithmWhereTheOneIsLost) {
  EXPECT_TRUE(same(numerics::log1p(0x1p60), numerics::log(0x1p60)));
  EXPECT_TRUE(same(numerics::log1p(kLargest), numerics::log(kLargest)));
  EXPECT_TRUE(same(numerics::log1p(kInfinity), kInfinity));
}

TEST(Elementary, NotANumberStaysNotANumber) {
  for (const double nan : {kNan, -kNan}) {
    EXPECT_TRUE(same(numerics::exp(nan), kNan));
    EXPECT_TRUE(same(numerics::expm1(nan), kNan));
    EXPECT_TRUE(same(numerics::log(nan), kNan));
    EXPECT_TRUE(same(numerics::log1p(nan), kNan));
  }
}

}  // namespace
}  // namespace numerics_tests
