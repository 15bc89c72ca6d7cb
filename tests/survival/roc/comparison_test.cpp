// Pairwise comparison of areas, paired and independent.
#include <climits>

#include "survival/roc/roc.h"
#include "tests/support/matrices.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using Doubles = std::vector<double>;

// Two tests of three negatives (rows 1..3) and three positives. The first ranks one pair wrongly,
// the second two.
Comparison twoTests() {
  Comparison comparison;
  comparison.status = {0, 0, 0, 1, 1, 1};
  comparison.tests = {{1, 2, 4, 3, 5, 6}, {4, 1, 2, 3, 5, 3}};
  comparison.aucs = {8.0 / 9, 7.0 / 9};
  return comparison;
}

// First test: V01 = 1, 1, 2/3; V10 = 2/3, 1, 1; A = 8/9; each S = (1 + 1 + 4)/81 / 2 = 1/27.
// Second:     V01 = 1/3, 1, 1; V10 = 2/3, 1, 2/3; A = 7/9; S01 = (16 + 4 + 4)/81 / 2 = 4/27,
//             S10 = (1 + 4 + 1)/81 / 2 = 1/27.
// Crossed:    S01 = (-4 + 2 - 4)/81 / 2 = -1/27, S10 = (2 + 2 - 1)/81 / 2 = 1/54.
TEST(RocComparison, PairedCovariancesAreDeLongs) {
  Comparison comparison = twoTests();
  comparison.run();
  EXPECT_NEAR(comparison.at(comparison.covariance, 1, 1), 2.0 / 81, 1e-16);
  EXPECT_NEAR(comparison.at(comparison.covariance, 2, 2), 5.0 / 81, 1e-16);
  EXPECT_NEAR(comparison.at(comparison.covariance, 1, 2), -1.0 / 162, 1e-16);
  EXPECT_EQ(comparison.at(comparison.covariance, 2, 1), comparison.at(comparison.covariance, 1, 2));
}

TEST(RocComparison, PairedVariancesAreStandardErrors) {
  Comparison comparison = twoTests();
  comparison.run();
  EXPECT_NEAR(comparison.aucVariances[0], std::sqrt(2.0 / 81), 1e-15);
  EXPECT_NEAR(comparison.aucVariances[1], std::sqrt(5.0 / 81), 1e-15);
}

// s^2 = 2/81 + 5/81 + 1/81 = 8/81. The areas compared are those given.
TEST(RocComparison, PairedTestComparesTheGivenAreas) {
  Comparison comparison = twoTests();
  comparison.aucs = {0.9, 0.4};
  comparison.run();
  const double s = std::sqrt(8.0 / 81);
  const double z = 0.5 / s;
  EXPECT_EQ(comparison.at(comparison.aucDiff, 1, 2), 0.5);
  EXPECT_EQ(comparison.at(comparison.aucDiff, 2, 1), -0.5);
  EXPECT_NEAR(comparison.at(comparison.zStat, 1, 2), z, 1e-14);
  EXPECT_NEAR(comparison.at(comparison.zStat, 2, 1), -z, 1e-14);
  EXPECT_NEAR(comparison.at(comparison.halfWidth, 1, 2), kZ975 * s, 1e-14);
  EXPECT_EQ(comparison.at(comparison.halfWidth, 2, 1), kMissing);
  EXPECT_NEAR(comparison.at(comparison.pValue, 1, 2), 2 * (1 - normalBelow(z)), 1e-14);
  EXPECT_EQ(comparison.at(comparison.pValue, 2, 1), comparison.at(comparison.pValue, 1, 2));
}

