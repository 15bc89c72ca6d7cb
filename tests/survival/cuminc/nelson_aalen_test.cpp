// Nelson-Aalen cumulative hazard.
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
using survmeth::test::kaplanMeier;
using survmeth::test::Subjects;
using survmeth::test::Table;
using Vector = std::vector<double>;

constexpr double kZ = 1.959963984540054;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

Table hazardOf(Table km, int r, int ciMethod, int varianceMethod, double alpha = 0.05) {
  Table table(r, 9, 44.0);
  EXPECT_EQ(Cpp_TransNelsonAalen(km.data(), table.data(), km.rows() - 2, r, alpha, ciMethod,
                                 varianceMethod),
            0);
  return table;
}

void expectNear(double value, double expected) {
  EXPECT_NEAR(value, expected, 1e-14 * std::fabs(expected));
}

// Five times: a censoring, then events among 4, 3 and 1 at risk, one row of censorings between.
Table five() {
  return kaplanMeier({{1, 5, 0, 1}, {2, 4, 1, 0}, {3, 3, 2, 0}, {4, 2, 0, 1}, {5, 1, 1, 0}}, 6);
}

TEST(TransNelsonAalen, TheHazardIsTheSumOfEventsOverAtRisk) {
  const Table table = hazardOf(five(), 5, 1, 1);
  const double hazard[] = {kMissing, 1 / 4.0, 11 / 12.0, 11 / 12.0, 23 / 12.0};
  for (int k = 1; k <= 5; ++k) {
    EXPECT_EQ(table(k, 1), k);
    EXPECT_EQ(table(k, 2), 6 - k);
    expectNear(table(k, 5), hazard[k - 1]);
    if (k > 1) expectNear(table(k, 9), std::exp(-hazard[k - 1]));
  }
  EXPECT_EQ(table(3, 3), 2);
  EXPECT_EQ(table(4, 3), 0);
  EXPECT_EQ(table(4, 4), 1);
}

TEST(TransNelsonAalen, VariancesOfTheThreeMethods) {
  // Increments of rows 2, 3 and 5; with one at risk it is d / n^2 in each method.
  const Vector first = {1 / 16.0, 1 / 16.0 + 2 / 9.0, 1 / 16.0 + 2 / 9.0 + 1};
  const Vector second = {3 / 64.0, 3 / 64.0 + 2 / 27.0, 3 / 64.0 + 2 / 27.0 + 1};
  const Vector third = {1 / 16.0, 1 / 16.0 + 1 / 9.0, 1 / 16.0 + 1 / 9.0 + 1};
  const auto expectErrors = [](const Table& table, const Vector& variance) {
    expectNear(table(2, 6), std::sqrt(variance[0]));
    expectNear(table(3, 6), std::sqrt(variance[1]));
    expectNear(table(4, 6), std::sqrt(variance[1]));
    expectNear(table(5, 6), std::sqrt(variance[2]));
  };
  expectErrors(hazardOf(five(), 5, 1, 1), first);
  expectErrors(hazardOf(five(), 5, 1, 2), second);
  for (const int method : {3, 0, -1, 99}) expectErrors(hazardOf(five(), 5, 1, method), third);
}

TEST(TransNelsonAalen, LinearLimitsAreNotClipped) {
  const Table table = hazardOf(five(), 5, 1, 1);
  expectNear(table(2, 7), 0.25 - kZ * 0.25);
  expectNear(table(2, 8), 0.25 + kZ * 0.25);
  EXPECT_LT(table(2, 7), 0.0);
}

TEST(TransNelsonAalen, EveryOtherMethodTakesLimitsOnTheLogScale) {
  for (const int method : {2, 0, -1, 7}) {
    const Table table = hazardOf(five(), 5, method, 1);
    expectNear(table(2, 7), 0.25 / std::exp(kZ));
    expectNear(table(2, 8), 0.25 * std::exp(kZ));
    const double error = std::sqrt(1 / 16.0 + 2 / 9.0);
    EXPECT_NEAR(table(3, 8), 11 / 12.0 * std::exp(kZ * error / (11 / 12.0)), 1e-13);
    EXPECT_EQ(table(4, 8), table(3, 8));
  }
}

TEST(TransNelsonAalen, RowsBeforeTheFirstEventHoldMarkersAndTheRootOfOne) {
  const Table table = hazardOf(five(), 5, 1, 1);
  for (const int column : {5, 7, 8, 9}) EXPECT_EQ(table(1, column), kMissing);
  EXPECT_TRUE(std::isnan(table(1, 6)));
}

TEST(TransNelsonAalen, WithoutEventsEveryRowHoldsMarkers) {
  const Table table = hazardOf(kaplanMeier({{1, 3, 0, 1}, {2, 2, 0, 1}, {3, 1, 0, 1}}, 3), 3, 1, 1);
  for (int k = 1; k <= 3; ++k) {
    for (const int column : {5, 7, 8, 9}) EXPECT_EQ(table(k, column), kMissing);
    EXPECT_TRUE(std::isnan(table(k, 6)));
  }
}

