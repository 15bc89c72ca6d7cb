// Cumulative incidence: worked by hand, against tables of another program, contract.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/cuminc.h"
#include "survival/cuminc/cuminc.h"
#include "tests/support/csv.h"
#include "tests/survival/cuminc/tables.h"

namespace {

using survmeth::test::Count;
using survmeth::test::Csv;
using survmeth::test::Incidence;
using survmeth::test::kaplanMeier;
using survmeth::test::Subjects;
using survmeth::test::Table;
using Vector = std::vector<double>;

// Quantile of the normal law at 0.975, Abramowitz & Stegun table 26.5 extended.
constexpr double kZ = 1.959963984540054;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void expectNear(double value, double expected) {
  EXPECT_NEAR(value, expected, 1e-14 * std::fabs(expected));
}

void expectColumn(const Table& table, int column, const Vector& expected) {
  for (int k = 1; k <= table.rows(); ++k) {
    EXPECT_NEAR(table(k, column), expected[k - 1], 1e-14 * std::fabs(expected[k - 1]))
        << "column " << column << " row " << k;
  }
}

// Seven subjects, types 1 and 2. Survival just before the six times: 1, 6/7, 5/7, 5/7, 5/14, 5/28.
Subjects seven() { return Subjects({1, 2, 3, 4, 4, 5, 6}, {2, 1, 0, 1, 2, 1, 0}); }

TEST(CumIncCalc, CountsComeFromTheTypeAndFromTheKaplanMeierTable) {
  const Incidence one(seven(), 1);
  expectColumn(one.table, 1, {1, 2, 3, 4, 5, 6});
  expectColumn(one.table, 2, {7, 6, 5, 4, 2, 1});
  expectColumn(one.table, 3, {0, 1, 0, 1, 1, 0});
  expectColumn(one.table, 4, {1, 1, 0, 2, 1, 0});
  expectColumn(one.table, 5, {0, 0, 1, 0, 0, 1});
}

TEST(CumIncCalc, IncidenceGrowsBySurvivalTimesTheShareOfTheType) {
  // 6/7 1/6 = 1/7, + 5/7 1/4 = 9/28, + 5/14 1/2 = 1/2
  const Incidence one(seven(), 1);
  expectColumn(one.table, 6, {kMissing, 1 / 7.0, 1 / 7.0, 9 / 28.0, 1 / 2.0, 1 / 2.0});
  // 1/7, + 5/7 1/4 = 9/28
  const Incidence two(seven(), 2);
  expectColumn(two.table, 6, {1 / 7.0, 1 / 7.0, 1 / 7.0, 9 / 28.0, 9 / 28.0, 9 / 28.0});
}

TEST(CumIncCalc, StandardErrorsWorkedByHand) {
  // Row 2: 5 1 / 6^3. Row 4: rows 2 and 4 add 15/1568 and 75/3136, together 15/448. Row 5: rows 2,
  // 4 and 5 add 5/1176, 25/1568 and 25/1568, together 85/2352.
  const Incidence one(seven(), 1);
  const double first = std::sqrt(5 / 216.0);
  const double second = std::sqrt(15 / 448.0);
  const double third = std::sqrt(85 / 2352.0);
  expectColumn(one.table, 7, {kMissing, first, first, second, third, third});
}

TEST(CumIncCalc, TheFirstVarianceHasNoFactorOfTheSurvivalBefore) {
  const Incidence one(seven(), 1);
  expectNear(one.table(2, 7) * one.table(2, 7), 5 / 216.0);
  EXPECT_GT(std::fabs(one.table(2, 7) - 6 / 7.0 * std::sqrt(5 / 216.0)), 0.01);
}

TEST(CumIncCalc, EventsOfOtherTypesBeforeTheFirstEnterNoVariance) {
  // The event of type 2 at time 1 would add (9/28)^2 / 42 to the variance of row 4.
  const Incidence one(seven(), 1);
  expectNear(one.table(4, 7) * one.table(4, 7), 15 / 448.0);
}

TEST(CumIncCalc, LimitsAreTakenOnTheLogScaleAndNotClipped) {
  const Incidence one(seven(), 1);
  const double incidence[] = {0, 1 / 7.0, 1 / 7.0, 9 / 28.0, 1 / 2.0, 1 / 2.0};
  const double variance[] = {0, 5 / 216.0, 5 / 216.0, 15 / 448.0, 85 / 2352.0, 85 / 2352.0};
  for (int k = 2; k <= 6; ++k) {
    const double ratio = std::exp(kZ * std::sqrt(variance[k - 1]) / incidence[k - 1]);
    EXPECT_NEAR(one.table(k, 8), incidence[k - 1] / ratio, 1e-14);
    EXPECT_NEAR(one.table(k, 9), incidence[k - 1] * ratio, 1e-14);
  }
  EXPECT_GT(one.table(2, 9), 1.0);
}

TEST(CumIncCalc, TheLastColumnIsThePooledIncidenceWhereTheTypeHasEvents) {
  // 1 - survival is 2/7, 9/14 and 23/28 at the events of type 1; the other rows repeat it.
  const Incidence one(seven(), 1);
  expectColumn(one.table, 10, {kMissing, 2 / 7.0, 2 / 7.0, 9 / 14.0, 23 / 28.0, 23 / 28.0});
  // Type 2 has no event at times 2 and 5, where the survival falls all the same.
  const Incidence two(seven(), 2);
  expectColumn(two.table, 10, {1 / 7.0, 1 / 7.0, 1 / 7.0, 9 / 14.0, 9 / 14.0, 9 / 14.0});
}

TEST(CumIncCalc, RowsBeforeTheFirstEventHoldTheMarkerInBothTables) {
  const Incidence one(seven(), 1);
  for (int column = 6; column <= 10; ++column) {
    EXPECT_EQ(one.table(1, column), kMissing);
    EXPECT_EQ(one.complement(1, column), kMissing);
  }
}

TEST(CumIncCalc, TheComplementSwapsTheLimits) {
  const Incidence one(seven(), 1);
  for (int k = 1; k <= 6; ++k) {
    for (const int column : {1, 2, 3, 4, 5, 7}) {
      EXPECT_EQ(one.complement(k, column), one.table(k, column));
    }
  }
  for (int k = 2; k <= 6; ++k) {
    EXPECT_EQ(one.complement(k, 6), 1 - one.table(k, 6));
    EXPECT_EQ(one.complement(k, 8), 1 - one.table(k, 9));
    EXPECT_EQ(one.complement(k, 9), 1 - one.table(k, 8));
    EXPECT_LT(one.complement(k, 8), one.complement(k, 9));
    EXPECT_EQ(one.complement(k, 10), 1 - one.table(k, 10));
  }
}

TEST(CumIncCalc, WithoutAnyEventTheLastRowRepeatsTheMarkersAndHasErrorZero) {
  const Incidence three(seven(), 3);
  for (int k = 1; k <= 6; ++k) {
    EXPECT_EQ(three.table(k, 3), 0.0);
    for (const int column : {6, 8, 9, 10}) {
      EXPECT_EQ(three.table(k, column), kMissing);
      EXPECT_EQ(three.complement(k, column), kMissing);
    }
    EXPECT_EQ(three.table(k, 7), k < 6 ? kMissing : 0.0);
  }
}

TEST(CumIncCalc, AnEventInTheLastGroupOnlyStandsThere) {
  // Survival before the last of four is 1/2 after one event of type 2 among two at risk.
  const Incidence one(Subjects({1, 2, 3, 4}, {0, 0, 2, 1}), 1);
  for (int k = 1; k <= 3; ++k) {
    for (int column = 6; column <= 10; ++column) EXPECT_EQ(one.table(k, column), kMissing);
  }
  EXPECT_EQ(one.table(4, 6), 0.5);
  EXPECT_EQ(one.table(4, 7), 0.0);  // n - e is 0
  EXPECT_NEAR(one.table(4, 8), 0.5, 1e-15);
  EXPECT_NEAR(one.table(4, 9), 0.5, 1e-15);
  EXPECT_EQ(one.table(4, 10), 1.0);
  EXPECT_EQ(one.complement(4, 10), 0.0);
}

TEST(CumIncCalc, TheLastRowIsNotCountedWhenItsTimeIsTied) {
  // Two events at time 2: the Kaplan-Meier table has one group for them, and one is counted.
  const Incidence one(Subjects({1, 2, 2}, {1, 1, 1}), 1);
  expectColumn(one.table, 3, {1, 1});
  expectColumn(one.table, 4, {1, 2});
  expectColumn(one.table, 6, {1 / 3.0, 2 / 3.0});
}

TEST(CumIncCalc, AnExtraRowTakesTheTiedLastRowAsAGroupOfItsOwn) {
  const Subjects subjects({1, 2, 2, 2}, {1, 1, 2, 1});
  const Incidence one(subjects, kaplanMeier(countsOf(subjects), 4), 3, 1);
  expectColumn(one.table, 3, {1, 1, 1});
}

TEST(CumIncCalc, ARowNobodyOutlivesAddsNothingToLaterVariances) {
  // A table as weights can make it: two at risk and two pooled events in row 2, three more rows.
  Table km(6, 12, 0.0);
  const double atRisk[] = {4, 2, 3, 2};
  const double pooled[] = {1, 2, 1, 1};
  const double before[] = {1, 3 / 4.0, 1 / 2.0, 1 / 4.0};
  for (int k = 1; k <= 4; ++k) {
    km(k + 1, 1) = k;
    km(k + 1, 6) = atRisk[k - 1];
    km(k + 1, 4) = pooled[k - 1];
    km(k, 8) = before[k - 1];
  }
  const Incidence one(Subjects({1, 2, 3, 4}, {1, 1, 2, 1}), km, 4, 1);
  // I: 1/4, + 3/4 1/2 = 5/8, 5/8, + 1/4 1/2 = 3/4. Variance of row 4: row 1 1/4 1/12 + 3/64 -
  // 2 1/2 1/16, row 3 1/64 1/6, row 4 1/16 1/8; row 2 nothing.
  expectNear(one.table(4, 6), 3 / 4.0);
  expectNear(one.table(4, 7), std::sqrt(1 / 48.0 + 3 / 64.0 - 1 / 16.0 + 1 / 384.0 + 1 / 128.0));
}

TEST(CumIncCalc, AStratumIsReadFromItsOffset) {
  const Subjects all({1, 2, 3, 4, 4, 5, 6}, {2, 1, 0, 1, 2, 1, 0});
  Vector time = {9, 9, 9};
  Vector status = {1, 1, 1};
  time.insert(time.end(), all.time.begin(), all.time.end());
  status.insert(status.end(), all.status.begin(), all.status.end());
  time.push_back(6);  // the next stratum
  status.push_back(1);
  Table km = kaplanMeier(countsOf(all), 7);
  Table table(6, 10, 0.0), complement(6, 10, 0.0);
  EXPECT_EQ(Cpp_CumIncCalc(6, 11, time.data(), status.data(), 1, 0.05, 7, 3, km.data(),
                           table.data(), complement.data()),
            0);
  EXPECT_EQ(table.values(), Incidence(all, 1).table.values());
  EXPECT_EQ(complement.values(), Incidence(all, 1).complement.values());
}

TEST(CumIncCalc, EventsAreAddedToWhatTheCallerLeft) {
  Subjects subjects = seven();
  Table km = kaplanMeier(countsOf(subjects), 7);
  Table table(6, 10, 0.0), complement(6, 10, 0.0);
  table(3, 3) = 2;
  Cpp_CumIncCalc(6, 7, subjects.time.data(), subjects.status.data(), 1, 0.05, 7, 0, km.data(),
                 table.data(), complement.data());
  expectColumn(table, 3, {0, 1, 2, 1, 1, 0});
  expectNear(table(3, 6), 1 / 7.0 + 5 / 7.0 * 2 / 5.0);
}

TEST(CumIncCalc, AlphaAboveOneTurnsTheLimitsRound) {
  const Incidence one(seven(), 1, 1.5);  // z is the quantile at 1/4, which is below 0
  EXPECT_GT(one.table(4, 8), one.table(4, 9));
  const Incidence none(seven(), 1, 2.5);
  EXPECT_TRUE(std::isnan(none.table(4, 8)));
  EXPECT_TRUE(std::isnan(none.complement(4, 9)));
  expectNear(none.table(4, 6), 9 / 28.0);
}

TEST(CumIncCalc, WithoutCompetingEventsIncidenceIsOneMinusKaplanMeier) {
  const Csv data(SURVMETH_DATA "/leukemia.csv");
  Vector time, status;
  for (std::size_t i = 0; i < data.rows(); ++i) {
    if (data.text("treatment", i) != "6-MP") continue;
    time.push_back(data.number("weeks", i));
    status.push_back(data.number("relapse", i));
  }
  const Csv reference(SURVMETH_REFERENCE "/km_leukemia.csv");
  const Incidence one(Subjects(time, status), 1);
  int k = 0;
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    if (reference.text("group", i) != "6-MP") continue;
    ++k;
    EXPECT_NEAR(one.table(k, 6), 1 - reference.number("survival", i), 1e-14);
    // Survival before the first event is 1, so that its standard error is the usual one too.
    EXPECT_NEAR(one.table(k, 7), reference.number("std.err", i), 1e-14);
  }
  EXPECT_EQ(k, one.table.rows());
}

