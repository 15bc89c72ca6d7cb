// The comparison tests: R's survdiff, sums taken in R, and data for which no test exists.
#include <array>

#include "survival/survival.h"
#include "tests/analysis/curveData.h"

namespace survmeth {
namespace {

using test::Columns;
using test::Csv;
using test::groupsOf;
using test::near;

Comparison compare(const Columns& columns) {
  return survivalCurves({columns.data(), 0.05, CurveLimits::kLogLog}).comparison;
}

TEST(CompareCurves, LogRankIsThatOfTheReference) {
  const Csv csv(SURVMETH_REFERENCE + std::string("/logrank.csv"));
  const std::array<std::array<const char*, 4>, 3> sets = {
      {{"leukemia.csv", "weeks", "relapse", "treatment"},
       {"lung.csv", "time", "status", "sex"},
       {"veteran.csv", "time", "status", "celltype"}}};
  ASSERT_EQ(csv.rows(), sets.size());
  for (std::size_t i = 0; i < sets.size(); ++i) {
    std::vector<std::string> labels;
    const Comparison comparison =
        compare(test::fromFile(sets[i][0], sets[i][1], sets[i][2], sets[i][3], &labels));
    EXPECT_TRUE(near(comparison[CurveTest::kLogRank].chiSquare, csv.number("chisq", i), 1e-10));
    EXPECT_EQ(comparison.tests[0].degreesOfFreedom, csv.number("df", i));
  }
}

TEST(CompareCurves, RandomDataGiveTheStatisticsOfR) {
  const std::map<int, Columns> sets = test::randomData();
  const Csv csv(SURVMETH_REFERENCE + std::string("/curves_tests.csv"));
  std::size_t existing = 0;
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    SCOPED_TRACE(csv.text("id", row));
    const Comparison comparison = compare(sets.at(static_cast<int>(csv.number("id", row))));
    EXPECT_EQ(comparison.reason.empty(), !std::isnan(csv.number("logrank", row)))
        << comparison.reason;
    EXPECT_TRUE(near(comparison.tests[0].chiSquare, csv.number("logrank", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[1].chiSquare, csv.number("gehan", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[2].chiSquare, csv.number("tarone", row), 1e-10));
    if (!comparison.reason.empty()) continue;
    ++existing;
    EXPECT_EQ(comparison.tests[0].degreesOfFreedom, csv.number("df", row));
    EXPECT_TRUE(near(comparison.expected[0], csv.number("expected0", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[0].pValue, csv.number("p", row), 1e-10));
  }
  EXPECT_GT(existing, 20u);
}

// The grid as LoadKaplanTest and RunLife build it, every time of the data in it, gives the same.
TEST(CompareCurves, EqualTheEntryPointsOwnGrid) {
  std::vector<std::string> labels;
  const Columns columns = test::fromFile("veteran.csv", "time", "status", "celltype", &labels);
  const int n = static_cast<int>(columns.time.size()), k = static_cast<int>(columns.groups);
  std::vector<double> time = columns.time, status, weight(columns.time.size(), 1.0), stratum;
  std::vector<double> sizes(columns.groups, 0.0);
  for (std::size_t i = 0; i < columns.time.size(); ++i) {
    status.push_back(columns.event[i]);
    stratum.push_back(columns.group[i]);
    sizes[columns.group[i]] += 1;
  }
  int rows = n;
  double last = 0;
  ASSERT_EQ(ReorganizeData(time.data(), &rows, status.data(), weight.data(), stratum.data(),
                           sizes.data(), k, 0, &last),
            0);
  std::vector<double> grid(static_cast<std::size_t>((3 * k + 1) * n), 0.0);
  int distinct = n;
  std::vector<double> pooled = time;
  LoadKaplanTest(&distinct, n, k, pooled.data(), grid.data());
  int offset = 0;
  for (int j = 1; j <= k; ++j) {
    const int m = static_cast<int>(sizes[static_cast<std::size_t>(j - 1)]);
    std::vector<double> intervals(static_cast<std::size_t>(2 * (m + 1)));
    std::vector<double> table(static_cast<std::size_t>(12 * (m + 2)));
    double bounds = 0, total = 0;
    int written = 0;
    RunLife(n, j, &offset, 0, 0.0, distinct, k, m, 1, 0, 0, time.data(), status.data(),
            weight.data(), 0, -1, 0, 0, &bounds, intervals.data(), &total, table.data(), &written,
            grid.data());
    offset += m;
  }
  std::array<double, 12> result{};
  ComputeLifeTests(grid.data(), distinct, distinct, k, 0.05, result.data());
  const Comparison comparison = compare(columns);
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_TRUE(near(comparison.tests[t].chiSquare, result[t], 1e-13));
    EXPECT_TRUE(near(comparison.tests[t].pValue, result[6 + t], 1e-13));
  }
}

TEST(CompareCurves, ByHand) {
  // Events at 1 (first group, 4 at risk) and 2 (second group, 3 at risk).
  const Comparison comparison = compare(groupsOf({{{1, 1}, {3, 0}}, {{2, 1}, {4, 0}}}));
  // E = 1/2 + 1/3, V = 1/4 + 2/9.
  EXPECT_TRUE(near(comparison.expected[0], 5.0 / 6, 1e-15));
  EXPECT_EQ(comparison.observed[0], 1);
  EXPECT_TRUE(near(comparison.tests[0].chiSquare, (1.0 / 36) / (17.0 / 36), 1e-14));
  // U = 4 (1 - 1/2) + 3 (0 - 1/3) = 1, V = 16/4 + 9 2/9 = 6.
  EXPECT_TRUE(near(comparison.tests[1].chiSquare, 1.0 / 6, 1e-14));
  // U = 2 (1 - 1/2) - sqrt(3) / 3, V = 4/4 + 3 2/9.
  const double u = 1 - std::sqrt(3.0) / 3;
  EXPECT_TRUE(near(comparison.tests[2].chiSquare, u * u / (5.0 / 3), 1e-14));
}

TEST(CompareCurves, EqualCurvesGiveZeroNotAbsence) {
  const Comparison comparison = compare(groupsOf({{{1, 1}, {2, 0}}, {{1, 1}, {2, 0}}}));
  EXPECT_EQ(comparison.reason, "");
  EXPECT_EQ(comparison.tests[0].chiSquare, 0);
  EXPECT_EQ(comparison.tests[0].pValue, 1);
}

TEST(CompareCurves, OneGroupHasNoTest) {
  const Comparison comparison = compare(groupsOf({{{1, 1}, {2, 0}}}));
  EXPECT_EQ(comparison.reason, "there is one group");
  EXPECT_TRUE(std::isnan(comparison.tests[0].pValue));
  EXPECT_TRUE(std::isnan(comparison.tests[0].degreesOfFreedom));
}

// Everybody at risk has an event at the only time that the groups share; the entry point says
// chi-square 0, p 1.
TEST(CompareCurves, NoTestWhereTheCovarianceIsSingular) {
  for (const Columns& columns :
       {groupsOf({{{5, 1}}, {{5, 1}}}), groupsOf({{{1, 1}}, {{1, 1}}, {{1, 1}}})}) {
    const Comparison comparison = compare(columns);
    EXPECT_NE(comparison.reason.find("singular"), std::string::npos);
    for (const survmeth::Test& test : comparison.tests) {
      EXPECT_TRUE(std::isnan(test.chiSquare) && std::isnan(test.pValue));
    }
  }
  // One more survivor and there is variance.
  EXPECT_EQ(compare(groupsOf({{{5, 1}}, {{5, 1}, {9, 0}}})).reason, "");
}

TEST(CompareCurves, AGroupGoneBeforeTheFirstEventHasNoPart) {
  const Comparison with =
      compare(groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}, {7, 1}}, {{4, 1}, {6, 1}, {8, 0}}}));
  const Comparison without =
      compare(groupsOf({{{3, 1}, {5, 0}, {7, 1}}, {{4, 1}, {6, 1}, {8, 0}}}));
  EXPECT_EQ(with.included, (std::vector<bool>{false, true, true}));
  EXPECT_EQ(with.tests[0].degreesOfFreedom, 1);
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_EQ(with.tests[t].chiSquare, without.tests[t].chiSquare);
  }
}

