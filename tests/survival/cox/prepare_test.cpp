// Sorting Cox data and indexing their distinct times.
#include <gtest/gtest.h>

#include <limits>

#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::Doubles;
using survmeth::test::Ints;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(CoxPreparation, SortsEveryColumnByTime) {
  CoxArrays a({5, 2, 9, 3}, {1, 0, 1, 1}, {{50, 20, 90, 30}, {-5, -2, -9, -3}});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.time, (Doubles{2, 3, 5, 9}));
  EXPECT_EQ(a.status, (Doubles{0, 1, 1, 1}));
  EXPECT_EQ(a.extra, (Doubles{101, 103, 100, 102}));
  EXPECT_EQ(a.covariates, (Doubles{20, 30, 50, 90, -2, -3, -5, -9}));
  EXPECT_EQ(a.distinctTimes, (Ints{4}));
  EXPECT_EQ(a.censored, (Ints{1}));
  EXPECT_EQ(a.groupStart, (Ints{1, 2, 3, 4}));
  EXPECT_EQ(a.groupSize, (Ints{1, 1, 1, 1}));
  EXPECT_EQ(a.groupEvents, (Ints{0, 1, 1, 1}));
  EXPECT_EQ(a.maxGroups, 4);
}

TEST(CoxPreparation, EqualTimesFormOneGroupInInputOrder) {
  CoxArrays a({7, 4, 7, 4, 7}, {1, 0, 0, 1, 1}, {{1, 2, 3, 4, 5}}, {}, {}, -8);
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.covariates, (Doubles{2, 4, 1, 3, 5}));
  EXPECT_EQ(a.status, (Doubles{0, 1, 1, 0, 1}));
  EXPECT_EQ(a.distinctTimes, (Ints{2}));
  EXPECT_EQ(a.groupStart, (Ints{1, 3, -8, -8, -8}));  // cells past the groups stay
  EXPECT_EQ(a.groupSize, (Ints{2, 3, -8, -8, -8}));
  EXPECT_EQ(a.groupEvents, (Ints{1, 2, -8, -8, -8}));
  EXPECT_EQ(a.censored, (Ints{2}));
}

TEST(CoxPreparation, SortsByStratumFirstAndTiesDoNotCrossStrata) {
  CoxArrays a({3, 1, 3, 2, 3}, {1, 1, 0, 1, 1}, {{10, 20, 30, 40, 50}}, {2, 1, 1, 2, 1}, {3, 2});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.stratum, (Doubles{1, 1, 1, 2, 2}));
  EXPECT_EQ(a.time, (Doubles{1, 3, 3, 2, 3}));
  EXPECT_EQ(a.status, (Doubles{1, 0, 1, 1, 1}));
  EXPECT_EQ(a.covariates, (Doubles{20, 30, 50, 40, 10}));
  EXPECT_EQ(a.extra, (Doubles{101, 102, 104, 103, 100}));
  EXPECT_EQ(a.distinctTimes, (Ints{2, 2}));
  EXPECT_EQ(a.censored, (Ints{1, 0}));
  EXPECT_EQ(a.at(a.groupStart, 1, 2), 2);
  EXPECT_EQ(a.at(a.groupSize, 1, 2), 2);
  EXPECT_EQ(a.at(a.groupEvents, 1, 2), 1);
  EXPECT_EQ(a.at(a.groupStart, 2, 1), 4);
  EXPECT_EQ(a.at(a.groupStart, 2, 2), 5);
  EXPECT_EQ(a.at(a.groupSize, 2, 2), 1);
  EXPECT_EQ(a.maxGroups, 2);
}

TEST(CoxPreparation, OneStratumLooksAtNoLabel) {
  CoxArrays a({1, 2}, {1, 1}, {{5, 6}}, {9, 1});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.stratum, (Doubles{9, 1}));
  EXPECT_EQ(a.time, (Doubles{1, 2}));
}

