// The comparison tests: R's survdiff, sums taken in R, and data for which no test exists.
#include <array>

#include "survival/survival.h"
#include "tests/analysis/life/data.h"

namespace survmeth {
namespace {

using analysis::LifeComparison;
using test::Columns;
using test::Csv;
using test::groupsOf;
using test::near;

LifeComparison compare(const Columns& columns) { return test::lifeOf(columns).comparison; }

TEST(CompareCurves, LogRankIsThatOfTheReference) {
  const Csv csv(SURVMETH_REFERENCE + std::string("/logrank.csv"));
  const std::array<std::array<const char*, 4>, 3> sets = {
      {{"leukemia.csv", "weeks", "relapse", "treatment"},
       {"lung.csv", "time", "status", "sex"},
       {"veteran.csv", "time", "status", "celltype"}}};
  ASSERT_EQ(csv.rows(), sets.size());
  for (std::size_t i = 0; i < sets.size(); ++i) {
    std::vector<std::string> labels;
    const LifeComparison comparison =
        compare(test::fromFile(sets[i][0], sets[i][1], sets[i][2], sets[i][3], &labels));
    EXPECT_TRUE(near(comparison.tests[0].test.chiSquare, csv.number("chisq", i), 1e-10));
    EXPECT_EQ(comparison.tests[0].test.degreesOfFreedom, csv.number("df", i));
  }
}

TEST(CompareCurves, RandomDataGiveTheStatisticsOfR) {
  const std::map<int, Columns> sets = test::randomData();
  const Csv csv(SURVMETH_REFERENCE + std::string("/curves_tests.csv"));
  std::size_t existing = 0;
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    SCOPED_TRACE(csv.text("id", row));
    const LifeComparison comparison = compare(sets.at(static_cast<int>(csv.number("id", row))));
    EXPECT_EQ(comparison.reason.empty(), !std::isnan(csv.number("logrank", row)))
        << comparison.reason;
    EXPECT_TRUE(near(comparison.tests[0].test.chiSquare, csv.number("logrank", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[1].test.chiSquare, csv.number("gehan", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[2].test.chiSquare, csv.number("tarone", row), 1e-10));
    if (!comparison.reason.empty()) continue;
    ++existing;
    EXPECT_EQ(comparison.tests[0].test.degreesOfFreedom, csv.number("df", row));
    EXPECT_TRUE(near(comparison.expected[0], csv.number("expected0", row), 1e-10));
    EXPECT_TRUE(near(comparison.tests[0].test.pValue, csv.number("p", row), 1e-10));
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
  const LifeComparison comparison = compare(columns);
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_TRUE(near(comparison.tests[t].test.chiSquare, result[t], 1e-13));
    EXPECT_TRUE(near(comparison.tests[t].test.pValue, result[6 + t], 1e-13));
  }
}

TEST(CompareCurves, ByHand) {
  // Events at 1 (first group, 4 at risk) and 2 (second group, 3 at risk).
  const LifeComparison comparison = compare(groupsOf({{{1, 1}, {3, 0}}, {{2, 1}, {4, 0}}}));
  // E = 1/2 + 1/3, V = 1/4 + 2/9.
  EXPECT_TRUE(near(comparison.expected[0], 5.0 / 6, 1e-15));
  EXPECT_EQ(comparison.observed[0], 1);
  EXPECT_TRUE(near(comparison.tests[0].test.chiSquare, (1.0 / 36) / (17.0 / 36), 1e-14));
  // U = 4 (1 - 1/2) + 3 (0 - 1/3) = 1, V = 16/4 + 9 2/9 = 6.
  EXPECT_TRUE(near(comparison.tests[1].test.chiSquare, 1.0 / 6, 1e-14));
  // U = 2 (1 - 1/2) - sqrt(3) / 3, V = 4/4 + 3 2/9.
  const double u = 1 - std::sqrt(3.0) / 3;
  EXPECT_TRUE(near(comparison.tests[2].test.chiSquare, u * u / (5.0 / 3), 1e-14));
}

TEST(CompareCurves, EqualCurvesGiveZeroNotAbsence) {
  const LifeComparison comparison = compare(groupsOf({{{1, 1}, {2, 0}}, {{1, 1}, {2, 0}}}));
  EXPECT_EQ(comparison.reason, "");
  EXPECT_EQ(comparison.tests[0].test.chiSquare, 0);
  EXPECT_EQ(comparison.tests[0].test.pValue, 1);
}

TEST(CompareCurves, OneGroupHasNoTest) {
  const LifeComparison comparison = compare(groupsOf({{{1, 1}, {2, 0}}}));
  EXPECT_EQ(comparison.reason, "there is one group");
  EXPECT_TRUE(std::isnan(comparison.tests[0].test.pValue));
  EXPECT_TRUE(std::isnan(comparison.tests[0].test.degreesOfFreedom));
}

// Everybody at risk has an event at the only time that the groups share; the entry point says
// chi-square 0, p 1.
TEST(CompareCurves, NoTestWhereTheCovarianceIsSingular) {
  for (const Columns& columns :
       {groupsOf({{{5, 1}}, {{5, 1}}}), groupsOf({{{1, 1}}, {{1, 1}}, {{1, 1}}})}) {
    const LifeComparison comparison = compare(columns);
    EXPECT_NE(comparison.reason.find("singular"), std::string::npos);
    for (const analysis::LifeTest& each : comparison.tests) {
      EXPECT_TRUE(std::isnan(each.test.chiSquare) && std::isnan(each.test.pValue));
    }
  }
  // One more survivor and there is variance.
  EXPECT_EQ(compare(groupsOf({{{5, 1}}, {{5, 1}, {9, 0}}})).reason, "");
}

TEST(CompareCurves, AGroupGoneBeforeTheFirstEventHasNoPart) {
  const LifeComparison with =
      compare(groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}, {7, 1}}, {{4, 1}, {6, 1}, {8, 0}}}));
  const LifeComparison without =
      compare(groupsOf({{{3, 1}, {5, 0}, {7, 1}}, {{4, 1}, {6, 1}, {8, 0}}}));
  EXPECT_EQ(with.included, (std::vector<bool>{false, true, true}));
  EXPECT_EQ(with.tests[0].test.degreesOfFreedom, 1);
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_EQ(with.tests[t].test.chiSquare, without.tests[t].test.chiSquare);
  }
}

