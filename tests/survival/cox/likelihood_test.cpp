// The Cox partial likelihood and its derivatives.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::elements;
using survmeth::test::Likelihood;
using survmeth::test::threeEvents;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kBreslow = 0;
constexpr int kEfron = 1;

TEST(CoxLikelihood, ThreeEventsWithoutEffect) {
  CoxCase c = threeEvents();
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {0});
    // Risk sums 3, 2, 1 and 2, 1, 1 with the covariate.
    EXPECT_NEAR(l.logLik, -std::log(6.0), 1e-15);
    EXPECT_NEAR(l.gradient.vbget(1, 1), -1.0 / 6, 1e-15);
    EXPECT_NEAR(l.hessian.vbget(1, 1), -17.0 / 36, 1e-15);
  }
}

TEST(CoxLikelihood, ThreeEventsWithADoubledHazard) {
  CoxCase c = threeEvents();
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {std::log(2.0)});
    // Risk sums 5, 3, 2 and 4, 2, 2 with the covariate.
    EXPECT_NEAR(l.logLik, std::log(2.0 / 15), 1e-14);
    EXPECT_NEAR(l.gradient.vbget(1, 1), -7.0 / 15, 1e-14);
    EXPECT_NEAR(l.hessian.vbget(1, 1), -86.0 / 225, 1e-14);
  }
}

TEST(CoxLikelihood, TwoCovariatesGiveASymmetricMatrix) {
  // Rows (1, 0), (0, 1), (1, 1), without effect: means 2/3 2/3, 1/2 1, 1 1.
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 0}, {{1, 0, 1}, {0, 1, 1}}));
  const Likelihood l(&c, kBreslow, {0, 0});
  EXPECT_NEAR(l.logLik, -std::log(6.0), 1e-15);
  EXPECT_NEAR(l.gradient.vbget(1, 1), 1 - 2.0 / 3 - 1.0 / 2, 1e-15);
  EXPECT_NEAR(l.gradient.vbget(2, 1), -2.0 / 3 + 1 - 1, 1e-15);
  EXPECT_NEAR(l.hessian.vbget(1, 1), (4.0 / 9 - 2.0 / 3) + (1.0 / 4 - 1.0 / 2), 1e-15);
  EXPECT_NEAR(l.hessian.vbget(1, 2), (4.0 / 9 - 1.0 / 3) + (1.0 / 2 - 1.0 / 2), 1e-15);
  EXPECT_NEAR(l.hessian.vbget(2, 2), (4.0 / 9 - 2.0 / 3) + 0, 1e-15);
  EXPECT_EQ(l.hessian.vbget(2, 1), l.hessian.vbget(1, 2));
}

TEST(CoxLikelihood, TiedEventsAreTakenOffNeitherRiskSetInEitherForm) {
  // Two events at 1, one event and one censored row at 2. An Efron correction would give
  // -ln 4 - ln 3 - ln 2 instead of -ln 4 - ln 4 - ln 2.
  CoxCase c(CoxArrays({1, 1, 2, 2}, {1, 1, 1, 0}, {{1, 0, 1, 0}}));
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {0});
    EXPECT_NEAR(l.logLik, -5 * std::log(2.0), 1e-15);
    EXPECT_NEAR(l.gradient.vbget(1, 1), 0.5, 1e-15);
    EXPECT_NEAR(l.hessian.vbget(1, 1), -0.75, 1e-15);
  }
}

TEST(CoxLikelihood, AFractionalStatusWeighsTheCovariatesButCountsAsOneEvent) {
  CoxCase c(CoxArrays({1, 2}, {0.25, 1}, {{8, 0}}));
  const Likelihood l(&c, kBreslow, {0});
  EXPECT_NEAR(l.logLik, -std::log(2.0), 1e-15);
  EXPECT_NEAR(l.gradient.vbget(1, 1), 0.25 * 8 - 4, 1e-15);
}

