// What every function of the facade refuses, in the same words.
#include "analysis/checks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "analysis/agreement.h"
#include "analysis/demingFit.h"
#include "analysis/spread.h"
#include "tests/support/role.h"

namespace {

using namespace survmeth;
using engine::Role;

template <class Function>
std::string refusal(const Function& function) {
  try {
    function();
  } catch (const engine::Refusal& refused) {
    const std::string index = indexOf(refused) ? " " + std::to_string(*indexOf(refused)) : "";
    return nameOf(refused.role()) + index + ": " + refused.what();
  }
  return "";
}

// More rows than an int counts, none of which may be read: there is one.
template <class T>
std::span<const T> endless() {
  static const T one{};
  return {&one, static_cast<std::size_t>(std::numeric_limits<int>::max()) + 1};
}

TEST(Checks, NoFunctionTakesMoreRowsThanTheEntryPointsCanCount) {
  const auto numbers = endless<double>();
  const auto codes = endless<std::uint32_t>();
  const std::string what = ": there are too many rows";
  EXPECT_EQ(refusal([&] { agreement({.first = numbers, .second = numbers}); }), "first" + what);
  EXPECT_EQ(refusal([&] { demingFit({.first = numbers, .second = numbers}); }), "first" + what);
  EXPECT_EQ(refusal([&] { repeatability({.values = numbers, .subject = codes}); }), "first" + what);
}

TEST(Checks, ALevelIsBetweenZeroAndOne) {
  for (const double alpha : {0.0, 1.0, -0.5, 2.0, std::nan("")}) {
    EXPECT_EQ(refusal([alpha] { requireAlpha(alpha); }),
              "alpha: the significance level is not between 0 and 1");
  }
  EXPECT_EQ(refusal([] { requireAlpha(1e-300); }), "");
}

TEST(Checks, TheFirstElementAtFaultIsNamed) {
  const double inf = std::numeric_limits<double>::infinity();
  const std::vector<double> values = {0, 1, -inf, std::nan("")};
  EXPECT_EQ(refusal([&] { requireFinite(values, Role::kSecond); }),
            "second 2: a value is not finite");
  EXPECT_EQ(refusal([&] { requireTimes(values); }), "time 2: a time is negative or not finite");
  EXPECT_EQ(refusal([&] { requireWeights(values); }),
            "weight 2: a weight is negative or not finite");
  const std::vector<double> large = {1e308, 1e308};
  EXPECT_EQ(refusal([&] { requireWeights(large); }), "weight: the weights' sum is not finite");
  const std::vector<std::uint32_t> codes = {0, 2, 3, 4};
  EXPECT_EQ(refusal([&] { requireCodes(codes, 3, Role::kGroup, "group"); }),
            "group 2: a group code is out of range");
  EXPECT_EQ(refusal([&] { requireCodes(codes, 5, Role::kGroup, "group"); }), "");
  EXPECT_EQ(refusal([] { requireRows(1, 2, Role::kTime, "too few"); }), "time: too few");
}

TEST(Spread, HoldsFromTheSmallestToTheLargestUnit) {
  // 1, 2, 4, 5: mean 3, squares 4 + 1 + 1 + 4 = 10 over 3.
  for (const double unit : {1e-307, 1e-160, 1.0, 1e160, 3e307}) {
    const std::vector<double> values = {1 * unit, 2 * unit, 4 * unit, 5 * unit};
    const Spread spread = spreadOf(values);
    EXPECT_NEAR(spread.mean / unit, 3, 1e-15);
    EXPECT_NEAR(spread.sd / unit, std::sqrt(10 / 3.0), 1e-15);
  }
}

TEST(Spread, AMeanFarAboveTheDeviationsCostsNothing) {
  const std::vector<double> values = {1e15 + 1, 1e15 + 2, 1e15 + 4, 1e15 + 5};
  EXPECT_EQ(spreadOf(values).mean, 1e15 + 3);
  EXPECT_EQ(spreadOf(values).sd, std::sqrt(10 / 3.0));
}

TEST(Spread, ValuesThatAreTheSameHaveNone) {
  for (const double value : {0.1, 1e-320, 1.7e308, 0.0, -3.3}) {
    const Spread spread = spreadOf(std::vector<double>(7, value));
    EXPECT_EQ(spread.mean, value);
    EXPECT_EQ(spread.sd, 0);
  }
}

}  // namespace
