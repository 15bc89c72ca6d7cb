// Survival curves as figures, by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "analysis/life/describe.h"
#include "tests/analysis/life/data.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)
using Numbers = std::vector<double>;

analysis::LifeAnswer answerOf(const test::Columns& columns, analysis::LifeRequest request = {}) {
  analysis::LifeAnswer answer = test::lifeOf(columns, std::move(request));
  answer.request.time = "weeks";
  if (columns.groups > 1) answer.request.group = {"arm"};
  return answer;
}

report::Figure figureOf(const test::Columns& columns) {
  return analysis::lifeSurvivalFigure(answerOf(columns));
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

test::Columns twoGroups() {
  test::Columns columns = fiveRows();
  columns.group = {0, 0, 1, 1, 1};
  columns.groups = 2;
  return columns;
}

TEST(IncidenceFigure, IsOneLessSurvivalWithItsLimitsTurned) {
  const analysis::LifeAnswer answer = answerOf(fiveRows());
  const report::Figure figure = analysis::lifeIncidenceFigure(answer);
  const report::Series& band = figure.panels.front().series[0];
  const report::Series& step = figure.panels.front().series[1];
  EXPECT_EQ(step.y.front(), 0);
  EXPECT_DOUBLE_EQ(step.y[1], 1.0 / 5);
  EXPECT_EQ(step.y.back(), 1);
  EXPECT_DOUBLE_EQ(band.lower[1], 1 - answer.curves[0].upper[0]);
  EXPECT_DOUBLE_EQ(band.upper[1], 1 - answer.curves[0].lower[0]);
}

TEST(CumulativeHazardFigure, RisesByEventsOverAtRisk) {
  const report::Figure figure = analysis::lifeCumulativeHazardFigure(answerOf(fiveRows()));
  const report::Series& step = figure.panels.front().series[1];
  EXPECT_EQ(step.x, (Numbers{0, 2, 3, 8}));
  EXPECT_EQ(step.y[0], 0);
  EXPECT_DOUBLE_EQ(step.y[1], 1.0 / 5);
  EXPECT_DOUBLE_EQ(step.y[2], 1.0 / 5 + 1.0 / 4);
  EXPECT_DOUBLE_EQ(step.y[3], 1.0 / 5 + 1.0 / 4 + 1);
  EXPECT_FALSE(figure.panels.front().y.percent);
}

TEST(LogLogFigure, IsOverTheLogarithmOfTimeWhereSurvivalIsBetweenZeroAndOne) {
  const auto figure = analysis::lifeLogLogFigure(answerOf(twoGroups()));
  ASSERT_TRUE(figure);
  EXPECT_EQ(figure->panels.front().x.scale, report::Scale::kLog);
  // The first group falls to 1/2 and 0 at 2 and 3; nobody of the second fails before its last.
  ASSERT_EQ(figure->panels.front().series.size(), 1u);
  const report::Series& step = figure->panels.front().series.front();
  EXPECT_EQ(step.name, "a");
  EXPECT_EQ(step.x, (Numbers{2}));
  EXPECT_DOUBLE_EQ(step.y.front(), std::log(std::log(2.0)));
}

TEST(LogLogFigure, IsNoneWhereNothingIsBetweenZeroAndOne) {
  test::Columns columns;
  columns.time = {1, 4};
  columns.event = {0, 0};
  EXPECT_FALSE(analysis::lifeLogLogFigure(answerOf(columns)));
}

TEST(HazardFigure, IsThereWhereABandwidthIs) {
  analysis::LifeRequest request;
  EXPECT_FALSE(analysis::lifeHazardFigure(answerOf(fiveRows(), request)));
  request.hazard = 3;
  const auto figure = analysis::lifeHazardFigure(answerOf(fiveRows(), request));
  ASSERT_TRUE(figure);
  EXPECT_EQ(figure->panels.front().series.back().x.size(), 101u);
  EXPECT_EQ(figure->panels.front().series.back().x.back(), 8);
  // A limit may be any number of times the rate; the frame ends at twice the largest.
  const std::vector<double>& rates = figure->panels.front().series.back().y;
  const double top = 2 * *std::max_element(rates.begin(), rates.end());
  EXPECT_EQ(figure->panels.front().y.most, top);
  for (const double upper : figure->panels.front().series.front().upper) {
    EXPECT_FALSE(upper > top);
  }
}

TEST(SurvivalFigure, ABandTakesThePlaceOfTheLimits) {
  analysis::LifeRequest request;
  request.band = engine::curves::BandKind::kHallWellner;
  const analysis::LifeAnswer answer = answerOf(fiveRows(), request);
  const report::Figure figure = analysis::lifeSurvivalFigure(answer);
  EXPECT_EQ(figure.panels.front().series[0].lower[1], answer.bands[0].lower[0]);
  EXPECT_NE(figure.caption.find("Hall-Wellner 95% bands (log-log)"), std::string::npos);
}

TEST(SurvivalFigure, ItsRiskTableHasTheRowsAndTimesThatAreAskedFor) {
  analysis::LifeRequest request;
  request.riskAt = {0, 3, 5};
  request.riskRows = {"at-risk", "events", "cumulative-events", "censored"};
  const auto table = analysis::lifeSurvivalFigure(answerOf(fiveRows(), request)).riskTable;
  ASSERT_TRUE(table);
  EXPECT_EQ(table->title, "At risk");
  EXPECT_EQ(table->breaks, (Numbers{0, 3, 5}));
  EXPECT_EQ(table->rows, (std::vector<std::string>{"all", "Events", "all", "Cumulative events",
                                                   "all", "Censored", "all"}));
  EXPECT_EQ(table->counts,
            (std::vector<Numbers>{{5, 4, 2}, {}, {0, 2, 0}, {}, {0, 2, 2}, {}, {0, 1, 2}}));
}

}  // namespace