TEST(CoxLikelihood, StrataAddUp) {
  CoxCase both(CoxArrays({1, 2, 3, 1, 1, 2, 2}, {1, 1, 1, 1, 1, 1, 0}, {{1, 0, 1, 1, 0, 1, 0}},
                         {1, 1, 1, 2, 2, 2, 2}, {3, 4}));
  CoxCase first = threeEvents();
  CoxCase second(CoxArrays({1, 1, 2, 2}, {1, 1, 1, 0}, {{1, 0, 1, 0}}));
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&both, ties, {0.3}), a(&first, ties, {0.3}), b(&second, ties, {0.3});
    EXPECT_NEAR(l.logLik, a.logLik + b.logLik, 1e-14);
    EXPECT_NEAR(l.gradient.vbget(1, 1), a.gradient.vbget(1, 1) + b.gradient.vbget(1, 1), 1e-14);
    EXPECT_NEAR(l.hessian.vbget(1, 1), a.hessian.vbget(1, 1) + b.hessian.vbget(1, 1), 1e-14);
  }
}

TEST(CoxLikelihood, AnyOtherTiesMethodGivesZeros) {
  CoxCase c = threeEvents();
  for (const int ties : {-1, 2, 100}) {
    const Likelihood l(&c, ties, {0.5});
    EXPECT_EQ(l.logLik, 0.0);
    EXPECT_EQ(elements(l.gradient), (Doubles{0}));
    EXPECT_EQ(elements(l.hessian), (Doubles{0}));
  }
}

TEST(CoxLikelihood, APredictorOf700OrMoreIsLeftOutOfTheRiskSums) {
  for (const double eta : {700.0, 701.0, 5000.0}) {
    CoxCase c(CoxArrays({1, 2}, {1, 1}, {{eta, 0}}));
    const Likelihood l(&c, kBreslow, {1});
    // Only the second row is at risk, in both sets.
    EXPECT_EQ(l.logLik, eta);
    EXPECT_EQ(l.gradient.vbget(1, 1), eta);
    EXPECT_EQ(l.hessian.vbget(1, 1), 0.0);
  }
}

TEST(CoxLikelihood, APredictorOf699IsInTheRiskSums) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{699, 0}}));
  const Likelihood l(&c, kBreslow, {1});
  // exp(699) + 1 is exp(699), whose logarithm is 699: 699 - 699 - ln 1, and 699 - 699.
  EXPECT_NEAR(l.logLik, 0.0, 1e-12);
  EXPECT_NEAR(l.gradient.vbget(1, 1), 0.0, 1e-12);
  const double below = std::nextafter(700.0, 0.0);
  CoxCase edge(CoxArrays({1, 2}, {1, 1}, {{below, 0}}));
  EXPECT_NEAR(Likelihood(&edge, kBreslow, {1}).logLik, 0.0, 1e-12);
}

TEST(CoxLikelihood, TheUnguardedFormKeepsPredictorsOf700) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{701, 0}}));
  EXPECT_NEAR(Likelihood(&c, kEfron, {1}).logLik, 0.0, 1e-12);
}

TEST(CoxLikelihood, AnOverflowInTheUnguardedFormIsNotANumber) {
  // exp(720) is infinite, and the share 0 of the tied events' infinite sum is not a number.
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{720, 0}}));
  EXPECT_TRUE(std::isnan(Likelihood(&c, kEfron, {1}).logLik));
}

TEST(CoxLikelihood, CovariatesOfALeftOutRowCannotReachTheSums) {
  CoxCase c(CoxArrays({1, 2, 3}, {0, 1, 1}, {{800, 1, 0}, {kInf, 1, 0}, {kNaN, 1, 0}}));
  CoxCase without(CoxArrays({2, 3}, {1, 1}, {{1, 0}, {1, 0}, {1, 0}}));
  // The row's linear predictor is +inf with the first two coefficients.
  c.X.vbset(1, 3, 0.0);
  const Likelihood l(&c, kBreslow, {1, 1, 0}), w(&without, kBreslow, {1, 1, 0});
  EXPECT_EQ(l.hessian.vbget(2, 2), w.hessian.vbget(2, 2));
  EXPECT_EQ(l.hessian.vbget(1, 1), w.hessian.vbget(1, 1));
}