TEST(CumIncCalc, IncidencesOfTheLiverTrialAreThoseOfAnotherProgram) {
  const Csv data(SURVMETH_DATA "/pbc.csv");
  const Csv reference(SURVMETH_REFERENCE "/cuminc_pbc.csv");
  const Subjects subjects(data.numbers("time"), data.numbers("status"));
  const Vector time = reference.numbers("time");
  for (const int type : {1, 2}) {
    const Incidence incidence(subjects, type);
    const Vector expected = reference.numbers(type == 1 ? "incidence1" : "incidence2");
    ASSERT_EQ(incidence.table.rows(), static_cast<int>(time.size()));
    int compared = 0;
    for (int k = 1; k <= incidence.table.rows(); ++k) {
      EXPECT_EQ(incidence.table(k, 1), time[k - 1]);
      if (incidence.table(k, 6) == kMissing) {
        EXPECT_EQ(expected[k - 1], 0.0);  // before the first event of the type
        continue;
      }
      EXPECT_NEAR(incidence.table(k, 6), expected[k - 1], 1e-13);
      ++compared;
    }
    EXPECT_GT(compared, 200);
  }
}

TEST(CumIncCalc, NoRowsWriteNothing) {
  for (const int r : {0, -1, std::numeric_limits<int>::min()}) {
    Subjects subjects = seven();
    Table km = kaplanMeier(countsOf(subjects), 7);
    Table table(1, 10, 4.0), complement(1, 10, 5.0);
    EXPECT_EQ(Cpp_CumIncCalc(r, 7, subjects.time.data(), subjects.status.data(), 1, 0.05, 7, 0,
                             km.data(), table.data(), complement.data()),
              0);
    EXPECT_EQ(table.values(), Table(1, 10, 4.0).values());
    EXPECT_EQ(complement.values(), Table(1, 10, 5.0).values());
  }
}

