// The life-table estimator behind RunLife.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <vector>

#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_table_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::between;
using survmeth::test::byWidth;
using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::kInf;
using survmeth::test::kMissingMark;
using survmeth::test::kNo;
using survmeth::test::kUntouched;
using survmeth::test::kYes;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using survmeth::test::tenSubjects;
using Values = std::vector<double>;

constexpr double kU = kUntouched;

TEST(LifeTable, CountsAndSurvivalOfTenSubjects) {
  const LifeTables out = runLife(tenSubjects());
  EXPECT_EQ(out.total, 10.0);
  ASSERT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.row(2, 6), (Values{0, 0, 10, 2, 1, 9.5}));
  EXPECT_EQ(out.table.row(3, 6), (Values{5, 0, 7, 3, 1, 6.5}));
  EXPECT_EQ(out.table.row(4, 6), (Values{10, 0, 3, 1, 2, 2}));
  EXPECT_DOUBLE_EQ(out.table.at(2, 7), 15.0 / 19);
  EXPECT_DOUBLE_EQ(out.table.at(3, 7), 7.0 / 13);
  EXPECT_DOUBLE_EQ(out.table.at(4, 7), 1.0 / 2);
  EXPECT_EQ(out.table.at(2, 8), 1.0);  // at the start of the interval
  EXPECT_DOUBLE_EQ(out.table.at(3, 8), 15.0 / 19);
  EXPECT_DOUBLE_EQ(out.table.at(4, 8), 105.0 / 247);
}

TEST(LifeTable, DensityAndHazardOfTenSubjects) {
  const LifeTables out = runLife(tenSubjects());
  EXPECT_DOUBLE_EQ(out.table.at(2, 9), 4.0 / 95);
  EXPECT_DOUBLE_EQ(out.table.at(3, 9), 18.0 / 247);
  EXPECT_EQ(out.table.at(4, 9), 0.0);  // the last interval's density is never written
  EXPECT_DOUBLE_EQ(out.table.at(2, 10), 4.0 / 85);
  EXPECT_DOUBLE_EQ(out.table.at(3, 10), 3.0 / 25);
  EXPECT_DOUBLE_EQ(out.table.at(4, 10), 2.0 / 15);
}

TEST(LifeTable, GreenwoodSumsOfTenSubjects) {
  const LifeTables out = runLife(tenSubjects());
  const Values sums{0, 8.0 / 285, 8.0 / 285 + 12.0 / 91};
  for (int k = 1; k <= 3; ++k) {
    EXPECT_NEAR(out.table.at(k + 1, 11), sums[static_cast<std::size_t>(k) - 1], 1e-16);
    EXPECT_NEAR(out.table.at(k + 1, 12), sums[static_cast<std::size_t>(k) - 1], 1e-16);
  }
}

TEST(LifeTable, StandardErrorsOfTenSubjects) {
  const LifeTables out = runLife(tenSubjects());
  EXPECT_DOUBLE_EQ(out.table.at(2, 13), 4.0 / 95 * std::sqrt(15.0 / 38));
  EXPECT_DOUBLE_EQ(out.table.at(3, 13), 18.0 / 247 * std::sqrt(8.0 / 285 + 7.0 / 39));
  EXPECT_DOUBLE_EQ(out.table.at(4, 13), 21.0 / 494 * std::sqrt(8.0 / 285 + 12.0 / 91 + 1.0 / 2));
  EXPECT_DOUBLE_EQ(out.table.at(2, 14), std::sqrt(16.0 / 7225 / 2 * (285.0 / 289)));
  EXPECT_DOUBLE_EQ(out.table.at(3, 14), std::sqrt(9.0 / 625 / 3 * 0.91));
  EXPECT_DOUBLE_EQ(out.table.at(4, 14), std::sqrt(4.0 / 225 * (8.0 / 9)));
}

