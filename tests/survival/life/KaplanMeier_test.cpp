// The Kaplan-Meier estimator behind RunLife.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::kInf;
using survmeth::test::kNan;
using survmeth::test::kNo;
using survmeth::test::kUntouched;
using survmeth::test::kYes;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using survmeth::test::Sheet;
using Values = std::vector<double>;

constexpr double kU = kUntouched;

LifeCall plain(Values time, Values status) {
  LifeCall call;
  call.time = std::move(time);
  call.status = std::move(status);
  return call;
}

LifeCall counts(Values time, Values events, Values censored) {
  LifeCall call = plain(std::move(time), std::move(events));
  call.weight = std::move(censored);
  call.countsFormat = kYes;
  return call;
}

TEST(KaplanMeier, IsTheProductOfConditionalSurvivals) {
  const LifeTables out = runLife(plain({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1}));
  EXPECT_EQ(out.total, 5.0);
  ASSERT_EQ(out.nRows, 4);
  const Values survival{1, 4.0 / 5, 3.0 / 5, 3.0 / 5, 0};
  const Values greenwood{0, 1.0 / 20, 1.0 / 20 + 1.0 / 12, 1.0 / 20 + 1.0 / 12,
                         1.0 / 20 + 1.0 / 12};
  for (int row = 1; row <= 5; ++row) {
    const auto i = static_cast<std::size_t>(row) - 1;
    EXPECT_NEAR(out.table.at(row, 8), survival[i], 1e-15) << row;
    EXPECT_NEAR(out.table.at(row, 11), greenwood[i], 1e-16) << row;
  }
  EXPECT_NEAR(out.table.at(2, 9), 0.2 / (3 - 2), 1e-16);
  EXPECT_NEAR(out.table.at(3, 9), 0.2 / (5 - 3), 1e-16);
  EXPECT_NEAR(out.table.at(5, 9), 0.6 / 1.0, 1e-15);  // the last time's density is per unit
}

TEST(KaplanMeier, ACensoredRowAtAnEventTimeIsStillAtRisk) {
  const LifeTables out = runLife(plain({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1}));
  EXPECT_EQ(out.table.row(3, 6), (Values{3, kU, 4, 1, 1, 4}));
  EXPECT_EQ(out.table.at(3, 7), 1.0 - 1.0 / 4);
  EXPECT_EQ(out.table.row(4, 6), (Values{5, kU, 2, 0, 1, 2}));
}

TEST(KaplanMeier, TheOriginIsWrittenInAllColumns) {
  const LifeTables out = runLife(plain({2, 3}, {1, 0}));
  EXPECT_EQ(out.table.row(1, 12), (Values{0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0}));
}

TEST(KaplanMeier, ColumnsTwoTenAndTwelveStayAsPassed) {
  const LifeTables out = runLife(plain({2, 3, 4}, {1, 0, 1}));
  for (int row = 2; row <= 4; ++row) {
    for (const int column : {2, 10, 12}) EXPECT_EQ(out.table.at(row, column), kU);
  }
}

TEST(KaplanMeier, RowsPastTheLastGroupStayAsPassed) {
  const LifeTables out = runLife(plain({2, 2, 2}, {1, 0, 1}));
  ASSERT_EQ(out.nRows, 1);
  for (int row = 3; row <= 5; ++row) EXPECT_EQ(out.table.row(row, 12), Values(12, kU));
}

TEST(KaplanMeier, AGroupOfCensoringsCopiesSurvivalAndLeavesTheDensity) {
  const LifeTables out = runLife(plain({1, 2, 3}, {1, 0, 1}));
  EXPECT_EQ(out.table.at(3, 7), out.table.at(2, 7));  // the conditional survival too
  EXPECT_EQ(out.table.at(3, 8), out.table.at(2, 8));
  EXPECT_EQ(out.table.at(3, 11), out.table.at(2, 11));
  EXPECT_EQ(out.table.at(3, 9), kU);
}

TEST(KaplanMeier, CensoringsBeforeTheFirstEventCopyTheOrigin) {
  const LifeTables out = runLife(plain({1, 2}, {0, 1}));
  EXPECT_EQ(out.table.row(2, 12), (Values{1, kU, 2, 0, 1, 2, 1, 1, kU, kU, 0, kU}));
}

