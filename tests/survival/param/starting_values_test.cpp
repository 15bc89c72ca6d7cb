// OptimizeParamModel: where a fit starts.
#include <gtest/gtest.h>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

constexpr double kNoStatus = 9.0;

// Rows without a term leave a fit where it starts.
std::vector<double> startOf(int law, const std::vector<Observation>& rows, short fixIntercept = 0,
                            double interceptValue = 0.0) {
  Model model(law, rows);
  Fit fit(model);
  fit.fixIntercept = fixIntercept;
  fit.interceptValue = interceptValue;
  EXPECT_EQ(-2, fit.run(model));
  return fit.estimates();
}

// Weighted mean 3, weighted variance (4 + 1 + 0 + 9) / 4 = 7/2.
const std::vector<Observation> kSpread = {
    {kNoStatus, 1.0, 1.0}, {kNoStatus, 2.0, 1.0}, {kNoStatus, 3.0, 2.0}, {kNoStatus, 6.0, 1.0}};

TEST(StartingValues, WithoutCovariatesAreTheWeightedMeanAndDeviation) {
  EXPECT_EQ((std::vector<double>{3.0}), startOf(kExponential, kSpread));
  EXPECT_EQ((std::vector<double>{3.0, std::sqrt(3.5)}), startOf(kLogNormal, kSpread));
}

TEST(StartingValues, AWeibullInterceptIsShiftedBy572Thousandths) {
  EXPECT_EQ(3.0 + 0.572, startOf(kWeibull, kSpread)[0]);
}

TEST(StartingValues, AWeibullScaleIsHalfALogarithmWhereThatIsPositive) {
  EXPECT_DOUBLE_EQ(0.5 * std::log(4.0 * std::sqrt(3.5) / 1.64), startOf(kWeibull, kSpread)[1]);
  // Deviation 0.4: 4 s / 1.64 < 1, so the deviation itself.
  const double side = 0.4 * std::sqrt(0.5);
  EXPECT_DOUBLE_EQ(0.4, startOf(kWeibull, {{kNoStatus, 1.0 - side}, {kNoStatus, 1.0 + side}})[1]);
}

TEST(StartingValues, WithCovariatesAreTheWeightedLeastSquaresFit) {
  // Times 2 + 3 x exactly; no shift for the Weibull law.
  const std::vector<Observation> line = {{kNoStatus, 2.0, 1.0, 0.0, 0.0, {0.0}},
                                         {kNoStatus, 5.0, 3.0, 0.0, 0.0, {1.0}},
                                         {kNoStatus, 14.0, 1.0, 0.0, 0.0, {4.0}}};
  for (const int law : {kExponential, kWeibull, kLogNormal}) {
    const std::vector<double> start = startOf(law, line);
    EXPECT_NEAR(3.0, start[0], 1e-14);
    EXPECT_NEAR(2.0, start[1], 1e-14);
  }
  // Weighted: x 0, 1 with times 0, 1 (weight 1) and 1, 3 (weight 3): slope 2.5 through 0.
  const std::vector<double> weighted =
      startOf(kExponential, {{kNoStatus, 0.0, 1.0, 0.0, 0.0, {0.0}},
                             {kNoStatus, 1.0, 1.0, 0.0, 0.0, {1.0}},
                             {kNoStatus, 3.0, 3.0, 0.0, 0.0, {1.0}}});
  EXPECT_NEAR(2.5, weighted[0], 1e-14);
  EXPECT_NEAR(0.0, weighted[1], 1e-14);
}

TEST(StartingValues, AFixedInterceptLeavesTheColumnOfOnesOut) {
  // Through the origin: (1 * 2 + 2 * 2) / (1 + 4) = 6/5.
  const std::vector<Observation> rows = {{kNoStatus, 2.0, 1.0, 0.0, 0.0, {1.0}},
                                         {kNoStatus, 2.0, 1.0, 0.0, 0.0, {2.0}}};
  const std::vector<double> start = startOf(kExponential, rows, kTrue, 7.0);
  EXPECT_NEAR(1.2, start[0], 1e-15);
  EXPECT_EQ(7.0, start[1]);
  // A flag of 1 is false.
  EXPECT_NEAR(0.0, startOf(kExponential, rows, 1, 7.0)[0], 1e-15);
}

TEST(StartingValues, AreThoseGivenForAFlagOfMinusOneOnly) {
  Model model(kWeibull, kSpread);
  for (const short flag : {short{-1}, short{1}, short{0}}) {
    Fit fit(model);
    fit.startAt({5.0, 0.25});
    fit.useInitialValues = flag;
    fit.run(model);
    if (flag == kTrue) {
      EXPECT_EQ((std::vector<double>{5.0, 0.25}), fit.estimates());
    } else {
      EXPECT_EQ(3.572, fit.estimates()[0]);
    }
  }
}

TEST(StartingValues, AFixedInterceptOverridesTheGivenOne) {
  Model model(kWeibull, kSpread);
  Fit fit(model);
  fit.startAt({5.0, 0.25});
  fit.fixIntercept = kTrue;
  fit.interceptValue = -2.0;
  fit.run(model);
  EXPECT_EQ((std::vector<double>{-2.0, 0.25}), fit.estimates());
}

}  // namespace
}  // namespace survmeth::test