TEST(LifeTable, MedianResidualLifetimesOfTenSubjects) {
  const LifeTables out = runLife(tenSubjects());
  // Survival passes 1/2 in the second interval: 15/19 at its start, 105/247 at its end.
  EXPECT_DOUBLE_EQ(out.table.at(2, 15), 5 + 5 * (2717.0 / 3420));
  EXPECT_DOUBLE_EQ(out.table.at(2, 16), 0.5 / std::sqrt(9.5) / (18.0 / 247));
  for (const int row : {3, 4}) {
    EXPECT_EQ(out.table.at(row, 15), kMissingMark);
    EXPECT_EQ(out.table.at(row, 16), kMissingMark);
  }
}

TEST(LifeTable, TheRowPastTheLastHoldsItsLowerBound) {
  const LifeTables out = runLife(tenSubjects());
  EXPECT_EQ(out.table.at(5, 1), 15.0);
  // Here all observations lie in 20..21, and 40 are past the last interval.
  const LifeTables given = runLife(between({20, 21, 40}, {1, 1, 1}, {19, 22, 30}));
  ASSERT_EQ(given.nRows, 3);
  EXPECT_EQ(given.table.at(5, 1), 22 + (22 - 19));
}

TEST(LifeTable, TheOriginHasFourColumns) {
  LifeCall call = tenSubjects();
  call.fill = kU;
  const LifeTables out = runLife(call);
  for (int j = 1; j <= 16; ++j) {
    EXPECT_EQ(out.table.at(1, j), j == 6 ? 10.0 : j == 7 || j == 8 ? 1.0 : j == 9 ? 0.0 : kU) << j;
  }
}

TEST(LifeTable, TheDensityOfTheOriginIsThatOfTheFirstInterval) {
  // (1 - 1) / w, as for every row above another: not a number for a width of 0.
  EXPECT_EQ(runLife(between({1, 2, 3}, {1, 0, 1}, {0, 2, 4})).table.at(1, 9), 0.0);
  EXPECT_TRUE(std::isnan(runLife(between({1, 2, 3}, {1, 0, 1}, {0, 0, 4})).table.at(1, 9)));
  // Nothing at risk in the first interval: no interval writes it.
  LifeCall empty = between({1}, {0}, {0, 2});
  empty.weight = {0.0};
  empty.countsFormat = kYes;
  const LifeTables none = runLife(empty);
  ASSERT_EQ(none.nRows, 0);
  EXPECT_EQ(none.table.at(1, 9), survmeth::test::kUntouched);
}

TEST(LifeTable, CellsThatNoRuleNamesStayAsPassed) {
  LifeCall call = tenSubjects();
  call.fill = kU;
  const LifeTables out = runLife(call);
  for (int row = 2; row <= 5; ++row) EXPECT_EQ(out.table.at(row, 2), kU);
  EXPECT_EQ(out.table.at(4, 9), kU);   // no next interval gave a density
  EXPECT_EQ(out.table.at(2, 12), kU);  // the sum starts with the second interval
  // The standard error of the first density takes that cell as it is.
  EXPECT_DOUBLE_EQ(out.table.at(2, 13), 4.0 / 95 * std::sqrt(kU + 15.0 / 38));
  // The interval at which the table stopped got its counts only.
  EXPECT_EQ(out.table.row(5, 16),
            (Values{15, kU, 0, 0, 0, 0, kU, kU, kU, kU, kU, kU, kU, kU, kU, kU}));
}

TEST(LifeTable, TheDensityIsDividedByTheNextIntervalsWidth) {
  const LifeTables out = runLife(between({1, 2, 8, 9}, {1, 1, 1, 0}, {5, 15}));
  // Half died in 0..5; the interval after it is 10 wide.
  EXPECT_DOUBLE_EQ(out.table.at(2, 9), 0.5 / 10);
  EXPECT_EQ(out.table.at(3, 9), kU);
}

