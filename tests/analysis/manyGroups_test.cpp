// Many groups: R's tests, the sums of few groups, and what is held.
#include "analysis/manyGroups.h"

#include "survival/survival.h"
#include "tests/analysis/curveData.h"

namespace survmeth {
namespace {

using test::Columns;
using test::Csv;
using test::near;

constexpr CurveTest kTests[] = {CurveTest::kLogRank, CurveTest::kGehanBreslow,
                                CurveTest::kTaroneWare};

// The curves that take part, and the times at which anybody has an event.
struct Pooled {
  explicit Pooled(const Columns& columns)
      : result(survivalCurves({columns.data(), 0.05, CurveLimits::kLogLog})) {
    for (const SurvivalCurve& curve : result.curves) {
      rows += curve.time.size();
      for (std::size_t i = 0; i < curve.time.size(); ++i) {
        if (curve.eventsAt[i] > 0) times.push_back(curve.time[i]);
      }
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    for (std::size_t g = 0; g < result.curves.size(); ++g) {
      if (result.comparison.included[g]) curves.push_back(&result.curves[g]);
    }
  }

  CurveResult result;
  std::vector<const SurvivalCurve*> curves;
  std::vector<double> times;
  std::size_t rows = 0;
};

// `count` groups of one row each: the first half events at 1, 2, ..., the others censored later.
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

TEST(ManyGroups, GiveTheStatisticsOfR) {
  const std::map<int, Columns> sets = test::randomData("many_groups_data.csv");
  const Csv csv(SURVMETH_REFERENCE + std::string("/many_groups_tests.csv"));
  ASSERT_EQ(csv.rows(), 4u);
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    SCOPED_TRACE(csv.text("id", row));
    const Columns& columns = sets.at(static_cast<int>(csv.number("id", row)));
    const Comparison comparison =
        survivalCurves({columns.data(), 0.05, CurveLimits::kLogLog}).comparison;
    EXPECT_EQ(comparison.reason, "");
    EXPECT_EQ(comparison.tests[0].degreesOfFreedom, csv.number("df", row));
    // R's own two ways of the log-rank test differ by 1e-14; both solve with the matrix.
    EXPECT_TRUE(near(comparison.tests[0].chiSquare, csv.number("logrank", row), 1e-12));
    EXPECT_TRUE(near(comparison.tests[1].chiSquare, csv.number("gehan", row), 1e-12));
    EXPECT_TRUE(near(comparison.tests[2].chiSquare, csv.number("tarone", row), 1e-12));
    EXPECT_TRUE(near(comparison.expected[0], csv.number("expected0", row), 1e-12));
    // The p-value magnifies an error of the statistic by about half of the statistic.
    EXPECT_NEAR(comparison.tests[0].pValue / csv.number("p", row), 1, 1e-10);
  }
}

TEST(ManyGroups, AreByHandForTwo) {
  // Events at 1 (first group, 4 at risk) and 2 (second group, 3 at risk): E = 1/2 + 1/3,
  // V = 1/4 + 2/9.
  const Pooled pooled(test::groupsOf({{{1, 1}, {3, 0}}, {{2, 1}, {4, 0}}}));
  const ManyGroups many(pooled.curves, pooled.times);
  EXPECT_TRUE(near(many.expected()[0], 5.0 / 6, 1e-15));
  EXPECT_EQ(many.observed()[0], 1);
  EXPECT_TRUE(near(many.chiSquare(CurveTest::kLogRank), (1.0 / 36) / (17.0 / 36), 1e-14));
  EXPECT_TRUE(near(many.chiSquare(CurveTest::kGehanBreslow), 1.0 / 6, 1e-14));
  const double u = 1 - std::sqrt(3.0) / 3;
  EXPECT_TRUE(near(many.chiSquare(CurveTest::kTaroneWare), u * u / (5.0 / 3), 1e-14));
}

// Numbers, and whether they exist, are those of the grid that few groups go through.
TEST(ManyGroups, GiveFewGroupsTheSame) {
  std::size_t existing = 0;
  for (const auto& [id, columns] : test::randomData()) {
    SCOPED_TRACE(id);
    const Pooled pooled(columns);
    if (pooled.curves.size() < 2) continue;
    const ManyGroups many(pooled.curves, pooled.times);
    const Comparison& comparison = pooled.result.comparison;
    EXPECT_EQ(many.linked(), comparison.reason.empty()) << comparison.reason;
    EXPECT_FALSE(many.fractionalRisk());
    if (!comparison.reason.empty()) continue;
    ++existing;
    for (std::size_t g = 0, j = 0; g < comparison.included.size(); ++g) {
      if (!comparison.included[g]) continue;
      EXPECT_EQ(many.observed()[j], comparison.observed[g]);
      EXPECT_TRUE(near(many.expected()[j], comparison.expected[g], 1e-13));
      ++j;
    }
    for (std::size_t t = 0; t < 3; ++t) {
      EXPECT_TRUE(near(many.chiSquare(kTests[t]), comparison.tests[t].chiSquare, 1e-12));
    }
  }
  EXPECT_GT(existing, 20u);
}

TEST(ManyGroups, AreLinkedWhenAllOutliveAnEventTimeTogether) {
  const auto linked = [](const std::vector<std::vector<std::pair<double, int>>>& rows) {
    const Pooled pooled(test::groupsOf(rows));
    const bool result = ManyGroups(pooled.curves, pooled.times).linked();
    EXPECT_EQ(result, pooled.result.comparison.reason.empty());
    return result;
  };
  EXPECT_FALSE(linked({{{5, 1}}, {{5, 1}}}));
  EXPECT_FALSE(linked({{{1, 1}}, {{1, 1}}, {{1, 1}}}));
  EXPECT_TRUE(linked({{{5, 1}}, {{5, 1}, {9, 0}}}));
  EXPECT_TRUE(linked({{{1, 1}}, {{1, 1}}, {{1, 1}, {2, 1}}}));
  EXPECT_TRUE(linked({{{1, 1}, {4, 1}}, {{2, 1}}, {{3, 1}}}));
}

// The entry point takes K^2 steps at each event time: it is asked about few groups only.
TEST(ManyGroups, AreThoseAboveSixteen) {
  const Pooled pooled(oneRowEach(17));
  const ManyGroups many(pooled.curves, pooled.times);
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_EQ(pooled.result.comparison.tests[t].chiSquare, many.chiSquare(kTests[t]));
  }
  EXPECT_EQ(pooled.result.comparison.expected, many.expected());

