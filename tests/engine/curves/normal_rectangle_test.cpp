// Probabilities of correlated normal variables against integrals in 25 digits
// (tests/reference/curves/make_normal.py) and against closed forms.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "Dist/Dist"
#include "engine/curves/normalRectangle.h"
#include "tests/support/csv.h"

namespace survmeth {
namespace {

using engine::curves::normalAbove;
using engine::curves::normalOutside;
using numerics::SquareMatrix;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<double> numbers(const std::string& text) {
  std::vector<double> result;
  std::stringstream stream(text);
  for (std::string part; std::getline(stream, part, ';');) {
    result.push_back(std::stod(part));
  }
  return result;
}

SquareMatrix matrixOf(std::size_t d, const std::vector<double>& values) {
  SquareMatrix result(d);
  for (std::size_t i = 0; i < d * d; ++i) result(i / d, i % d) = values[i];
  return result;
}

SquareMatrix equal(std::size_t d, double r) {
  SquareMatrix result(d, r);
  for (std::size_t i = 0; i < d; ++i) result(i, i) = 1.0;
  return result;
}

// The probability that all of d are above 0.
double orthant(const SquareMatrix& correlation) {
  const std::vector<double> lower(correlation.size(), 0.0);
  const std::vector<double> upper(correlation.size(), kInfinity);
  return 1.0 - normalOutside(lower, upper, correlation);
}

TEST(NormalRectangle, IsThatOfTheIntegrals) {
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/curves/normal.csv");
  const std::vector<double> outside = file.numbers("outside");
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const auto lower = numbers(file.text("lower", i));
    const auto upper = numbers(file.text("upper", i));
    const auto correlation = numbers(file.text("correlation", i));
    const double actual = normalOutside(lower, upper, matrixOf(lower.size(), correlation));
    // The last digit of correlations of at most 1 - e moves the result by 1e-17 / sqrt(e) and less,
    // and of a small result the digits count.
    double nearest = 1.0;
    for (const double r : correlation) {
      if (std::fabs(r) < 1.0) nearest = std::min(nearest, 1.0 - std::fabs(r));
    }
    const double error = std::fabs(actual - outside[i]);
    EXPECT_LE(error, outside[i] * (1e-12 + 1e-16 / std::sqrt(nearest)))
        << "row " << i + 1 << ": " << actual << " for " << outside[i];
  }
}

TEST(NormalRectangle, OrthantsAreThoseOfTheArcsines) {
  for (const double r : {-0.999, -0.93, -0.5, 0.0, 0.4, 0.924, 0.926, 0.99999}) {
    // What is left of 1, to its last digits.
    EXPECT_NEAR(orthant(equal(2, r)), 0.25 + std::asin(r) / (2 * std::numbers::pi), 1e-14) << r;
    EXPECT_NEAR(normalAbove(0, 0, r), 0.25 + std::asin(r) / (2 * std::numbers::pi), 1e-15) << r;
  }
  const double a = 0.7;
  const double b = -0.2;
  const double c = 0.4;
  EXPECT_NEAR(orthant(matrixOf(3, {1, a, b, a, 1, c, b, c, 1})),
              0.125 + (std::asin(a) + std::asin(b) + std::asin(c)) / (4 * std::numbers::pi), 1e-14);
  // Each of d + 1 independent variables is the least as often as the others.
  EXPECT_NEAR(orthant(equal(3, 0.5)), 0.25, 1e-14);
  EXPECT_NEAR(orthant(equal(4, 0.5)), 0.2, 1e-14);
}

TEST(NormalRectangle, TheSameVariableTwiceCountsOnce) {
  const std::vector<double> c(4, 2.0);
  const std::vector<double> minus(4, -2.0);
  const double one = 2.0 * CDFNormalStd(-2.0);
  EXPECT_EQ(normalOutside(minus, c, equal(4, 1.0)), one);
  SquareMatrix opposite = equal(2, -1.0);
  EXPECT_EQ(normalOutside(std::vector{-2.0, -1.0}, std::vector{3.0, 4.0}, opposite),
            CDFNormalStd(-2.0) + CDFNormalStd(-1.0));
  // Above 1 by rounding, as quotients of covariances are.
  EXPECT_EQ(normalOutside(std::vector{-2.0, -2.0}, std::vector{2.0, 2.0}, equal(2, 1.0 + 2e-16)),
            one);
}

TEST(NormalRectangle, IndependentSidesMultiply) {
  const std::vector<double> lower = {-1.0, -2.0, -kInfinity, -0.5};
  const std::vector<double> upper = {2.0, kInfinity, 1.0, 0.5};
  double inside = 1.0;
  for (std::size_t i = 0; i < 4; ++i) inside *= CDFNormalStd(upper[i]) - CDFNormalStd(lower[i]);
  EXPECT_NEAR(normalOutside(lower, upper, equal(4, 0.0)), 1.0 - inside, 1e-15);
}

TEST(NormalRectangle, ASmallProbabilityHasItsDigits) {
  const std::vector<double> lower(4, -20.0);
  const std::vector<double> upper(4, 20.0);
  const double one = 2.0 * CDFNormalStd(-20.0);
  // With correlation 0.9 hardly any are beyond 20 together.
  const double outside = normalOutside(lower, upper, equal(4, 0.9));
  EXPECT_LT(outside, 4.0 * one);
  EXPECT_GT(outside, 3.9 * one);
  EXPECT_NEAR(normalOutside(std::vector{-20.0, -20.0}, std::vector{20.0, 20.0}, equal(2, 0.0)),
              2.0 * one, 1e-14 * one);
}

TEST(NormalRectangle, OrderAndSignsOfTheVariablesChangeNothing) {
  const SquareMatrix r =
      matrixOf(4, {1, 0.7, 0.3, 0.5, 0.7, 1, 0.6, 0.8, 0.3, 0.6, 1, 0.65, 0.5, 0.8, 0.65, 1});
  const std::vector<double> lower = {-1.2, -2.0, -kInfinity, -1.0};
  const std::vector<double> upper = {1.9, 1.5, 2.1, kInfinity};
  const double expected = normalOutside(lower, upper, r);
  for (const std::array<std::size_t, 4>& order :
       {std::array<std::size_t, 4>{3, 1, 0, 2}, {1, 2, 3, 0}, {2, 3, 1, 0}}) {
    std::vector<double> l;
    std::vector<double> u;
    SquareMatrix s(4);
    for (std::size_t i = 0; i < 4; ++i) {
      const bool turned = i == 1;
      l.push_back(turned ? -upper[order[i]] : lower[order[i]]);
      u.push_back(turned ? -lower[order[i]] : upper[order[i]]);
      for (std::size_t j = 0; j < 4; ++j) {
        s(i, j) = ((i == 1) != (j == 1) ? -1.0 : 1.0) * r(order[i], order[j]);
      }
    }
    EXPECT_NEAR(normalOutside(l, u, s), expected, 1e-13);
  }
}

TEST(NormalRectangle, WithoutRoomEverythingIsOutside) {
  EXPECT_EQ(normalOutside(std::vector{-1.0, 2.0}, std::vector{1.0, 2.0}, equal(2, 0.5)), 1.0);
  EXPECT_EQ(normalOutside(std::vector{-1.0, 1.5}, std::vector{1.0, 3.0}, equal(2, 1.0)), 1.0);
  EXPECT_EQ(normalOutside(std::vector{-kInfinity}, std::vector{kInfinity}, equal(1, 0.0)), 0.0);
}

TEST(NormalRectangle, ANumberThatIsNoneGivesNone) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(normalOutside(std::vector{none}, std::vector{1.0}, equal(1, 0.0))));
  EXPECT_TRUE(
      std::isnan(normalOutside(std::vector{-1.0, -1.0}, std::vector{1.0, 1.0}, equal(2, none))));
  EXPECT_THROW(
      normalOutside(std::vector<double>(5, -1.0), std::vector<double>(5, 1.0), equal(5, 0.0)),
      std::invalid_argument);
}

}  // namespace
}  // namespace survmeth
