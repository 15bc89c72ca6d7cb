// Panels beside and under one another, and what stands at the ends of their axes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "pictures/pictures.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::kPlace, test::noteTexts, test::Page, test::pageOf;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The same curves in so many panels.
Figure panels(std::size_t count) {
  Figure figure = test::survival(2);
  figure.panels.resize(count, figure.panels[0]);
  return figure;
}

TEST(Panels, FramesOfARowStandAtOneHeightWhateverTheirTitles) {
  Figure figure = panels(2);
  figure.panels[0].title = "short";
  figure.panels[1].title = std::string(90, 'A') + " and more words that need a second line";
  const Page page = pageOf(figure);
  const std::vector<test::Corners> axes = page.paths("x axis");
  ASSERT_EQ(axes.size(), 2u);
  EXPECT_NEAR(axes[0][0].second, axes[1][0].second, kPlace);
  // A title stands over its own frame, not at the height of the longest.
  ASSERT_NE(page.find("short"), nullptr);
  double top = page.height;
  const test::Corners yAxis = page.paths("y axis")[0];
  for (const auto& [x, y] : yAxis) top = std::min(top, y);
  EXPECT_LT(top - page.find("short")->bottom, 20);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
}

TEST(Panels, TheTableStandsUnderTheLastRow) {
  const Page page = pageOf(panels(7));  // rows of three, three and one
  const std::vector<test::Corners> axes = page.paths("x axis");
  ASSERT_EQ(axes.size(), 7u);
  ASSERT_NE(page.find("At risk"), nullptr);
  EXPECT_GT(page.find("At risk")->y, axes[6][0].second);
  // Its numbers are under the ticks of the panel above it.
  const auto ticks = page.paths("x ticks");
  ASSERT_NE(page.find("At risk"), nullptr);
  double nearest = kInfinity;
  for (const test::Text& text : page.texts) {
    if (text.y < page.find("At risk")->y + 5) continue;
    for (const test::Corners& tick : ticks) {
      if (std::abs(tick[0].second - axes[6][0].second) > kPlace) continue;
      nearest = std::min(nearest, std::abs(tick[0].first - text.x));
    }
  }
  EXPECT_LT(nearest, kPlace);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
}

TEST(Panels, TheTableStaysUnderTheFirstWhereTheLastRowHasAnotherAxis) {
  Figure figure = panels(5);
  figure.panels[3].x.most = 1000;
  const Page page = pageOf(figure);
  ASSERT_NE(page.find("At risk"), nullptr);
  EXPECT_LT(page.find("At risk")->y, page.paths("x axis")[3][0].second);
}

TEST(Curves, OneThatIsASinglePointIsAMarkerWithANote) {
  Figure figure;
  figure.panels.emplace_back();
  report::Series step;
  step.name = "x";
  step.kind = report::SeriesKind::kStep;
  step.x = {3};
  step.y = {-0.5};
  figure.panels[0].series = {step};
  const Page page = pageOf(figure);
  EXPECT_EQ(page.markers("x").size(), 1u);
  EXPECT_EQ(
      noteTexts(figure),
      std::vector<std::string>{"the curve of \"x\" is one point: there is nothing to join it to"});
  // Two places are a curve.
  figure.panels[0].series[0].x = {3, 4};
  figure.panels[0].series[0].y = {-0.5, -0.5};
  EXPECT_EQ(pageOf(figure).markers("x").size(), 0u);
  EXPECT_EQ(noteTexts(figure), std::vector<std::string>{});
}

TEST(Points, InfiniteOnesAreArrowsToTheFramesEdges) {
  for (const report::Scale scale : {report::Scale::kLinear, report::Scale::kLog}) {
    Figure figure = test::scatter({1, kInfinity, 2}, {1, 2, 3});
    figure.panels[0].x.scale = scale;
    const Page page = pageOf(figure);
    EXPECT_EQ(page.markers("points").size(), 2u);
    const std::vector<test::Corners> heads = page.polygons("limits, beyond the frame");
    ASSERT_EQ(heads.size(), 1u);
    const test::Corners x = page.paths("x axis")[0];
    EXPECT_NEAR(heads[0][0].first, x[1].first, kPlace);
    EXPECT_EQ(noteTexts(figure),
              std::vector<std::string>{
                  "1 infinite value lies beyond the figure's frame and is an arrow"});
  }
  // A ratio of 0 is as far to the left on a logarithmic axis.
  Figure figure = test::scatter({0, 1, 2}, {1, 2, 3});
  figure.panels[0].x.scale = report::Scale::kLog;
  const Page page = pageOf(figure);
  ASSERT_EQ(page.polygons("limits, beyond the frame").size(), 1u);
  EXPECT_NEAR(page.polygons("limits, beyond the frame")[0][0].first,
              page.paths("x axis")[0][0].first, kPlace);
}

TEST(Ticks, WantedOnesOfLargeAndSmallNumbersReadAsMultiples) {
  for (const auto& [unit, remark] :
       {std::pair{1e9, "weeks (×10⁹)"}, std::pair{1e-9, "weeks (×10⁻⁹)"}}) {
    Figure figure = test::scatter({0, 30 * unit}, {0, 1});
    figure.panels[0].x.label = "weeks";
    figure.panels[0].x.ticks = {0, 10 * unit, 20 * unit, 30 * unit};
    const Page page = pageOf(figure);
    ASSERT_NE(page.find(remark), nullptr) << remark;
    for (const char* tick : {"0", "10", "20", "30"}) EXPECT_NE(page.find(tick), nullptr) << tick;
    EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  }
}

}  // namespace
}  // namespace survmeth::pictures
