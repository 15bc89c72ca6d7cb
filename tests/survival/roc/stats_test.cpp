// Statistics of a 2 x 2 table.
#include "survival/roc/roc.h"
#include "tests/support/matrices.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using Doubles = std::vector<double>;

// The 2 x 2 table a b / c d, run through Cpp_GetROCStats.
struct Stats {
  Stats(double a, double b, double c, double d) : table{a, c, b, d} {}

  Stats& run() {
    stats.assign(39, kUntouched);
    proportions.assign(9, kUntouched);
    code = Cpp_GetROCStats(table.data(), alpha, ciMethod, continuityCorrection, prevalence,
                           stats.data(), proportions.data());
    return *this;
  }

  double value(int row) const { return stats[row - 1]; }
  double lower(int row) const { return stats[13 + row - 1]; }
  double upper(int row) const { return stats[26 + row - 1]; }

  Doubles table;
  double alpha = 0.05;
  int ciMethod = 1;
  short continuityCorrection = 0;
  double prevalence = 0.0;
  Doubles stats, proportions;
  int code = 77;
};

void expectMissing(const Stats& stats, int row) {
  EXPECT_EQ(stats.value(row), kMissing) << row;
  EXPECT_EQ(stats.lower(row), kMissing) << row;
  EXPECT_EQ(stats.upper(row), kMissing) << row;
}

void expectWald(const Stats& stats, int row, double p, double m) {
  const double half = kZ975 * std::sqrt(p * (1 - p) / m);
  EXPECT_NEAR(stats.value(row), p, 1e-15) << row;
  EXPECT_NEAR(stats.lower(row), p - half, 1e-14) << row;
  EXPECT_NEAR(stats.upper(row), p + half, 1e-14) << row;
}

void expectLog(const Stats& stats, int row, double ratio, double s) {
  EXPECT_DOUBLE_EQ(stats.value(row), ratio) << row;
  EXPECT_NEAR(stats.lower(row), ratio * std::exp(-kZ975 * s), 1e-13) << row;
  EXPECT_NEAR(stats.upper(row), ratio * std::exp(kZ975 * s), 1e-12) << row;
}

// 8 true positives, 6 false positives, 2 false negatives, 24 true negatives.
Stats example() { return Stats(8, 6, 2, 24); }

TEST(RocStats, ProportionsHaveTheirMargins) {
  Stats stats = example();
  EXPECT_EQ(stats.run().code, 0);
  EXPECT_EQ(stats.proportions,
            (Doubles{8.0 / 40, 2.0 / 40, 8.0 / 40 + 2.0 / 40, 6.0 / 40, 24.0 / 40,
                     6.0 / 40 + 24.0 / 40, 8.0 / 40 + 6.0 / 40, 2.0 / 40 + 24.0 / 40, 1.0}));
  EXPECT_EQ(stats.table, (Doubles{8, 2, 6, 24}));
}

TEST(RocStats, ValuesAreThoseOfTheTable) {
  Stats stats = example();
  stats.run();
  const double expected[13] = {0.8,  0.2,      0.8,       0.8, 0.2,  0.2,
                               0.25, 8.0 / 14, 24.0 / 26, 4.0, 0.25, (8.0 / 14) / (2.0 / 26),
                               16.0};
  for (int row = 1; row <= 13; ++row) {
    EXPECT_NEAR(stats.value(row), expected[row - 1], 1e-13) << row;
  }
}