TEST(CompareCurves, WhatHasNoTestHasNoObservedNorExpectedEvents) {
  // One group; nobody else at risk; a singular covariance.
  for (const Columns& columns :
       {groupsOf({{{1, 1}, {2, 0}}}), groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}}}),
        groupsOf({{{5, 1}}, {{5, 1}}})}) {
    const LifeComparison comparison = compare(columns);
    ASSERT_FALSE(comparison.reason.empty());
    ASSERT_EQ(comparison.observed.size(), columns.groups);
    for (std::size_t g = 0; g < columns.groups; ++g) {
      EXPECT_TRUE(std::isnan(comparison.observed[g]) && std::isnan(comparison.expected[g]));
    }
  }
  // A group without part in a test that exists has none of its events.
  const LifeComparison comparison =
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
  const LifeComparison comparison = compare(groupsOf({{{1, 0}, {2, 0}}, {{3, 1}, {5, 0}}}));
  EXPECT_EQ(comparison.reason, "nobody is at risk at an event time outside one group");
}

TEST(CompareCurves, LessThanOneAtRiskMeansNoTest) {
  Columns columns = groupsOf({{{1, 1}, {3, 1}}, {{2, 1}, {4, 0}}});
  columns.weight = {1, 0.3, 1, 0.3};
  EXPECT_EQ(compare(columns).reason, "the weights leave less than one at risk at an event time");
}

TEST(CompareCurves, AnEarlyDifferenceWeighsMostInGehanBreslow) {
  const LifeComparison early = compare(groupsOf(
      {{{1, 1}, {1, 1}, {1, 1}, {9, 1}, {10, 1}}, {{5, 1}, {6, 1}, {7, 1}, {8, 1}, {11, 1}}}));
  EXPECT_GT(early.tests[1].test.chiSquare, early.tests[2].test.chiSquare);
  EXPECT_GT(early.tests[2].test.chiSquare, early.tests[0].test.chiSquare);
}

