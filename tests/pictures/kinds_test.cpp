// What the other kinds of figures show, read from their SVG.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "pictures/pictures.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::kPlace, test::noteTexts, test::Page, test::pageOf;

TEST(RocPicture, AUnitIsAsLongOnBothAxes) {
  for (const auto& size : {std::pair<int, int>{0, 0}, {700, 400}, {400, 700}}) {
    Style style;
    if (size.first > 0) style.size = size;
    const Page page = pageOf(test::roc(), style);
    const test::Corners x = page.paths("x axis")[0], y = page.paths("y axis")[0];
    EXPECT_NEAR(x[1].first - x[0].first, std::abs(y[1].second - y[0].second), 2 * kPlace);
  }
}

TEST(DemingPicture, ALineIsCutAtTheFrameWhereBothItsEndsLieOutside) {
  const Page page = pageOf(test::deming(60));
  const test::Corners x = page.paths("x axis")[0], y = page.paths("y axis")[0];
  for (const char* name : {"Deming line", "identity"}) {
    // The sample in the legend has a name of its own.
    ASSERT_EQ(page.paths(name).size(), 1u) << name;
    const test::Corners line = page.paths(name)[0];
    ASSERT_EQ(line.size(), 2u);
    EXPECT_NEAR(line[0].first, x[0].first, kPlace);  // enters at the left edge
    EXPECT_NEAR(line[1].second, std::min(y[0].second, y[1].second), kPlace);  // leaves at the top
  }
}

TEST(AgreementPicture, EveryLineIsNamedAlsoWhereTwoAreEqual) {
  Figure figure = test::blandAltman(40);
  figure.panels[0].references = {{false, 0, "zero"},
                                 {false, 0, "bias 0"},
                                 {false, 0, "upper limit 0"},
                                 {false, 0, "lower limit 0"}};
  const Page page = pageOf(figure);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  for (const auto& reference : figure.panels[0].references) {
    EXPECT_NE(page.find(reference.label), nullptr) << reference.label;
  }
  EXPECT_EQ(page.paths("reference").size(), 4u);
}

TEST(AgreementPicture, ABandFromMinusToPlusInfinityReachesAcrossTheFrame) {
  const Page page = pageOf(test::blandAltman(40));
  const test::Corners x = page.paths("x axis")[0];
  const std::vector<test::Corners> bands = page.polygons("95% limits of each line, limits");
  ASSERT_EQ(bands.size(), 3u);
  for (const test::Corners& band : bands) {
    const auto [least, most] = std::minmax_element(band.begin(), band.end());
    EXPECT_NEAR(least->first, x[0].first, kPlace);
    EXPECT_NEAR(most->first, x[1].first, kPlace);
  }
}

TEST(AgreementPicture, TenThousandPointsAreAllThereAndTransparent) {
  const Page page = pageOf(test::blandAltman(10000));
  EXPECT_EQ(page.markers("points").size(), 10000u);
  EXPECT_LT(std::stod(page.stroke("points", "opacity")), 0.5);
  EXPECT_EQ(pageOf(test::blandAltman(40)).stroke("points", "opacity"), "");
}

TEST(ForestPicture, LabelsStandInTheRowOfTheirPoint) {
  const Page page = pageOf(test::forest());
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  const auto points = page.markers("points");
  const auto levels = page.markers("reference level");
  ASSERT_EQ(points.size(), 5u);
  ASSERT_EQ(levels.size(), 2u);
  const auto sameRow = [&page](const char* category, const char* label, double y) {
    ASSERT_NE(page.find(category), nullptr);
    ASSERT_NE(page.find(label), nullptr);
    EXPECT_NEAR(page.find(category)->y, y, 0.2);
    EXPECT_NEAR(page.find(label)->y, y, 0.2);
  };
  sameRow("age (by 10 years)", "1.34 (1.10 to 1.63)", points[0].second);
  sameRow("male", "1.71 (1.02 to 2.87)", points[1].second);
  sameRow("female", "1 (reference)", levels[0].second);
  ASSERT_NE(page.find("Hazard ratio (95% limits)"), nullptr);
  // The heading of the levels stands above them and further left.
  EXPECT_LT(page.find("treatment")->y, page.find("placebo")->y);
  EXPECT_LT(page.find("treatment")->left, page.find("placebo")->left - 5);
}