TEST(CoxLikelihood, AStratumWithEveryPredictorPast700AddsItsLinearPartOnly) {
  CoxCase c(CoxArrays({1, 2, 1, 2}, {1, 1, 1, 1}, {{1, 0, 800, 900}}, {1, 1, 2, 2}, {2, 2}));
  CoxCase first(CoxArrays({1, 2}, {1, 1}, {{1, 0}}));
  const Likelihood l(&c, kBreslow, {1}), f(&first, kBreslow, {1});
  EXPECT_NEAR(l.logLik, f.logLik + 1700, 1e-12);
  EXPECT_EQ(l.gradient.vbget(1, 1), f.gradient.vbget(1, 1));
  EXPECT_EQ(l.hessian.vbget(1, 1), f.hessian.vbget(1, 1));
}

TEST(CoxLikelihood, ARiskSumAtOrBelowTwoToTheMinus52VanishesFromTheDerivatives) {
  // exp(-40) is below 2^-52 = exp(-36.04...): only the covariate sum times beta remains.
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{1, 1}}));
  const Likelihood l(&c, kBreslow, {-40});
  EXPECT_EQ(l.logLik, -80.0);
  EXPECT_EQ(l.gradient.vbget(1, 1), 0.0);
  EXPECT_EQ(l.hessian.vbget(1, 1), 0.0);
  // Just above the guard everything is there: -72 + 36 - ln(2 exp(-36)) + ... = -ln 2.
  const Likelihood above(&c, kBreslow, {-36});
  EXPECT_NEAR(above.logLik, -std::log(2.0), 1e-13);
}

TEST(CoxLikelihood, TheUnguardedFormKeepsTinyRiskSums) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{1, 1}}));
  EXPECT_NEAR(Likelihood(&c, kEfron, {-40}).logLik, -std::log(2.0), 1e-13);
}

TEST(CoxLikelihood, AnEmptyRiskSetIsInfinitelyLikelyInTheUnguardedForm) {
  CoxCase c = threeEvents();
  c.start.vbset(1, 3, 4);  // past the stratum
  EXPECT_EQ(Likelihood(&c, kEfron, {0}).logLik, kInf);
  EXPECT_NEAR(Likelihood(&c, kBreslow, {0}).logLik, -std::log(6.0), 1e-15);
}

TEST(CoxLikelihood, AGroupWithoutEventsAddsItsCovariateSums) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{3, 0}}));
  c.events.vbset(1, 1, 0);
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {2});
    EXPECT_NEAR(l.logLik, 6.0, 1e-14);  // 2 x 3 - 1 x ln exp(0)
    EXPECT_NEAR(l.gradient.vbget(1, 1), 3.0, 1e-14);
    EXPECT_EQ(l.hessian.vbget(1, 1), 0.0);
  }
}

TEST(CoxLikelihood, ANegativeCountOfEventsIsUsedAsItStands) {
  CoxCase c(CoxArrays({1, 1}, {1, 0}, {{0, 1}}));
  c.events.vbset(1, 1, -1);
  EXPECT_NEAR(Likelihood(&c, kBreslow, {0}).logLik, std::log(2.0), 1e-15);
  EXPECT_EQ(Likelihood(&c, kEfron, {0}).logLik, 0.0);
}

TEST(CoxLikelihood, AConstantColumnHasExactlyNoCurvature) {
  std::mt19937_64 random(5);
  std::normal_distribution<double> normal;
  Doubles time, status, x, ones;
  for (int i = 0; i < 37; ++i) {
    time.push_back(i);
    status.push_back(i % 3 != 0);
    x.push_back(normal(random));
    ones.push_back(1.0);
  }
  CoxCase c(CoxArrays(time, status, {x, ones}));
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {0.7, 0.0});
    EXPECT_EQ(l.hessian.vbget(2, 2), 0.0);
    EXPECT_EQ(l.hessian.vbget(1, 2), 0.0);
  }
}

