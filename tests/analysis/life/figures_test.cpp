// Survival curves as figures, by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "analysis/life/describe.h"
#include "tests/analysis/life/data.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)
using Numbers = std::vector<double>;

report::Figure figureOf(const test::Columns& columns) {
  analysis::LifeRequest request;
  request.time = "weeks";
  if (columns.groups > 1) request.group = {"arm"};
  return analysis::lifeSurvivalFigure(test::lifeOf(columns), request);
}

test::Columns fiveRows() {
  test::Columns columns;
  columns.time = {2, 3, 3, 5, 8};
  columns.event = {1, 1, 0, 0, 1};
  return columns;
}

TEST(SurvivalFigure, StepsDownFromOneAtTheEventsAndTicksAtTheCensorings) {
  const report::Figure figure = figureOf(fiveRows());
  const std::vector<report::Series>& series = figure.panels.front().series;
  ASSERT_EQ(series.size(), 2u);
  EXPECT_EQ(series[0].kind, report::SeriesKind::kBand);
  EXPECT_TRUE(series[0].stepped);
  const report::Series& step = series[1];
  EXPECT_EQ(step.kind, report::SeriesKind::kStep);
  EXPECT_EQ(step.x, (Numbers{0, 2, 3, 8}));
  ASSERT_EQ(step.y.size(), 4u);
  EXPECT_EQ(step.y[0], 1);
  EXPECT_DOUBLE_EQ(step.y[1], 4.0 / 5);
  EXPECT_DOUBLE_EQ(step.y[2], 3.0 / 5);
  EXPECT_EQ(step.y[3], 0);
  EXPECT_EQ(step.ticks, (Numbers{3, 5}));
  EXPECT_EQ(step.name, "");  // a curve alone needs no legend
}

TEST(SurvivalFigure, TheBandHasNoLimitsBeforeTheFirstEventAndAtZero) {
  const report::Series band = figureOf(fiveRows()).panels.front().series.front();
  EXPECT_EQ(band.x, (Numbers{0, 2, 3, 8}));
  EXPECT_TRUE(std::isnan(band.lower[0]) && std::isnan(band.upper[0]));
  EXPECT_TRUE(band.lower[1] < 0.8 && 0.8 < band.upper[1]);
  EXPECT_TRUE(std::isnan(band.lower[3]) && std::isnan(band.upper[3]));
}

TEST(SurvivalFigure, CountsThoseAtRiskJustBeforeEachBreak) {
  const report::Figure figure = figureOf(fiveRows());
  ASSERT_TRUE(figure.riskTable);
  EXPECT_EQ(figure.riskTable->breaks, (Numbers{0, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(figure.riskTable->breaks, figure.panels.front().x.ticks);
  EXPECT_EQ(figure.riskTable->counts, (std::vector<Numbers>{{5, 5, 5, 4, 2, 2, 1, 1, 1}}));
}

TEST(SurvivalFigure, WhereAllAreCensoredTheCurveRunsAtOneWithoutABand) {
  test::Columns columns;
  columns.time = {1, 4};
  columns.event = {0, 0};
  const std::vector<report::Series> series = figureOf(columns).panels.front().series;
  ASSERT_EQ(series.size(), 1u);
  EXPECT_EQ(series[0].x, (Numbers{0, 4}));
  EXPECT_EQ(series[0].y, (Numbers{1, 1}));
  EXPECT_EQ(series[0].ticks, (Numbers{1, 4}));
}

TEST(SurvivalFigure, EveryGroupHasACurveOfItsName) {
  test::Columns columns = fiveRows();
  columns.group = {0, 0, 1, 1, 1};
  columns.groups = 2;
  const report::Figure figure = figureOf(columns);
  const std::vector<report::Series>& series = figure.panels.front().series;
  EXPECT_EQ(series.front().name, "a");
  EXPECT_EQ(series.back().name, "b");
  EXPECT_EQ(figure.riskTable->rows, (std::vector<std::string>{"a", "b"}));
}

TEST(SurvivalFigure, TheTitleNamesTheGroupsAndTheTestWhereThereIsOne) {
  test::Columns columns = fiveRows();
  EXPECT_EQ(figureOf(columns).title, "Survival");
  columns.group = {0, 0, 1, 1, 1};
  columns.groups = 2;
  // Observed less expected events of the first group: 2 - 2/5 - 1/4 = 1.35; variance 2/5 3/5 +
  // 1/4 3/4 = 0.4275; chi-square 4.263158, p 0.03895.
  EXPECT_EQ(figureOf(columns).title, "Survival by arm, log-rank p = 0.0389");
  columns.event = {0, 0, 0, 0, 0};
  EXPECT_EQ(figureOf(columns).title, "Survival by arm");
}

TEST(SurvivalFigure, ManyStepsAreThinnedToWhatAPictureShows) {
  test::Columns columns;
  columns.time.resize(100000);
  std::iota(columns.time.begin(), columns.time.end(), 1.0);
  columns.event.assign(columns.time.size(), 1);
  const report::Series step = figureOf(columns).panels.front().series.back();
  EXPECT_LE(step.x.size(), 2002u);
  EXPECT_EQ(step.x.back(), 100000);
  EXPECT_EQ(step.y.back(), 0);
  for (std::size_t i = 0; i < step.x.size(); ++i) {
    // The curve falls by 1e-5 at each time, so every corner lies on this line but for the rounding
    // of a product of 1e5 factors, below 1e5 times 2.2e-16.
    EXPECT_NEAR(step.y[i], 1 - step.x[i] / 100000, 3e-11) << i;
  }
}

}  // namespace