TEST(CumIncCalc, AFirstRowWithoutEventsCopiesByLinearPosition) {
  // The row above row 1 of a one-row table is the cell before: columns 6, 8, 9 and 10 in this
  // order become columns 5, 7, the new 8 and the new 9.
  Subjects subjects({3}, {0});
  Table km = kaplanMeier(countsOf(subjects), 1);
  Table table(1, 10, 0.0), complement(1, 10, 0.0);
  table(1, 7) = 0.25;
  Cpp_CumIncCalc(1, 1, subjects.time.data(), subjects.status.data(), 1, 0.05, 1, 0, km.data(),
                 table.data(), complement.data());
  EXPECT_EQ(table.values(), (Vector{3, 1, 0, 0, 1, 1, 0.5, 0.25, 0.25, 0.25}));
  EXPECT_EQ(complement.values(), (Vector{3, 1, 0, 0, 1, 0, 0.5, 0.75, 0.75, 0.75}));
}

TEST(CumIncCalc, WithoutAnyEventTheLastErrorIsTheRootOfWhatTheCallerLeft) {
  for (const double left : {4.0, 0.0, -9.0, kMissing}) {
    Subjects subjects({1, 2}, {2, 0});
    Table km = kaplanMeier(countsOf(subjects), 2);
    Table table(2, 10, 0.0), complement(2, 10, 0.0);
    table(2, 7) = left;
    Cpp_CumIncCalc(2, 2, subjects.time.data(), subjects.status.data(), 1, 0.05, 2, 0, km.data(),
                   table.data(), complement.data());
    EXPECT_EQ(table(2, 7), left > 0 ? 2.0 : 0.0);
    EXPECT_EQ(complement(2, 7), table(2, 7));
  }
}

