// What the ROC curve makes of its counts: predictive values, likelihood ratios, cost, limits.
#include "survival/roc/roc.h"
#include "tests/support/matrices.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using survmeth::test::Column;
using survmeth::test::elements;
using Doubles = std::vector<double>;

// ---- predictive values, likelihood ratios, cost ----

TEST(RocCurve, PredictiveValuesUseThePrevalenceOfTheSampleAtOrBelowZero) {
  for (const double prevalence : {0.0, -1.0, -kInf}) {
    Curve curve = tiedCurve();
    curve.prevalence = prevalence;
    curve.run();
    // Threshold 3: 3 of 4 called positive are, 3 of 4 called negative are not.
    EXPECT_DOUBLE_EQ(curve.predictiveValues[2], 0.75);
    EXPECT_DOUBLE_EQ(curve.predictiveValues[5 + 2], 0.75);
    // Threshold 1 calls nothing negative, threshold 5 nothing that is negative positive.
    EXPECT_EQ(curve.predictiveValues[5 + 0], kMissing);
    EXPECT_EQ(curve.predictiveValues[4], 1.0);
  }
}

TEST(RocCurve, PredictiveValuesFollowAGivenPrevalence) {
  Curve curve = tiedCurve();
  curve.prevalence = 0.1;
  curve.run();
  // Threshold 3: Se = Sp = 3/4.
  EXPECT_DOUBLE_EQ(curve.predictiveValues[2], 0.075 / (0.225 + 0.075));
  EXPECT_DOUBLE_EQ(curve.predictiveValues[5 + 2], 0.675 / (0.025 + 0.675));
}

TEST(RocCurve, APredictiveValueWithoutADenominatorIsMissing) {
  Curve curve = tiedCurve();
  curve.positiveRule = 3;
  curve.run();
  EXPECT_EQ(curve.predictiveValues[4], kMissing);  // nothing is above 5
  EXPECT_DOUBLE_EQ(curve.predictiveValues[5 + 4], 0.5);
  curve = tiedCurve();
  curve.prevalence = kNaN;
  curve.run();
  for (const double value : curve.predictiveValues) EXPECT_EQ(value, kMissing);
}

TEST(RocCurve, LikelihoodRatiosAreRatiosOfRates) {
  Curve curve = tiedCurve();
  curve.run();
  const Doubles positive(curve.likelihoodRatios.begin(), curve.likelihoodRatios.begin() + 5);
  const Doubles negative(curve.likelihoodRatios.begin() + 5, curve.likelihoodRatios.end());
  EXPECT_EQ(positive, (Doubles{1, 1 / 0.75, 3, 2, kInfinite}));
  EXPECT_EQ(negative, (Doubles{kMissing, 0, 0.25 / 0.75, 0.5 / 0.75, 0.75}));
}

TEST(RocCurve, RatiosWithoutAnyCallAreMissing) {
  Curve curve = tiedCurve();
  curve.positiveRule = 3;
  curve.run();
  EXPECT_EQ(curve.likelihoodRatios[4], kMissing);  // tp = fp = 0
  EXPECT_EQ(curve.likelihoodRatios[5 + 4], 1.0);
}

TEST(RocCurve, RatiosWithoutPositivesAreInfinite) {
  Curve curve({1, 0, 0}, {1, 2, 3}, {0, 1, 1});
  curve.run();
  EXPECT_EQ(curve.likelihoodRatios,
            (Doubles{kInfinite, kInfinite, kInfinite, kMissing, kMissing, kInfinite}));
}

TEST(RocCurve, RatiosWithoutNegativesFallBackToTheBareProportion) {
  Curve curve({1, 0, 1, 1}, {1, 2, 3, 4}, {1, 0, 1, 2});
  curve.run();
  EXPECT_EQ(curve.likelihoodRatios, (Doubles{1, 0.75, 0.75, 0.5, 0, 0.25, 0.25, 0.5}));
}

// The guard of the ratios is on the product of counts: 1e-12 itself is not enough.
TEST(RocCurve, TheGuardOfTheRatiosIsOnTheProductOfCounts) {
  Curve curve({1, 0, 0}, {2, 2, 1}, {1, 1e-12, 0});
  curve.run();
  EXPECT_EQ(curve.likelihoodRatios[1], kInfinite);
  Curve larger({1, 0, 0}, {2, 2, 1}, {1, 1e-5, 0});
  larger.run();
  EXPECT_EQ(larger.likelihoodRatios[1], 1.0);
}

TEST(RocCurve, CostAddsTheFourOutcomes) {
  Curve curve = tiedCurve();
  curve.costTP = 1;
  curve.costFP = 10;
  curve.costFN = 100;
  curve.costTN = 1000;
  curve.run();
  EXPECT_EQ(curve.cost, (Doubles{44, 1034, 3113, 3212, 4301}));
}

// ---- intervals ----

struct Interval {
  double lower;
  double upper;
};