TEST(LifeTable, AnIntervalWithoutEventsHasNoHazard) {
  const LifeTables out = runLife(byWidth({0, 6, 12, 13}, {0, 0, 1, 0}, 5.0));
  ASSERT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.at(2, 10), 0.0);
  EXPECT_EQ(out.table.at(2, 9), 0.0);
  // The marker of the first interval differs from that of the others.
  EXPECT_EQ(out.table.at(2, 13), -51.0);
  EXPECT_EQ(out.table.at(2, 14), -51.0);
  EXPECT_EQ(out.table.at(3, 13), 0.0);
  EXPECT_EQ(out.table.at(3, 14), 0.0);
}

TEST(LifeTable, TheSecondPassSkipsALastIntervalWithoutEvents) {
  const LifeTables out = runLife(byWidth({0, 6, 12}, {1, 1, 0}, 5.0));
  ASSERT_EQ(out.nRows, 3);
  for (const int column : {13, 14, 15, 16}) {
    EXPECT_NE(out.table.at(3, column), kU);
    EXPECT_EQ(out.table.at(4, column), kU);
  }
  EXPECT_EQ(runLife(byWidth({0, 1}, {0, 0}, 5.0)).table.at(2, 13), kU);  // even the first
}

TEST(LifeTable, SurvivalThatNeverHalvesHasNoMedian) {
  const LifeTables out = runLife(byWidth({0, 6, 12, 13, 14, 14}, {1, 0, 0, 0, 0, 1}, 5.0));
  EXPECT_EQ(out.table.at(2, 15), kMissingMark);
  EXPECT_EQ(out.table.at(2, 16), kMissingMark);
}

TEST(LifeTable, WithdrawalsThatLeaveNobodyEffectiveGiveNoRow) {
  LifeCall call = byWidth({0, 1}, {0, 0}, 5.0);
  call.weight = {2, 2};  // 2 rows, 4 withdrawn: 2 - 4 / 2 = 0
  const LifeTables out = runLife(call);
  EXPECT_EQ(out.nRows, 0);
  EXPECT_EQ(out.table.row(2, 7), (Values{0, kU, 2, 0, 4, 0, kU}));
  EXPECT_EQ(out.table.at(3, 1), kU);
}

TEST(LifeTable, AnIntervalThatAllDieInCountsInTheUnguardedSumOnly) {
  // Two of two die in 5..10; a count of -1 lets the table go on.
  LifeCall call = between({1, 6, 12}, {2, 2, 1}, {5, 10, 15});
  call.countsFormat = kYes;
  call.weight = {0, 0, -1};
  const LifeTables out = runLife(call);
  ASSERT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.at(3, 7), 0.0);
  EXPECT_EQ(out.table.at(3, 11), 0.25);
  EXPECT_EQ(out.table.at(3, 12), 0.25);
  EXPECT_EQ(out.table.at(4, 11), 0.25);
  EXPECT_EQ(out.table.at(4, 12), kInf);
  EXPECT_EQ(out.table.at(4, 15), kMissingMark);
}

TEST(LifeTable, CountsFormatTakesBothColumns) {
  LifeCall call = byWidth({0, 6}, {2, 1}, 5.0);
  call.weight = {4, 3};
  call.countsFormat = kYes;
  const LifeTables out = runLife(call);
  EXPECT_EQ(out.total, 10.0);
  EXPECT_EQ(out.table.row(2, 6), (Values{0, kU, 10, 2, 4, 8}));
  EXPECT_EQ(out.table.row(3, 6), (Values{5, kU, 4, 1, 3, 2.5}));
  call.countsFormat = 1;
  EXPECT_EQ(runLife(call).total, 2.0);
}

