// ComputeLogLikeParam: the terms of every law and status, worked by hand.
#include <gtest/gtest.h>

#include <new>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

const double kE = std::exp(1.0);

// With eta 0 and sigma 1 a time of 0 is at z = 0, where the extreme-value law has hazard 1 and
// survival 1/e, and the normal law density 1/sqrt(2 pi) and both tails 1/2.

TEST(ExponentialLogLikelihood, AnEventAtThePredictorGivesMinusItsWeight) {
  Model model(kExponential, {{kEvent, 2.0, 3.0}});
  EXPECT_DOUBLE_EQ(-3.0, model.logLik({2.0}));
}

TEST(ExponentialLogLikelihood, ARightCensoredRowGivesMinusTheHazard) {
  Model model(kExponential, {{kRight, 3.0, 2.0}});
  EXPECT_DOUBLE_EQ(-2.0 * kE, model.logLik({2.0}));
}

TEST(ExponentialLogLikelihood, ALeftCensoredRowGivesTheLogOfTheDistributionFunction) {
  Model model(kExponential, {{kLeft, 2.0, 2.0}});
  EXPECT_DOUBLE_EQ(2.0 * std::log(1.0 - 1.0 / kE), model.logLik({2.0}));
}

TEST(ExponentialLogLikelihood, AnIntervalCensoredRowReadsItsBoundsOnly) {
  Model model(kExponential, {{kInterval, kNaN, 2.0, 0.0, 1.0}});
  EXPECT_DOUBLE_EQ(2.0 * std::log(std::exp(-1.0) - std::exp(-kE)), model.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, ARowCarriesTheLastTermOfEveryOtherStatus) {
  // Row 1: -1. Row 2: 2 (-1 - e). Row 3, another event at d = 1: 4 (1 - e - e).
  Model model(kExponential, {{kEvent, 0.0, 1.0}, {kRight, 1.0, 2.0}, {kEvent, 1.0, 4.0}});
  EXPECT_DOUBLE_EQ(-1.0 + 2.0 * (-1.0 - kE) + 4.0 * (1.0 - kE - kE), model.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, AllFourTermsAreCarriedInRowOrder) {
  const double left = std::log(1.0 - 1.0 / kE);
  const double interval = std::log(std::exp(-1.0) - std::exp(-kE));
  Model model(
      kExponential,
      {{kInterval, 0.0, 1.0, 0.0, 1.0}, {kLeft, 0.0, 1.0}, {kRight, 0.0, 1.0}, {kEvent, 0.0, 1.0}});
  EXPECT_NEAR(4.0 * interval + 3.0 * left - 2.0 - 1.0, model.logLik({0.0}), 1e-14);
}

TEST(ExponentialLogLikelihood, ItDependsOnTheOrderOfTheRowsWhereStatusesMix) {
  Model one(kExponential, {{kEvent, 0.0}, {kRight, 1.0}});
  Model other(kExponential, {{kRight, 1.0}, {kEvent, 0.0}});
  EXPECT_DOUBLE_EQ(-2.0 - kE, one.logLik({0.0}));
  EXPECT_DOUBLE_EQ(-1.0 - 2.0 * kE, other.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, AnotherStatusAddsItsWeightTimesTheCarriedTerms) {
  Model model(kExponential, {{kEvent, 0.0, 1.0}, {4.0, 5.0, 10.0}, {kNaN, 5.0, 100.0}});
  EXPECT_DOUBLE_EQ(-1.0 - 10.0 - 100.0, model.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, AnEventBeyondTheLimitAddsItsDistanceToTheTermBefore) {
  // T = -1, then -1 + 700, then 699 + 701.
  Model model(kExponential, {{kEvent, 0.0}, {kEvent, 700.0}, {kEvent, 701.0}});
  EXPECT_DOUBLE_EQ(-1.0 + 699.0 + 1400.0, model.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, CensoredRowsBeyondTheLimitKeepTheTermBefore) {
  Model right(kExponential, {{kRight, 0.0}, {kRight, 700.0, 5.0}});
  EXPECT_DOUBLE_EQ(-1.0 - 5.0, right.logLik({0.0}));
  Model left(kExponential, {{kLeft, 0.0}, {kLeft, 700.0, 5.0}});
  EXPECT_DOUBLE_EQ(6.0 * std::log(1.0 - 1.0 / kE), left.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, TheGuardOfAnIntervalLooksAtItsUpperBound) {
  const double term = std::log(std::exp(-1.0) - std::exp(-kE));
  Model upper(kExponential, {{kInterval, 0.0, 1.0, 0.0, 1.0}, {kInterval, 0.0, 1.0, 0.0, 700.0}});
  EXPECT_DOUBLE_EQ(2.0 * term, upper.logLik({0.0}));
  // A lower bound beyond the limit does not stop the term: both survivals are 0 here.
  Model lower(kExponential, {{kInterval, 0.0, 1.0, 800.0, 699.0}});
  EXPECT_EQ(-kInf, lower.logLik({0.0}));
}

TEST(ExponentialLogLikelihood, ATimeThatIsNotANumberKeepsTheCensoredTermBefore) {
  Model model(kExponential, {{kRight, 0.0}, {kRight, kNaN, 5.0}});
  EXPECT_DOUBLE_EQ(-6.0, model.logLik({0.0}));
  Model event(kExponential, {{kEvent, kNaN}});
  EXPECT_TRUE(std::isnan(event.logLik({0.0})));
}

TEST(WeibullLogLikelihood, AnEventCountsTheScaleAndTheJacobian) {
  // d = 1, sigma = 1/2: z = 2, -w ln(1/2) + w 2 - w y - w e^2.
  Model model(kWeibull, {{kEvent, 4.0, 3.0}});
  EXPECT_DOUBLE_EQ(3.0 * (std::log(2.0) + 2.0 - 4.0 - std::exp(2.0)), model.logLik({3.0, 0.5}));
}

TEST(WeibullLogLikelihood, ARightCensoredRowHasNoJacobian) {
  Model model(kWeibull, {{kRight, 4.0, 3.0}});
  EXPECT_DOUBLE_EQ(-3.0 * std::exp(2.0), model.logLik({3.0, 0.5}));
}

TEST(WeibullLogLikelihood, LeftAndIntervalCensoredRowsAreNotWeighted) {
  const double left = std::log(1.0 - std::exp(-std::exp(2.0)));
  for (const double weight : {1.0, 5.0, 0.0, -3.0}) {
    Model model(kWeibull, {{kLeft, 4.0, weight}});
    EXPECT_DOUBLE_EQ(left, model.logLik({3.0, 0.5}));
  }
  const double interval = std::log(std::exp(-std::exp(-2.0)) - std::exp(-std::exp(2.0)));
  for (const double weight : {1.0, 5.0}) {
    Model model(kWeibull, {{kInterval, kNaN, weight, 2.0, 4.0}});
    EXPECT_DOUBLE_EQ(interval, model.logLik({3.0, 0.5}));
  }
}

TEST(WeibullLogLikelihood, NothingIsCarriedFromRowToRow) {
  Model model(kWeibull, {{kEvent, 0.0}, {kRight, 0.0}, {4.0, 0.0, 9.0}, {kNaN, 0.0, 9.0}});
  EXPECT_DOUBLE_EQ(-2.0, model.logLik({0.0, 1.0}));
}

TEST(WeibullLogLikelihood, BeyondTheLimitTheExponentialIsLeftOut) {
  Model event(kWeibull, {{kEvent, 700.0, 2.0}});
  EXPECT_DOUBLE_EQ(2.0 * 700.0 - 2.0 * 700.0, event.logLik({0.0, 1.0}));
  Model right(kWeibull, {{kRight, 700.0, 2.0}});
  EXPECT_DOUBLE_EQ(0.0, right.logLik({0.0, 1.0}));
  Model below(kWeibull, {{kRight, 699.0, 2.0}});
  EXPECT_DOUBLE_EQ(-2.0 * std::exp(699.0), below.logLik({0.0, 1.0}));
}

TEST(WeibullLogLikelihood, AProbabilityThatUnderflowsGivesMinusInfinity) {
  Model left(kWeibull, {{kLeft, -40.0}});
  EXPECT_EQ(-kInf, left.logLik({0.0, 1.0}));
  Model interval(kWeibull, {{kInterval, 0.0, 1.0, 10.0, 11.0}});
  EXPECT_EQ(-kInf, interval.logLik({0.0, 1.0}));
}

TEST(WeibullLogLikelihood, SigmaIsNotChecked) {
  Model model(kWeibull, {{kEvent, 1.0}});
  EXPECT_TRUE(std::isnan(model.logLik({0.0, -1.0})));
  // z = -inf: ln sigma and (y - eta) / sigma are both infinite.
  EXPECT_TRUE(std::isnan(Model(kWeibull, {{kEvent, -1.0}}).logLik({0.0, 0.0})));
}

TEST(LogNormalLogLikelihood, AnEventHasNoJacobian) {
  // z = 2: ln(phi(2) / (1/2)).
  Model model(kLogNormal, {{kEvent, 4.0, 3.0}});
  const double want = 3.0 * (-0.5 * std::log(2.0 * std::acos(-1.0)) - 2.0 + std::log(2.0));
  EXPECT_NEAR(want, model.logLik({3.0, 0.5}), 1e-14);
}

TEST(LogNormalLogLikelihood, ARightCensoredRowGivesTheLogOfTheSurvival) {
  Model model(kLogNormal, {{kRight, 3.0, 3.0}});
  EXPECT_DOUBLE_EQ(3.0 * std::log(0.5), model.logLik({3.0, 0.5}));
}

TEST(LogNormalLogLikelihood, TheLeftCensoredTermIsSubtracted) {
  Model model(kLogNormal, {{kLeft, 3.0, 3.0}});
  EXPECT_DOUBLE_EQ(3.0 * std::log(2.0), model.logLik({3.0, 0.5}));
}

TEST(LogNormalLogLikelihood, AnIntervalCensoredRowIsWeighted) {
  // One standard deviation to either side: 0.682689492137085897 (Abramowitz & Stegun 26.2).
  Model model(kLogNormal, {{kInterval, kNaN, 3.0, 2.5, 3.5}});
  EXPECT_NEAR(3.0 * std::log(0.682689492137085897), model.logLik({3.0, 0.5}), 1e-14);
}

TEST(LogNormalLogLikelihood, ASurvivalThatUnderflowsGivesMinusInfinity) {
  Model model(kLogNormal, {{kRight, 9.0}});
  EXPECT_EQ(-kInf, model.logLik({0.0, 1.0}));
}

TEST(LogNormalLogLikelihood, AnotherStatusAddsNothing) {
  Model model(kLogNormal, {{kRight, 0.0}, {4.0, 0.0, 9.0}, {kNaN, 0.0, 9.0}});
  EXPECT_DOUBLE_EQ(std::log(0.5), model.logLik({0.0, 1.0}));
}

TEST(LogLikelihood, ThePredictorIsCoefficientsTimesCovariatesPlusTheIntercept) {
  // eta = 2 * 0.5 + 3 * (-1) + 4 = 2.
  for (const int law : {kExponential, kWeibull, kLogNormal}) {
    Model with(law, {{kEvent, 2.5, 1.0, 0.0, 0.0, {2.0, 3.0}}});
    Model without(law, {{kEvent, 2.5}});
    EXPECT_DOUBLE_EQ(without.logLik({2.0, 0.75}), with.logLik({0.5, -1.0, 4.0, 0.75}));
  }
}

TEST(LogLikelihood, WithoutRowsOrALikelihoodItIsZero) {
  Model model(kWeibull, {{kEvent, 4.0}});
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    model.n = n;
    EXPECT_EQ(0.0, model.logLik({3.0, 0.5}));
  }
  for (const int law : {4, 0, -1, 5, std::numeric_limits<int>::max()}) {
    Model other(law, {{kEvent, 4.0}});
    EXPECT_EQ(0.0, other.logLik({3.0, 0.5}));
  }
}

TEST(LogLikelihood, TheTimesStayAsTheyAre) {
  Model model(kWeibull, {{kEvent, 4.0}, {kRight, 5.0}});
  model.logLik({3.0, 0.5});
  EXPECT_EQ((std::vector<double>{4.0, 5.0}), elements(model.times));
}

TEST(LogLikelihood, WhatLiesPastTheArraysReadsAsMinusOne) {
  // The second row: time -1, status as given, weight -1.
  Model model(kWeibull, {{kEvent, 0.0}, {kRight, 0.0}});
  Column times({0.0});
  Column weights({1.0});
  Column theta({0.0, 1.0});
  double value = 0.0;
  ComputeLogLikeParam(&times, 2, 0, 2, &model.status, &model.bounds, &model.covariates, &theta,
                      &weights, kWeibull, &value);
  EXPECT_DOUBLE_EQ(-1.0 + std::exp(-1.0), value);
  // A missing scale is -1 as well: z = -d, and the logarithm is not a number.
  Column intercept({0.0});
  ComputeLogLikeParam(&times, 1, 0, 2, &model.status, &model.bounds, &model.covariates, &intercept,
                      &weights, kWeibull, &value);
  EXPECT_TRUE(std::isnan(value));
}

TEST(LogLikelihood, ExponentialRowsPastTheStatusesStillCarry) {
  Model model(kExponential, {{kEvent, 0.0}});
  Column theta({0.0});
  Column weights({1.0, 10.0, 100.0});
  double value = 0.0;
  ComputeLogLikeParam(&model.times, 4, 0, 1, &model.status, &model.bounds, &model.covariates,
                      &theta, &weights, kExponential, &value);
  EXPECT_DOUBLE_EQ(-1.0 - 10.0 - 100.0 + 1.0, value);
}

TEST(LogLikelihood, CountsFarPastTheArraysEnd) {
  Model exponential(kExponential, {{kEvent, 0.0}});
  exponential.n = std::numeric_limits<int>::max();
  EXPECT_DOUBLE_EQ(-1.0 + 2147483646.0, exponential.logLik({0.0}));
  Model model(kWeibull, {{kRight, 0.0}});
  model.n = std::numeric_limits<int>::max();
  EXPECT_DOUBLE_EQ(-1.0, model.logLik({0.0, 1.0}));
  // A negative number of covariates: intercept and scale lie before the first element, both -1.
  model.p = -5;
  EXPECT_DOUBLE_EQ(-std::exp(-1.0), model.logLik({0.0, 1.0}));
}

TEST(LogLikelihood, ACarriedInfinityStays) {
  Model model(kExponential, {{kLeft, -40.0}, {kEvent, 0.0}});
  EXPECT_EQ(-kInf, model.logLik({0.0}));
}

TEST(LogLikelihood, ADesignThatCannotExistFailsAsItsAllocation) {
  Model model(kWeibull, {{kRight, 0.0}, {kRight, 0.0}});
  model.p = std::numeric_limits<int>::max();
  EXPECT_THROW(model.logLik({0.0, 1.0}), std::bad_alloc);
  Model none(kWeibull, {{kRight, 0.0}});
  Fit fit(none);
  none.p = 100000;
  EXPECT_THROW(fit.run(none), std::bad_alloc);
}

TEST(LogLikelihood, ManyRowsAreTheSumOfTheirTerms) {
  // More rows than are handled together, all alike.
  const int rows = 2000;
  std::vector<Observation> data(rows, {kRight, 0.0, 1.0, 0.0, 0.0, {1.0, 2.0, 3.0}});
  Model model(kWeibull, data);
  EXPECT_DOUBLE_EQ(-static_cast<double>(rows), model.logLik({1.0, 1.0, -1.0, 0.0, 1.0}));
}

}  // namespace
}  // namespace survmeth::test