TEST(CoxPreparation, TheTieKeyIsPermutedTwice) {
  // Times 30, 10, 20 are sorted by rows (2, 3, 1). Once: keys 2, 3, 1. Twice: keys 3, 1, 2.
  CoxArrays a({30, 10, 20}, {1, 1, 1}, {{0, 0, 0}});
  a.tieKey = {1, 2, 3};
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.tieKey, (Doubles{3, 1, 2}));
}

TEST(CoxPreparation, EachKeyPermutesTheTieKeyTwice) {
  // By stratum the rows stand (3, 1, 2), twice applied (2, 3, 1); the times are sorted by then.
  CoxArrays a({1, 2, 1}, {1, 1, 1}, {{0, 0, 0}}, {2, 2, 1}, {1, 2});
  a.tieKey = {5, 6, 7};
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.stratum, (Doubles{1, 2, 2}));
  EXPECT_EQ(a.time, (Doubles{1, 1, 2}));
  EXPECT_EQ(a.tieKey, (Doubles{6, 7, 5}));
}

TEST(CoxPreparation, AZeroTieKeyLeavesARowOutOfItsGroup) {
  CoxArrays a({4, 4, 4, 6}, {1, 1, 0, 1}, {{1, 2, 3, 4}});
  a.tieKey = {1, 0, 1, 1};
  EXPECT_EQ(a.prepare(), 0);
  // The group's block of two rows is rows 1 and 2, whichever row was left out.
  EXPECT_EQ(a.groupStart[0], 1);
  EXPECT_EQ(a.groupSize[0], 2);
  EXPECT_EQ(a.groupEvents[0], 2);
  EXPECT_EQ(a.groupStart[1], 4);
  EXPECT_EQ(a.distinctTimes, (Ints{2}));
}

TEST(CoxPreparation, AZeroTieKeyOnAGroupsFirstRowChangesNothing) {
  CoxArrays a({4, 4, 6}, {1, 1, 1}, {{1, 2, 3}});
  a.tieKey = {0, -3, 0};
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.groupSize[0], 2);
  EXPECT_EQ(a.groupSize[1], 1);
}

TEST(CoxPreparation, AFractionalStatusIsAnEvent) {
  CoxArrays a({1, 1, 2}, {0.5, 0, 1e-300}, {{1, 2, 3}});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.groupEvents[0], 1);
  EXPECT_EQ(a.groupEvents[1], 1);
  EXPECT_EQ(a.censored, (Ints{1}));
}

TEST(CoxPreparation, AStratumOfNoRowsGetsTheGroupOfTheRowThatFollows) {
  CoxArrays a({1, 2, 3}, {1, 0, 1}, {{1, 2, 3}}, {1, 3, 3}, {1, 0, 2});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.distinctTimes, (Ints{1, 1, 2}));
  EXPECT_EQ(a.at(a.groupStart, 2, 1), 2);
  EXPECT_EQ(a.at(a.groupSize, 2, 1), 1);
  EXPECT_EQ(a.at(a.groupEvents, 2, 1), 0);  // row 2 is censored
  EXPECT_EQ(a.at(a.groupStart, 3, 1), 2);
}

TEST(CoxPreparation, RowsPastTheLastStratumStayUnsortedAndInNoGroup) {
  CoxArrays a({3, 1, 9, 2}, {1, 1, 0, 1}, {{1, 2, 3, 4}}, {}, {2});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.time, (Doubles{1, 3, 9, 2}));
  EXPECT_EQ(a.censored, (Ints{0}));
  EXPECT_EQ(a.distinctTimes, (Ints{2}));
}

TEST(CoxPreparation, RowsOutsideTheDataReadMinusOneAndTie) {
  // Rows 4, 5 and 6 do not exist: times of -1, each unlike row 3 and like one another.
  CoxArrays a({3, 1, 2}, {1, 1, 1}, {{1, 2, 3}}, {}, {6}, -8);
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.time, (Doubles{1, 2, 3}));
  EXPECT_EQ(a.distinctTimes, (Ints{4}));
  EXPECT_EQ(a.groupStart, (Ints{1, 2, 3}));  // the fourth column does not exist
  EXPECT_EQ(a.groupSize, (Ints{1, 1, 1}));
  EXPECT_EQ(a.maxGroups, 4);
}