  // Groups 1 to 8 have their event at times 1 to 8, when 16, 15, ... are at risk, one of each
  // group that is left.
  const Pooled few(oneRowEach(16));
  std::vector<double> grid;
  for (std::size_t i = 0; i < 8; ++i) {
    grid.push_back(few.times[i]);
    for (std::size_t j = 0; j < 16; ++j) {
      grid.insert(grid.end(), {j >= i ? 1.0 : 0.0, j == i ? 1.0 : 0.0, 0.0});
    }
  }
  std::array<double, 12> result{};
  ComputeLifeTests(grid.data(), 8, 8, 16, 0.05, result.data());
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_EQ(few.result.comparison.tests[t].chiSquare, result[t]);
    EXPECT_EQ(few.result.comparison.tests[t].pValue, result[6 + t]);
  }
}

// 3,000 groups and 6,000 event times: a table of both would have 18,000,000 cells.
TEST(ManyGroups, HoldNoTableOfGroupsByTimes) {
  const std::size_t groups = 3000;
  Columns columns;
  columns.groups = groups;
  for (std::size_t i = 0; i < 3 * groups; ++i) {
    columns.time.push_back(static_cast<double>(i + 1));
    columns.event.push_back(i % 3 == 1 ? 0 : 1);
    columns.group.push_back(static_cast<std::uint32_t>(i % groups));
  }
  std::vector<SurvivalCurve> curves(groups);
  std::vector<const SurvivalCurve*> pointers;
  std::vector<double> times;
  for (std::size_t i = 0; i < columns.time.size(); ++i) {
    SurvivalCurve& curve = curves[columns.group[i]];
    curve.time.push_back(columns.time[i]);
    curve.eventsAt.push_back(columns.event[i]);
    curve.censoredAt.push_back(1 - columns.event[i]);
    curve.events += columns.event[i];
    if (columns.event[i] != 0) times.push_back(columns.time[i]);
  }
  for (const SurvivalCurve& curve : curves) pointers.push_back(&curve);
  const ManyGroups many(pointers, times);
  EXPECT_EQ(times.size(), 2 * groups);
  EXPECT_LE(many.elements(), 5 * columns.time.size() + 3 * groups + 1);
  // What is expected adds up to what is observed, all 6,000 events; 9,000 roundings of 1e-16.
  double expected = 0;
  for (const double each : many.expected()) expected += each;
  EXPECT_NEAR(expected / 6000, 1, 1e-12);
}

TEST(ManyGroups, HaveNoTestWhereTheirMatrixIsTooLarge) {
  const Pooled pooled(oneRowEach(20000));
  const Comparison& comparison = pooled.result.comparison;
  EXPECT_NE(comparison.reason.find("too many groups for their covariance matrix"),
            std::string::npos);
  EXPECT_TRUE(std::isnan(comparison.tests[0].pValue) &&
              std::isnan(comparison.tests[0].degreesOfFreedom));
  EXPECT_TRUE(std::isnan(comparison.observed[0]) && std::isnan(comparison.expected[0]));
  // The first group is at risk at the first event time only, with 19,999 others.
  const ManyGroups many(pooled.curves, pooled.times);
  EXPECT_FALSE(many.fits());
  EXPECT_EQ(many.observed()[0], 1);
  EXPECT_EQ(many.expected()[0], 1.0 / 20000);
}

TEST(ManyGroups, HaveNoTestWhereTheCovarianceIsSingular) {
  // Everybody has an event at the only time.
  Columns columns = oneRowEach(18);
  columns.time.assign(18, 5);
  columns.event.assign(18, 1);
  EXPECT_NE(Pooled(columns).result.comparison.reason.find("singular"), std::string::npos);
  // One who survives it, and there is variance.
  columns.time.assign(18, 1);
  columns.time.back() = 2;
  EXPECT_EQ(Pooled(columns).result.comparison.reason, "");
}

TEST(ManyGroups, HaveNoTestWhereLessThanOneIsAtRisk) {
  Columns columns = oneRowEach(18);
  columns.time = std::vector<double>(18, 1);
  columns.time[0] = columns.time[1] = 2;
  columns.time[2] = 3;
  columns.event.assign(18, 1);
  columns.weight.assign(18, 1.0);
  columns.weight[0] = columns.weight[1] = columns.weight[2] = 0.25;
  EXPECT_NE(Pooled(columns).result.comparison.reason.find("less than one"), std::string::npos);
}

}  // namespace
}  // namespace survmeth
