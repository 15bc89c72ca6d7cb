// The area under the ROC curve, its three standard errors, its bounds and its test.
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using Doubles = std::vector<double>;

// tiedCurve: of 16 pairs 11 rank the positive higher and 3 tie, 12.5 / 16 = 25/32.
constexpr double kTiedArea = 25.0 / 32;
// V01 = 1, 7/8, 7/8, 3/8 and V10 = 1/2, 3/4, 7/8, 1; the squares add up to 236/1024 and 140/1024.
const double kTiedDelong = std::sqrt(140.0 / 1024 / 12 + 236.0 / 1024 / 12);

TEST(RocArea, IsTheTrapezoidalAreaOfTheCurve) {
  for (const int rule : {0, 1, 2, 3, 9}) {
    Curve curve = tiedCurve();
    curve.positiveRule = rule;
    curve.run();
    EXPECT_DOUBLE_EQ(curve.area(), rule == 0 || rule == 1 ? 7.0 / 32 : kTiedArea) << rule;
  }
}

TEST(RocArea, PerfectSeparationGivesOne) {
  Curve curve({0, 0, 1, 1}, {1, 2, 3, 4});
  for (const int method : {0, 1, 2}) {
    curve.aucSeMethod = method;
    curve.run();
    EXPECT_EQ(curve.area(), 1.0);
    EXPECT_EQ(curve.error(), 0.0);
    EXPECT_EQ(curve.aucSummary[2], 1.0);
    EXPECT_EQ(curve.aucSummary[3], 1.0);
    for (int row = 5; row <= 9; ++row) EXPECT_EQ(curve.aucSummary[row - 1], kMissing);
  }
}

TEST(RocArea, CodeZeroIsHanleyAndMcNeil) {
  Curve curve = tiedCurve();
  curve.aucSeMethod = 0;
  curve.run();
  const double square = 625.0 / 1024;
  const double variance =
      (175.0 / 1024 + 3 * (25.0 / 39 - square) + 3 * (625.0 / 912 - square)) / 16;
  EXPECT_NEAR(curve.error(), std::sqrt(variance), 1e-15);
}

// Hanley and McNeil, Radiology 143 (1982): an area of 0.893 on 58 normal and 51 abnormal cases has
// the standard error 0.032.
TEST(RocArea, HanleyMcNeilAgreesWithThePublishedExample) {
  const Doubles normal{33, 6, 6, 11, 2};
  const Doubles abnormal{3, 2, 2, 11, 33};
  Doubles status, values, weights;
  for (int rating = 0; rating < 5; ++rating) {
    for (const int positive : {0, 1}) {
      status.push_back(positive);
      values.push_back(rating + 1);
      weights.push_back(positive == 1 ? abnormal[rating] : normal[rating]);
    }
  }
  Curve curve(status, values, weights);
  curve.aucSeMethod = 0;
  curve.run();
  EXPECT_NEAR(curve.area(), 0.893, 0.0005);
  EXPECT_NEAR(curve.error(), 0.032, 0.0005);
}

// Worked pair by pair: T1 = T2 = 3, the negatives add 22 and the positives 16,
// V = (8 - 9 + 22 + 16) / 16 - 28 (9/32)^2 = 0.09765625.
TEST(RocArea, CodeOneIsTheMannWhitneyVariance) {
  for (const int rule : {2, 3}) {
    Curve curve = tiedCurve();
    curve.aucSeMethod = 1;
    curve.positiveRule = rule;
    curve.run();
    EXPECT_DOUBLE_EQ(curve.error(), 5.0 / 96);
  }
}

// The positives' terms count negatives with the positive's weight: (5 - 5)^2 - 10 and 14^2 - 14.
// V = 17 + (132 - 8) + (-10 + 182) = 313, against 295 with the negatives' weights.
TEST(RocArea, MannWhitneyCountsNegativesWithThePositivesOwnWeight) {
  Curve curve({0, 0, 1, 1}, {1, 3, 2, 4}, {2, 3, 5, 7});
  curve.aucSeMethod = 1;
  curve.run();
  EXPECT_DOUBLE_EQ(curve.area(), 0.75);
  EXPECT_DOUBLE_EQ(curve.error(), 0.5 * std::sqrt((313.0 / 60 - 4) / 44));
}

// A missing negative stands at 0 with weight 0: it adds 4^2 - 4 for itself and one case below each
// positive. V = (-1 + 34 + 34) / 16 - 28 (9/32)^2 = 1.97265625.
TEST(RocArea, MannWhitneyLeavesAMissingValueInItsPlace) {
  Curve curve = tiedCurve();
  curve.status.push_back(0);
  curve.values.push_back(kMissing);
  curve.aucSeMethod = 1;
  curve.run();
  EXPECT_DOUBLE_EQ(curve.error(), 0.5 * std::sqrt(1.97265625 / 9));
}

