// Thresholds, counts and rates of the ROC curve.
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

}  // namespace
