// Bland-Altman agreement and repeatability.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/methcomp/methcomp.h"
#include "survival/survival.h"
#include "tests/support/matrices.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// One call; outputs start at 77 so that what is not written shows.
struct Agreement {
  std::vector<double> first, second;
  std::vector<double> differences, means;
  double bias = 77, sd = 77, biasLower = 77, biasUpper = 77, loaLower = 77, loaUpper = 77;
  Agreement(std::vector<double> x, std::vector<double> y, int type = 0, double alpha = 0.05)
      : first(std::move(x)),
        second(std::move(y)),
        differences(first.size(), 77),
        means(first.size(), 77) {
    EXPECT_EQ(Cpp_BlandAltman(first.data(), second.data(), static_cast<int>(first.size()), type,
                              alpha, differences.data(), means.data(), &bias, &sd, &biasLower,
                              &biasUpper, &loaLower, &loaUpper),
              0);
  }
};

TEST(BlandAltman, GivesDifferencesAndMeans) {
  const Agreement a({1, 2, 6}, {2, 4, 9});
  EXPECT_EQ(a.differences, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(a.means, (std::vector<double>{1.5, 3, 7.5}));
  EXPECT_EQ(a.bias, 2);
  EXPECT_EQ(a.sd, 1);  // (1 + 0 + 1) / 2
  // Student's t at 0.975 with 2 degrees of freedom: 0.95 sqrt(2 / (1 - 0.95^2)); h = t / sqrt(3).
  const double t = 0.95 * std::sqrt(2 / (1 - 0.95 * 0.95));
  EXPECT_NEAR(a.biasLower, 2 - t / std::sqrt(3.0), 1e-12);
  EXPECT_NEAR(a.biasUpper, 2 + t / std::sqrt(3.0), 1e-12);
}

TEST(BlandAltman, LimitsTakeTheNormalQuantileHoweverFewTheSubjects) {
  const Agreement a({1, 2, 6}, {2, 4, 9});
  EXPECT_NEAR(a.loaLower, 2 - 1.959963984540054, 1e-12);  // not 4.3026527
  EXPECT_NEAR(a.loaUpper, 2 + 1.959963984540054, 1e-12);
}

TEST(BlandAltman, RelativeDifferencesAreOverTheMean) {
  const Agreement a({1, 2}, {3, 2}, 1);
  EXPECT_EQ(a.differences, (std::vector<double>{1, 0}));
}

TEST(BlandAltman, RatiosAreSecondOverFirstForAnyOtherCode) {
  for (const int type : {2, 3, -1}) {
    const Agreement a({2, 4}, {3, 2}, type);
    EXPECT_EQ(a.differences, (std::vector<double>{1.5, 0.5}));
    EXPECT_EQ(a.bias, 1);
  }
}

TEST(BlandAltman, AMeanOfZeroHasNoRelativeDifference) {
  const Agreement a({1, -3, 1}, {3, 3, 3}, 1);
  EXPECT_EQ(a.differences, (std::vector<double>{1, kMissing, 1}));
  EXPECT_EQ(a.means, (std::vector<double>{2, 0, 2}));  // the mean is written all the same
  EXPECT_EQ(a.bias, 1);
  EXPECT_EQ(a.sd, 0);
}

TEST(BlandAltman, AFirstValueOfZeroHasNoRatio) {
  const Agreement a({kEpsilon, 2, 2}, {3, 4, 6}, 2);  // exactly at the guard
  EXPECT_EQ(a.differences, (std::vector<double>{kMissing, 2, 3}));
  EXPECT_EQ(a.bias, 2.5);
}

TEST(BlandAltman, APairWithAMissingMeasurementIsNotTouched) {
  const Agreement a({1, kMissing, 3, -kInf}, {2, 5, kMissing, 1});
  EXPECT_EQ(a.differences, (std::vector<double>{1, 77, 77, 77}));
  EXPECT_EQ(a.means, (std::vector<double>{1.5, 77, 77, 77}));
  EXPECT_EQ(a.bias, 1);
}

TEST(BlandAltman, OnePairHasNoIntervals) {
  const Agreement a({1}, {2});
  EXPECT_EQ(a.bias, 1);
  EXPECT_TRUE(std::isnan(a.sd));
  EXPECT_TRUE(std::isnan(a.biasLower));
  EXPECT_TRUE(std::isnan(a.loaUpper));
}

TEST(BlandAltman, NoPairsGiveNoNumbers) {
  const Agreement a({}, {});
  EXPECT_TRUE(std::isnan(a.bias));
  EXPECT_TRUE(std::isnan(a.biasUpper));
  double out[6];
  double none = 5;
  EXPECT_EQ(Cpp_BlandAltman(&none, &none, -3, 0, 0.05, &none, &none, out, out + 1, out + 2, out + 3,
                            out + 4, out + 5),
            0);
  EXPECT_EQ(none, 5);
}

TEST(BlandAltman, NanIsNotMissing) {
  const Agreement a({1, kNan, 3}, {2, 5, 4});
  EXPECT_TRUE(std::isnan(a.bias));
  EXPECT_TRUE(std::isnan(a.differences[1]));
  EXPECT_EQ(a.differences[2], 1);
}

TEST(BlandAltman, AnswersThePublishedPeakFlows) {
  // Bland & Altman (1986), first readings: Wright less mini meter.
  const Agreement a(
      {512, 430, 520, 428, 500, 600, 364, 380, 658, 445, 432, 626, 260, 477, 259, 350, 451},
      {494, 395, 516, 434, 476, 557, 413, 442, 650, 433, 417, 656, 267, 478, 178, 423, 427});
  EXPECT_NEAR(a.bias, -2.1, 0.05);
  EXPECT_NEAR(a.sd, 38.8, 0.05);
  EXPECT_NEAR(a.bias - 2 * a.sd, -79.6, 0.1);  // printed with 2 in place of the quantile
  EXPECT_NEAR(a.loaLower, -78.1, 0.05);
  EXPECT_NEAR(a.loaUpper, 73.9, 0.05);
}

struct Repeated {
  double sd = 77, lower = 77, upper = 77;
  Repeated(std::vector<double> values, std::vector<double> subjects, double alpha = 0.05) {
    Cpp_GetRepeatability(values.data(), static_cast<int>(values.size()), subjects.data(), alpha,
                         &sd, &lower, &upper);
  }
};

TEST(Repeatability, IsTheWithinSubjectMeanSquare) {
  // Within squares (1, 3): 2; (4, 8): 8; 10 on 2 degrees of freedom.
  const Repeated r({1, 3, 4, 8}, {1, 1, 2, 2});
  EXPECT_NEAR(r.sd, std::sqrt(5.0), 1e-14);
  // Chi-square quantiles at 0.975 and 0.025 with 2 degrees: -2 ln(0.025), -2 ln(0.975).
  EXPECT_NEAR(r.lower, std::sqrt(10 / (-2 * std::log(0.025))), 1e-12);
  EXPECT_NEAR(r.upper, std::sqrt(10 / (-2 * std::log(0.975))), 1e-11);
}

TEST(Repeatability, EachSubjectCountsOncePerMeasurement) {
  // Subject 1: 0, 0, 3 (squares 6); subject 2: 4, 6 (squares 2); 8 on 3 degrees of freedom.
  const Repeated r({0, 4, 0, 6, 3}, {1, 2, 1, 2, 1});
  EXPECT_NEAR(r.sd, std::sqrt(8.0 / 3), 1e-14);
}

TEST(Repeatability, IdenticalReplicatesAreMissing) {
  const Repeated r({2, 2, 5, 5}, {1, 1, 2, 2});
  EXPECT_EQ(r.sd, kMissing);
  EXPECT_EQ(r.lower, kMissing);
  EXPECT_EQ(r.upper, kMissing);
}

TEST(Repeatability, TheThresholdIsAbsolute) {
  // Within squares of 5e-17: callers measure in units in which this is nothing.
  const Repeated r({0, 1e-8}, {1, 1});
  EXPECT_EQ(r.sd, kMissing);
}

TEST(Repeatability, ASubjectWithoutMeasurementsDoesNotReduceTheDegrees) {
  const Repeated r({1, 3, kMissing, kMissing, 4, 8}, {1, 1, 2, 2, 3, 3});
  EXPECT_NEAR(r.sd, std::sqrt(5.0), 1e-14);
}

TEST(Repeatability, MissingMeasurementsAreLeftOut) {
  const Repeated r({1, kMissing, 3, 4, 8}, {1, 1, 1, 2, 2});
  EXPECT_NEAR(r.sd, std::sqrt(5.0), 1e-14);
}

TEST(Repeatability, DoesNotMoveTheCallersArrays) {
  std::vector<double> values = {4, 1, 8, 3};
  std::vector<double> subjects = {2, 1, 2, 1};
  double sd = 0, lower = 0, upper = 0;
  Cpp_GetRepeatability(values.data(), 4, subjects.data(), 0.05, &sd, &lower, &upper);
  EXPECT_EQ(values, (std::vector<double>{4, 1, 8, 3}));
  EXPECT_EQ(subjects, (std::vector<double>{2, 1, 2, 1}));
}

TEST(Repeatability, NothingToMeasureIsNotANumber) {
  EXPECT_TRUE(std::isnan(Repeated({}, {}).sd));
  EXPECT_TRUE(std::isnan(Repeated({kNan, 1}, {1, 1}).sd));
}

TEST(Repeatability, ASubjectNumberOutsideReadsAMeanOfMinusOne) {
  // One group of mean 2, at row 1: subject 7 reads the -1 past its end. Total squares 2, between
  // squares 2 (2 + 1)^2 = 18, so nothing is left within.
  EXPECT_EQ(Repeated({1, 3}, {7, 7}).sd, kMissing);
}

}  // namespace