TEST(RocStats, CodeZeroIsWilsonForSimpleProportionsAndWaldForTheRates) {
  Stats stats(81, 0, 0, 182);
  stats.ciMethod = 0;
  stats.run();
  // The published score interval of 81 / 263 for the prevalence.
  EXPECT_NEAR(stats.lower(7), 0.2553, 5e-5);
  EXPECT_NEAR(stats.upper(7), 0.3662, 5e-5);
  Stats rates = example();
  rates.ciMethod = 0;
  rates.run();
  expectWald(rates, 3, 0.8, 10);
  expectWald(rates, 4, 0.8, 30);
  // Wilson for the complements, on the same cases: centre (x + z^2/2) / (m + z^2).
  const double z2 = kZ975 * kZ975;
  EXPECT_NEAR(rates.lower(6) + rates.upper(6), 2 * (2 + z2 / 2) / (10 + z2), 1e-13);
  EXPECT_NEAR(rates.lower(5) + rates.upper(5), 2 * (6 + z2 / 2) / (30 + z2), 1e-13);
  EXPECT_NEAR(rates.lower(8) + rates.upper(8), 2 * (8 + z2 / 2) / (14 + z2), 1e-13);
  EXPECT_NEAR(rates.lower(9) + rates.upper(9), 2 * (24 + z2 / 2) / (26 + z2), 1e-13);
  EXPECT_NEAR(rates.lower(1) + rates.upper(1), 2 * (32 + z2 / 2) / (40 + z2), 1e-13);
  EXPECT_NEAR(rates.lower(2) + rates.upper(2), 2 * (8 + z2 / 2) / (40 + z2), 1e-13);
}

TEST(RocStats, TheContinuityCorrectionReachesCodeZeroOfTheSimpleProportionsOnly) {
  Stats stats(81, 0, 0, 182);
  stats.ciMethod = 0;
  stats.continuityCorrection = -1;
  stats.run();
  EXPECT_NEAR(stats.lower(7), 0.2535, 5e-5);
  EXPECT_NEAR(stats.upper(7), 0.3682, 5e-5);
  Stats rates = example();
  rates.ciMethod = 0;
  rates.continuityCorrection = -1;
  rates.run();
  expectWald(rates, 3, 0.8, 10);
  expectWald(rates, 4, 0.8, 30);
  Stats flagged(81, 0, 0, 182);
  flagged.ciMethod = 0;
  flagged.continuityCorrection = 1;
  flagged.run();
  EXPECT_NEAR(flagged.lower(7), 0.2553, 5e-5);
}

TEST(RocStats, EveryOtherCodeIsWaldForTheSimpleProportions) {
  for (const int method : {2, 3, -1}) {
    Stats stats = example();
    stats.ciMethod = method;
    stats.run();
    expectWald(stats, 1, 0.8, 40);
    expectWald(stats, 2, 0.2, 40);
    expectWald(stats, 5, 0.2, 30);
    expectWald(stats, 6, 0.2, 10);
    expectWald(stats, 7, 0.25, 40);
    expectWald(stats, 8, 8.0 / 14, 14);
    expectWald(stats, 9, 24.0 / 26, 26);
  }
}

TEST(RocStats, CodeOneAddsFourCasesToTheRatesAndTheirComplements) {
  Stats stats = example();
  stats.run();
  const auto expectAdjusted = [&](int row, double x, double m) {
    const double p = (x + 2) / (m + 4);
    const double half = kZ975 * std::sqrt(p * (1 - p) / (m + 4));
    EXPECT_NEAR(stats.lower(row), p - half, 1e-14);
    EXPECT_NEAR(stats.upper(row), p + half, 1e-14);
  };
  expectAdjusted(3, 8, 10);
  expectAdjusted(4, 24, 30);
  // The complements keep their own proportion on the four more cases.
  expectWald(stats, 6, 0.2, 14);
  expectWald(stats, 5, 0.2, 34);
  expectWald(stats, 1, 0.8, 40);
}

TEST(RocStats, CodeTwoIsWilsonAndAnyOtherClopperPearsonForTheRates) {
  Stats stats(1, 29, 28, 119);  // sensitivity 1 / 29
  stats.ciMethod = 2;
  stats.run();
  EXPECT_NEAR(stats.lower(3), 0.0061, 5e-5);
  EXPECT_NEAR(stats.upper(3), 0.1718, 5e-5);
  stats.continuityCorrection = -1;
  stats.run();
  EXPECT_NEAR(stats.lower(3), 0.0018, 5e-5);
  EXPECT_NEAR(stats.upper(3), 0.1963, 5e-5);
  for (const int method : {3, 4, -1}) {
    stats.ciMethod = method;
    stats.run();
    EXPECT_NEAR(stats.lower(3), 0.0009, 5e-5);
    EXPECT_NEAR(stats.upper(3), 0.1776, 5e-5);
  }
}

