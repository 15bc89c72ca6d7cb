// The grid that all strata share, as RunLife fills it.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::Column;
using survmeth::test::kNan;
using survmeth::test::kNo;
using survmeth::test::kUntouched;
using survmeth::test::kYes;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using Values = std::vector<double>;

constexpr double kU = kUntouched;

// Two strata on the times 1..6; the first holds times 2, 2 and 5.
LifeCall firstOfTwo() {
  LifeCall call;
  call.time = {2, 2, 5};
  call.status = {1, 0, 1};
  call.fill = 0.0;
  call.fillStrata = kYes;
  call.nStrata = 2;
  call.gridTimes = {1, 2, 3, 4, 5, 6};
  return call;
}

Values columnOf(const LifeTables& out, int g) {
  Values column;
  for (int i = 1; i <= out.grid.rows(); ++i) column.push_back(out.grid.at(i, g));
  return column;
}

TEST(StrataGrid, ATimeOfTheStratumGetsItsCounts) {
  const LifeTables out = runLife(firstOfTwo());
  EXPECT_EQ(columnOf(out, 2), (Values{2, 3, 1, 1, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 5), (Values{5, 1, 1, 0, kU, kU, kU}));
}

TEST(StrataGrid, AnotherTimeGetsTheMarkerAndTheNextRowsAtRisk) {
  const LifeTables out = runLife(firstOfTwo());
  EXPECT_EQ(columnOf(out, 1), (Values{1, 3, -1, -1, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 3), (Values{3, 1, -1, -1, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 4), (Values{4, 1, -1, -1, kU, kU, kU}));
}

TEST(StrataGrid, ColumnsPastTheLastTimeStayAsPassed) {
  EXPECT_EQ(columnOf(runLife(firstOfTwo()), 6), (Values{6, kU, kU, kU, kU, kU, kU}));
}

TEST(StrataGrid, EachStratumHasItsOwnThreeRows) {
  LifeCall call = firstOfTwo();
  call.stratum = 2;
  const LifeTables out = runLife(call);
  EXPECT_EQ(columnOf(out, 2), (Values{2, kU, kU, kU, 3, 1, 1}));
  EXPECT_EQ(columnOf(out, 1), (Values{1, kU, kU, kU, 3, -1, -1}));
}

TEST(StrataGrid, AStratumPastTheGridWritesNothingIntoIt) {
  for (const int stratum : {1000, INT_MAX}) {
    LifeCall call = firstOfTwo();
    call.stratum = stratum;
    const LifeTables out = runLife(call);
    for (int g = 1; g <= 6; ++g) {
      EXPECT_EQ(columnOf(out, g), (Values{1.0 * g, kU, kU, kU, kU, kU, kU}));
    }
  }
}

TEST(StrataGrid, ATimeThatTheGridDoesNotHoldUsesItUp) {
  LifeCall call = firstOfTwo();
  call.gridTimes = {1, 3, 5};
  const LifeTables out = runLife(call);
  for (int g = 1; g <= 3; ++g) {
    EXPECT_EQ(columnOf(out, g)[1], 3.0);
    EXPECT_EQ(columnOf(out, g)[2], -1.0);
  }
}

TEST(StrataGrid, TimesAreComparedExactly) {
  LifeCall call = firstOfTwo();
  call.gridTimes = {2.0000000000000004, 5};
  EXPECT_EQ(columnOf(runLife(call), 1), (Values{2.0000000000000004, 3, -1, -1, kU, kU, kU}));
}

TEST(StrataGrid, AnUndefinedTimeUsesUpTheGrid) {
  LifeCall call = firstOfTwo();
  call.time = {2, kNan, kNan};
  call.time[0] = kNan;
  const LifeTables out = runLife(call);
  for (int g = 1; g <= 6; ++g) EXPECT_EQ(columnOf(out, g)[2], -1.0);
}

TEST(StrataGrid, TheGridMayBeShorterThanTheTable) {
  LifeCall call = firstOfTwo();
  call.gridTimes = {2};
  EXPECT_EQ(columnOf(runLife(call), 1), (Values{2, 3, 1, 1, kU, kU, kU}));
}

TEST(StrataGrid, AGridOfNoTimesIsOneColumn) {
  LifeCall call = firstOfTwo();
  call.gridTimes = {};
  const LifeTables out = runLife(call);
  EXPECT_EQ(columnOf(out, 1), (Values{kU, 3, -1, -1, kU, kU, kU}));
}

TEST(StrataGrid, NotAskedForBecomesZeroInItsFirstElement) {
  for (const short flag : {kNo, short{1}}) {
    LifeCall call = firstOfTwo();
    call.fillStrata = flag;
    const LifeTables out = runLife(call);
    EXPECT_EQ(columnOf(out, 1), (Values{0, kU, kU, kU, kU, kU, kU})) << flag;
    EXPECT_EQ(columnOf(out, 2), (Values{2, kU, kU, kU, kU, kU, kU})) << flag;
  }
}

TEST(StrataGrid, RowsWithNobodyAtRiskAreSkipped) {
  LifeCall call = firstOfTwo();
  call.time = {2, 3, 4};
  call.status = {1, 0, 0};
  call.weight = {2, 0, 0};
  call.countsFormat = kYes;
  // Two events, one group; time 3 has nobody left, so the table stops there.
  const LifeTables out = runLife(call);
  EXPECT_EQ(columnOf(out, 2), (Values{2, 3, 1, 2, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 3), (Values{3, kU, kU, kU, kU, kU, kU}));
}

TEST(StrataGrid, NoRowsFillNothing) {
  LifeCall call = firstOfTwo();
  call.m = 0;
  EXPECT_EQ(columnOf(runLife(call), 1), (Values{1, kU, kU, kU, kU, kU, kU}));
}

TEST(StrataGrid, ALifeTableGoesByItsLowerBounds) {
  LifeCall call = firstOfTwo();
  call.lifeTable = kYes;
  call.bounds = {2.5, 6};
  call.gridTimes = {0, 2.5, 6};
  const LifeTables out = runLife(call);
  ASSERT_EQ(out.nRows, 2);
  EXPECT_EQ(columnOf(out, 1), (Values{0, 3, 1, 1, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 2), (Values{2.5, 1, 1, 0, kU, kU, kU}));
  EXPECT_EQ(columnOf(out, 3), (Values{6, kU, kU, kU, kU, kU, kU}));
}

TEST(StrataGridOnMatrices, ATableThatIsTooSmallEndsWithTheGrid) {
  Column time({1, 2}), status({1, 1}), weight({1, 1}), bounds({0});
  matrix intervals(1, 1, 0), table(1, 1, 0), grid(4, 3, 5.0);
  int offset = 0, rows = 0;
  double total = 0.0;
  cRunLife(2, 1, &offset, 0, 1.0, 3, 1, 100000, 1, 0, 0, &time, &status, &weight, kNo, kYes, kNo,
           kNo, &bounds, &intervals, &total, &table, &rows, &grid);
  EXPECT_EQ(total, 100000.0);
  for (int g = 1; g <= 3; ++g) {
    EXPECT_EQ(grid.vbget(2, g), -1.0);
    EXPECT_EQ(grid.vbget(3, g), -1.0);
  }
}

}  // namespace
