// ResParam: residuals, probabilities, percentiles.
#include <gtest/gtest.h>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

// ln(-ln P) at P = .99 .95 .9 .75 .5 .25 .1 .05 .01, from logarithms here.
double quantileAt(int column) {
  const double survival[] = {0.99, 0.95, 0.9, 0.75, 0.5, 0.25, 0.1, 0.05, 0.01};
  return std::log(-std::log(survival[column - 1]));
}

struct Residuals {
  explicit Residuals(int rows)
      : n(rows),
        survival(rows, 1, 777),
        probabilities(rows, 2, 777),
        residuals(rows, 2, 777),
        quantiles(rows, 9, 777) {}

  void run(int law, const std::vector<double>& time, std::vector<std::vector<double>> covariates,
           const std::vector<double>& theta, short logTimes = 0) {
    Column times(time);
    Rows x(covariates);
    Column parameters(theta);
    const int p = covariates.empty() ? 0 : static_cast<int>(covariates.front().size());
    ResParam(&times, n, p, law, logTimes, &x, &parameters, &survival, &probabilities, &residuals,
             &quantiles);
  }

  int n;
  matrix survival;
  matrix probabilities;
  matrix residuals;
  matrix quantiles;
};

TEST(Residuals, OfAWeibullFitFollowTheFittedScale) {
  // eta = 2 * 3 - 5 = 1, sigma = 1/2, y = 2: r = 2.
  Residuals out(1);
  out.run(kWeibull, {2.0}, {{3.0}}, {2.0, -5.0, 0.5});
  const double hazard = std::exp(2.0);
  const double survival = std::exp(-hazard);
  EXPECT_EQ(2.0, out.residuals.vbget(1, 1));
  EXPECT_DOUBLE_EQ(survival, out.survival.vbget(1, 1));
  EXPECT_DOUBLE_EQ(1.0 - survival, out.probabilities.vbget(1, 1));
  EXPECT_DOUBLE_EQ(hazard * 2.0 * survival, out.probabilities.vbget(1, 2));
  EXPECT_NEAR(hazard, out.residuals.vbget(1, 2), 1e-14);
  for (int c = 1; c <= 9; ++c) {
    EXPECT_NEAR(1.0 + 0.5 * quantileAt(c), out.quantiles.vbget(1, c), 2e-15);
  }
  EXPECT_EQ(1.0 - 0.5 * 0.36651292058166435, out.quantiles.vbget(1, 5));
}

TEST(Residuals, OfEveryOtherLawHaveScaleOne) {
  for (const int law : {kExponential, kLogNormal, 4, 0, -1}) {
    Residuals out(1);
    out.run(law, {2.0}, {{3.0}}, {2.0, -5.0, 0.5});
    EXPECT_EQ(1.0, out.residuals.vbget(1, 1));
    EXPECT_DOUBLE_EQ(std::exp(-std::exp(1.0)), out.survival.vbget(1, 1));
    EXPECT_NEAR(1.0 + quantileAt(9), out.quantiles.vbget(1, 9), 4e-15);
  }
  Residuals zero(1);
  zero.run(kWeibull, {2.0}, {{3.0}}, {2.0, -5.0, 0.0});
  EXPECT_EQ(1.0, zero.residuals.vbget(1, 1));
}

TEST(Residuals, PercentilesOfLogTimesGoBackToTimes) {
  Residuals out(1);
  out.run(kWeibull, {2.0}, {}, {1.0, 0.5}, kTrue);
  for (int c = 1; c <= 9; ++c) {
    const double time = std::exp(1.0) * std::sqrt(std::exp(quantileAt(c)));
    EXPECT_NEAR(time, out.quantiles.vbget(1, c), 1e-14 * time);
  }
  Residuals plain(1);
  plain.run(kWeibull, {2.0}, {}, {1.0, 0.5}, 1);
  EXPECT_EQ(1.0 - 0.5 * 0.36651292058166435, plain.quantiles.vbget(1, 5));
}

TEST(Residuals, APercentileBeyondTheLimitIsMissing) {
  Residuals out(2);
  // Exactly 700 at the median, and just below.
  const double at = 700.0 + 0.36651292058166435;
  ASSERT_EQ(700.0, at + 1.0 * -0.36651292058166435);
  out.run(kExponential, {0.0, 0.0}, {{0.0}, {-1e-9}}, {1.0, at}, kTrue);
  EXPECT_EQ(kMissing, out.quantiles.vbget(1, 5));
  EXPECT_EQ(kMissing, out.quantiles.vbget(1, 6));
  EXPECT_NE(kMissing, out.quantiles.vbget(1, 4));
  EXPECT_NEAR(std::exp(700.0 - 1e-9), out.quantiles.vbget(2, 5), 1e292);
  // On the scale of the times there is no limit.
  out.run(kExponential, {0.0, 0.0}, {{0.0}, {0.0}}, {1.0, at}, 0);
  EXPECT_EQ(700.0, out.quantiles.vbget(1, 5));
}

TEST(Residuals, ASurvivalOfZeroLeavesTheCoxSnellResidualAlone) {
  Residuals out(2);
  out.run(kExponential, {10.0, 900.0}, {}, {0.0});
  EXPECT_EQ(0.0, out.survival.vbget(1, 1));
  EXPECT_EQ(1.0, out.probabilities.vbget(1, 1));
  EXPECT_EQ(0.0, out.probabilities.vbget(1, 2));
  EXPECT_EQ(10.0, out.residuals.vbget(1, 1));
  EXPECT_EQ(777.0, out.residuals.vbget(1, 2));
  // e^900 overflows without a guard: infinity times 0.
  EXPECT_TRUE(std::isnan(out.probabilities.vbget(2, 2)));
}

TEST(Residuals, WhatIsNotANumberPassesThrough) {
  Residuals out(1);
  out.run(kWeibull, {kNaN}, {}, {0.0, 1.0});
  EXPECT_TRUE(std::isnan(out.survival.vbget(1, 1)));
  EXPECT_TRUE(std::isnan(out.probabilities.vbget(1, 1)));
  EXPECT_EQ(777.0, out.residuals.vbget(1, 2));
  EXPECT_EQ(-0.36651292058166435, out.quantiles.vbget(1, 5));
}

TEST(Residuals, OneColumnTakesTheFirstResidualOnly) {
  Column times({2.0, 3.0});
  Column parameters({1.0});
  matrix covariates(2, 1, 0);
  matrix survival(2, 1, 0), probabilities(2, 2, 0), residuals(2, 1, 777), quantiles(2, 9, 0);
  ResParam(&times, 2, 0, kExponential, 0, &covariates, &parameters, &survival, &probabilities,
           &residuals, &quantiles);
  EXPECT_EQ((std::vector<double>{1.0, 2.0}), elements(residuals));
}

TEST(Residuals, NothingIsWrittenWithoutRows) {
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    Residuals out(1);
    out.n = n;
    out.run(kExponential, {2.0}, {}, {1.0});
    EXPECT_EQ(777.0, out.survival.vbget(1, 1));
    EXPECT_EQ(std::vector<double>(9, 777.0), elements(out.quantiles));
  }
}

TEST(Residuals, CountsFarPastTheArraysEnd) {
  // Rows past the times read -1; what lies past an output is dropped.
  Residuals out(2);
  out.n = std::numeric_limits<int>::max();
  out.run(kExponential, {2.0}, {}, {1.0});
  EXPECT_EQ(1.0, out.residuals.vbget(1, 1));
  EXPECT_EQ(-2.0, out.residuals.vbget(2, 1));
}

}  // namespace
}  // namespace survmeth::test