TEST(RocStats, AGivenPrevalenceMovesThePredictiveValuesOnly) {
  Stats stats = example();
  stats.prevalence = 0.1;
  stats.run();
  EXPECT_DOUBLE_EQ(stats.value(8), 0.08 / (0.18 + 0.08));
  EXPECT_DOUBLE_EQ(stats.value(9), 0.72 / (0.02 + 0.72));
  // The prevalence shown stays that of the sample, and the intervals stay on the table's counts.
  EXPECT_DOUBLE_EQ(stats.value(7), 0.25);
  expectWald(stats, 8, 0.08 / 0.26, 14);
  for (const double none : {0.0, -0.5}) {
    stats.prevalence = none;
    stats.run();
    EXPECT_DOUBLE_EQ(stats.value(8), 8.0 / 14);
  }
}

// 0 / 0: the guards are on the table, not on these denominators.
TEST(RocStats, AtAGivenPrevalenceOfOneAPredictiveValueMayNotBeANumber) {
  Stats withoutTruePositives(0, 3, 4, 5);
  withoutTruePositives.prevalence = 1.0;
  withoutTruePositives.run();
  EXPECT_TRUE(std::isnan(withoutTruePositives.value(8)));
  EXPECT_EQ(withoutTruePositives.value(9), 0.0);
  Stats withoutFalseNegatives(4, 3, 0, 5);
  withoutFalseNegatives.prevalence = 1.0;
  withoutFalseNegatives.run();
  EXPECT_EQ(withoutFalseNegatives.value(8), 1.0);
  EXPECT_TRUE(std::isnan(withoutFalseNegatives.value(9)));
}

TEST(RocStats, LikelihoodRatiosHaveLogIntervals) {
  for (const int method : {0, 1, 3}) {
    Stats stats = example();
    stats.ciMethod = method;
    stats.run();
    // var log LR+ = 1/8 - 1/10 + 1/6 - 1/30, var log LR- = 1/2 - 1/10 + 1/24 - 1/30.
    expectLog(stats, 10, 4.0, std::sqrt(1.0 / 8 - 1.0 / 10 + 1.0 / 6 - 1.0 / 30));
    expectLog(stats, 11, 0.25, std::sqrt(1.0 / 2 - 1.0 / 10 + 1.0 / 24 - 1.0 / 30));
  }
}

TEST(RocStats, RelativeRiskAndOddsRatioTakeTheirErrorFromProportionsForCodeZero) {
  Stats stats = example();
  stats.ciMethod = 0;
  stats.run();
  // The predictive values are 8/14 and 24/26: var log RR = (24/26)/2 + (6/14)/8.
  expectLog(stats, 12, 52.0 / 7, std::sqrt((24.0 / 26) / 2 + (6.0 / 14) / 8));
  expectLog(stats, 13, 16.0, std::sqrt(1.0 / 8 + 1.0 / 6 + 1.0 / 2 + 1.0 / 24));
}

TEST(RocStats, RelativeRiskUsesThePredictiveValuesOfAGivenPrevalence) {
  Stats stats = example();
  stats.ciMethod = 0;
  stats.prevalence = 0.1;
  stats.run();
  expectLog(stats, 12, 52.0 / 7, std::sqrt((0.72 / 0.74) / 2 + (0.18 / 0.26) / 8));
}

TEST(RocStats, RelativeRiskAndOddsRatioAddHalfACaseForOtherCodes) {
  for (const int method : {1, 2, 3, -1}) {
    Stats stats = example();
    stats.ciMethod = method;
    stats.run();
    expectLog(stats, 12, 52.0 / 7, std::sqrt(1 / 8.5 + 1 / 2.5 - 1 / 14.5 - 1 / 26.5));
    expectLog(stats, 13, 16.0, std::sqrt(1 / 8.5 + 1 / 6.5 + 1 / 2.5 + 1 / 24.5));
  }
}

