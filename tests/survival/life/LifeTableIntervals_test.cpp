// Intervals of the life table: of a width, between bounds, and what is none.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <vector>

#include "tests/support/matrices.h"
#include "tests/survival/life/life_table_calls.h"

namespace {

using survmeth::test::between;
using survmeth::test::byWidth;
using survmeth::test::elements;
using survmeth::test::kInf;
using survmeth::test::kNan;
using survmeth::test::kUntouched;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using survmeth::test::tenSubjects;
using Values = std::vector<double>;

constexpr double kU = kUntouched;

TEST(LifeTable, IntervalsOfAWidthStartAtZeroAndPassTheLastTime) {
  LifeCall call = tenSubjects();
  call.fill = kU;
  // floor(14 / 5) + 1, and one more because the first time is above 0.
  EXPECT_EQ(runLife(call).intervals.elements(), (Values{0, 5, 10, 15, 5, 10, 15, 20}));
  call.time[0] = 0.0;
  EXPECT_EQ(runLife(call).intervals.elements(), (Values{0, 5, 10, kU, 5, 10, 15, kU}));
}

TEST(LifeTable, AFirstTimeOfZeroAddsNoInterval) {
  const LifeTables out = runLife(byWidth({0, 1, 12}, {1, 0, 0}, 5.0));
  EXPECT_EQ(out.nRows, 3);
  EXPECT_EQ(out.intervals.at(4, 1), kU);
}

TEST(LifeTable, BoundsAboveZeroStartAtZero) {
  const LifeTables out = runLife(between({1, 4, 9}, {1, 1, 1}, {3, 5, 10}));
  EXPECT_EQ(out.intervals.elements(), (Values{0, 3, 5, kU, kU, 3, 5, 10, kU, kU}));
  EXPECT_EQ(out.nRows, 3);
}

TEST(LifeTable, BoundsFromZeroOrBelowStartThere) {
  const LifeTables out = runLife(between({1, 4, 9}, {1, 1, 1}, {0, 5, 10}));
  EXPECT_EQ(out.intervals.elements(), (Values{0, 5, kU, kU, kU, 5, 10, kU, kU, kU}));
  EXPECT_EQ(out.nRows, 2);
  const LifeTables negative = runLife(between({1, 4, 9}, {1, 1, 1}, {-2, 5, 10}));
  EXPECT_EQ(negative.intervals.at(1, 1), -2.0);
  EXPECT_EQ(runLife(between({1, 4, 9}, {1, 1, 1}, {kNan, 5, 10})).intervals.at(2, 1), 5.0);
}

TEST(LifeTable, OneBoundGivesOneIntervalOrNone) {
  EXPECT_EQ(runLife(between({1, 4}, {1, 1}, {3})).nRows, 1);
  EXPECT_EQ(runLife(between({1, 4}, {1, 1}, {0})).nRows, 0);
}

TEST(LifeTable, NoBoundsGiveNoInterval) {
  for (const int count : {-1, -2, -3, -9, INT_MIN}) {
    LifeCall call = between({1, 4}, {1, 1}, {3});
    call.nIntervals = count;
    EXPECT_EQ(runLife(call).nRows, 0) << count;
  }
  LifeCall call = between({1, 4}, {1, 1}, {});  // the one element passed for an empty list is 0
  EXPECT_EQ(runLife(call).nRows, 0);
}

TEST(LifeTable, OnlyTheFirstRowAtAnUpperBoundBelongsToTheInterval) {
  // 5 is the first unassigned row of 0..5: it enters, and so does nothing after it.
  const LifeTables first = runLife(between({5, 5, 7}, {1, 1, 1}, {5, 10}));
  EXPECT_EQ(first.table.at(2, 4), 1.0);
  EXPECT_EQ(first.table.at(3, 4), 2.0);
  // After 4, the rows at 5 fall in the next interval.
  const LifeTables later = runLife(between({4, 5, 5, 7}, {1, 1, 1, 1}, {5, 10}));
  EXPECT_EQ(later.table.at(2, 4), 1.0);
  EXPECT_EQ(later.table.at(3, 4), 3.0);
}

TEST(LifeTable, TimesBelowTheFirstBoundFallIntoTheFirstInterval) {
  const LifeTables out = runLife(between({-8, -7, 1, 6}, {1, 1, 1, 0}, {-3, 5, 10}));
  EXPECT_EQ(out.table.at(2, 1), -3.0);
  EXPECT_EQ(out.table.at(2, 4), 3.0);
}

TEST(LifeTable, AWidthFlagOfOneMeansBounds) {
  LifeCall call = between({1, 4, 9}, {1, 1, 1}, {3, 5, 10});
  call.intervalsByWidth = 1;
  EXPECT_EQ(runLife(call).nRows, 3);
}

TEST(LifeTable, AWidthThatIsNoWidthGivesNoInterval) {
  for (const double width : {0.0, -0.0, -1.0, -1e-9, kNan, kInf, -kInf}) {
    const LifeTables out = runLife(byWidth({1, 2, 9}, {1, 1, 1}, width));
    EXPECT_EQ(out.nRows, 0) << width;
    EXPECT_EQ(out.total, 3.0) << width;
    EXPECT_EQ(out.table.at(1, 6), 3.0) << width;
    for (const double cell : out.intervals.elements()) EXPECT_EQ(cell, kU);
    for (int row = 2; row <= out.table.rows(); ++row) {
      EXPECT_EQ(out.table.row(row, 16), Values(16, kU)) << width;
    }
  }
}

TEST(LifeTable, MoreIntervalsThanATableCanHoldGiveNone) {
  for (const double width : {1e-12, 1e-300, 5e-324}) {
    const LifeTables out = runLife(byWidth({1, 2, 9}, {1, 1, 1}, width));
    EXPECT_EQ(out.nRows, 0) << width;
    EXPECT_EQ(out.table.at(1, 6), 3.0);
  }
  EXPECT_EQ(runLife(byWidth({1, 2, kInf}, {1, 1, 1}, 1.0)).nRows, 0);
  EXPECT_EQ(runLife(byWidth({1, 2, kNan}, {1, 1, 1}, 1.0)).nRows, 0);
  EXPECT_EQ(runLife(byWidth({1, 2, 1e9}, {1, 1, 1}, 1.0)).nRows, 0);
}

TEST(LifeTable, AWidthBeyondTheTimesGivesOneRow) {
  const LifeTables out = runLife(byWidth({1, 2, 9}, {1, 0, 1}, 100.0));
  EXPECT_EQ(out.nRows, 1);
  EXPECT_EQ(out.table.row(2, 6), (Values{0, kU, 3, 2, 1, 2.5}));
}

TEST(LifeTable, ATimeThatIsAMultipleButForRoundingCountsAsOne) {
  // 0.3 / 0.1 is below 3 in binary: the list has five intervals, the caller's block four rows,
  // and what lies past a block's rows falls on its next column.
  ASSERT_LT(0.3 / 0.1, 3.0);
  const LifeTables out = runLife(byWidth({0.05, 0.15, 0.3}, {1, 1, 1}, 0.1));
  const double fourth = 0.1 + 0.1 + 0.1;
  const double fifth = fourth + 0.1;
  EXPECT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.at(4, 4), 1.0);
  EXPECT_EQ(out.intervals.elements(), (Values{0, 0.1, 0.2, fourth, fifth, 0.2, fourth, fifth}));
}

TEST(LifeTable, UndefinedTimesEnterNoInterval) {
  const LifeTables out = runLife(between({1, 2, kNan, kNan}, {1, 1, 1, 1}, {3, 6, 9}));
  ASSERT_EQ(out.nRows, 3);
  EXPECT_EQ(out.table.at(4, 3), 2.0);
  EXPECT_EQ(out.table.at(4, 4), 0.0);
}

TEST(LifeTable, EqualBoundsGiveAnIntervalOfNoWidth) {
  const LifeTables out = runLife(between({1, 2, 8}, {1, 1, 1}, {3, 3, 9}));
  ASSERT_EQ(out.nRows, 3);
  EXPECT_TRUE(std::isinf(out.table.at(2, 9)));
  EXPECT_TRUE(std::isnan(out.table.at(3, 10)));
}

}  // namespace
