// Fit criteria, global tests and the table of coefficients.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/cox/cox.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::IntColumn;
using survmeth::test::Rows;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The inputs of the criteria, with cells to be left alone marked 7.
struct Criteria {
  Criteria() = default;
  void compute() {
    ComputeCritCox(n, q, &censored, logLik, logLik0, iterations, alpha, &beta, &hessian, &inverse,
                   &z, &gradient0, &inverse0, &criteria, &coefficients, &tests);
  }
  int n = 20;
  int q = 2;
  IntColumn censored{{5, 9}};
  double logLik = -30.0;
  double logLik0 = -34.0;
  int iterations = 4;
  double alpha = 0.05;
  Column beta{{1.0, -0.5}};
  Rows hessian{{{-8, 2}, {2, -4}}};
  Rows inverse{{{-0.25, 0.0}, {0.0, -0.0625}}};
  double z = 7;
  Column gradient0{{3.0, 1.0}};
  Rows inverse0{{{-0.5, 0.25}, {0.25, -1.0}}};
  matrix criteria{6, 2, 7};
  matrix coefficients{3, 9, 7};
  matrix tests{3, 3, 7};
};

TEST(CoxCriteria, DescribeBothModels) {
  Criteria c;
  c.compute();
  const double expected[6][2] = {
      {15, 15}, {0, 2}, {68, 60}, {68, 64}, {68, 2 * std::log(15.0) + 60}, {1, 4}};
  for (int row = 1; row <= 6; ++row) {
    for (int column = 1; column <= 2; ++column) {
      EXPECT_DOUBLE_EQ(c.criteria.vbget(row, column), expected[row - 1][column - 1]);
    }
  }
}

TEST(CoxCriteria, CountTheFirstStratumsCensoredRowsOnly) {
  Criteria c;
  c.censored.vbset(2, 1, 1000);
  c.compute();
  EXPECT_EQ(c.criteria.vbget(1, 1), 15.0);
}

TEST(CoxCriteria, WithoutEventsHaveNoSchwarzCriterion) {
  Criteria c;
  c.n = 5;
  c.compute();
  EXPECT_EQ(c.criteria.vbget(1, 1), 0.0);
  EXPECT_TRUE(std::isnan(c.criteria.vbget(5, 1)));  // 0 times ln 0
  EXPECT_EQ(c.criteria.vbget(5, 2), -std::numeric_limits<double>::infinity());
}

TEST(CoxCriteria, GlobalTests) {
  Criteria c;
  c.compute();
  for (int test = 1; test <= 3; ++test) EXPECT_EQ(c.tests.vbget(test, 1), 2.0);
  EXPECT_DOUBLE_EQ(c.tests.vbget(1, 2), 8.0);
  // -(3, 1) H0^-1 (3, 1)' = 0.5 x 9 - 2 x 0.25 x 3 + 1.
  EXPECT_DOUBLE_EQ(c.tests.vbget(2, 2), 4.0);
  // -(1, -0.5) H (1, -0.5)' = 8 + 2 x 2 x 0.5 + 4 x 0.25.
  EXPECT_DOUBLE_EQ(c.tests.vbget(3, 2), 11.0);
  // With 2 degrees of freedom the upper tail is exp(-x / 2).
  EXPECT_NEAR(c.tests.vbget(1, 3), std::exp(-4.0), 1e-14);
  EXPECT_NEAR(c.tests.vbget(2, 3), std::exp(-2.0), 1e-14);
  EXPECT_NEAR(c.tests.vbget(3, 3), std::exp(-5.5), 1e-14);
}

TEST(CoxCriteria, AFitWorseThanNoneHasNoLikelihoodRatioPValue) {
  Criteria c;
  c.logLik = -35.0;
  c.compute();
  EXPECT_DOUBLE_EQ(c.tests.vbget(1, 2), -2.0);
  EXPECT_EQ(c.tests.vbget(1, 3), kMissing);
  c.logLik = -34.0;
  c.compute();
  EXPECT_EQ(c.tests.vbget(1, 3), 1.0);
  c.logLik = kNaN;
  c.compute();
  EXPECT_TRUE(std::isnan(c.tests.vbget(1, 2)));
  EXPECT_EQ(c.tests.vbget(1, 3), kMissing);
}

