// Agreement and repeatability as people get them.
#include "analysis/agreement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/analysis/peakFlow.h"
#include "tests/support/role.h"

namespace {

using survmeth::engine::Refusal;

using survmeth::test::kMini;
using survmeth::test::kWright;
using survmeth::test::mapped;
using survmeth::test::methodReference;

template <class Request>
std::string refusal(const Request& request) {
  try {
    if constexpr (requires { request.kind; }) {
      survmeth::agreement(request);
    } else {
      survmeth::repeatability(request);
    }
  } catch (const Refusal& refused) {
    return nameOf(refused.role()) + ": " + refused.what();
  }
  return "";
}

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

TEST(Agreement, HoldsInAnyUnit) {
  // tests/reference/methcomp/deming.py. The differences are exact; the sums of 17 of them and their
  // squares round to some 1e-15.
  for (const int exponent : {-200, 160}) {
    const std::string name = "1e" + std::to_string(exponent);
    const double unit = std::stod(name);
    const auto scaled = [unit](double value) { return value * unit; };
    const std::vector<double> x = mapped(kWright, scaled), y = mapped(kMini, scaled);
    const auto result = survmeth::agreement({.first = x, .second = y});
    const double bias = methodReference("agree" + name + ".bias");
    const double sd = methodReference("agree" + name + ".sd");
    EXPECT_NEAR(result.bias.value / bias, 1, 1e-14);
    EXPECT_NEAR(result.sd / sd, 1, 1e-14);
    // z is R's qnorm(0.975).
    EXPECT_NEAR(result.upperLimit.value / (bias + 1.959963984540054 * sd), 1, 1e-14);
  }
}

TEST(Agreement, DifferencesThatAreTheSameHaveNoSpread) {
  const std::vector<double> x = {0.1, 0.2, 0.4, 0.8}, y = {0.2, 0.4, 0.8, 1.6};
  const auto result =
      survmeth::agreement({.first = x, .second = y, .kind = survmeth::DifferenceKind::kRatio});
  EXPECT_EQ(result.sd, 0);
  EXPECT_EQ(result.bias.value, 2);
  EXPECT_EQ(result.upperLimit.upper, 2);
}

TEST(Agreement, RelativeDifferencesAreOverTheSizeOfTheMean) {
  const auto relative = [](const std::vector<double>& x, const std::vector<double>& y) {
    return survmeth::agreement(
        {.first = x, .second = y, .kind = survmeth::DifferenceKind::kRelative});
  };
  const auto positive = relative(kWright, kMini);
  EXPECT_NEAR(positive.bias.value / methodReference("relative.bias"), 1, 1e-14);
  EXPECT_NEAR(positive.sd / methodReference("relative.sd"), 1, 1e-14);
  // -8 is above -10 by 2 of 9.
  const auto negative = relative({-10, -20, -30}, {-8, -16, -34});
  EXPECT_DOUBLE_EQ(negative.differences[0], 2 / 9.0);
  EXPECT_DOUBLE_EQ(negative.differences[1], 4 / 18.0);
  EXPECT_DOUBLE_EQ(negative.differences[2], -4 / 32.0);
}

TEST(Agreement, OnlyAMeanOfExactlyZeroLeavesAPairOut) {
  const std::vector<double> x = {1, 1e-20, 2, 3, -2}, y = {2, 3e-20, 4, 5, 2};
  const auto result =
      survmeth::agreement({.first = x, .second = y, .kind = survmeth::DifferenceKind::kRelative});
  EXPECT_EQ(result.excluded, 1u);
  EXPECT_TRUE(std::isnan(result.differences[4]));
  EXPECT_DOUBLE_EQ(result.differences[1], 1);
}

TEST(Agreement, RefusesWhatHasNoAnswer) {
  const std::vector<double> x = {1, 2, 3}, two = {1, 2}, none = {1, NAN, 3};
  using Request = survmeth::AgreementRequest;
  EXPECT_EQ(refusal(Request{.first = x, .second = two}),
            "second: the two methods have different numbers of values");
  EXPECT_EQ(refusal(Request{.first = two, .second = two}), "first: fewer than three pairs");
  EXPECT_EQ(refusal(Request{.first = none, .second = x}), "first: a value is not finite");
  EXPECT_EQ(refusal(Request{.first = x, .second = none}), "second: a value is not finite");
  EXPECT_EQ(refusal(Request{.first = x, .second = x, .alpha = 1}),
            "alpha: the significance level is not between 0 and 1");
}

TEST(Agreement, RefusesWhatPassesTheLargestNumber) {
  const std::vector<double> x = {-1.5e308, 1, 2}, y = {1.5e308, 2, 5}, z = {1.2e308, 3, -5e307};
  EXPECT_EQ(refusal(survmeth::AgreementRequest{.first = x, .second = y}),
            "second: a difference is beyond the largest number");
  const std::vector<double> small = {1, 2, 4};
  EXPECT_EQ(refusal(survmeth::AgreementRequest{.first = small, .second = z}),
            "second: the limits are beyond the largest number");
}

TEST(Agreement, MeansOfLargeNumbersDoNotOverflow) {
  const std::vector<double> x = {1.5e308, 1.2e308, 1.4e308}, y = {1.5e308, 1.3e308, 1.4e308};
  const auto result =
      survmeth::agreement({.first = x, .second = y, .kind = survmeth::DifferenceKind::kRelative});
  EXPECT_EQ(result.means[0], 1.5e308);
  EXPECT_NEAR(result.differences[1], 0.08, 1e-15);
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

TEST(Repeatability, HoldsInAnyUnit) {
  for (const double unit : {1e-300, 1e-200, 1e160, 1e300}) {
    const std::vector<double> values = {1 * unit, 3 * unit, 4 * unit, 8 * unit};
    const std::vector<std::uint32_t> subject = {0, 0, 1, 1};
    const auto result =
        survmeth::repeatability({.values = values, .subject = subject, .subjects = 2});
    EXPECT_NEAR(result.withinSd.value / unit, std::sqrt(5.0), 1e-14);
  }
}

TEST(Repeatability, ReplicatesThatAreTheSameHaveNoSpread) {
  const std::vector<double> values = {0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 7, 7};
  const std::vector<std::uint32_t> subject = {0, 0, 0, 0, 0, 0, 1, 1};
  const auto result =
      survmeth::repeatability({.values = values, .subject = subject, .subjects = 2});
  EXPECT_EQ(result.withinSd.value, 0);
  EXPECT_TRUE(std::isnan(result.withinSd.lower));
}

TEST(Repeatability, RefusesWhatHasNoAnswer) {
  using Request = survmeth::RepeatabilityRequest;
  const std::vector<double> values = {1, 3}, none = {1, INFINITY};
  const std::vector<std::uint32_t> subject = {0, 1}, outside = {0, 2}, one = {0};
  EXPECT_EQ(refusal(Request{.values = values, .subject = subject, .subjects = 2}),
            "subject: no subject has two values");
  EXPECT_EQ(refusal(Request{.values = values, .subject = outside, .subjects = 2}),
            "subject: a subject code is out of range");
  EXPECT_EQ(refusal(Request{.values = values, .subject = one, .subjects = 2}),
            "subject: values and subjects have different numbers");
  EXPECT_EQ(refusal(Request{.values = none, .subject = subject, .subjects = 2}),
            "first: a value is not finite");
  EXPECT_EQ(refusal(Request{.values = values, .subject = subject, .subjects = 2, .alpha = 0}),
            "alpha: the significance level is not between 0 and 1");
  EXPECT_EQ(refusal(Request{}), "first: there are no values");
}

}  // namespace