TEST(CumIncCalc, RowsPastTheKaplanMeierTableFollowItsLinearPositions) {
  Subjects subjects({1, 2}, {1, 0});
  Table km = kaplanMeier(countsOf(subjects), 2);  // 4 rows
  Table table(5, 10, 0.0), complement(5, 10, 0.0);
  Cpp_CumIncCalc(5, 2, subjects.time.data(), subjects.status.data(), 1, 0.05, 2, 0, km.data(),
                 table.data(), complement.data());
  EXPECT_EQ(table(3, 1), km(4, 1));
  EXPECT_EQ(table(4, 1), km(1, 2));
  EXPECT_EQ(table(5, 1), km(2, 2));
  EXPECT_EQ(table(4, 5), km(1, 6));
}

TEST(CumIncCalc, RowsOutsideTheDataReadAsStatusMinusOne) {
  Subjects subjects({1, 2}, {1, 0});
  Table km = kaplanMeier(countsOf(subjects), 2);
  Table table(2, 10, 0.0), complement(2, 10, 0.0);
  // Rows -1 and 0; then rows 2 to 6, of which 3 to 5 have equal times.
  Cpp_CumIncCalc(2, 2, subjects.time.data(), subjects.status.data(), -1, 0.05, 2, -2, km.data(),
                 table.data(), complement.data());
  expectColumn(table, 3, {1, 1});
  Table past(2, 10, 0.0);
  Table longer(7, 12, 0.0);
  Cpp_CumIncCalc(2, 2, subjects.time.data(), subjects.status.data(), -1, 0.05, 5, 1, longer.data(),
                 past.data(), complement.data());
  expectColumn(past, 3, {0, 3});
}