TEST(CompareCurves, ManyGroupsGiveTheStatisticsOfR) {
  const std::map<int, Columns> sets = test::randomData("many_groups_data.csv");
  const Csv csv(SURVMETH_REFERENCE + std::string("/many_groups_tests.csv"));
  ASSERT_EQ(csv.rows(), 4u);
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    SCOPED_TRACE(csv.text("id", row));
    const LifeComparison comparison = compare(sets.at(static_cast<int>(csv.number("id", row))));
    EXPECT_EQ(comparison.reason, "");
    EXPECT_EQ(comparison.tests[0].test.degreesOfFreedom, csv.number("df", row));
    // R's own two ways of the log-rank test differ by 1e-14; both solve with the matrix.
    EXPECT_TRUE(near(comparison.tests[0].test.chiSquare, csv.number("logrank", row), 1e-12));
    EXPECT_TRUE(near(comparison.tests[1].test.chiSquare, csv.number("gehan", row), 1e-12));
    EXPECT_TRUE(near(comparison.tests[2].test.chiSquare, csv.number("tarone", row), 1e-12));
    EXPECT_TRUE(near(comparison.expected[0], csv.number("expected0", row), 1e-12));
    // The p-value magnifies an error of the statistic by about half of the statistic.
    EXPECT_NEAR(comparison.tests[0].test.pValue / csv.number("p", row), 1, 1e-10);
  }
}

TEST(CompareCurves, GroupsAreComparedWhereEventTimesThatSomeOutliveLinkThem) {
  const auto linked = [](const std::vector<std::vector<std::pair<double, int>>>& rows) {
    return compare(groupsOf(rows)).reason.empty();
  };
  EXPECT_FALSE(linked({{{5, 1}}, {{5, 1}}}));
  EXPECT_FALSE(linked({{{1, 1}}, {{1, 1}}, {{1, 1}}}));
  EXPECT_TRUE(linked({{{5, 1}}, {{5, 1}, {9, 0}}}));
  EXPECT_TRUE(linked({{{1, 1}}, {{1, 1}}, {{1, 1}, {2, 1}}}));
  EXPECT_TRUE(linked({{{1, 1}, {4, 1}}, {{2, 1}}, {{3, 1}}}));
}

// Groups of one row each: the first half events at 1, 2, ..., the others censored later.
Columns oneRowEach(std::size_t count) {
  Columns columns;
  columns.groups = count;
  for (std::size_t g = 0; g < count; ++g) {
    columns.time.push_back(static_cast<double>(g + 1));
    columns.event.push_back(g < count / 2 ? 1 : 0);
    columns.group.push_back(static_cast<std::uint32_t>(g));
  }
  return columns;
}

TEST(CompareCurves, SixteenGroupsGiveTheEntryPointsStatistics) {
  // Groups 1 to 8 have their event at times 1 to 8, when 16, 15, ... are at risk, one of each
  // group that is left.
  std::vector<double> grid;
  for (std::size_t i = 0; i < 8; ++i) {
    grid.push_back(static_cast<double>(i + 1));
    for (std::size_t j = 0; j < 16; ++j) {
      grid.insert(grid.end(), {j >= i ? 1.0 : 0.0, j == i ? 1.0 : 0.0, 0.0});
    }
  }
  std::array<double, 12> result{};
  ComputeLifeTests(grid.data(), 8, 8, 16, 0.05, result.data());
  const LifeComparison comparison = compare(oneRowEach(16));
  for (std::size_t t = 0; t < 3; ++t) {
    // Two eliminations of a 15 x 15 matrix.
    EXPECT_TRUE(near(comparison.tests[t].test.chiSquare, result[t], 1e-12));
    EXPECT_TRUE(near(comparison.tests[t].test.pValue, result[6 + t], 1e-11));
  }
}

TEST(CompareCurves, TooManyGroupsForTheirMatrixHaveNoTest) {
  const LifeComparison comparison = compare(oneRowEach(20000));
  EXPECT_EQ(comparison.reason, "there are too many groups for their covariance matrix");
  EXPECT_TRUE(std::isnan(comparison.tests[0].test.pValue) &&
              std::isnan(comparison.tests[0].test.degreesOfFreedom));
  EXPECT_TRUE(std::isnan(comparison.observed[0]) && std::isnan(comparison.expected[0]));
}

}  // namespace
}  // namespace survmeth