TEST(RocComparison, PairedDiagonalsHoldAPValueOfOneAndTheVariance) {
  Comparison comparison = twoTests();
  comparison.run();
  for (const std::size_t i : {1u, 2u}) {
    EXPECT_EQ(comparison.at(comparison.pValue, i, i), 1.0);
    EXPECT_EQ(comparison.at(comparison.aucDiff, i, i), kMissing);
    EXPECT_EQ(comparison.at(comparison.zStat, i, i), kMissing);
    EXPECT_EQ(comparison.at(comparison.halfWidth, i, i), kMissing);
    EXPECT_EQ(comparison.flag(i, i), INT_MIN);
  }
}

// p of this difference lies between alpha / 2 and alpha.
TEST(RocComparison, SignificanceNeedsAPValueBelowHalfOfAlpha) {
  Comparison comparison = twoTests();
  const double s = std::sqrt(8.0 / 81);
  comparison.aucs = {0.5 + 2.1 * s, 0.5};  // p = 0.0357
  comparison.run();
  EXPECT_LT(comparison.at(comparison.pValue, 1, 2), 0.05);
  EXPECT_EQ(comparison.flag(1, 2), 0);
  EXPECT_EQ(comparison.flag(2, 1), 0);
  comparison.aucs = {0.5 + 2.3 * s, 0.5};  // p = 0.0214
  comparison.run();
  EXPECT_EQ(comparison.flag(1, 2), 1);
  EXPECT_EQ(comparison.flag(2, 1), 1);
}

// The first weight is 1 before the rows are sorted: here it belongs to the first row of the
// positives.
TEST(RocComparison, TheFirstWeightIsTakenAsOne) {
  Comparison plain = twoTests();
  std::rotate(plain.status.begin(), plain.status.begin() + 3, plain.status.end());
  for (auto& test : plain.tests) std::rotate(test.begin(), test.begin() + 3, test.end());
  Comparison forced = plain;
  forced.weights = {50, 1, 1, 1, 1, 1};
  plain.run();
  forced.run();
  EXPECT_EQ(forced.covariance, plain.covariance);
  EXPECT_EQ(forced.weights[0], 50.0);
  Comparison weighted = plain;
  weighted.weights = {1, 50, 1, 1, 1, 1};
  weighted.run();
  EXPECT_NE(weighted.covariance, plain.covariance);
}

TEST(RocComparison, TheMatrixFormSetsTheFirstWeightInEitherDesign) {
  for (const short paired : {short{-1}, short{0}}) {
    survmeth::test::Column status({1, 0});
    survmeth::test::Column tests({5, 3});
    survmeth::test::Column weights({7, 9});
    matrix one(1, 1, 0);
    matrixInt selected(1, 1, 1);
    matrixInt significant(1, 1, 0);
    EXPECT_EQ(ComputeROCComparisonsDep(&status, 2, &tests, &weights, &one, 1, 0.05, paired, &one,
                                       &one, &selected, &one, &one, &one, &one, &one, &significant),
              0);
    // Sorted by status in the paired design.
    EXPECT_EQ(survmeth::test::elements(weights), paired == -1 ? (Doubles{9, 1}) : (Doubles{1, 9}));
    EXPECT_EQ(survmeth::test::elements(tests), paired == -1 ? (Doubles{3, 5}) : (Doubles{5, 3}));
  }
}

TEST(RocComparison, ARowMissingInEitherTestCountsForNothingInThePair) {
  Comparison comparison = twoTests();
  Comparison longer = twoTests();
  // Rows missing in one of the tests, in each class and in both ways of being missing.
  for (const double status : {0.0, 1.0}) {
    for (const std::size_t without : {0u, 1u}) {
      longer.status.push_back(status);
      longer.tests[without].push_back(status == 0.0 ? kMissing : -kInf);
      longer.tests[1 - without].push_back(2.5);
    }
  }
  comparison.run();
  longer.run();
  EXPECT_EQ(longer.at(longer.covariance, 1, 2), comparison.at(comparison.covariance, 1, 2));
  // A test by itself uses the rows where only the other is missing.
  EXPECT_NE(longer.at(longer.covariance, 1, 1), comparison.at(comparison.covariance, 1, 1));
}

