// Agreement, repeatability and Deming regression as people get them.
#include "analysis/agreement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "analysis/demingFit.h"
#include "analysis/invalidRequest.h"

namespace {

using survmeth::InvalidRequest;

const std::vector<double> kWright = {494, 395, 516, 434, 476, 557, 413, 442, 650,
                                     433, 417, 656, 267, 478, 178, 423, 427};
const std::vector<double> kMini = {512, 430, 520, 428, 500, 600, 364, 380, 658,
                                   445, 432, 626, 260, 477, 259, 350, 451};

TEST(Agreement, GivesThePublishedPeakFlows) {
  const auto result = survmeth::agreement({.first = kMini, .second = kWright});
  EXPECT_EQ(result.pairs, 17u);
  EXPECT_NEAR(result.bias.value, -2.1, 0.05);
  EXPECT_NEAR(result.sd, 38.8, 0.05);
  EXPECT_NEAR(result.lowerLimit.value, -78.1, 0.05);
  EXPECT_NEAR(result.upperLimit.value, 73.9, 0.05);
}

TEST(Agreement, LimitsCarryIntervalsOfTheirOwn) {
  const auto result = survmeth::agreement({.first = kMini, .second = kWright});
  // t(0.975, 16) sd sqrt(1 / 17 + z^2 / 32), with R's qt and qnorm.
  const double t = 2.119905299221254, z = 1.959963984540054;
  const double half = t * result.sd * std::sqrt(1 / 17.0 + z * z / 32);
  EXPECT_NEAR(result.lowerLimit.upper - result.lowerLimit.value, half, 1e-8);
  EXPECT_NEAR(result.upperLimit.value - result.upperLimit.lower, half, 1e-8);
}

TEST(Agreement, PairsWithoutARatioAreCounted) {
  const std::vector<double> x = {0, 2, 4, 5}, y = {1, 2, 5, 6};
  const auto result =
      survmeth::agreement({.first = x, .second = y, .kind = survmeth::DifferenceKind::kRatio});
  EXPECT_EQ(result.excluded, 1u);
  EXPECT_EQ(result.pairs, 3u);
  EXPECT_TRUE(std::isnan(result.differences[0]));
  EXPECT_EQ(result.differences[2], 1.25);
}

TEST(Agreement, RefusesWhatHasNoAnswer) {
  const std::vector<double> x = {1, 2, 3}, two = {1, 2};
  EXPECT_THROW(survmeth::agreement({.first = x, .second = two}), InvalidRequest);
  EXPECT_THROW(survmeth::agreement({.first = two, .second = two}), InvalidRequest);
}

TEST(Agreement, AMethodIsComparedWithAnAssignedValue) {
  // Differences -1, 0, 4: mean 1, squares around it 4 + 1 + 9 = 14, sd sqrt(14 / 2).
  const std::vector<double> assigned = {5, 5, 5}, x = {4, 5, 9};
  const auto result = survmeth::agreement({.first = assigned, .second = x});
  EXPECT_DOUBLE_EQ(result.bias.value, 1);
  EXPECT_NEAR(result.sd / std::sqrt(7.0), 1, 1e-14);  // a few roundings
  const auto turned = survmeth::agreement({.first = x, .second = assigned});
  EXPECT_DOUBLE_EQ(turned.bias.value, -1);
}

TEST(Agreement, TwoAssignedValuesDifferByTheSameInEveryPair) {
  const std::vector<double> five = {5, 5, 5}, seven = {7, 7, 7};
  const auto result = survmeth::agreement({.first = five, .second = seven});
  EXPECT_EQ(result.bias.value, 2);
  EXPECT_EQ(result.sd, 0);
  EXPECT_EQ(result.upperLimit.value, 2);
}

TEST(Repeatability, IsTheWithinSubjectMeanSquare) {
  const std::vector<double> values = {1, 3, 4, 8};
  const std::vector<std::uint32_t> subject = {0, 0, 1, 1};
  const auto result =
      survmeth::repeatability({.values = values, .subject = subject, .subjects = 3});
  EXPECT_EQ(result.subjects, 2u);
  EXPECT_EQ(result.degreesOfFreedom, 2);
  EXPECT_NEAR(result.withinSd.value, std::sqrt(5.0), 1e-15);
  EXPECT_NEAR(result.withinSd.lower, std::sqrt(10 / (-2 * std::log(0.025))), 1e-12);
  EXPECT_NEAR(result.repeatability, std::sqrt(10.0) * 1.959963984540054, 1e-12);
}

TEST(Repeatability, HoldsInVerySmallUnits) {
  // Where the add-in's threshold would call these identical.
  const std::vector<double> values = {1e-9, 3e-9, 4e-9, 8e-9};
  const std::vector<std::uint32_t> subject = {0, 0, 1, 1};
  const auto result =
      survmeth::repeatability({.values = values, .subject = subject, .subjects = 2});
  EXPECT_NEAR(result.withinSd.value * 1e9, std::sqrt(5.0), 1e-12);
}

TEST(Repeatability, NeedsASubjectWithTwoValues) {
  const std::vector<double> values = {1, 3};
  const std::vector<std::uint32_t> subject = {0, 1};
  EXPECT_THROW(survmeth::repeatability({.values = values, .subject = subject, .subjects = 2}),
               InvalidRequest);
}

TEST(DemingFit, MatchesOrthogonalRegressionWithItsJackknife) {
  // From R's prcomp, leaving out each pair in turn (tests/reference/methcomp).
  const auto fit = survmeth::demingFit({.first = kWright, .second = kMini});
  EXPECT_NEAR(fit.slope.value, 0.970880819764939, 1e-10);
  EXPECT_NEAR(fit.slope.lower, 0.674572896739185, 1e-10);
  EXPECT_NEAR(fit.slope.upper, 1.26718874279069, 1e-10);
  EXPECT_NEAR(fit.intercept.value, 15.2315555223308, 1e-8);
  EXPECT_NEAR(fit.intercept.lower, -132.860564289237, 1e-7);
  EXPECT_NEAR(fit.correlation, 0.943279446890946, 1e-12);
}

TEST(DemingFit, ExchangingTheMethodsInvertsTheLine) {
  const auto forth = survmeth::demingFit({.first = kWright, .second = kMini, .ratio = 4});
  const auto back = survmeth::demingFit({.first = kMini, .second = kWright, .ratio = 0.25});
  EXPECT_NEAR(forth.slope.value * back.slope.value, 1, 1e-12);
}

TEST(DemingFit, FallingLinesAreFitted) {
  std::vector<double> negated = kMini;
  for (double& value : negated) value = -value;
  const auto rising = survmeth::demingFit({.first = kWright, .second = kMini});
  const auto falling = survmeth::demingFit({.first = kWright, .second = negated});
  EXPECT_NEAR(falling.slope.value, -rising.slope.value, 1e-12);
  EXPECT_NEAR(falling.slope.lower, -rising.slope.upper, 1e-12);
}

TEST(DemingFit, RefusesWhatHasNoLine) {
  const std::vector<double> x = {1, 2, 3, 4}, cross = {1, -1, -1, 1}, same = {2, 2, 2, 2};
  EXPECT_THROW(survmeth::demingFit({.first = x, .second = same}), InvalidRequest);
  EXPECT_THROW(survmeth::demingFit({.first = x, .second = x, .ratio = 0}), InvalidRequest);
  EXPECT_THROW(survmeth::demingFit({.first = x, .second = cross}), InvalidRequest);
}

}  // namespace