TEST(CompareCurves, WhatHasNoTestHasNoObservedNorExpectedEvents) {
  // One group; nobody else at risk; a singular covariance.
  for (const Columns& columns :
       {groupsOf({{{1, 1}, {2, 0}}}), groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}}}),
        groupsOf({{{5, 1}}, {{5, 1}}})}) {
    const Comparison comparison = compare(columns);
    ASSERT_FALSE(comparison.reason.empty());
    ASSERT_EQ(comparison.observed.size(), columns.groups);
    for (std::size_t g = 0; g < columns.groups; ++g) {
      EXPECT_TRUE(std::isnan(comparison.observed[g]) && std::isnan(comparison.expected[g]));
    }
  }
  // A group without part in a test that exists has none of its events.
  const Comparison comparison =
      compare(groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}}, {{4, 1}, {6, 0}}}));
  EXPECT_EQ(comparison.reason, "");
  EXPECT_EQ(comparison.observed[0], 0);
  EXPECT_EQ(comparison.expected[0], 0);
}

TEST(CompareCurves, WeightsWhoseSquaresOverflowAreNamed) {
  Columns columns = groupsOf({{{1, 1}, {3, 0}}, {{2, 1}, {4, 0}}});
  columns.weight = {1e200, 1e200, 1e200, 1e200};
  EXPECT_EQ(compare(columns).reason, "the weights are too large for the sums of the tests");
}

TEST(CompareCurves, NobodyElseAtRiskMeansNoTest) {
  const Comparison comparison = compare(groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}}}));
  EXPECT_EQ(comparison.reason, "nobody is at risk at an event time outside one group");
}

TEST(CompareCurves, LessThanOneAtRiskMeansNoTest) {
  Columns columns = groupsOf({{{1, 1}, {3, 1}}, {{2, 1}, {4, 0}}});
  columns.weight = {1, 0.3, 1, 0.3};
  EXPECT_EQ(compare(columns).reason, "the weights leave less than one at risk at an event time");
}

TEST(CompareCurves, AnEarlyDifferenceWeighsMostInGehanBreslow) {
  const Comparison early = compare(groupsOf(
      {{{1, 1}, {1, 1}, {1, 1}, {9, 1}, {10, 1}}, {{5, 1}, {6, 1}, {7, 1}, {8, 1}, {11, 1}}}));
  EXPECT_GT(early[CurveTest::kGehanBreslow].chiSquare, early[CurveTest::kTaroneWare].chiSquare);
  EXPECT_GT(early[CurveTest::kTaroneWare].chiSquare, early[CurveTest::kLogRank].chiSquare);
}

}  // namespace
}  // namespace survmeth
