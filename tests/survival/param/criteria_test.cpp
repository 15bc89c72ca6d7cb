// ComputeCritParam: statistics, coefficient table, tests.
#include <gtest/gtest.h>

#include "numerics/elementary.h"
#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

// The normal quantile at 0.975, to 16 digits (Abramowitz & Stegun, table 26.5).
constexpr double kZ = 1.959963984540054;

// Upper tail of chi-square with one degree of freedom, another way.
double upperTail(double x) { return std::erfc(std::sqrt(x / 2.0)); }

// One covariate, intercept and scale: standard errors 1/2, 1 and 1/5.
struct Criteria {
  void run() {
    ComputeCritParam(n, p, k, logLik, logLik0, iterations, alpha, &parameters, &hessian, covariance,
                     &z, &gradient0, &hessian0, &statistics, &coefficients, &tests);
  }

  int n = 9;
  int p = 1;
  int k = 2;
  double logLik = -20.0;
  double logLik0 = -25.0;
  int iterations = 4;
  double alpha = 0.05;
  double z = 777.0;
  Column parameters{{2.0, -1.0, 0.5}};
  Rows hessian{{{-4.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}}};
  Rows full{{{-0.25, 7.0, 7.0}, {7.0, -1.0, 7.0}, {7.0, 7.0, -0.04}}};
  matrix* covariance = &full;
  Column gradient0{{3.0, 7.0, 7.0}};
  Rows hessian0{{{-2.0, 7.0, 7.0}, {7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}}};
  matrix statistics{7, 2, 777};
  matrix coefficients{3, 9, 777};
  matrix tests{3, 3, 777};
};

std::vector<double> column(const matrix& m, int j) {
  std::vector<double> values;
  for (int i = 1; i <= m.rows(); ++i) values.push_back(m.vbget(i, j));
  return values;
}

std::vector<double> row(const matrix& m, int i) {
  std::vector<double> values;
  for (int j = 1; j <= m.cols(); ++j) values.push_back(m.vbget(i, j));
  return values;
}

TEST(FitStatistics, CompareTheStartWithTheFit) {
  Criteria c;
  c.run();
  EXPECT_EQ((std::vector<double>{9.0, 0.0, 50.0, 50.0, 50.0, 50.0, 1.0}), column(c.statistics, 1));
  // AIC 2 * 3 + 40, SBC 3 ln 9 + 40, AICc 46 + 24 / 5: not an integer division.
  EXPECT_EQ(
      (std::vector<double>{9.0, 3.0, 40.0, 46.0, 3.0 * std::log(9.0) + 40.0, 46.0 + 4.8, 4.0}),
      column(c.statistics, 2));
}

TEST(FitStatistics, AreMissingWhereTheLogLikelihoodFailed) {
  Criteria c;
  c.logLik0 = -1e50;
  c.logLik = -kInf;
  c.run();
  for (int j = 1; j <= 2; ++j) {
    for (int i = 3; i <= 6; ++i) EXPECT_EQ(kMissing, c.statistics.vbget(i, j));
  }
  EXPECT_EQ(9.0, c.statistics.vbget(1, 1));
  EXPECT_EQ(3.0, c.statistics.vbget(2, 2));
  EXPECT_EQ(4.0, c.statistics.vbget(7, 2));
  c.logLik0 = -9.9e49;
  c.logLik = kNaN;
  c.run();
  EXPECT_EQ(1.98e50, c.statistics.vbget(3, 1));
  EXPECT_TRUE(std::isnan(c.statistics.vbget(3, 2)));
}

TEST(FitStatistics, AiccIsInfiniteWithOneRowMoreThanParameters) {
  Criteria c;
  c.n = 4;
  c.run();
  EXPECT_EQ(kInf, c.statistics.vbget(6, 2));
}

TEST(CoefficientTable, StartsWithTheIntercept) {
  Criteria c;
  c.run();
  EXPECT_NEAR(kZ, c.z, 1e-15);
  const std::vector<double> intercept = row(c.coefficients, 1);
  EXPECT_EQ(-1.0, intercept[0]);
  EXPECT_EQ(1.0, intercept[1]);
  EXPECT_EQ(1.0, intercept[2]);
  EXPECT_NEAR(upperTail(1.0), intercept[3], 1e-15);
  EXPECT_NEAR(-1.0 - kZ, intercept[4], 1e-14);
  EXPECT_NEAR(-1.0 + kZ, intercept[5], 1e-14);
  const std::vector<double> covariate = row(c.coefficients, 2);
  EXPECT_EQ(2.0, covariate[0]);
  EXPECT_EQ(0.5, covariate[1]);
  EXPECT_EQ(16.0, covariate[2]);
  EXPECT_NEAR(upperTail(16.0), covariate[3], 1e-17);
  EXPECT_NEAR(2.0 - 0.5 * kZ, covariate[4], 1e-14);
  EXPECT_NEAR(2.0 + 0.5 * kZ, covariate[5], 1e-14);
}