// Sensitivity x / m at the lowest threshold above the negatives.
Interval sensitivityInterval(int x, int m, int method, short correction, double alpha = 0.05) {
  Doubles status(static_cast<std::size_t>(m), 1.0);
  Doubles values(static_cast<std::size_t>(m), 1.0);
  std::fill_n(values.begin(), x, 3.0);
  status.push_back(0.0);
  values.push_back(2.0);
  Curve curve(status, values);
  curve.positiveRule = 3;
  curve.ciMethod = method;
  curve.continuityCorrection = correction;
  curve.alpha = alpha;
  curve.run();
  const auto row = std::find(curve.thresholds.begin(), curve.thresholds.end(), 2.0);
  const std::ptrdiff_t k = row - curve.thresholds.begin();
  const std::ptrdiff_t T = curve.T();
  EXPECT_DOUBLE_EQ(curve.sensitivity[k], static_cast<double>(x) / m);
  return {curve.sensitivity[T + k], curve.sensitivity[2 * T + k]};
}

void expectInterval(const Interval& interval, double lower, double upper, double tolerance) {
  EXPECT_NEAR(interval.lower, lower, tolerance);
  EXPECT_NEAR(interval.upper, upper, tolerance);
}

// R.G. Newcombe, Statistics in Medicine 17 (1998) 857-872, table I, to its four decimals.
TEST(RocIntervals, AgreeWithNewcombesTable) {
  constexpr double digits = 0.00005000001;
  expectInterval(sensitivityInterval(81, 263, 0, 0), 0.2522, 0.3638, digits);
  expectInterval(sensitivityInterval(15, 148, 0, 0), 0.0527, 0.1500, digits);
  expectInterval(sensitivityInterval(81, 263, 2, 0), 0.2553, 0.3662, digits);
  expectInterval(sensitivityInterval(15, 148, 2, 0), 0.0624, 0.1605, digits);
  expectInterval(sensitivityInterval(0, 20, 2, 0), 0.0000, 0.1611, digits);
  expectInterval(sensitivityInterval(1, 29, 2, 0), 0.0061, 0.1718, digits);
  expectInterval(sensitivityInterval(81, 263, 2, -1), 0.2535, 0.3682, digits);
  expectInterval(sensitivityInterval(15, 148, 2, -1), 0.0598, 0.1644, digits);
  expectInterval(sensitivityInterval(0, 20, 2, -1), 0.0000, 0.2005, digits);
  expectInterval(sensitivityInterval(1, 29, 2, -1), 0.0018, 0.1963, digits);
  expectInterval(sensitivityInterval(81, 263, 3, 0), 0.2527, 0.3676, digits);
  expectInterval(sensitivityInterval(15, 148, 3, 0), 0.0578, 0.1617, digits);
  expectInterval(sensitivityInterval(0, 20, 3, 0), 0.0000, 0.1684, digits);
  expectInterval(sensitivityInterval(1, 29, 3, 0), 0.0009, 0.1776, digits);
}

TEST(RocIntervals, CodeOneAddsTwoSuccessesAndTwoFailures) {
  const double p = 5.0 / 14;  // (3 + 2) / (10 + 4)
  const double half = kZ975 * std::sqrt(p * (1 - p) / 14);
  expectInterval(sensitivityInterval(3, 10, 1, 0), p - half, p + half, 1e-14);
}

TEST(RocIntervals, CodeZeroIsWaldAndNotClipped) {
  const double half = kZ975 * std::sqrt(0.9 * 0.1 / 10);
  expectInterval(sensitivityInterval(9, 10, 0, 0), 0.9 - half, 0.9 + half, 1e-14);
}

// With all or none of m cases the bounds have a closed form.
TEST(RocIntervals, AnyOtherCodeIsClopperPearson) {
  for (const int method : {3, 4, -1}) {
    expectInterval(sensitivityInterval(5, 5, method, 0), std::pow(0.025, 1.0 / 5), 1.0, 1e-14);
    expectInterval(sensitivityInterval(0, 7, method, 0, 0.1), 0.0, 1 - std::pow(0.05, 1.0 / 7),
                   1e-14);
    expectInterval(sensitivityInterval(1, 2, method, 0), 1 - std::sqrt(0.975), std::sqrt(0.975),
                   1e-14);
  }
}

TEST(RocIntervals, OnlyAFlagOfMinusOneCorrectsWilson) {
  const Interval plain = sensitivityInterval(3, 10, 2, 0);
  for (const short flag : {short{1}, short{2}, short{-2}}) {
    const Interval flagged = sensitivityInterval(3, 10, 2, flag);
    EXPECT_EQ(flagged.lower, plain.lower);
    EXPECT_EQ(flagged.upper, plain.upper);
  }
  EXPECT_LT(sensitivityInterval(3, 10, 2, -1).lower, plain.lower);
}

TEST(RocIntervals, SensitivityAndSpecificityUseTheirOwnClass) {
  Curve curve({0, 0, 1, 1, 1, 1, 1}, {1, 2, 1, 2, 2, 2, 2});
  curve.ciMethod = 3;
  curve.run();
  // Threshold 2: Se = 4/5, Sp = 1/2.
  EXPECT_NEAR(curve.specificity[2 + 1], 1 - std::sqrt(0.975), 1e-14);
  EXPECT_NEAR(curve.specificity[4 + 1], std::sqrt(0.975), 1e-14);
  EXPECT_NEAR(curve.sensitivity[2 + 1], 0.2835820638819105, 1e-13);    // qbeta(0.025, 4, 2)
  EXPECT_NEAR(curve.sensitivity[4 + 1], std::pow(0.975, 0.2), 1e-14);  // 4/5 of 5
}

}  // namespace