TEST(KaplanMeier, AGroupThatAllFailsAddsNothingToTheGreenwoodSum) {
  const LifeTables out = runLife(plain({1, 2, 2}, {1, 1, 1}));
  EXPECT_EQ(out.table.at(3, 7), 0.0);
  EXPECT_EQ(out.table.at(3, 8), 0.0);
  EXPECT_EQ(out.table.at(3, 11), out.table.at(2, 11));
}

TEST(KaplanMeier, TheConditionalSurvivalIsOneMinusTheQuotient) {
  // 1 - 1/7 and 6/7 differ in the last bit.
  ASSERT_NE(1.0 - 1.0 / 7.0, 6.0 / 7.0);
  Values time{1, 2, 3, 4, 5, 6, 7}, status(7, 0.0);
  status[0] = 1.0;
  EXPECT_EQ(runLife(plain(time, status)).table.at(2, 7), 1.0 - 1.0 / 7.0);
}

TEST(KaplanMeier, IntervalsRunFromEachRowToTheNext) {
  const LifeTables out = runLife(plain({2, 3, 3, 5}, {1, 1, 0, 0}));
  EXPECT_EQ(out.intervals.elements(), (Values{2, 3, 3, 5, kU, 3, 3, 5, 6, kU}));
}

TEST(KaplanMeier, AllTimesDistinctGiveARowEach) {
  const LifeTables out = runLife(plain({1, 2, 3, 4}, {0, 1, 0, 1}));
  EXPECT_EQ(out.nRows, 4);
  for (int row = 2; row <= 5; ++row) EXPECT_EQ(out.table.at(row, 4) + out.table.at(row, 5), 1.0);
}

TEST(KaplanMeier, TheEventCodeMarksAnEventExactly) {
  LifeCall call = plain({1, 2, 3, 4, 5}, {0, 2, 2.0000000000000004, kNan, -1});
  call.eventCode = 2;
  const LifeTables out = runLife(call);
  EXPECT_EQ(out.table.at(3, 4), 1.0);
  for (const int row : {2, 4, 5, 6}) {
    EXPECT_EQ(out.table.at(row, 4), 0.0) << row;
    EXPECT_EQ(out.table.at(row, 5), 1.0) << row;
  }
  call.eventCode = 0;
  EXPECT_EQ(runLife(call).table.at(2, 4), 1.0);
}

TEST(KaplanMeier, TheNumberAtRiskStartsAtTheRowsWhateverTheWeights) {
  LifeCall call = plain({1, 2, 3}, {1, 0, 1});
  call.weight = {0.5, 2, 0.25};
  const LifeTables out = runLife(call);
  EXPECT_EQ(out.total, 3.0);
  EXPECT_EQ(out.table.row(2, 6), (Values{1, kU, 3, 0.5, 0, 3}));
  EXPECT_EQ(out.table.row(3, 6), (Values{2, kU, 2.5, 0, 2, 2.5}));
  EXPECT_EQ(out.table.row(4, 6), (Values{3, kU, 0.5, 0.25, 0, 0.5}));
  EXPECT_EQ(out.table.at(4, 8), (1.0 - 0.5 / 3.0) * 0.5);
}

TEST(KaplanMeier, CountsFormatTakesEventsAndCensoringsFromTheColumns) {
  const LifeTables out = runLife(counts({1, 2, 4}, {2, 0, 1}, {1, 3, 0}));
  EXPECT_EQ(out.total, 7.0);
  ASSERT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.row(2, 6), (Values{1, kU, 7, 2, 1, 7}));
  EXPECT_EQ(out.table.row(3, 6), (Values{2, kU, 4, 0, 3, 4}));
  EXPECT_EQ(out.table.row(4, 6), (Values{4, kU, 1, 1, 0, 1}));
  EXPECT_EQ(out.table.at(2, 8), 1.0 - 2.0 / 7.0);
  EXPECT_EQ(out.table.at(4, 8), 0.0);
}

TEST(KaplanMeier, ACountsFlagOfOneIsFalse) {
  LifeCall call = counts({1, 2}, {1, 0}, {1, 1});
  call.countsFormat = 1;
  EXPECT_EQ(runLife(call).total, 2.0);
  call.countsFormat = kYes;
  EXPECT_EQ(runLife(call).total, 3.0);
}