TEST(TransNelsonAalen, AnEventInTheLastRowOnlyStandsThere) {
  const Table table = hazardOf(kaplanMeier({{1, 3, 0, 1}, {2, 2, 1, 1}}, 3), 2, 1, 2);
  EXPECT_EQ(table(1, 5), kMissing);
  EXPECT_EQ(table(2, 5), 0.5);
  expectNear(table(2, 6), std::sqrt(1 / 8.0));
}

TEST(TransNelsonAalen, RemissionTimesOfTextbook) {
  // Klein & Moeschberger, Survival Analysis (2003), table 4.2: 6-MP patients, variance d / n^2.
  const Csv data(SURVMETH_DATA "/leukemia.csv");
  Vector time, status;
  for (std::size_t i = 0; i < data.rows(); ++i) {
    if (data.text("treatment", i) != "6-MP") continue;
    time.push_back(data.number("weeks", i));
    status.push_back(data.number("relapse", i));
  }
  const Subjects subjects(time, status);
  const std::vector<Count> counts = countsOf(subjects);
  const Table table = hazardOf(kaplanMeier(counts, 21), static_cast<int>(counts.size()), 1, 1);
  const double published[][3] = {{6, 0.1428, 0.0068},  {7, 0.2017, 0.0103},  {10, 0.2683, 0.0147},
                                 {13, 0.3517, 0.0217}, {16, 0.4426, 0.0299}, {22, 0.5854, 0.0503},
                                 {23, 0.7521, 0.0781}};
  int found = 0;
  for (int k = 1; k <= table.rows(); ++k) {
    for (const auto& row : published) {
      if (row[0] != table(k, 1)) continue;
      // The book cuts the hazard after four places and rounds the variance there.
      EXPECT_NEAR(table(k, 5), row[1], 1e-4) << row[0];
      EXPECT_NEAR(table(k, 6) * table(k, 6), row[2], 0.5e-4) << row[0];
      ++found;
    }
  }
  EXPECT_EQ(found, 7);
  // The last one in full.
  const double hazard = 3 / 21.0 + 1 / 17.0 + 1 / 15.0 + 1 / 12.0 + 1 / 11.0 + 1 / 7.0 + 1 / 6.0;
  expectNear(table(table.rows(), 5), hazard);
}

TEST(TransNelsonAalen, OneRowWithoutEventsCopiesByLinearPosition) {
  // The row above row 1 of a one-row table is the cell before: column 4, the censored, goes along.
  const Table table = hazardOf(kaplanMeier({{3, 1, 0, 1}}, 1), 1, 1, 1);
  EXPECT_EQ(table.values(), (Vector{3, 1, 0, 1, 1, 1, 1, 1, 1}));
}

TEST(TransNelsonAalen, NoRowsWriteNothing) {
  for (const int r : {0, -1, std::numeric_limits<int>::min()}) {
    Table km = five();
    Table table(1, 9, 44.0);
    EXPECT_EQ(Cpp_TransNelsonAalen(km.data(), table.data(), 6, r, 0.05, 1, 1), 0);
    EXPECT_EQ(table.values(), Table(1, 9, 44.0).values());
  }
}

TEST(TransNelsonAalen, RowsPastTheKaplanMeierTableFollowItsLinearPositions) {
  const Table km = kaplanMeier({{1, 2, 1, 0}, {2, 1, 0, 1}}, 2);  // 4 rows
  const Table table = hazardOf(km, 5, 1, 1);
  EXPECT_EQ(table(3, 1), km(4, 1));
  EXPECT_EQ(table(4, 1), km(1, 2));
  EXPECT_EQ(table(4, 3), km(1, 5));
  EXPECT_EQ(table(5, 2), km(2, 7));
}

TEST(TransNelsonAalen, NonsensicalCountsNeitherHangNorWriteOutside) {
  for (const int r : {std::numeric_limits<int>::min(), -3, 0, 4, std::numeric_limits<int>::max()}) {
    matrix km(5, 12, 1), table(2, 9, 0), none(0, 0, 0);
    EXPECT_EQ(TransNelsonAalen(&km, &table, 3, r, 0.05, 1, 1), 0);
    EXPECT_EQ(TransNelsonAalen(&none, &table, -2, r, 0.05, 1, 1), 0);
    EXPECT_EQ(TransNelsonAalen(&km, &none, 3, r, 0.05, 1, 1), 0);
  }
}

TEST(TransNelsonAalen, NotANumberAndInfinityPassThrough) {
  Table km = five();
  km(4, 6) = kNan;  // at risk of row 3
  Table table = hazardOf(km, 5, 1, 1);
  EXPECT_EQ(table(2, 5), 0.25);
  for (int k = 3; k <= 5; ++k) {
    for (int column = 5; column <= 9; ++column) EXPECT_TRUE(std::isnan(table(k, column)));
  }
  km = five();
  km(3, 6) = 0;  // nobody at risk, one event
  table = hazardOf(km, 5, 1, 1);
  EXPECT_EQ(table(2, 5), kInf);
  EXPECT_EQ(table(2, 9), 0.0);
  for (const double alpha : {kNan, -1.0, 3.0}) {
    table = hazardOf(five(), 5, 2, 1, alpha);
    EXPECT_EQ(table(2, 5), 0.25);
    EXPECT_TRUE(std::isnan(table(2, 7)));
    EXPECT_TRUE(std::isnan(table(2, 8)));
  }
}

}  // namespace
