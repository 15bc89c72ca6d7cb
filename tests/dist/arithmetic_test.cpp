// Arithmetic helpers.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "Dist/Dist"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(Sqr, IsTheSquareRootNotTheSquare) {
  EXPECT_EQ(sqr(9.0), 3.0);
  EXPECT_EQ(sqr(2.0), 1.4142135623730951);
  EXPECT_EQ(sqr(0.0), 0.0);
  EXPECT_EQ(sqr(kInf), kInf);
  EXPECT_TRUE(std::isnan(sqr(-1.0)));
  EXPECT_TRUE(std::isnan(sqr(kNaN)));
}

TEST(FSgn, IsMinusOneBelowZeroAndPlusOneFromZeroOn) {
  EXPECT_EQ(FSgn(-1e-320), -1.0);
  EXPECT_EQ(FSgn(-kInf), -1.0);
  EXPECT_EQ(FSgn(0.0), 1.0);
  EXPECT_EQ(FSgn(-0.0), 1.0);
  EXPECT_EQ(FSgn(3.5), 1.0);
  EXPECT_EQ(FSgn(kInf), 1.0);
  EXPECT_TRUE(std::isnan(FSgn(kNaN)));
}

TEST(Min, IsTheSmaller) {
  EXPECT_EQ(Min(1.0, 2.0), 1.0);
  EXPECT_EQ(Min(2.0, -1.0), -1.0);
  EXPECT_EQ(Min(-kInf, kInf), -kInf);
  EXPECT_TRUE(std::isnan(Min(kNaN, 1.0)));
  EXPECT_TRUE(std::isnan(Min(1.0, kNaN)));
}

TEST(IsEven, HoldsForNegativeNumbersToo) {
  EXPECT_EQ(IsEven(0), 1);
  EXPECT_EQ(IsEven(1), 0);
  EXPECT_EQ(IsEven(-2), 1);
  EXPECT_EQ(IsEven(-3), 0);
  EXPECT_EQ(IsEven(INT_MAX), 0);
  EXPECT_EQ(IsEven(INT_MIN), 1);
}

TEST(Kurtzberg, PairsOfFourInLexicographicOrder) {
  std::vector<int> out(13, -9);
  cKurtzberg(4, 2, out.data());
  EXPECT_EQ(out, (std::vector<int>{1, 2, 1, 3, 1, 4, 2, 3, 2, 4, 3, 4, -9}));
}

TEST(Kurtzberg, SingletonsAndTheWholeSet) {
  std::vector<int> one(4, -9);
  cKurtzberg(3, 1, one.data());
  EXPECT_EQ(one, (std::vector<int>{1, 2, 3, -9}));
  std::vector<int> whole(4, -9);
  cKurtzberg(3, 3, whole.data());
  EXPECT_EQ(whole, (std::vector<int>{1, 2, 3, -9}));
}

TEST(Kurtzberg, EverySubsetOnceInOrder) {
  constexpr int kN = 9;
  constexpr int kK = 4;
  constexpr int kCount = 126;
  std::vector<int> out(kCount * kK + 1, -9);
  cKurtzberg(kN, kK, out.data());
  std::set<std::vector<int>> seen;
  std::vector<int> previous;
  for (int i = 0; i < kCount; ++i) {
    const std::vector<int> subset(out.begin() + i * kK, out.begin() + (i + 1) * kK);
    for (int j = 0; j < kK; ++j) {
      EXPECT_GE(subset[j], 1);
      EXPECT_LE(subset[j], kN);
      if (j > 0) {
        EXPECT_LT(subset[j - 1], subset[j]);
      }
    }
    EXPECT_LT(previous, subset);
    previous = subset;
    seen.insert(subset);
  }
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(kCount));
  EXPECT_EQ(out.back(), -9);
}

TEST(Kurtzberg, WritesNothingWithoutSubsets) {
  int out[2] = {-9, -9};
  cKurtzberg(3, 0, out);
  cKurtzberg(3, -2, out);
  cKurtzberg(3, 4, out);
  cKurtzberg(0, 1, out);
  cKurtzberg(-5, 1, out);
  cKurtzberg(1, INT_MAX, out);
  EXPECT_EQ(out[0], -9);
  EXPECT_EQ(out[1], -9);
}

// x = 1, 2, 3, 4 and y = 1, 3, 2, 5: sums of squares 5 and 35/4, of products 11/2.
TEST(PearsonRho, WorkedByHand) {
  const double x[] = {1, 2, 3, 4};
  const double y[] = {1, 3, 2, 5};
  EXPECT_NEAR(V_PearsonRho(x, y, 4), 5.5 / std::sqrt(5.0 * 8.75), 1e-16);
}

TEST(PearsonRho, ALineIsOneOrMinusOne) {
  const double x[] = {0.1, 0.7, 2.3, 5.9, 6.1};
  double rising[5];
  double falling[5];
  for (int i = 0; i < 5; ++i) {
    rising[i] = 0.25 * x[i];
    falling[i] = -8.0 * x[i];
  }
  EXPECT_EQ(V_PearsonRho(x, rising, 5), 1.0);
  EXPECT_EQ(V_PearsonRho(x, falling, 5), -1.0);
}

TEST(PearsonRho, ALargeCommonOffsetDoesNotSpoilIt) {
  const double x[] = {1e15 + 1, 1e15 + 2, 1e15 + 3, 1e15 + 4};
  const double y[] = {1, 3, 2, 5};
  EXPECT_NEAR(V_PearsonRho(x, y, 4), 5.5 / std::sqrt(5.0 * 8.75), 1e-16);
}

TEST(PearsonRho, HugeAndTinyValuesStayWithinRange) {
  const double huge[] = {1e300, 2e300, 3e300, 4e300};
  const double tiny[] = {1e-300, 3e-300, 2e-300, 5e-300};
  EXPECT_NEAR(V_PearsonRho(huge, tiny, 4), 5.5 / std::sqrt(5.0 * 8.75), 1e-15);
}

TEST(PearsonRho, AConstantVectorHasNoCorrelation) {
  const double constant[] = {0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1};
  const double y[] = {1, 3, 2, 5, 4, 7, 6};
  EXPECT_TRUE(std::isnan(V_PearsonRho(constant, y, 7)));
  EXPECT_TRUE(std::isnan(V_PearsonRho(y, constant, 7)));
}

TEST(PearsonRho, FewerThanTwoValuesOrOneThatIsNoNumberGiveNaN) {
  const double x[] = {1, 2, kNaN};
  const double y[] = {1, kInf, 3};
  EXPECT_TRUE(std::isnan(V_PearsonRho(x, y, 1)));
  EXPECT_TRUE(std::isnan(V_PearsonRho(x, y, 0)));
  EXPECT_TRUE(std::isnan(V_PearsonRho(x, y, -3)));
  EXPECT_TRUE(std::isnan(V_PearsonRho(x, y, 2)));
  EXPECT_TRUE(std::isnan(V_PearsonRho(x, x, 3)));
}

}  // namespace