TEST(CoxPreparation, ATimeOfMinusOneTiesWithTheRowsThatDoNotExist) {
  CoxArrays a({-1, -2}, {1, 1}, {{1, 2}}, {}, {5});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.distinctTimes, (Ints{2}));
  EXPECT_EQ(a.groupSize, (Ints{1, 4}));
  EXPECT_EQ(a.groupEvents, (Ints{1, 4}));  // rows outside are not censored
}

TEST(CoxPreparation, WildSizesEndAndStayInside) {
  for (const double size : {1e300, -1e300, kNaN, kInf, -kInf, 2147483647.0, -2147483648.0, -3.0}) {
    CoxArrays a({3, 1, 2}, {1, 1, 1}, {{1, 2, 3}}, {1, 1, 2}, {size, size});
    EXPECT_EQ(a.prepare(), 0) << size;
    CoxArrays second({3, 1, 2}, {1, 1, 1}, {{1, 2, 3}}, {1, 1, 2}, {-2, size});
    EXPECT_EQ(second.prepare(), 0) << size;
  }
}

TEST(CoxPreparation, AStratumThatBeginsBeforeTheFirstRowTiesItsMissingRows) {
  // Sizes -2 and 5: the second stratum's rows are -1..3, the first two of which do not exist.
  CoxArrays a({3, 1, 2}, {1, 1, 1}, {{1, 2, 3}}, {1, 1, 1}, {-2, 5});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.time, (Doubles{1, 2, 3}));
  EXPECT_EQ(a.distinctTimes, (Ints{1, 4}));
  EXPECT_EQ(a.at(a.groupStart, 2, 1), -1);
  EXPECT_EQ(a.at(a.groupSize, 2, 1), 2);
  EXPECT_EQ(a.at(a.groupStart, 2, 2), 1);
}

TEST(CoxPreparation, SizesAreTruncated) {
  CoxArrays a({2, 1, 3}, {1, 1, 1}, {{1, 2, 3}}, {1, 1, 2}, {2.9, 1.9});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.at(a.groupStart, 2, 1), 3);
}

TEST(CoxPreparation, MaximumGroupsIsNeverLowered) {
  CoxArrays a({1, 1}, {1, 1}, {{1, 2}});
  a.maxGroups = 17;
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.maxGroups, 17);
}

// What every refusal leaves: the first groups' initial values, everything else as it was.
void expectRefused(CoxArrays a, int code) {
  const CoxArrays before = a;
  EXPECT_EQ(a.prepare(), code);
  EXPECT_EQ(a.time, before.time);
  EXPECT_EQ(a.covariates, before.covariates);
  EXPECT_EQ(a.tieKey, before.tieKey);
  EXPECT_EQ(a.distinctTimes, Ints(a.S, 1));
  EXPECT_EQ(a.censored, Ints(a.S, 0));
  if (a.n > 0) {
    int first = 1;
    for (int s = 1; s <= a.S; ++s) {
      EXPECT_EQ(a.at(a.groupStart, s, 1), first);
      EXPECT_EQ(a.at(a.groupSize, s, 1), 1);
      first += static_cast<int>(a.stratumSizes[s - 1]);
    }
  }
  EXPECT_EQ(a.groupEvents, before.groupEvents);
  EXPECT_EQ(a.maxGroups, before.maxGroups);
}

TEST(CoxPreparation, AStatusOutsideZeroToOneIsRefused) {
  expectRefused(CoxArrays({3, 1, 2}, {1, -0.001, 1}, {{1, 2, 3}}, {}, {}, -8), -1);
  expectRefused(CoxArrays({3, 1, 2}, {1, 1, 1.001}, {{1, 2, 3}}, {}, {}, -8), -1);
  expectRefused(CoxArrays({3, 1, 2}, {1, kInf, 0}, {{1, 2, 3}}, {1, 2, 2}, {1, 2}, -8), -1);
}