TEST(RocComparison, IdenticalTestsHaveADifferenceButNoStatistic) {
  Comparison comparison = twoTests();
  comparison.tests[1] = comparison.tests[0];
  comparison.aucs = {0.75, 0.5};
  comparison.run();
  EXPECT_EQ(comparison.at(comparison.aucDiff, 1, 2), 0.25);
  EXPECT_EQ(comparison.at(comparison.aucDiff, 2, 1), -0.25);
  EXPECT_NEAR(comparison.at(comparison.covariance, 1, 2), 2.0 / 81, 1e-16);
  EXPECT_EQ(comparison.at(comparison.zStat, 1, 2), kMissing);
  EXPECT_EQ(comparison.at(comparison.halfWidth, 1, 2), kMissing);
  EXPECT_EQ(comparison.at(comparison.pValue, 1, 2), kMissing);
  EXPECT_EQ(comparison.flag(1, 2), INT_MIN);
  EXPECT_EQ(comparison.flag(2, 1), INT_MIN);
}

TEST(RocComparison, TestsThatAreNotSelectedGetMarkersOnly) {
  for (const int other : {0, 2, -1}) {
    for (const short paired : {short{-1}, short{0}}) {
      Comparison comparison = twoTests();
      comparison.tests.push_back({1, 2, 3, 4, 5, 6});
      comparison.aucs.push_back(1.0);
      comparison.selected = {1, other, 1};
      comparison.paired = paired;
      comparison.sampleSizes = {10, 10, 10};
      comparison.aucVariances = {0.1, 0.1, 0.1};
      comparison.run();
      for (const std::size_t i : {1u, 2u, 3u}) {
        for (const Doubles* output : {&comparison.aucDiff, &comparison.zStat, &comparison.halfWidth,
                                      &comparison.covariance, &comparison.pValue}) {
          EXPECT_EQ(comparison.at(*output, 2, i), kMissing);
          EXPECT_EQ(comparison.at(*output, i, 2), kMissing);
        }
        EXPECT_EQ(comparison.flag(i, 2), INT_MIN);
        EXPECT_EQ(comparison.flag(2, i), INT_MIN);
      }
      EXPECT_EQ(comparison.aucVariances[1], paired == -1 ? kMissing : 0.1);
      EXPECT_EQ(comparison.at(comparison.pValue, 3, 3), 1.0);
      EXPECT_NE(comparison.at(comparison.aucDiff, 1, 3), kMissing);
    }
  }
}

TEST(RocComparison, AnyFlagButMinusOneIsIndependent) {
  for (const short paired : {short{0}, short{1}, short{2}}) {
    Comparison comparison = twoTests();
    comparison.paired = paired;
    comparison.sampleSizes = {10, 20};
    comparison.aucVariances = {0.1, 0.4};
    comparison.run();
    EXPECT_EQ(comparison.at(comparison.covariance, 1, 2), 0.0);
    EXPECT_EQ(comparison.aucVariances, (Doubles{0.1, 0.4}));
  }
}