TEST(CumIncCalc, NonsensicalCountsNeitherHangNorWriteOutside) {
  const int extremes[] = {std::numeric_limits<int>::min(), -3, 0, 1, 1000000,
                          std::numeric_limits<int>::max()};
  for (const int r : extremes) {
    for (const int m : extremes) {
      for (const int offset : {-3, 0, 1, 1000000, std::numeric_limits<int>::max()}) {
        matrix time(3, 1, 1), status(3, 1, 1), km(5, 12, 1), table(2, 10, 0), complement(4, 10, 0);
        EXPECT_EQ(CumIncCalc(r, 3, &time, &status, 1, 0.05, m, offset, &km, &table, &complement),
                  0);
      }
    }
  }
}

TEST(CumIncCalc, NotANumberAndInfinityPassThrough) {
  for (const double bad : {kNan, kInf, -kInf, -2.0, 0.0}) {
    for (const int column : {1, 4, 5, 6, 8}) {
      for (int row = 1; row <= 7; ++row) {
        Subjects subjects = seven();
        Table km = kaplanMeier(countsOf(subjects), 7);
        km(row, column) = bad;
        const Incidence one(subjects, km, 6, 1);
        expectColumn(one.table, 3, {0, 1, 0, 1, 1, 0});
      }
    }
  }
  // At risk unknown in row 4: known before, unknown from there on.
  Subjects subjects = seven();
  Table km = kaplanMeier(countsOf(subjects), 7);
  km(5, 6) = kNan;
  const Incidence one(subjects, km, 6, 1);
  expectNear(one.table(3, 6), 1 / 7.0);
  for (int k = 4; k <= 6; ++k) {
    EXPECT_TRUE(std::isnan(one.table(k, 6)));
    EXPECT_TRUE(std::isnan(one.table(k, 7)));
    EXPECT_TRUE(std::isnan(one.complement(k, 8)));
  }
}

}  // namespace
