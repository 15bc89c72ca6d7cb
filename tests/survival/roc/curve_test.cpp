// Thresholds, counts, rates, ratios and costs of the ROC curve.
#include "survival/roc/roc.h"
#include "tests/support/matrices.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using survmeth::test::Column;
using survmeth::test::elements;
using Doubles = std::vector<double>;

void expectCounts(const Curve& curve, const Doubles& tp, const Doubles& fp, const Doubles& tn,
                  const Doubles& fn) {
  EXPECT_EQ(curve.tp, tp);
  EXPECT_EQ(curve.fp, fp);
  EXPECT_EQ(curve.tn, tn);
  EXPECT_EQ(curve.fn, fn);
}

TEST(RocCurve, RuleTwoCallsValuesAtOrAboveTheThresholdPositive) {
  Curve curve = tiedCurve();
  curve.positiveRule = 2;
  ASSERT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.thresholds, (Doubles{1, 2, 3, 4, 5}));
  expectCounts(curve, {4, 4, 3, 2, 1}, {4, 3, 1, 1, 0}, {0, 1, 3, 3, 4}, {0, 0, 1, 2, 3});
}

TEST(RocCurve, RuleOneCallsValuesAtOrBelowTheThresholdPositive) {
  Curve curve = tiedCurve();
  curve.positiveRule = 1;
  ASSERT_EQ(curve.run().code, 0);
  expectCounts(curve, {0, 1, 2, 3, 4}, {1, 3, 3, 4, 4}, {3, 1, 1, 0, 0}, {4, 3, 2, 1, 0});
}

TEST(RocCurve, RuleZeroCallsValuesBelowTheThresholdPositive) {
  Curve curve = tiedCurve();
  curve.positiveRule = 0;
  ASSERT_EQ(curve.run().code, 0);
  expectCounts(curve, {0, 0, 1, 2, 3}, {0, 1, 3, 3, 4}, {4, 3, 1, 1, 0}, {4, 4, 3, 2, 1});
}

TEST(RocCurve, AnyOtherRuleCallsValuesAboveTheThresholdPositive) {
  for (const int rule : {3, 4, 99, -1, -2147483647 - 1}) {
    Curve curve = tiedCurve();
    curve.positiveRule = rule;
    ASSERT_EQ(curve.run().code, 0);
    expectCounts(curve, {4, 3, 2, 1, 0}, {3, 1, 1, 0, 0}, {1, 3, 3, 4, 4}, {0, 1, 2, 3, 4});
  }
}

TEST(RocCurve, RatesAreSharesOfTheClasses) {
  Curve curve = tiedCurve();
  curve.run();
  EXPECT_EQ(Doubles(curve.sensitivity.begin(), curve.sensitivity.begin() + 5),
            (Doubles{1, 1, 0.75, 0.5, 0.25}));
  EXPECT_EQ(Doubles(curve.specificity.begin(), curve.specificity.begin() + 5),
            (Doubles{0, 0.25, 0.75, 0.75, 1}));
}

// The points of each rule with the corner that no threshold reaches, by false-positive rate and,
// where that is tied, by sensitivity.
TEST(RocCurve, PointsRunFromCornerToCorner) {
  const Doubles x{0, 0, 0.25, 0.25, 0.75, 1};
  const Doubles y{0, 0.25, 0.5, 0.75, 1, 1};
  const Doubles mirroredX{0, 0.25, 0.75, 0.75, 1, 1};
  const Doubles mirroredY{0, 0, 0.25, 0.5, 0.75, 1};
  for (const int rule : {0, 1, 2, 3}) {
    Curve curve = tiedCurve();
    curve.positiveRule = rule;
    curve.run();
    EXPECT_EQ(Doubles(curve.rocPoints.begin(), curve.rocPoints.begin() + 6),
              rule < 2 ? mirroredX : x);
    EXPECT_EQ(Doubles(curve.rocPoints.begin() + 6, curve.rocPoints.end()),
              rule < 2 ? mirroredY : y);
  }
}