TEST(CoxLikelihood, EqualColumnsGiveEqualEntries) {
  Doubles time, status, x;
  for (int i = 0; i < 50; ++i) {
    time.push_back(i / 3);
    status.push_back(i % 2);
    x.push_back(std::sin(1.0 + i));
  }
  CoxCase c(CoxArrays(time, status, {x, x, x}));
  for (const int ties : {kBreslow, kEfron}) {
    const Likelihood l(&c, ties, {0.2, -0.4, 0.1});
    for (const double entry : elements(l.hessian)) EXPECT_EQ(entry, l.hessian.vbget(1, 1));
  }
}

TEST(CoxLikelihood, TheDerivativesAreThoseOfTheLikelihood) {
  std::mt19937_64 random(11);
  std::normal_distribution<double> normal;
  Doubles time, status;
  std::vector<Doubles> columns(3);
  for (int i = 0; i < 60; ++i) {
    time.push_back(i / 2);
    status.push_back(i % 4 != 0);
    for (Doubles& column : columns) column.push_back(normal(random));
  }
  CoxCase c(CoxArrays(time, status, columns));
  const Doubles beta{0.3, -0.5, 0.1};
  const double step = 1e-5;
  const Likelihood here(&c, kBreslow, beta);
  for (int j = 1; j <= 3; ++j) {
    Doubles up = beta, down = beta;
    up[j - 1] += step;
    down[j - 1] -= step;
    const Likelihood above(&c, kBreslow, up), below(&c, kBreslow, down);
    EXPECT_NEAR(here.gradient.vbget(j, 1), (above.logLik - below.logLik) / (2 * step), 1e-7);
    for (int i = 1; i <= 3; ++i) {
      EXPECT_NEAR(here.hessian.vbget(i, j),
                  (above.gradient.vbget(i, 1) - below.gradient.vbget(i, 1)) / (2 * step), 1e-7);
    }
  }
}

TEST(CoxLikelihood, TheOrderOfCovariatesDoesNotMatter) {
  CoxCase ab(CoxArrays({1, 2, 3, 4}, {1, 0, 1, 1}, {{1, 5, 2, 4}, {0.5, 0.1, 0.9, 0.3}}));
  CoxCase ba(CoxArrays({1, 2, 3, 4}, {1, 0, 1, 1}, {{0.5, 0.1, 0.9, 0.3}, {1, 5, 2, 4}}));
  const Likelihood x(&ab, kBreslow, {0.1, 0.7}), y(&ba, kBreslow, {0.7, 0.1});
  EXPECT_NEAR(x.logLik, y.logLik, 1e-13);
  EXPECT_NEAR(x.gradient.vbget(1, 1), y.gradient.vbget(2, 1), 1e-13);
  EXPECT_NEAR(x.hessian.vbget(1, 2), y.hessian.vbget(1, 2), 1e-13);
}

TEST(CoxLikelihood, WithoutCovariatesCountsTheRiskSets) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {}));
  for (const int ties : {kBreslow, kEfron}) {
    EXPECT_NEAR(Likelihood(&c, ties, {}).logLik, -std::log(6.0), 1e-15);
  }
}

TEST(CoxLikelihood, ReshapesTheGradient) {
  CoxCase c = threeEvents();
  matrix beta(1, 1, 0), gradient(5, 3, 9), hessian(1, 1, 9);
  double logLik;
  ComputeLogLikeDerivativesCox(1, &c.delta, &c.X, 0, &beta, &c.distinct, &c.size, &c.start, 1,
                               &c.sizes, &c.events, &logLik, &gradient, &hessian);
  EXPECT_EQ(gradient.rows(), 1);
  EXPECT_EQ(gradient.cols(), 1);
}

TEST(CoxLikelihood, MoreCoefficientsThanColumnsReadMinusOne) {
  CoxCase c = threeEvents();
  CoxCase wide(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}, {-1, -1, -1}}));
  c.p = 2;
  const Likelihood narrow(&c, kBreslow, {0.4, 0.3}), full(&wide, kBreslow, {0.4, 0.3});
  EXPECT_EQ(narrow.logLik, full.logLik);
  EXPECT_EQ(elements(narrow.hessian), elements(full.hessian));
}

}  // namespace
