// log |Gamma(x)|: the special values of C's Annex F, and around its zeros.
#include <gtest/gtest.h>

#include "exact.h"
#include "numerics/elementary.h"

namespace numerics_tests {
namespace {

using survmeth::numerics::lgamma;

TEST(Lgamma, IsExactlyZeroAtOneAndTwo) {
  EXPECT_TRUE(same(lgamma(1.0), 0.0));
  EXPECT_TRUE(same(lgamma(2.0), 0.0));
}

TEST(Lgamma, IsInfiniteAtZeroAndTheNegativeWholeNumbers) {
  for (const double x : {0.0, -0.0, -1.0, -2.0, -1e6, -0x1p52, -kLargest}) {
    EXPECT_TRUE(same(lgamma(x), kInfinity)) << x;
  }
}

TEST(Lgamma, IsInfiniteAtBothInfinitiesAndAboveTheRange) {
  EXPECT_TRUE(same(lgamma(kInfinity), kInfinity));
  EXPECT_TRUE(same(lgamma(-kInfinity), kInfinity));
  EXPECT_TRUE(same(lgamma(2.6e305), kInfinity));
  EXPECT_LT(lgamma(2.5e305), kInfinity);
  EXPECT_TRUE(same(lgamma(kLargest), kInfinity));
}

TEST(Lgamma, OfNotANumberIsNotANumber) { EXPECT_TRUE(same(lgamma(kNan), kNan)); }

// The three doubles around the zero at -2.4570247382208006; values of 40 digits. 2^-96 is what the
// header promises there.
TEST(Lgamma, IsExactToTwoToTheMinus96AroundANegativeZero) {
  EXPECT_NEAR(lgamma(-0x1.3a7fc9600f86bp+1), 0x1.a4630d4535078p-51, 0x1p-96);
  EXPECT_NEAR(lgamma(-0x1.3a7fc9600f86cp+1), 0x1.0323b6d1fe86dp-54, 0x1p-96);
  EXPECT_NEAR(lgamma(-0x1.3a7fc9600f86dp+1), -0x1.639a1f90b5649p-51, 0x1p-96);
}

}  // namespace
}  // namespace numerics_tests