// A missing positive and a negative at 0 tie: the product T1 T2 is 1 (weight of the negative)
// times 0 (weight of the missing positive).
TEST(RocArea, MannWhitneyTiesMissingValuesWithZero) {
  Curve curve({0, 0, 1, 1, 1}, {0, 2, kMissing, 1, 3}, {1, 1, 8, 1, 1});
  curve.aucSeMethod = 1;
  curve.run();
  // N = P = 2, T1 T2 = 1 * 0. Negatives: 0 has 2 above, 2 has the missing one and 1 below (weight
  // 0 + 1) and 1 above: 2 and -2. Positives: the missing one 0, 1 one above and one below: -2,
  // 3 two below: 2. V = 4 / 4 - 12 (1/4)^2 = 1/4.
  EXPECT_DOUBLE_EQ(curve.area(), 0.75);
  EXPECT_DOUBLE_EQ(curve.error(), 0.25);
}

// Within 1e-12 is a tie for the product, but above and below stay strict.
TEST(RocArea, MannWhitneyTiesWithinATolerance) {
  Curve curve({0, 0, 1, 1}, {1, 2, 2 + 4e-13, 3});
  curve.aucSeMethod = 1;
  curve.run();
  // T1 T2 = 1; each negative has 2 above, each positive 2 below: 4 * 2. V = 11/4 - 12 / 4 < 0.
  EXPECT_EQ(curve.error(), 0.0);
  Curve spread({0, 0, 1, 1, 0, 1}, {1, 2, 2 + 4e-13, 3, 5, 0});
  spread.aucSeMethod = 1;
  spread.run();
  // Area 4/9. N + P - T1 T2 = 5. Negatives 1 (one below, two above), 2 (the same), 5 (three
  // below): -2, -2, 6. Positives 2+ and 3 (two below, one above): -2, -2; 0 (three above): 6.
  // V = 9/9 - 20 (1/18)^2.
  EXPECT_NEAR(spread.error(), 0.5 * std::sqrt((1.0 - 20.0 / 324) / 4), 1e-15);
}

TEST(RocArea, MannWhitneyErrorIsZeroWithOneCaseInAClass) {
  Curve curve({0, 1, 1, 1}, {2, 1, 3, 4});
  curve.aucSeMethod = 1;
  curve.run();
  EXPECT_EQ(curve.error(), 0.0);
  for (int row = 5; row <= 9; ++row) EXPECT_EQ(curve.aucSummary[row - 1], kMissing);
}

TEST(RocArea, AnyOtherCodeIsDeLong) {
  for (const int method : {2, 3, -1}) {
    Curve curve = tiedCurve();
    curve.aucSeMethod = method;
    curve.run();
    EXPECT_DOUBLE_EQ(curve.error(), kTiedDelong);
  }
}

// Components 2 and 7/4, 2 and 7: with the own weight inside, not averages of psi.
TEST(RocArea, DeLongWeighsTheComponentsTwice) {
  Curve curve({0, 0, 1, 1}, {1, 3, 2, 4}, {2, 3, 5, 7});
  curve.run();
  EXPECT_DOUBLE_EQ(curve.error(), std::sqrt(281.25 / (11 * 12) + 6.125 / (4 * 5)));
}

TEST(RocArea, DeLongWithOneCaseInAClassIsNotANumber) {
  Curve curve({0, 1, 1}, {1, 2, 3});
  curve.run();
  EXPECT_TRUE(std::isnan(curve.error()));
  EXPECT_EQ(curve.aucSummary[2], 0.0);
  EXPECT_EQ(curve.aucSummary[3], 1.0);
  for (int row = 5; row <= 9; ++row) EXPECT_EQ(curve.aucSummary[row - 1], kMissing);
}

// One case of weight 1 has the whole area as its component, so that its spread is 0 and the error
// 0 / 0, whatever the weights of the other class and the order in which their products are added.
TEST(RocArea, DeLongWithOneCaseInAClassIsNotANumberWhateverTheOtherWeights) {
  for (const double single : {0.0, 1.0}) {
    for (int cases = 2; cases <= 40; ++cases) {
      Curve curve({single}, {0.5}, {1.0});
      for (int i = 1; i < cases; ++i) {
        curve.status.push_back(1.0 - single);
        curve.values.push_back(i % 7 / 7.0);
        curve.weights.push_back(0.1 * (1 + i % 3) + 1.0 / (i + 2));
      }
      curve.run();
      ASSERT_TRUE(std::isnan(curve.error())) << cases << ": " << curve.error();
      for (int row = 5; row <= 9; ++row) EXPECT_EQ(curve.aucSummary[row - 1], kMissing);
      // Others in the class that are missing leave it one case.
      curve.status.push_back(single);
      curve.values.push_back(kMissing);
      curve.weights.push_back(0.3);
      curve.run();
      ASSERT_TRUE(std::isnan(curve.error())) << cases;
    }
  }
}