TEST(CoxPreparation, FewerThanTwoRowsAreRefused) {
  expectRefused(CoxArrays({3}, {1}, {{1}}, {}, {}, -8), -2);
  expectRefused(CoxArrays({}, {}, {Doubles{}}, {}, {5}, -8), -2);
}

TEST(CoxPreparation, TheStatusIsCheckedBeforeTheNumberOfRows) {
  expectRefused(CoxArrays({3}, {2}, {{1}}, {}, {}, -8), -1);
}

TEST(CoxPreparation, NegativeRowCountsAreRefused) {
  CoxArrays a({}, {}, {Doubles{}}, {}, {5}, -8);
  a.n = -4;
  EXPECT_EQ(a.prepare(), -2);
  EXPECT_EQ(a.distinctTimes, (Ints{1}));
}

TEST(CoxPreparation, NoEventIsRefused) {
  expectRefused(CoxArrays({3, 1, 2}, {0, 0, 0}, {{1, 2, 3}}, {2, 1, 1}, {2, 1}, -8), -3);
}

TEST(CoxPreparation, AStatusThatIsNotANumberPassesAsAnEvent) {
  CoxArrays a({3, 1}, {0, kNaN}, {{1, 2}});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.groupEvents[0], 1);
  EXPECT_EQ(a.groupEvents[1], 0);
}

TEST(CoxPreparation, NoStratumChecksTheDataAndSortsNothing) {
  for (const int S : {0, -3}) {
    CoxArrays a({3, 1}, {1, 1}, {{1, 2}}, {}, {}, -8);
    a.S = S;
    EXPECT_EQ(a.prepare(), 0);
    EXPECT_EQ(a.time, (Doubles{3, 1}));
    EXPECT_EQ(a.distinctTimes, (Ints{-8}));
    EXPECT_EQ(a.groupStart, (Ints{-8, -8}));
    EXPECT_EQ(a.maxGroups, 0);
  }
}

TEST(CoxPreparation, NoCovariateSortsTheRest) {
  CoxArrays a({3, 1, 2}, {1, 1, 0}, {});
  a.covariates = {7, 8, 9};
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.time, (Doubles{1, 2, 3}));
  EXPECT_EQ(a.covariates, (Doubles{7, 8, 9}));
}

TEST(CoxPreparation, TimesThatAreNotNumbersComeLastInGroupsOfTheirOwn) {
  CoxArrays a({kNaN, 2, kNaN, 1}, {1, 1, 1, 1}, {{1, 2, 3, 4}});
  EXPECT_EQ(a.prepare(), 0);
  EXPECT_EQ(a.covariates, (Doubles{4, 2, 1, 3}));
  EXPECT_EQ(a.distinctTimes, (Ints{4}));
}

TEST(CoxPreparation, MoreStrataThanTheTablesHoldChangeNothing) {
  // The routine behind the wrapper, told of more strata than its tables have.
  Doubles time{2, 1}, status{1, 1}, none{0, 0}, sizes{2};
  matrix t(2, 1, time.data(), 0, 0), d(2, 1, status.data(), 0, 0), e(2, 1, 0), k(2, 1, 1);
  matrix x(2, 1, 0), labels(2, 1, 1), m(1, 1, sizes.data(), 0, 0);
  matrixInt distinct(1, 1, 0), censored(1, 1, 0), start(1, 2, 0), size(1, 2, 0), events(1, 2, 0);
  int groups = 0;
  EXPECT_EQ(cReorganizeDataCox(&t, 2, 1, &d, &e, &k, &x, &labels, &m, 2147483647, &distinct,
                               &censored, &start, &size, &events, &groups),
            0);
  EXPECT_EQ(t.vbget(1, 1), 1.0);
}

}  // namespace
