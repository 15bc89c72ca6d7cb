// The factorisation solves, inverts and names what depends on what.
#include "numerics/cholesky.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace survmeth::numerics {
namespace {

SquareMatrix matrixOf(const std::vector<std::vector<double>>& rows) {
  SquareMatrix matrix(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows.size(); ++j) matrix(i, j) = rows[i][j];
  }
  return matrix;
}

TEST(Cholesky, SolvesByHand) {
  const Cholesky factor(matrixOf({{4, 2, 0}, {2, 5, 3}, {0, 3, 6}}));
  ASSERT_TRUE(factor.fullRank());
  // A (1, 2, 3)' = (8, 21, 24)'
  const std::vector<double> x = factor.solve(std::vector<double>{8, 21, 24});
  for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(x[j], static_cast<double>(j + 1), 1e-14);
  EXPECT_NEAR(factor.quadraticForm(std::vector<double>{8, 21, 24}), 8 + 42 + 72, 1e-12);
}

TEST(Cholesky, InvertsByHand) {
  // The determinant is 60.
  const SquareMatrix inverse = Cholesky(matrixOf({{4, 2, 0}, {2, 5, 3}, {0, 3, 6}})).inverse();
  const double expected[3][3] = {{21, -12, 6}, {-12, 24, -12}, {6, -12, 16}};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(inverse(i, j), expected[i][j] / 60, 1e-15);
  }
}

// Columns a = (1, 0, 1), b = (0, 2, 1), c = a + b / 2 and d = (0, 0, 1): their inner products.
SquareMatrix dependentThird() {
  const std::vector<std::vector<double>> columns = {{1, 0, 1}, {0, 2, 1}, {1, 1, 1.5}, {0, 0, 1}};
  SquareMatrix gram(4);
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) gram(i, j) = dot(columns[i], columns[j]);
  }
  return gram;
}

TEST(Cholesky, TheLaterColumnIsTheDependentOneAndItsCombinationIsKnown) {
  const Cholesky factor(dependentThird());
  EXPECT_EQ(factor.rank(), 3U);
  EXPECT_FALSE(factor.dependent(0));
  EXPECT_FALSE(factor.dependent(1));
  EXPECT_TRUE(factor.dependent(2));
  EXPECT_FALSE(factor.dependent(3));
  const std::vector<double> c = factor.combination(2);
  EXPECT_NEAR(c[0], 1.0, 1e-13);
  EXPECT_NEAR(c[1], 0.5, 1e-13);
  EXPECT_EQ(c[2], 0.0);
  EXPECT_EQ(c[3], 0.0);
  EXPECT_EQ(factor.solve(std::vector<double>{1, 1, 1, 1})[2], 0.0);
}

TEST(Cholesky, ScalesOfColumnsDoNotMatter) {
  SquareMatrix gram = dependentThird();
  const double unit[4] = {1e-150, 1e100, 1e-30, 1e150};
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) gram(i, j) *= unit[i] * unit[j];
  }
  const Cholesky factor(gram);
  EXPECT_EQ(factor.rank(), 3U);
  EXPECT_TRUE(factor.dependent(2));
  EXPECT_NEAR(factor.combination(2)[0] * unit[0] / unit[2], 1.0, 1e-12);
}

TEST(Cholesky, AColumnBelowTheSmallestIsZero) {
  const std::vector<double> smallest = {0.0, 1e-9};
  const Cholesky factor(matrixOf({{1, 0}, {0, 1e-10}}), 1e-11, smallest);
  EXPECT_TRUE(factor.dependent(1));
  EXPECT_EQ(factor.combination(1), (std::vector<double>{0.0, 0.0}));
}

TEST(Cholesky, ANegativePivotIsSeen) {
  EXPECT_TRUE(Cholesky(matrixOf({{1, 2}, {2, 1}})).indefinite());
  EXPECT_FALSE(Cholesky(matrixOf({{1, 1}, {1, 1}})).indefinite());
}

TEST(Cholesky, WhatIsNoNumberIsDependent) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Cholesky(matrixOf({{nan, nan}, {nan, nan}})).rank(), 0U);
}

}  // namespace
}  // namespace survmeth::numerics