// a = 0.01, b = 0.02: s^2 = 0.03, df = 9e-4 / (4e-4 / 19 + 1e-4 / 9).
TEST(RocComparison, IndependentTestIsWelchs) {
  Comparison comparison;
  comparison.paired = 0;
  comparison.aucs = {0.9, 0.5};
  comparison.sampleSizes = {10.9, 20};  // truncated
  comparison.aucVariances = {0.1, 0.4};
  comparison.run();
  const double s = std::sqrt(0.03);
  EXPECT_NEAR(comparison.at(comparison.aucDiff, 1, 2), 0.4, 1e-16);
  EXPECT_NEAR(comparison.at(comparison.aucDiff, 2, 1), -0.4, 1e-16);
  EXPECT_EQ(comparison.at(comparison.covariance, 2, 1), 0.0);
  EXPECT_NEAR(comparison.at(comparison.zStat, 1, 2), 0.4 / s, 1e-14);
  EXPECT_NEAR(comparison.at(comparison.zStat, 2, 1), -0.4 / s, 1e-14);
  // mpmath: Student's t with df = 27.98181818...; quantile at 0.975 and two tails at 0.4 / s.
  EXPECT_NEAR(comparison.at(comparison.halfWidth, 1, 2), 0.35480491071856840, 1e-12);
  EXPECT_NEAR(comparison.at(comparison.pValue, 1, 2), 0.028518200652134143, 1e-12);
  EXPECT_EQ(comparison.at(comparison.halfWidth, 2, 1), kMissing);
  EXPECT_EQ(comparison.at(comparison.pValue, 2, 1), comparison.at(comparison.pValue, 1, 2));
  EXPECT_EQ(comparison.flag(1, 2), 0);
  for (const std::size_t i : {1u, 2u}) {
    EXPECT_EQ(comparison.at(comparison.pValue, i, i), 1.0);
    EXPECT_EQ(comparison.at(comparison.covariance, i, i), kMissing);
    EXPECT_EQ(comparison.flag(i, i), INT_MIN);
  }
}

TEST(RocComparison, IndependentPairsNeedPositiveVariances) {
  for (const double variance : {0.0, -1.0, kNaN, kMissing}) {
    Comparison comparison;
    comparison.paired = 0;
    comparison.aucs = {0.9, 0.5};
    comparison.sampleSizes = {10, 20};
    comparison.aucVariances = {0.1, variance};
    comparison.run();
    for (const Doubles* output : {&comparison.aucDiff, &comparison.zStat, &comparison.halfWidth,
                                  &comparison.covariance, &comparison.pValue}) {
      EXPECT_EQ(comparison.at(*output, 1, 2), kMissing);
      EXPECT_EQ(comparison.at(*output, 2, 1), kMissing);
    }
    EXPECT_EQ(comparison.flag(1, 2), INT_MIN);
    EXPECT_EQ(comparison.at(comparison.pValue, 2, 2), 1.0);
  }
}

TEST(RocComparison, IndependentWithoutAnErrorWritesTheDifferenceAndNoStatistic) {
  Comparison comparison;
  comparison.paired = 0;
  comparison.aucs = {0.9, 0.5};
  comparison.sampleSizes = {-10, -10};
  comparison.aucVariances = {0.1, 0.1};
  comparison.run();
  EXPECT_NEAR(comparison.at(comparison.aucDiff, 1, 2), 0.4, 1e-16);
  EXPECT_EQ(comparison.at(comparison.covariance, 1, 2), 0.0);
  EXPECT_TRUE(std::isnan(comparison.at(comparison.halfWidth, 1, 2)));
  EXPECT_EQ(comparison.at(comparison.zStat, 1, 2), kMissing);
  EXPECT_EQ(comparison.flag(1, 2), INT_MIN);
}

// No int holds these: the processor's conversion gives the smallest one.
TEST(RocComparison, SampleSizesThatNoIntHoldsBecomeTheSmallestInt) {
  for (const double size : {kNaN, kInf, -kInf, 1e300}) {
    Comparison comparison;
    comparison.paired = 0;
    comparison.aucs = {0.9, 0.5};
    comparison.sampleSizes = {size, 20};
    comparison.aucVariances = {0.1, 0.4};
    comparison.run();
    EXPECT_NEAR(comparison.at(comparison.zStat, 1, 2), 0.4 / std::sqrt(0.02 - 0.1 / 2147483648.0),
                1e-14);
  }
}