// With two thresholds announced beyond the distinct values, the rows left as passed sort last and
// the corner shows by itself.
TEST(RocCurve, TheCornerIsTheOriginForRulesOneAndTwoOnly) {
  for (const int rule : {0, 1, 2, 3, 7}) {
    Curve curve({0, 1}, {1, 1});
    curve.thresholdCount = 2;
    curve.positiveRule = rule;
    curve.run();
    // The single threshold gives (1, 1) for "at or", (0, 0) for the strict rules; the corner is
    // the other end.
    EXPECT_EQ(curve.rocPoints, (Doubles{0, 1, kUntouched, 0, 1, kUntouched})) << rule;
  }
}

TEST(RocCurve, ValuesComeBackSortedAndTheOtherInputsAsTheyWere) {
  Curve curve = tiedCurve();
  const Doubles status = curve.status;
  curve.weights = {1, 2, 3, 4, 5, 6, 7, 8};
  curve.run();
  EXPECT_EQ(curve.values, (Doubles{1, 2, 2, 2, 3, 4, 4, 5}));
  EXPECT_EQ(curve.status, status);
  EXPECT_EQ(curve.weights, (Doubles{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(RocCurve, TheMatrixFormSortsItsColumns) {
  Column status({1, 0, 1, 0});
  Column values({4, 3, 1, 2});
  Column weights({10, 20, 30, 40});
  matrix outputs(5, 3, 0), points(5, 2, 0), summary(9, 1, 0);
  EXPECT_EQ(ComputeROC(&status, 4, 4, &values, &weights, 2, 0.05, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                       &outputs, &points, &outputs, &outputs, &outputs, &outputs, &outputs,
                       &outputs, &outputs, &outputs, &summary, &outputs),
            0);
  EXPECT_EQ(elements(values), (Doubles{1, 2, 3, 4}));
  EXPECT_EQ(elements(status), (Doubles{1, 0, 0, 1}));
  EXPECT_EQ(elements(weights), (Doubles{20, 40, 10, 30}));
}

TEST(RocCurve, ACountBeyondTheColumnsUsesTheRowsThatAreThere) {
  Column status({1, 0, 1, 0});
  Column values({4, 3, 1, 2});
  Column weights({1, 1, 1, 1});
  matrix column(4, 1, 0), rates(4, 3, 0), points(5, 2, 0), summary(9, 1, 0);
  EXPECT_EQ(ComputeROC(&status, 2147483647, 2147483647, &values, &weights, 2, 0.05, 0, 0, 0, 0, 0,
                       0, 0, 0, 0, &column, &points, &rates, &rates, &column, &column, &column,
                       &column, &rates, &rates, &summary, &column),
            0);
  EXPECT_EQ(elements(values), (Doubles{1, 2, 3, 4}));
}

TEST(RocCurve, AnEmptyClassIsRefusedAndNothingIsTouched) {
  for (const double only : {0.0, 1.0}) {
    Curve curve({only, only, only}, {3, 1, 2});
    EXPECT_EQ(curve.run().code, -2);
    EXPECT_EQ(curve.values, (Doubles{3, 1, 2}));
    for (const Doubles& output : curve.outputs()) {
      for (const double cell : output) EXPECT_EQ(cell, kUntouched);
    }
  }
}

TEST(RocCurve, NoObservationsAreRefused) {
  EXPECT_EQ(Curve({}, {}).run().code, -2);
  Doubles one(3, 1.0);  // one row of the widest output
  Doubles points{5, 6};
  Doubles summary(9, kUntouched);
  for (const int n : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(
        Cpp_ComputeROC(one.data(), n, 0, one.data(), one.data(), 2, 0.05, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                       one.data(), points.data(), one.data(), one.data(), one.data(), one.data(),
                       one.data(), one.data(), one.data(), one.data(), summary.data(), one.data()),
        -2);
  }
  EXPECT_EQ(points, (Doubles{5, 6}));
  EXPECT_EQ(summary, Doubles(9, kUntouched));
}

// Both negatives are missing, but they were counted.
TEST(RocCurve, ClassesAreCountedBeforeMissingValuesAreDropped) {
  Curve curve({0, 0, 1, 1}, {kMissing, kMissing, 1, 2});
  EXPECT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.tp, (Doubles{2, 1}));
  EXPECT_TRUE(std::isnan(curve.specificity[0]));
  // Without negatives both ratios are bare proportions of the positives.
  EXPECT_EQ(curve.likelihoodRatios, (Doubles{1, 0.5, 0, 0.5}));
}

TEST(RocCurve, MissingValuesAreNoThresholdAndCarryNoWeight) {
  for (const int rule : {0, 1, 2, 3}) {
    Curve plain = tiedCurve();
    plain.positiveRule = rule;
    plain.run();
    Curve with = tiedCurve();
    with.positiveRule = rule;
    for (const double missing : {kMissing, -kInf, kMissing}) {
      with.status.insert(with.status.begin(), missing == kMissing ? 1 : 0);
      with.values.insert(with.values.begin(), missing);
    }
    with.weights.assign(with.values.size(), 1.0);
    with.weights[1] = 5.0;
    with.run();
    EXPECT_EQ(with.outputs(), plain.outputs()) << rule;
    EXPECT_EQ(with.values, (Doubles{-kInf, kMissing, kMissing, 1, 2, 2, 2, 3, 4, 4, 5}));
  }
}

TEST(RocCurve, AllValuesMissingWritesTheCornerAndTheSummary) {
  Curve curve({0, 1}, {kMissing, kMissing});
  EXPECT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.T(), 0);
  EXPECT_EQ(curve.rocPoints, (Doubles{0, 0}));
  EXPECT_EQ(curve.area(), 0.0);
  EXPECT_TRUE(std::isnan(curve.error()));
  for (int row = 5; row <= 9; ++row) EXPECT_EQ(curve.aucSummary[row - 1], kMissing);
}

TEST(RocCurve, CountsAreSumsOfWeights) {
  Curve curve({0, 0, 1, 1}, {1, 3, 2, 4}, {2, 3, 5, 7});
  curve.run();
  expectCounts(curve, {12, 12, 7, 7}, {5, 3, 3, 0}, {0, 2, 2, 5}, {0, 0, 5, 5});
  EXPECT_EQ(curve.sensitivity[2], 7.0 / 12);
  EXPECT_EQ(curve.specificity[2], 2.0 / 5);
}

// 0.1 + 0.2 + 0.3 rounds otherwise from the left than from the right; a rate of 1 must be exact or
// its Wald interval is a root of a negative number.
TEST(RocCurve, AFullRateIsExactlyOneWhateverTheWeights) {
  for (const int rule : {0, 1, 2, 3}) {
    Curve curve({0, 0, 0, 1, 1, 1, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8, 9},
                {0.1, 0.2, 0.3, 0.1, 0.2, 0.3, 0.7, 0.4, 0.1});
    curve.positiveRule = rule;
    curve.run();
    int full = 0;
    for (const Doubles& rates : {curve.sensitivity, curve.specificity}) {
      for (int k = 0; k < 9; ++k) {
        if (rates[k] > 0.999) {
          ++full;
          EXPECT_EQ(rates[k], 1.0);
          EXPECT_EQ(rates[9 + k], 1.0);
          EXPECT_EQ(rates[18 + k], 1.0);
        }
      }
    }
    EXPECT_GT(full, 0);
  }
}

TEST(RocCurve, FractionalStatusesCountInBothClasses) {
  Curve curve({0.25, 0.75, 1, 1}, {1, 2, 3, 4});
  curve.run();
  EXPECT_EQ(curve.tp, (Doubles{3, 2.75, 2, 1}));
  EXPECT_EQ(curve.fp, (Doubles{1, 0.25, 0, 0}));
}

TEST(RocCurve, TooManyThresholdsLeaveTheRowsBeyondAsPassed) {
  Curve curve = tiedCurve();
  curve.thresholdCount = 7;
  ASSERT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.thresholds, (Doubles{1, 2, 3, 4, 5, kUntouched, kUntouched}));
  EXPECT_EQ(curve.tp, (Doubles{4, 4, 3, 2, 1, kUntouched, kUntouched}));
  EXPECT_EQ(curve.sensitivity[5], kUntouched);
  EXPECT_EQ(curve.cost[6], kUntouched);
  // The untouched points take part in the sort and in the area.
  EXPECT_EQ(curve.rocPoints[6], kUntouched);
  EXPECT_EQ(curve.rocPoints[7], kUntouched);
  EXPECT_DOUBLE_EQ(curve.area(), 25.0 / 32 + (kUntouched - 1) * (1 + kUntouched) / 2);
}

// Row 3 of a 2 x 3 block is row 1 of its next column.
TEST(RocCurve, TooFewThresholdsFollowTheLinearPositions) {
  Curve curve({0, 1, 0}, {1, 2, 3});
  curve.thresholdCount = 2;
  ASSERT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.thresholds, (Doubles{1, 2}));
  EXPECT_EQ(curve.tp, (Doubles{1, 1}));
  EXPECT_EQ(curve.likelihoodRatios, (Doubles{1, 2, 0, 0}));  // (1, 2) is what row 3 had for LR+
  EXPECT_EQ(curve.sensitivity[0], 1.0);
  EXPECT_EQ(curve.sensitivity[2], 0.0);  // (1, 2): the sensitivity of row 3
}