TEST(CoefficientTable, TheScaleHasItsLimitsOnTheLogScale) {
  Criteria c;
  c.run();
  const std::vector<double> scale = row(c.coefficients, 3);
  EXPECT_EQ(0.5, scale[0]);
  EXPECT_EQ(0.2, scale[1]);
  EXPECT_DOUBLE_EQ(6.25, scale[2]);
  EXPECT_NEAR(upperTail(6.25), scale[3], 1e-15);
  EXPECT_NEAR(0.5 * std::exp(-0.4 * kZ), scale[4], 1e-15);
  EXPECT_NEAR(0.5 * std::exp(0.4 * kZ), scale[5], 1e-14);
}

TEST(CoefficientTable, AScaleLimitThatWouldOverflowIsOpen) {
  Criteria c;
  c.parameters.vbset(3, 1, 0.0005);
  c.run();
  EXPECT_EQ(kInfinite, c.coefficients.vbget(3, 6));
  EXPECT_EQ(0.0005 / numerics::exp(c.z * 0.2 / 0.0005), c.coefficients.vbget(3, 5));
  // A negative scale: lower limit 0, upper as the formula gives.
  c.parameters.vbset(3, 1, -0.5);
  c.run();
  EXPECT_EQ(0.0, c.coefficients.vbget(3, 5));
  EXPECT_NEAR(-0.5 * std::exp(-0.4 * kZ), c.coefficients.vbget(3, 6), 1e-15);
  // A scale that is not a number: the lower limit is 0, the upper open.
  c.parameters.vbset(3, 1, kNaN);
  c.run();
  EXPECT_EQ(0.0, c.coefficients.vbget(3, 5));
  EXPECT_EQ(kInfinite, c.coefficients.vbget(3, 6));
}

TEST(CoefficientTable, TheQuantileKeepsItsSign) {
  // alpha 1.9: the quantile at 0.05, so the limits change sides.
  Criteria c;
  c.alpha = 1.9;
  c.run();
  EXPECT_NEAR(-1.644853626951472, c.z, 1e-14);
  EXPECT_GT(c.coefficients.vbget(1, 5), c.coefficients.vbget(1, 6));
  EXPECT_EQ(0.0, c.coefficients.vbget(3, 5));
}

TEST(CoefficientTable, AVarianceOfTheWrongSignLeavesTheEstimateOnly) {
  Criteria c;
  c.full.vbset(2, 2, 0.0);
  c.full.vbset(3, 3, 1.0);
  c.run();
  for (const int r : {1, 3}) {
    EXPECT_NE(kMissing, c.coefficients.vbget(r, 1));
    for (int j = 2; j <= 6; ++j) EXPECT_EQ(kMissing, c.coefficients.vbget(r, j));
  }
  EXPECT_EQ(0.5, c.coefficients.vbget(2, 2));
}

TEST(CoefficientTable, TheLastThreeColumnsStayAsTheyAre) {
  Criteria c;
  c.run();
  for (int i = 1; i <= 3; ++i) {
    for (int j = 7; j <= 9; ++j) EXPECT_EQ(777.0, c.coefficients.vbget(i, j));
  }
}

TEST(CoefficientTable, OneColumnOfCovarianceGivesStandardErrorsOfOne) {
  Criteria c;
  Column column({-0.25, 3.0, 3.0});
  c.covariance = &column;
  c.run();
  // Row 1 is the intercept, whose diagonal element lies outside: it reads as -1.
  EXPECT_EQ(1.0, c.coefficients.vbget(1, 2));
  EXPECT_EQ(0.5, c.coefficients.vbget(2, 2));
  EXPECT_EQ(1.0, c.coefficients.vbget(3, 2));
}

TEST(CoefficientTable, TheExponentialLawHasNoScaleRow) {
  Criteria c;
  c.k = 1;
  c.run();
  EXPECT_EQ(2.0, c.statistics.vbget(2, 2));
  EXPECT_EQ(std::vector<double>(9, 777.0), row(c.coefficients, 3));
}