TEST(KaplanMeier, RowsOfNoCountsAtTheEndStopTheTableEarly) {
  const LifeTables out = runLife(counts({1, 2, 3, 3}, {1, 1, 0, 0}, {0, 0, 0, 0}));
  // Three groups; the last has nobody at risk and had consumed four rows.
  EXPECT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.row(4, 12), (Values{3, kU, 0, 0, 0, 0, kU, kU, kU, kU, kU, kU}));
  EXPECT_EQ(runLife(counts({1, 2, 3}, {1, 1, 0}, {0, 0, 0})).nRows, 2);
}

TEST(KaplanMeier, NothingAtRiskAtAllStopsAtTheFirstGroup) {
  const LifeTables out = runLife(counts({1, 2}, {0, 0}, {0, 0}));
  EXPECT_EQ(out.total, 0.0);
  EXPECT_EQ(out.nRows, 0);
  EXPECT_EQ(runLife(counts({1, 1, 2}, {0, 0, 0}, {0, -1, 0})).nRows, 1);
}

TEST(KaplanMeier, NegativeCountsAreNoEvents) {
  const LifeTables out = runLife(counts({1, 2}, {-1, 2}, {2, 0}));
  EXPECT_EQ(out.total, 3.0);
  EXPECT_EQ(out.table.at(2, 4), -1.0);
  EXPECT_EQ(out.table.at(2, 8), 1.0);
  EXPECT_EQ(out.table.at(2, 9), kU);
  EXPECT_EQ(out.table.at(3, 3), 2.0);
}

TEST(KaplanMeier, NoRowsGiveTheOriginOnly) {
  for (const int m : {0, -1}) {
    LifeCall call = plain({4, 5}, {1, 1});
    call.m = m;
    const LifeTables out = runLife(call);
    EXPECT_EQ(out.total, 0.0) << m;
    EXPECT_EQ(out.nRows, 0) << m;
    EXPECT_EQ(out.table.row(1, 12), (Values{0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0})) << m;
    EXPECT_EQ(out.intervals.elements(), Values(out.intervals.elements().size(), kU)) << m;
  }
  LifeCall call = plain({4, 5}, {1, 1});
  for (const int m : {-2, -7, INT_MIN}) {
    call.m = m;
    EXPECT_EQ(runLife(call).nRows, 0);
  }
}

TEST(KaplanMeier, ASingleRowEndsAUnitLater) {
  const LifeTables out = runLife(plain({4}, {1}));
  EXPECT_EQ(out.nRows, 1);
  EXPECT_EQ(out.table.at(2, 9), 1.0);
  EXPECT_EQ(out.intervals.row(1, 2), (Values{4, 5}));
}

TEST(KaplanMeier, AStratumIsAddressedByItsOffset) {
  LifeCall call = plain({9, 8, 1, 2, 2, 7}, {0, 0, 1, 0, 1, 1});
  call.offset = 2;
  call.m = 3;
  const LifeTables out = runLife(call);
  const LifeTables alone = runLife(plain({1, 2, 2}, {1, 0, 1}));
  EXPECT_TRUE(allSame(alone.table.elements(), out.table.elements()));
  EXPECT_TRUE(allSame(alone.intervals.elements(), out.intervals.elements()));
}

TEST(KaplanMeier, RowsPastTheColumnsReadAsMinusOne) {
  LifeCall call = plain({1, 2}, {1, 1});
  call.m = 4;
  const LifeTables out = runLife(call);
  // -1 is not greater than 2: both rows join the last group, as censorings of weight -1.
  EXPECT_EQ(out.total, 4.0);
  EXPECT_EQ(out.nRows, 2);
  EXPECT_EQ(out.table.row(3, 6), (Values{2, kU, 3, 1, -2, 3}));
  EXPECT_EQ(out.intervals.row(4, 2), (Values{-1, 0}));
  for (const int offset : {-1, -100, 50, INT_MAX}) {
    call.offset = offset;
    call.m = 2;
    EXPECT_LE(runLife(call).nRows, 2) << offset;
  }
}

TEST(KaplanMeier, ARowThatIsNotLaterJoinsTheGroupBefore) {
  const LifeTables out = runLife(plain({5, 3, 4}, {1, 1, 1}));
  ASSERT_EQ(out.nRows, 2);
  EXPECT_EQ(out.table.row(2, 4), (Values{5, kU, 3, 2}));
  EXPECT_DOUBLE_EQ(out.table.at(2, 9), (2.0 / 3) / (4 - 5));  // from the first row to the next time
  EXPECT_EQ(out.table.row(3, 4), (Values{4, kU, 1, 1}));
}