// As one threshold does: each column of the one row is the first of the other rows' cells too, so
// it ends as row 2 of the column before.
TEST(RocCurve, ThresholdCountsOfZeroAndBelowGiveOneRow) {
  for (const int T : {0, -5, -2147483647 - 1}) {
    Curve curve({0, 1}, {2, 1});
    curve.thresholdCount = T;
    ASSERT_EQ(curve.run().code, 0);
    EXPECT_EQ(curve.thresholds, (Doubles{1}));
    EXPECT_EQ(curve.tp, (Doubles{1}));
    EXPECT_EQ(curve.fp, (Doubles{1}));
    EXPECT_EQ(curve.tn, (Doubles{0}));
    EXPECT_EQ(curve.fn, (Doubles{0}));
    EXPECT_EQ(curve.cost, (Doubles{0}));
    EXPECT_EQ(curve.sensitivity, (Doubles{1, 0, 0}));  // of 1; then of 2 with its lower bound
    EXPECT_EQ(curve.area(), 0.0);                      // of no threshold
  }
}

// A value that is not a number is not greater than the last threshold, so it joins that run.
TEST(RocCurve, ValuesThatAreNotNumbersJoinTheLastThreshold) {
  Curve curve({0, 1, 0, 1}, {kNaN, 1, 2, kNaN});
  curve.positiveRule = 1;
  ASSERT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.T(), 2);
  EXPECT_EQ(curve.thresholds, (Doubles{1, 2}));
  expectCounts(curve, {1, 2}, {0, 2}, {2, 0}, {1, 0});
}