TEST(CoxCriteria, CoefficientTable) {
  Criteria c;
  c.compute();
  const double z = 1.959963984540054;
  EXPECT_NEAR(c.z, z, 1e-12);
  EXPECT_EQ(c.coefficients.vbget(1, 1), 1.0);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(1, 2), 0.5);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(1, 3), 4.0);
  EXPECT_NEAR(c.coefficients.vbget(1, 4), 0.04550026389635842, 1e-13);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(1, 5), std::exp(1.0));
  EXPECT_NEAR(c.coefficients.vbget(1, 6), std::exp(1 - z / 2), 1e-12);
  EXPECT_NEAR(c.coefficients.vbget(1, 7), std::exp(1 + z / 2), 1e-12);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(2, 2), 0.25);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(2, 3), 4.0);
  for (const int column : {8, 9}) EXPECT_EQ(c.coefficients.vbget(1, column), 7.0);
  for (int column = 1; column <= 9; ++column) {
    EXPECT_EQ(c.coefficients.vbget(3, column), 7.0);  // past the model
  }
}

TEST(CoxCriteria, TheLevelOfTheLimitsIsOneMinusAlpha) {
  Criteria c;
  c.alpha = 0.1;
  c.compute();
  EXPECT_NEAR(c.z, 1.6448536269514722, 1e-12);
}

TEST(CoxCriteria, ACoefficientWithoutAVarianceHasMarkers) {
  for (const double variance : {0.0, -2.2e-16, 1.0, kNaN}) {
    Criteria c;
    c.inverse.vbset(1, 1, variance);
    c.compute();
    EXPECT_EQ(c.coefficients.vbget(1, 1), 1.0);
    for (int column = 2; column <= 7; ++column) {
      EXPECT_EQ(c.coefficients.vbget(1, column), kMissing) << variance;
    }
    EXPECT_DOUBLE_EQ(c.coefficients.vbget(2, 2), 0.25);
  }
}

TEST(CoxCriteria, AVarianceOfExactlyTwoToTheMinus52Counts) {
  Criteria c;
  c.inverse.vbset(1, 1, -kEpsilon);
  c.compute();
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(1, 2), std::ldexp(1.0, -26));
}

TEST(CoxCriteria, AnUpperLimitPastExp709IsInfinite) {
  Criteria c;
  c.beta.vbset(1, 1, 709.0);
  c.inverse.vbset(1, 1, -1.0);
  c.compute();
  EXPECT_EQ(c.coefficients.vbget(1, 7), kInfinite);
  EXPECT_DOUBLE_EQ(c.coefficients.vbget(1, 5), std::exp(709.0));
  c.beta.vbset(1, 1, 707.0);
  c.compute();
  EXPECT_NEAR(std::log(c.coefficients.vbget(1, 7)), 707.0 + 1.959963984540054, 1e-9);
}

TEST(CoxCriteria, WithoutCovariatesLeaveTheCoefficientsAlone) {
  for (const int q : {0, -3}) {
    Criteria c;
    c.q = q;
    c.compute();
    for (int i = 1; i <= 3; ++i) {
      for (int j = 1; j <= 9; ++j) EXPECT_EQ(c.coefficients.vbget(i, j), 7.0);
    }
    EXPECT_EQ(c.tests.vbget(2, 1), q);
    EXPECT_EQ(c.tests.vbget(2, 2), 0.0);
    EXPECT_DOUBLE_EQ(c.criteria.vbget(4, 2), 2.0 * q + 60.0);
  }
}

TEST(CoxCriteria, AHugeOrderEnds) {
  Criteria c;
  c.q = 2147483647;
  c.compute();
  EXPECT_EQ(c.tests.vbget(1, 1), 2147483647.0);
  EXPECT_DOUBLE_EQ(c.criteria.vbget(2, 2), 2147483647.0);
  c.q = -2147483647 - 1;
  c.compute();
  EXPECT_EQ(c.tests.vbget(2, 2), 0.0);
}

}  // namespace