TEST(KaplanMeier, NaNTimesJoinTheLastGroup) {
  const LifeTables out = runLife(plain({1, 2, kNan, kNan}, {1, 0, 1, 1}));
  EXPECT_EQ(out.nRows, 2);
  EXPECT_EQ(out.table.row(3, 6), (Values{2, kU, 3, 2, 1, 3}));
}

TEST(KaplanMeier, AnInfiniteLastTimeHasNoDensity) {
  const LifeTables out = runLife(plain({1, kInf}, {1, 1}));
  EXPECT_EQ(out.nRows, 2);
  EXPECT_EQ(out.table.at(2, 9), 0.0);
  EXPECT_TRUE(std::isnan(out.table.at(3, 9)));
}

TEST(KaplanMeier, ALifeTableFlagOfOneIsFalse) {
  LifeCall call = plain({1, 2}, {1, 1});
  call.lifeTable = 1;
  EXPECT_EQ(runLife(call).table.row(1, 12), (Values{0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0}));
}

TEST(KaplanMeierOnMatrices, BlocksThatAreTooSmallTakeWhatTheirElementsReach) {
  Column time({1, 2, 3, 4}), status({1, 1, 0, 1}), weight({1, 1, 1, 1});
  matrix intervals(1, 1, kU);
  matrix table(3, 12, 0);
  double total = 0.0;
  int rows = 0;
  ComputeKaplanMeier(0, 4, kNo, 1, &time, &status, &weight, total, &table, rows, &intervals);
  EXPECT_EQ(total, 4.0);
  EXPECT_EQ(rows, 4);
  EXPECT_EQ(table.vbget(3, 8), 0.5);
  EXPECT_EQ(table.vbget(2, 8), 0.0);  // the element (5, 7), the last conditional survival
  EXPECT_EQ(intervals.vbget(1, 1), 1.0);
}

// ---- Property: groups counted one by one, from all rows ----

Sheet naiveTable(const LifeCall& call) {
  const int m = static_cast<int>(call.time.size());
  Sheet table(m + 2, 12);
  for (int j = 1; j <= 12; ++j) table.at(1, j) = j == 7 || j == 8 ? 1.0 : 0.0;
  Values distinct;
  for (const double t : call.time) {
    if (distinct.empty() || distinct.back() != t) distinct.push_back(t);
  }
  double survival = 1.0;
  double conditional = 1.0;
  double greenwood = 0.0;
  for (std::size_t k = 0; k < distinct.size(); ++k) {
    double atRisk = 0.0, events = 0.0, censored = 0.0;
    for (std::size_t i = 0; i < call.time.size(); ++i) {
      if (call.time[i] >= distinct[k]) atRisk += 1.0;
      if (call.time[i] != distinct[k]) continue;
      (call.status[i] == call.eventCode ? events : censored) += 1.0;
    }
    const int row = static_cast<int>(k) + 2;
    table.at(row, 1) = distinct[k];
    table.at(row, 3) = table.at(row, 6) = atRisk;
    table.at(row, 4) = events;
    table.at(row, 5) = censored;
    if (events > 0.0) {
      conditional = 1.0 - events / atRisk;
      const double end = k + 1 < distinct.size() ? distinct[k + 1] : distinct[k] + 1.0;
      table.at(row, 9) = (survival - survival * conditional) / (end - distinct[k]);
      survival *= conditional;
      if (conditional > 0.0) greenwood += (1.0 - conditional) / (conditional * atRisk);
    }
    table.at(row, 7) = conditional;
    table.at(row, 8) = survival;
    table.at(row, 11) = greenwood;
  }
  return table;
}

TEST(KaplanMeier, AgreesWithGroupsCountedOneByOne) {
  std::mt19937 random(3);
  for (int round = 0; round < 500; ++round) {
    LifeCall call;
    const unsigned n = 1 + random() % 30;
    double time = 0.0;
    for (unsigned i = 0; i < n; ++i) {
      time += random() % 3 == 0 ? 0.0 : 0.25 * (1.0 + random() % 7);
      call.time.push_back(time);
      call.status.push_back(random() % 2);
    }
    const LifeTables out = runLife(call);
    ASSERT_TRUE(allSame(naiveTable(call).elements(), out.table.elements()));
  }
}

}  // namespace