TEST(RocCurve, PositiveInfinityIsAThreshold) {
  Curve curve({0, 1, 0, 1}, {0, 1, kInf, kInf});
  curve.run();
  EXPECT_EQ(curve.thresholds, (Doubles{0, 1, kInf}));
  expectCounts(curve, {2, 2, 1}, {2, 1, 1}, {0, 1, 1}, {0, 0, 1});
}

TEST(RocCurve, AStatusThatIsNotANumberMakesTheRatesSo) {
  Curve curve({0, 1, kNaN}, {1, 2, 3});
  ASSERT_EQ(curve.run().code, 0);
  EXPECT_TRUE(std::isnan(curve.sensitivity[0]));
  EXPECT_TRUE(std::isnan(curve.error()));
  EXPECT_EQ(curve.aucSummary[4], kMissing);
}

// A missing row has weight 0, but 0 times a status that is not a number is none: the first row is
// set, not summed.
TEST(RocCurve, WhatNoThresholdPrecedesIsZeroWhateverTheMissingRowsHold) {
  for (const int rule : {0, 2}) {
    Curve curve({kNaN, 0, 1}, {kMissing, 1, 2});
    curve.positiveRule = rule;
    curve.run();
    EXPECT_EQ(rule == 2 ? curve.tn[0] : curve.tp[0], 0.0);
    EXPECT_EQ(rule == 2 ? curve.fn[0] : curve.fp[0], 0.0);
    EXPECT_TRUE(std::isnan(rule == 2 ? curve.tn[1] : curve.tp[1]));
  }
}

TEST(RocCurve, StatusesBeyondTheSampleSizeAreSurvived) {
  for (const double huge : {5.0, 1e9, 1e10, 1e300, kInf, -3.0, -1e9, -kInf}) {
    for (const int method : {0, 1, 2}) {
      Curve curve({0, 1, huge, 0}, {1, 2, 3, 4});
      curve.aucSeMethod = method;
      EXPECT_EQ(curve.run().code, 0) << huge;
      EXPECT_EQ(curve.thresholds, (Doubles{1, 2, 3, 4}));
    }
  }
}

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