TEST(ForestPicture, InfiniteLimitsAreArrowsToTheFramesEdges) {
  const Page page = pageOf(test::forest());
  const test::Corners x = page.paths("x axis")[0];
  const std::vector<test::Corners> heads = page.polygons("limits, beyond the frame");
  ASSERT_EQ(heads.size(), 2u);
  EXPECT_NEAR(heads[0][0].first, x[0].first, kPlace);
  EXPECT_NEAR(heads[1][0].first, x[1].first, kPlace);
  EXPECT_EQ(noteTexts(test::forest()),
            std::vector<std::string>{"2 limits lie beyond the figure's frame and are arrows"});
}

TEST(ForestPicture, ANarrowRangeHasTicksThatDiffer) {
  Figure figure = test::forest();
  report::Series& points = figure.panels[0].series[0];
  points.x = {1.0001, 1.0002, 1.0003, 1, 1, 1, 1};
  points.left = {1, 1.0001, 1.0002, NAN, NAN, NAN, NAN};
  points.right = {1.0002, 1.0003, 1.0004, NAN, NAN, NAN, NAN};
  const Page page = pageOf(figure);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  EXPECT_GE(page.paths("x ticks").size(), 3u);
  std::set<std::string> texts;
  std::size_t ticks = 0;
  const double y = page.paths("x axis")[0][0].second;
  for (const test::Text& text : page.texts) {
    if (text.top > y && text.top < y + 14) {
      texts.insert(text.text);
      ++ticks;
    }
  }
  EXPECT_EQ(texts.size(), ticks);
  EXPECT_GE(ticks, 3u);
}

TEST(IncidencePicture, AreasAreStackedFromZero) {
  const Page page = pageOf(test::incidence());
  const auto top = [&page](const char* name) {
    double least = 1e9;
    const std::vector<test::Corners> areas = page.polygons(name);
    for (const auto& corner : areas.at(0)) least = std::min(least, corner.second);
    return least;
  };
  const test::Corners y = page.paths("y axis")[0];
  const double zero = std::max(y[0].second, y[1].second), one = std::min(y[0].second, y[1].second);
  const double share = 1 - std::exp(-3.0);
  EXPECT_NEAR((zero - top("relapse")) / (zero - one), 0.3 * share, 1e-4);
  EXPECT_NEAR((zero - top("death in remission")) / (zero - one), 0.52 * share, 1e-4);
  EXPECT_NEAR((zero - top("graft failure")) / (zero - one), 0.66 * share, 1e-4);
}

TEST(ScalesPicture, AWeibullCurveIsStraightOnCloglogAgainstLogTime) {
  const Page page = pageOf(test::scales());
  ASSERT_EQ(page.paths("distribution").size(), 4u);
  const test::Corners line = page.paths("distribution")[2];
  const auto [x0, y0] = line.front();
  const auto [x1, y1] = line.back();
  for (const auto& [x, y] : line) {
    EXPECT_NEAR(y, y0 + (x - x0) / (x1 - x0) * (y1 - y0), 3 * kPlace);
  }
}

TEST(BarsPicture, EveryBarIsAsHighAsItsCount) {
  const Page page = pageOf(test::bars());
  ASSERT_EQ(test::misplaced(page), std::vector<std::string>{});
  std::vector<double> heights;
  for (const test::Element* element : page.root->all()) {
    if (element->name != "polygon") continue;
    double least = 1e9, most = 0;
    const std::string& points = element->attributes.at("points");
    for (std::size_t at = points.find(','); at != std::string::npos;
         at = points.find(',', at + 1)) {
      const double y = std::stod(points.substr(at + 1));
      least = std::min(least, y);
      most = std::max(most, y);
    }
    heights.push_back(most - least);
  }
  ASSERT_EQ(heights.size(), 4u);
  for (const auto& [bar, count] : {std::pair{0, 12.0}, {2, 22.0}, {3, 5.0}}) {
    EXPECT_NEAR(heights[static_cast<std::size_t>(bar)] / heights[1], count / 30, 1e-3);
  }
}

}  // namespace
}  // namespace survmeth::pictures