TEST(GlobalTests, OneCovariate) {
  Criteria c;
  c.run();
  EXPECT_EQ(1.0, c.tests.vbget(1, 1));
  EXPECT_EQ(10.0, c.tests.vbget(1, 2));
  EXPECT_NEAR(upperTail(10.0), c.tests.vbget(1, 3), 1e-16);
  // -3 (-2) 3: the second derivatives themselves, not their inverse (which would give 9/2).
  EXPECT_EQ(1.0, c.tests.vbget(2, 1));
  EXPECT_EQ(18.0, c.tests.vbget(2, 2));
  EXPECT_NEAR(upperTail(18.0), c.tests.vbget(2, 3), 1e-17);
  EXPECT_EQ(16.0, c.tests.vbget(3, 2));
  EXPECT_NEAR(upperTail(16.0), c.tests.vbget(3, 3), 1e-17);
}

TEST(GlobalTests, QuadraticFormsTakeTheBlockOfTheCovariates) {
  // p = 2: -(3 1)(-2 1; 1 -4)(3 1)' = 18 - 6 + 4, -(2 -1)(-4 1; 1 -2)(2 -1)' = 16 + 4 + 2;
  // two degrees of freedom have the tail e^(-x/2).
  Column parameters({2.0, -1.0, 9.0, 0.5});
  Rows hessian(
      {{-4.0, 1.0, 7.0, 7.0}, {1.0, -2.0, 7.0, 7.0}, {7.0, 7.0, 7.0, 7.0}, {7.0, 7.0, 7.0, 7.0}});
  Rows hessian0(
      {{-2.0, 1.0, 7.0, 7.0}, {1.0, -4.0, 7.0, 7.0}, {7.0, 7.0, 7.0, 7.0}, {7.0, 7.0, 7.0, 7.0}});
  Column gradient0({3.0, 1.0, 7.0, 7.0});
  matrix covariance(4, 4, -1);
  matrix statistics(7, 2, 0), coefficients(4, 9, 0), tests(3, 3, 0);
  double z = 0.0;
  ComputeCritParam(10, 2, 2, -20.0, -22.0, 3, 0.05, &parameters, &hessian, &covariance, &z,
                   &gradient0, &hessian0, &statistics, &coefficients, &tests);
  EXPECT_EQ((std::vector<double>{2.0, 2.0, 2.0, 4.0, 16.0, 22.0}),
            (std::vector<double>(tests.data(), tests.data() + 6)));
  EXPECT_NEAR(std::exp(-2.0), tests.vbget(1, 3), 1e-15);
  EXPECT_NEAR(std::exp(-8.0), tests.vbget(2, 3), 1e-17);
  EXPECT_NEAR(std::exp(-11.0), tests.vbget(3, 3), 1e-18);
}

TEST(GlobalTests, ALikelihoodThatDidNotRiseHasNoPValue) {
  Criteria c;
  c.logLik = -26.0;
  c.run();
  EXPECT_EQ(-2.0, c.tests.vbget(1, 2));
  EXPECT_EQ(kMissing, c.tests.vbget(1, 3));
  c.logLik = c.logLik0;
  c.run();
  EXPECT_EQ(0.0, c.tests.vbget(1, 2));
  EXPECT_EQ(1.0, c.tests.vbget(1, 3));
  c.logLik = kNaN;
  c.run();
  EXPECT_EQ(kMissing, c.tests.vbget(1, 3));
}

TEST(GlobalTests, AnAbsurdWaldFormIsMissing) {
  Criteria c;
  c.hessian.vbset(1, 1, -0.25e100);
  c.run();
  EXPECT_EQ(kMissing, c.tests.vbget(3, 2));
  EXPECT_EQ(kMissing, c.tests.vbget(3, 3));
  c.hessian.vbset(1, 1, -0.24e100);
  c.run();
  EXPECT_DOUBLE_EQ(0.96e100, c.tests.vbget(3, 2));
  EXPECT_EQ(0.0, c.tests.vbget(3, 3));
}

TEST(GlobalTests, StayAsTheyAreWithoutCovariates) {
  for (const int p : {0, -1}) {
    Criteria c;
    c.p = p;
    c.run();
    EXPECT_EQ(std::vector<double>(9, 777.0), elements(c.tests));
  }
}

}  // namespace
}  // namespace survmeth::test