// 1e-12 - 0 is exactly 1e-12: neither a tie (a half) nor above (one). Just beside it is one or the
// other.
TEST(RocArea, ADifferenceOfExactlyTheToleranceCountsNothing) {
  const auto tested = [](double gap) {
    // Negatives 0 and 3, positives gap and 2; what psi(0, gap) adds is a quarter of it.
    Curve curve({0, 0, 1, 1}, {0, 3, gap, 2});
    curve.run();
    return curve.aucSummary[4] * curve.error() + 0.5;
  };
  EXPECT_DOUBLE_EQ(tested(1e-12), 0.25);
  EXPECT_DOUBLE_EQ(tested(std::nextafter(1e-12, 0.0)), 0.375);
  EXPECT_DOUBLE_EQ(tested(std::nextafter(1e-12, 1.0)), 0.5);
  EXPECT_DOUBLE_EQ(tested(-std::nextafter(1e-12, 0.0)), 0.375);
  EXPECT_DOUBLE_EQ(tested(-1e-12), 0.25);
}

// With the rules that call low values positive the trapezoid has 7/32 and the estimate tested is
// still 25/32: bounds around the one, the test on the other.
TEST(RocArea, DeLongTestsTheMannWhitneyEstimateAndBoundsTheTrapezoid) {
  for (const int rule : {0, 1}) {
    Curve curve = tiedCurve();
    curve.positiveRule = rule;
    curve.run();
    EXPECT_DOUBLE_EQ(curve.area(), 7.0 / 32);
    EXPECT_EQ(curve.aucSummary[2], 0.0);  // 7/32 - 1.96 * 0.175 < 0
    EXPECT_NEAR(curve.aucSummary[3], 7.0 / 32 + kZ975 * kTiedDelong, 1e-14);
    EXPECT_NEAR(curve.aucSummary[4], (9.0 / 32) / kTiedDelong, 1e-14);
    Curve hanley = tiedCurve();
    hanley.positiveRule = rule;
    hanley.aucSeMethod = 0;
    hanley.run();
    EXPECT_LT(hanley.aucSummary[4], 0.0);
  }
}

TEST(RocArea, TheTwoSidedTestHasTheUsualInterval) {
  Curve curve = tiedCurve();
  curve.run();
  const double d = 9.0 / 32;
  EXPECT_NEAR(curve.aucSummary[2], kTiedArea - kZ975 * kTiedDelong, 1e-14);
  EXPECT_EQ(curve.aucSummary[3], 1.0);  // 25/32 + 1.96 * 0.175 > 1
  EXPECT_NEAR(curve.aucSummary[4], d / kTiedDelong, 1e-14);
  EXPECT_NEAR(curve.aucSummary[5], d - kZ975 * kTiedDelong, 1e-14);
  EXPECT_NEAR(curve.aucSummary[6], d + kZ975 * kTiedDelong, 1e-14);
  EXPECT_NEAR(curve.aucSummary[7], 2 * (1 - normalBelow(d / kTiedDelong)), 1e-14);
  EXPECT_NEAR(curve.aucSummary[8], kZ975, 1e-14);
}

TEST(RocArea, TheTestOfASmallerAreaIsOpenBelow) {
  Curve curve = tiedCurve();
  curve.alternative = -1;
  curve.run();
  const double d = 9.0 / 32;
  EXPECT_EQ(curve.aucSummary[5], kMissing);
  EXPECT_NEAR(curve.aucSummary[6], d + kZ95 * kTiedDelong, 1e-14);
  EXPECT_NEAR(curve.aucSummary[7], normalBelow(d / kTiedDelong), 1e-14);
  EXPECT_NEAR(curve.aucSummary[8], -kZ95, 1e-14);
}

// The critical value is 1 - (-1.645) = 2.645, not 1.645.
TEST(RocArea, TheTestOfALargerAreaUsesOneMinusTheQuantile) {
  for (const int alternative : {1, 2, -2}) {
    Curve curve = tiedCurve();
    curve.alternative = alternative;
    curve.run();
    const double d = 9.0 / 32;
    EXPECT_NEAR(curve.aucSummary[5], d - (1 + kZ95) * kTiedDelong, 1e-14);
    EXPECT_EQ(curve.aucSummary[6], kInfinite);
    EXPECT_NEAR(curve.aucSummary[7], 1 - normalBelow(d / kTiedDelong), 1e-14);
    EXPECT_NEAR(curve.aucSummary[8], 1 + kZ95, 1e-14);
  }
}

// Above alpha = 0.84 the critical value turns negative; its size is what widens the bound.
TEST(RocArea, TheOneSidedBoundTakesTheSizeOfTheCriticalValue) {
  Curve curve = tiedCurve();
  curve.alternative = 1;
  curve.alpha = 0.975;
  curve.run();
  EXPECT_NEAR(curve.aucSummary[8], 1 - kZ975, 1e-14);
  EXPECT_NEAR(curve.aucSummary[5], 9.0 / 32 - (kZ975 - 1) * kTiedDelong, 1e-14);
}

TEST(RocArea, AnAlphaThatIsNotANumberLeavesTheBoundsAtTheEnds) {
  Curve curve = tiedCurve();
  curve.alpha = kNaN;
  EXPECT_EQ(curve.run().code, 0);
  EXPECT_EQ(curve.aucSummary[2], 0.0);
  EXPECT_EQ(curve.aucSummary[3], 1.0);
  EXPECT_TRUE(std::isnan(curve.aucSummary[8]));
}

}  // namespace
