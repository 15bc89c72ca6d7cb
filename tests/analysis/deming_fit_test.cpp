// Deming regression against lines computed in many digits, and what has no line or no interval.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "analysis/demingFit.h"
#include "tests/analysis/peakFlow.h"
#include "tests/support/role.h"

namespace {

using survmeth::DemingResult;
using survmeth::engine::Refusal;
using survmeth::test::kMini;
using survmeth::test::kWright;
using survmeth::test::mapped;
using survmeth::test::methodReference;

std::string refusal(const std::vector<double>& x, const std::vector<double>& y, double ratio = 1) {
  try {
    survmeth::demingFit({.first = x, .second = y, .ratio = ratio});
  } catch (const Refusal& refused) {
    return refused.what();
  }
  return "";
}

// The slope is a quotient of sums of 17 products, each rounded a few times: some 1e-15 of itself.
// The intercept is a difference of numbers ten times as large, the errors are differences of
// leave-one-out values that cancel about one digit more.
constexpr double kClose = 1e-13;
// Of 1,700 pairs the sums are rounded ten times as much, by the square root of their number. Errors
// are sums of differences that do not cancel.
constexpr double kCloseMany = 3e-13;

void expectReference(const std::string& name, const DemingResult& fit, double close = kClose) {
  const auto expected = [&name](const char* what) { return methodReference(name + what); };
  const auto near = [&name, close](double actual, double wanted, const char* what) {
    EXPECT_LE(std::fabs(actual - wanted), close * std::fabs(wanted)) << name << what << actual;
  };
  near(fit.slope.value, expected(".slope"), " slope ");
  near(fit.intercept.value, expected(".intercept"), " intercept ");
  near(fit.slopeSe, expected(".slope.se"), " slope's error ");
  near(fit.interceptSe, expected(".intercept.se"), " intercept's error ");
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
  EXPECT_EQ(fit.reason, "");
}

TEST(DemingFit, HoldsAtRatiosFarFromOne) {
  for (const int exponent : {-300, -16, -13, 13, 16, 300}) {
    const double ratio = std::stod("1e" + std::to_string(exponent));
    expectReference("ratio1e" + std::to_string(exponent),
                    survmeth::demingFit({.first = kWright, .second = kMini, .ratio = ratio}));
  }
}

TEST(DemingFit, HoldsInAnyUnit) {
  for (const int exponent : {-300, -90, 77, 160, 300}) {
    const double unit = std::stod("1e" + std::to_string(exponent));
    const auto scaled = [unit](double value) { return value * unit; };
    const std::vector<double> x = mapped(kWright, scaled), y = mapped(kMini, scaled);
    expectReference("unit1e" + std::to_string(exponent),
                    survmeth::demingFit({.first = x, .second = y}));
  }
}

// Each value a hundred times.
std::vector<double> many(const std::vector<double>& values) {
  std::vector<double> repeated;
  for (int i = 0; i < 100; ++i) repeated.insert(repeated.end(), values.begin(), values.end());
  return repeated;
}

TEST(DemingFit, HoldsForManyPairsInAnyUnitAtAnyRatio) {
  const std::vector<double> x = many(kWright), y = many(kMini);
  expectReference("many", survmeth::demingFit({.first = x, .second = y}), kCloseMany);
  for (const char* size : {"1e-300", "1e300"}) {
    const double by = std::stod(size);
    expectReference(std::string("many.ratio") + size,
                    survmeth::demingFit({.first = x, .second = y, .ratio = by}), kCloseMany);
    const auto scaled = [by](double value) { return value * by; };
    const std::vector<double> xBy = mapped(x, scaled), yBy = mapped(y, scaled);
    expectReference(std::string("many.unit") + size,
                    survmeth::demingFit({.first = xBy, .second = yBy}), kCloseMany);
  }
  const auto far = [](double value) { return value + 1e12; };
  const std::vector<double> farX = mapped(x, far), farY = mapped(y, far);
  expectReference("many.offset1e12", survmeth::demingFit({.first = farX, .second = farY}),
                  kCloseMany);
}

TEST(DemingFit, ManyLeaveOneOutLinesThatDoNotExistAreFoundToo) {
  // 1,200 copies of a pair and one elsewhere: without that one all pairs coincide.
  std::vector<double> x(1200, 1.0), y(1200, 3.0);
  x.push_back(2);
  y.push_back(4);
  const auto coinciding = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(coinciding.reason, "the pairs left without one of them determine no line");
  EXPECT_EQ(coinciding.without, 1200u);
  // The same copies in one place of x, and spread in y: the line left is vertical.
  for (std::size_t i = 0; i < 1200; ++i) y[i] = i % 2 == 0 ? 3 : 2;
  const auto upright = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(upright.reason, "one leave-one-out slope is infinite");
  EXPECT_EQ(upright.without, 1200u);
  // A cross has no covariance, nor has it without any of its pairs: every line is flat.
  x.assign(1200, 0.0), y.assign(1200, 0.0);
  for (std::size_t i = 0; i < 1200; i += 4) {
    x[i] = 1, x[i + 1] = -1, y[i + 2] = 0.5, y[i + 3] = -0.5;
  }
  const auto cross = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(cross.slope.value, 0);
  EXPECT_EQ(cross.slopeSe, 0);
}

TEST(DemingFit, HoldsBesideOnePairThatOutweighsManyOthers) {
  std::vector<double> x = many(kWright), y = many(kMini);
  x.push_back(1e6);
  y.push_back(5e5);
  expectReference("many.outlier", survmeth::demingFit({.first = x, .second = y}), kCloseMany);
}

TEST(DemingFit, HoldsFarFromZeroAndInUnitsFarApart) {
  const auto far = [](double value) { return value + 1e12; };
  const auto down = [](double value) { return value * 1e-150; };
  const auto up = [](double value) { return value * 1e150; };
  const std::vector<double> farX = mapped(kWright, far), farY = mapped(kMini, far);
  expectReference("offset1e12", survmeth::demingFit({.first = farX, .second = farY}));
  const std::vector<double> small = mapped(kWright, down), large = mapped(kMini, up);
  expectReference("apart", survmeth::demingFit({.first = small, .second = large, .ratio = 1e-300}));
}

TEST(DemingFit, ExchangingTheMethodsInvertsTheLine) {
  const auto forth = survmeth::demingFit({.first = kWright, .second = kMini, .ratio = 4});
  const auto back = survmeth::demingFit({.first = kMini, .second = kWright, .ratio = 0.25});
  EXPECT_NEAR(forth.slope.value * back.slope.value, 1, 1e-12);
}

TEST(DemingFit, FallingLinesAreFitted) {
  const auto negated = mapped(kMini, [](double value) { return -value; });
  const auto rising = survmeth::demingFit({.first = kWright, .second = kMini});
  const auto falling = survmeth::demingFit({.first = kWright, .second = negated});
  EXPECT_NEAR(falling.slope.value, -rising.slope.value, 1e-12);
  EXPECT_NEAR(falling.slope.lower, -rising.slope.upper, 1e-12);
}

TEST(DemingFit, ResidualsLeadToTheNearestPoint) {
  // Slope 1, intercept 1/3: e = (2/3, -4/3, 2/3), and 1 / (1 + slope^2 ratio) of each is the
  // second method's. Sxx = Syy = 2 and Sxy = 1 give slope 1 at ratio 1.
  const std::vector<double> x = {1, 2, 3}, y = {2, 1, 3};
  const auto fit = survmeth::demingFit({.first = x, .second = y});
  EXPECT_DOUBLE_EQ(fit.slope.value, 1);
  EXPECT_NEAR(fit.residuals[0], 0.5, 1e-15);
  EXPECT_NEAR(fit.residuals[1], -0.5, 1e-15);
  EXPECT_NEAR(fit.fitted[0], 1.5, 1e-15);
}

TEST(DemingFit, AnInfiniteLeaveOneOutSlopeLeavesNoInterval) {
  // Anscombe's fourth set (American Statistician 27 (1973) 17-21): without its eighth pair every x
  // is 8.
  const std::vector<double> x = {8, 8, 8, 8, 8, 8, 8, 19, 8, 8, 8};
  const std::vector<double> y = {6.58, 5.76, 7.71, 8.84, 8.47, 7.04, 5.25, 12.50, 5.56, 7.91, 6.89};
  const auto fit = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(fit.reason, "one leave-one-out slope is infinite");
  EXPECT_EQ(fit.without, 7u);
  EXPECT_TRUE(std::isfinite(fit.slope.value));
  for (const double none : {fit.slope.lower, fit.slope.upper, fit.slopeSe, fit.intercept.lower,
                            fit.intercept.upper, fit.interceptSe}) {
    EXPECT_TRUE(std::isnan(none));
  }
}

TEST(DemingFit, SeveralInfiniteLeaveOneOutSlopesAreCounted) {
  // Sxx = 10, Syy = 50, Sxy = 10; without (2, 4) or (-2, -4) Sxy is 10 - 5/4 8 = 0, Sxx 5, Syy 30.
  const std::vector<double> x = {2, -2, 1, -1, 0}, y = {4, -4, -3, 3, 0};
  const auto fit = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(fit.reason, "2 leave-one-out slopes are infinite");
  EXPECT_EQ(fit.without, 0u);
}

TEST(DemingFit, PairsThatCoincideDetermineNoLine) {
  const std::vector<double> x = {1, 1, 2}, y = {3, 3, 4};
  const auto fit = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(fit.reason, "the pairs left without one of them determine no line");
  EXPECT_EQ(fit.without, 2u);
  EXPECT_DOUBLE_EQ(fit.slope.value, 1);
}

TEST(DemingFit, WithoutCovarianceTheFlatLineHasSlopeZero) {
  // Leaving out the last pair leaves Sxx = 5, Syy = 4, Sxy = 0.
  const std::vector<double> x = {1, 2, 3, 4, 8}, y = {1, -1, -1, 1, 6};
  const auto fit = survmeth::demingFit({.first = x, .second = y});
  EXPECT_EQ(fit.reason, "");
  EXPECT_TRUE(std::isfinite(fit.slopeSe));
  const std::vector<double> four = {1, 2, 3, 4}, cross = {1, -1, -1, 1};
  EXPECT_EQ(survmeth::demingFit({.first = four, .second = cross}).slope.value, 0);
}

TEST(DemingFit, OnlyPairsOnALineAreSaidToLieOnIt) {
  const auto line = [](double value) { return 0.1 * value - 0.3; };
  for (const double unit : {1e-200, 1.0, 1e200}) {
    const auto scaled = [unit](double value) { return value * unit; };
    const std::vector<double> x = mapped(kWright, scaled);
    const std::vector<double> y = mapped(mapped(kWright, line), scaled);
    const auto fit = survmeth::demingFit({.first = x, .second = y});
    EXPECT_EQ(fit.reason, "every pair lies on the line");
    EXPECT_FALSE(fit.without);
    EXPECT_TRUE(std::isnan(fit.slopeSe));
    EXPECT_NEAR(fit.slope.value, 0.1, 1e-15);
  }
  std::vector<double> y = mapped(kWright, line);
  y[3] += 1e-9;
  EXPECT_EQ(survmeth::demingFit({.first = kWright, .second = y}).reason, "");
}

TEST(DemingFit, AConstantSecondMethodHasAFlatLineAndNoCorrelation) {
  // Its distances from the line y = 2 are all 0, from any other they are not; so without any pair.
  const std::vector<double> x = {1, 2, 3, 5}, same = {2, 2, 2, 2};
  for (const double ratio : {1e-300, 1.0, 1e300}) {
    const auto fit = survmeth::demingFit({.first = x, .second = same, .ratio = ratio});
    EXPECT_EQ(fit.slope.value, 0);
    EXPECT_EQ(fit.intercept.value, 2);
    EXPECT_TRUE(std::isnan(fit.correlation));
    EXPECT_EQ(fit.reason, "every pair lies on the line");
    EXPECT_TRUE(std::isnan(fit.slope.lower) && std::isnan(fit.interceptSe));
    EXPECT_EQ(fit.fitted, same);
    EXPECT_EQ(fit.residuals, std::vector<double>(4, 0));
  }
  // Without the last pair both methods are constant.
  const std::vector<double> once = {1, 1, 1, 5};
  const auto fit = survmeth::demingFit({.first = once, .second = same});
  EXPECT_EQ(fit.reason, "the pairs left without one of them determine no line");
  EXPECT_EQ(fit.without, 3u);
}

TEST(DemingFit, RefusesWhatHasNoLine) {
  const std::vector<double> x = {1, 2, 3, 4}, same = {2, 2, 2, 2}, cross = {1, -1, -1, 1};
  EXPECT_EQ(refusal(same, x), "all values are the same");
  EXPECT_EQ(refusal(x, x, 0), "the ratio of error variances must be above 0");
  EXPECT_EQ(refusal(cross, x), "the two methods do not vary together, and the line is vertical");
  const std::vector<double> square = {1, 1, -1, -1}, turned = {1, -1, 1, -1};
  EXPECT_EQ(refusal(square, turned),
            "the two methods do not vary together, and no direction fits better than another");
  const std::vector<double> small = {1e-300, 2e-300, 3e-300}, large = {1e300, 3e300, 2e300};
  EXPECT_EQ(refusal(small, large), "the line's coefficients are outside the range of numbers");
}

TEST(DemingFit, RefusesWhatIsNotARequest) {
  const std::vector<double> x = {1, 2, 3}, two = {1, 2};
  EXPECT_EQ(refusal(x, two), "the two methods have different numbers of values");
  EXPECT_EQ(refusal(two, two), "fewer than three pairs");
  EXPECT_EQ(refusal(x, {1, NAN, 3}), "a value is not finite");
  EXPECT_EQ(refusal({1, INFINITY, 3}, x), "a value is not finite");
  EXPECT_THROW(survmeth::demingFit({.first = x, .second = x, .alpha = 0}), Refusal);
  EXPECT_THROW(survmeth::demingFit({.first = x, .second = x, .alpha = 1}), Refusal);
}

}  // namespace