// Without observations the error is infinite, with one there are no degrees of freedom.
TEST(RocComparison, SampleSizesOfZeroAndOneGiveNoPValue) {
  for (const double size : {0.0, 0.9, 1.0}) {
    Comparison comparison;
    comparison.paired = 0;
    comparison.aucs = {0.9, 0.5};
    comparison.sampleSizes = {size, 20};
    comparison.aucVariances = {0.1, 0.4};
    comparison.run();
    EXPECT_NEAR(comparison.at(comparison.zStat, 1, 2), size == 1.0 ? 0.4 / std::sqrt(0.12) : 0.0,
                1e-14);
    EXPECT_TRUE(std::isnan(comparison.at(comparison.pValue, 1, 2)));
    EXPECT_EQ(comparison.flag(1, 2), 0);
  }
}

// z without bars: for alpha above 1 it turns negative and the half-width with it.
TEST(RocComparison, ThePairedCriticalValueKeepsItsSign) {
  Comparison comparison = twoTests();
  comparison.alpha = 1.95;
  comparison.run();
  EXPECT_NEAR(comparison.at(comparison.halfWidth, 1, 2), -kZ975 * std::sqrt(8.0 / 81), 1e-14);
}

TEST(RocComparison, OneClassOnlyGivesNoNumbers) {
  for (const double only : {0.0, 1.0}) {
    Comparison comparison = twoTests();
    comparison.status.assign(6, only);
    comparison.run();
    EXPECT_TRUE(std::isnan(comparison.at(comparison.covariance, 1, 2)));
    EXPECT_TRUE(std::isnan(comparison.aucVariances[0]));
    EXPECT_NEAR(comparison.at(comparison.aucDiff, 1, 2), 1.0 / 9, 1e-16);
    EXPECT_EQ(comparison.at(comparison.zStat, 1, 2), kMissing);
  }
}

// As for a single curve: 0 / 0. The first weight is taken as 1, so the first row is the case.
TEST(RocComparison, OneCaseInAClassGivesNoNumbersWhateverTheOtherWeights) {
  for (const double single : {0.0, 1.0}) {
    for (int cases = 3; cases <= 30; ++cases) {
      Comparison comparison;
      comparison.tests.resize(2);
      comparison.aucs = {0.6, 0.7};
      for (int i = 0; i < cases; ++i) {
        comparison.status.push_back(i == 0 ? single : 1.0 - single);
        comparison.weights.push_back(0.1 * (1 + i % 3) + 1.0 / (i + 2));
        comparison.tests[0].push_back(i % 7);
        comparison.tests[1].push_back((3 * i + 1) % 5);
      }
      comparison.run();
      for (const double covariance : comparison.covariance) ASSERT_TRUE(std::isnan(covariance));
      for (const double error : comparison.aucVariances) ASSERT_TRUE(std::isnan(error));
      EXPECT_EQ(comparison.at(comparison.zStat, 1, 2), kMissing);
      EXPECT_EQ(comparison.at(comparison.pValue, 1, 2), kMissing);
    }
  }
}

TEST(RocComparison, UnusualStatusesAreSurvived) {
  for (const double status : {kNaN, kInf, -kInf, 1e9, -1e9, 7.0, -7.0, 0.5}) {
    Comparison comparison = twoTests();
    comparison.status[4] = status;
    comparison.run();
    EXPECT_EQ(comparison.at(comparison.pValue, 1, 1), 1.0);
  }
}

TEST(RocComparison, NoTestsAndNoObservationsWriteNothing) {
  Doubles one{kUntouched};
  int flag = 77;
  for (const int k : {0, -1, -2147483647 - 1}) {
    for (const int n : {0, -1, -2147483647 - 1}) {
      for (const short paired : {short{-1}, short{0}}) {
        Cpp_ComputeROCComparisonsDep2(one.data(), n, one.data(), one.data(), one.data(), k, 0.05,
                                      paired, one.data(), one.data(), &flag, one.data(), one.data(),
                                      one.data(), one.data(), one.data(), &flag);
      }
    }
  }
  EXPECT_EQ(one[0], kUntouched);
  EXPECT_EQ(flag, 77);
}

}  // namespace