TEST(RocStats, WithoutPositivesWhatNeedsThemIsMissing) {
  Stats stats(0, 6, 0, 24);
  stats.run();
  expectMissing(stats, 3);
  expectMissing(stats, 6);
  EXPECT_EQ(stats.value(7), 0.0);
  // Sensitivity counts as 0: no predictive value of a positive, full predictive value else.
  EXPECT_EQ(stats.value(8), 0.0);
  EXPECT_EQ(stats.value(9), 1.0);
  for (const int row : {10, 11, 12, 13}) expectMissing(stats, row);
}

TEST(RocStats, WithoutNegativesWhatNeedsThemIsMissing) {
  Stats stats(8, 0, 2, 0);
  stats.run();
  expectMissing(stats, 4);
  expectMissing(stats, 5);
  EXPECT_EQ(stats.value(8), 1.0);
  EXPECT_EQ(stats.value(9), 0.0);
  for (const int row : {10, 11, 13}) expectMissing(stats, row);
  EXPECT_EQ(stats.value(12), 1.0);  // 8/8 against 2/2
}

TEST(RocStats, WithoutFalsePositivesTheRatiosAreMissingNotInfinite) {
  Stats stats(8, 0, 2, 24);
  stats.run();
  expectMissing(stats, 10);
  expectMissing(stats, 13);
  EXPECT_NE(stats.value(11), kMissing);
  EXPECT_NE(stats.value(12), kMissing);
}

TEST(RocStats, ARatioOfZeroHasNoInterval) {
  Stats none(0, 6, 10, 24);
  none.run();
  for (const int row : {10, 12, 13}) {
    EXPECT_EQ(none.value(row), 0.0);
    EXPECT_EQ(none.lower(row), kMissing);
    EXPECT_EQ(none.upper(row), kMissing);
  }
  Stats all(10, 6, 0, 24);
  all.run();
  EXPECT_EQ(all.value(11), 0.0);
  EXPECT_EQ(all.lower(11), kMissing);
  expectMissing(all, 12);
}

// The guards look at proportions: counts of 1 in a million cases make a product of 1e-12.
TEST(RocStats, TheGuardsAreOnProportions) {
  Stats stats(499999, 1, 1, 499999);
  stats.run();
  expectMissing(stats, 13);
  Stats fewer(49999, 1, 1, 49999);
  fewer.run();
  EXPECT_NE(fewer.value(13), kMissing);
}

TEST(RocStats, WithoutTestPositivesTheirPredictiveValueIsMissing) {
  Stats stats(0, 0, 10, 30);
  stats.run();
  expectMissing(stats, 8);
  EXPECT_EQ(stats.value(9), 0.75);
  Stats other(10, 30, 0, 0);
  other.run();
  expectMissing(other, 9);
  EXPECT_EQ(other.value(8), 0.25);
}

TEST(RocStats, ATableOfZerosGivesNoNumbers) {
  for (const int method : {0, 1, 2, 3}) {
    Stats stats(0, 0, 0, 0);
    stats.ciMethod = method;
    EXPECT_EQ(stats.run().code, 0);
    for (int row = 1; row <= 7; ++row) EXPECT_TRUE(std::isnan(stats.value(row))) << row;
    for (int row = 8; row <= 13; ++row) expectMissing(stats, row);
    EXPECT_TRUE(std::isnan(stats.proportions[0]));
    EXPECT_EQ(stats.proportions[8], 1.0);
  }
}

TEST(RocStats, UnusualTablesAreSurvived) {
  for (const double odd : {kNaN, kInf, -kInf, -3.0, 1e300, 1e-300, kMissing}) {
    for (const int method : {0, 1, 2, 3}) {
      for (int cell = 0; cell < 4; ++cell) {
        Stats stats = example();
        stats.table[cell] = odd;
        stats.ciMethod = method;
        stats.alpha = cell == 0 ? kNaN : 0.05;
        EXPECT_EQ(stats.run().code, 0);
      }
    }
  }
}

}  // namespace