TEST(LifeTable, ARowPastTheBlockFallsOnItsNextColumn) {
  // Ten widths of 0.1 add up to less than 1. Twelve intervals; the block has rows for eleven.
  double tenth = 0.0;
  for (int k = 0; k < 10; ++k) tenth += 0.1;
  ASSERT_LT(tenth, 1.0);
  ASSERT_EQ(std::floor(tenth / 0.1), 9.0);
  const LifeTables out = runLife(byWidth({0.95, tenth}, {1, 1}, 0.1));
  EXPECT_EQ(out.nRows, 11);
  ASSERT_EQ(out.table.rows(), 12);
  EXPECT_EQ(out.table.at(12, 4), 1.0);
  EXPECT_DOUBLE_EQ(out.table.at(1, 2), tenth + 0.1);  // the lower bound past the last
  for (const int column : {4, 5, 6, 7}) EXPECT_EQ(out.table.at(1, column), 0.0) << column;
}

TEST(LifeTable, NoRowsGiveTheOriginOnly) {
  for (const int m : {0, -1, -50}) {
    LifeCall call = byWidth({1, 2, 9}, {1, 1, 1}, 5.0);
    call.m = m;
    const LifeTables out = runLife(call);
    EXPECT_EQ(out.total, 0.0);
    EXPECT_EQ(out.nRows, 0);
    call = between({1, 2, 9}, {1, 1, 1}, {4, 10});
    call.m = m;
    EXPECT_EQ(runLife(call).nRows, 0);
    EXPECT_EQ(runLife(call).intervals.at(2, 2), 10.0);  // the list is there all the same
  }
}

TEST(LifeTable, AStratumIsAddressedByItsOffset) {
  LifeCall call = byWidth({50, 60, 1, 4, 12, 70}, {0, 0, 1, 0, 1, 1}, 5.0);
  call.offset = 2;
  call.m = 3;
  const LifeTables alone = runLife(byWidth({1, 4, 12}, {1, 0, 1}, 5.0));
  const LifeTables out = runLife(call);
  EXPECT_TRUE(allSame(alone.table.elements(), out.table.elements()));
}

TEST(LifeTable, RowsPastTheColumnsReadAsMinusOne) {
  LifeCall call = byWidth({1, 4}, {1, 1}, 5.0);
  for (const int offset : {0, 1, 2, -1, 70, INT_MAX}) {
    call.offset = offset;
    call.m = 5;
    EXPECT_LE(runLife(call).nRows, 5) << offset;
  }
}

TEST(LifeTableOnMatrices, ManyIntervalsAreDoneInTime) {
  // Survival that halves late: a scan from every interval would be quadratic.
  constexpr int n = 200000;
  Values times(n), ones(n, 1.0);
  for (int i = 0; i < n; ++i) times[static_cast<std::size_t>(i)] = i + 0.5;
  const LifeTables out = runLife(byWidth(times, ones, 1.0));
  ASSERT_EQ(out.nRows, n);
  EXPECT_NEAR(out.table.at(2, 15), n / 2.0, 1e-6 * n);
}

TEST(LifeTableOnMatrices, BlocksThatAreTooSmallAreNotOverrun) {
  Column time({1, 4, 12}), status({1, 0, 1}), weight({1, 1, 1}), bounds({0});
  matrix intervals(1, 1, kU), table(1, 1, kU), none(0, 0, 0);
  double total = 0.0;
  int rows = 0;
  ComputeLife(0, 3, 0, 0.5, &time, &status, &weight, &bounds, kNo, kYes, 1, &intervals, total,
              &table, rows);
  EXPECT_EQ(rows, 24);  // 12 is the first row at the upper bound of the 24th
  EXPECT_EQ(total, 3.0);
  ComputeLife(0, 3, 0, 0.5, &time, &status, &weight, &bounds, kNo, kYes, 1, &none, total, &none,
              rows);
  EXPECT_EQ(rows, 24);  // 12 is the first row at the upper bound of the 24th
  ComputeLife(0, 3, INT_MAX, 0.5, &time, &status, &weight, &bounds, kNo, kNo, 1, &none, total,
              &none, rows);
  EXPECT_EQ(rows, 0);
}

}  // namespace
