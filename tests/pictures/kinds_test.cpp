// What every kind of figure shows, read from its SVG.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "pictures/pictures.h"
#include "report/svg.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::Page;

// Places in an SVG are rounded to hundredths.
constexpr double kPlace = 0.011;

Page pageOf(const Figure& figure, const Style& style = {}) {
  return Page(draw(compose(figure, style, Format::kSvg)));
}

std::vector<std::string> noteTexts(const Figure& figure, const Style& style = {}) {
  std::vector<std::string> texts;
  for (const report::Note& note : compose(figure, style, Format::kSvg).notes) {
    texts.push_back(note.text);
  }
  return texts;
}

std::vector<Figure> everyKind() {
  return {test::survival(1), test::survival(3), test::survival(5),     test::survival(12),
          test::roc(),       test::deming(60),  test::blandAltman(80), test::forest(),
          test::incidence(), test::scales(),    test::bars()};
}

TEST(Pictures, TextStandsOnThePageAndNotUponOtherText) {
  for (const Figure& figure : everyKind()) {
    for (const bool grey : {false, true}) {
      Style style;
      style.grey = grey;
      style.percent = grey;
      const Page page = pageOf(figure, style);
      EXPECT_EQ(test::misplaced(page), std::vector<std::string>{}) << figure.id;
      EXPECT_GT(page.texts.size(), 5u) << figure.id;
      EXPECT_NE(page.find(figure.title), nullptr) << figure.title;
    }
  }
}

TEST(Pictures, AnSvgHasNoScriptAndRefersToNothingOutside) {
  for (const Figure& figure : everyKind()) {
    const Page page = pageOf(figure);
    for (const test::Element* element : page.root->all()) {
      EXPECT_NE(element->name, "script");
      EXPECT_NE(element->name, "style");
      for (const auto& [key, value] : element->attributes) {
        if (key == "xlink:href" || key == "href") {
          EXPECT_EQ(value[0], '#');
        }
        EXPECT_EQ(value.find("url("), std::string::npos);
        EXPECT_NE(key.substr(0, 2), "on");
      }
    }
  }
}

TEST(Pictures, IdsOfTwoFiguresInOnePageDiffer) {
  const auto idsOf = [](const std::string& id) {
    Style style;
    style.id = id;
    std::multiset<std::string> ids;
    const Page page = pageOf(test::survival(2), style);
    for (const test::Element* element : page.root->all()) {
      const auto found = element->attributes.find("id");
      if (found != element->attributes.end()) ids.insert(found->second);
    }
    for (const test::Element* element : page.root->all()) {
      const auto found = element->attributes.find("xlink:href");
      if (found == element->attributes.end()) continue;
      EXPECT_EQ(ids.count(found->second.substr(1)), 1u);
    }
    return ids;
  };
  const std::multiset<std::string> one = idsOf("one"), two = idsOf("two");
  ASSERT_GT(one.size(), 10u);
  for (const std::string& id : one) {
    EXPECT_EQ(one.count(id), 1u) << id;
    EXPECT_EQ(two.count(id), 0u) << id;
    EXPECT_EQ(id.substr(0, 4), "one-");
  }
}

TEST(Pictures, ADocumentTakesThemIn) {
  const std::string svg = draw(compose(test::forest(), Style{}, Format::kSvg));
  const Page page(report::embedded(svg, "report-", "Hazard ratios"));
  EXPECT_EQ(page.root->attributes.at("aria-label"), "Hazard ratios");
  EXPECT_EQ(page.markers("points").size(), 5u);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
}

TEST(SurvivalPicture, EveryGroupHasItsCurveItsTicksAndItsRow) {
  const Page page = pageOf(test::survival(3));
  for (const char* group : {"treatment = arm 1", "treatment = arm 2", "treatment = arm 3"}) {
    const std::string name = group;
    ASSERT_EQ(page.plots(name), 1u);
    EXPECT_EQ(page.paths(name).size(), 1u);
    // 30 rows: one corner at the first and two at each after it.
    EXPECT_EQ(page.paths(name)[0].size(), 59u);
    EXPECT_EQ(page.paths(name + ", censored").size(), 6u);
    EXPECT_EQ(page.polygons(name + ", limits").size(), 1u);
    EXPECT_EQ(page.plots("legend of " + name), 1u);
    EXPECT_EQ(page.plots("row of " + name), 1u);
  }
}

TEST(SurvivalPicture, ACensoringTickStandsOnItsCurve) {
  const Page page = pageOf(test::survival(1));
  const test::Corners curve = page.paths("treatment = arm 1")[0];
  for (const test::Corners& tick : page.paths("treatment = arm 1, censored")) {
    ASSERT_EQ(tick.size(), 2u);
    const double x = tick[0].first, y = (tick[0].second + tick[1].second) / 2;
    EXPECT_EQ(x, tick[1].first);
    double level = 0;
    for (const auto& corner : curve) {
      if (corner.first <= x) level = corner.second;
    }
    EXPECT_NEAR(y, level, kPlace);
  }
}

TEST(SurvivalPicture, NumbersAtRiskStandUnderTheirTicks) {
  const Page page = pageOf(test::survival(2));
  const std::vector<test::Corners> ticks = page.paths("x ticks");
  ASSERT_EQ(ticks.size(), 6u);
  const test::Text* name = nullptr;
  for (const test::Text& text : page.texts) {
    if (text.text == "treatment = arm 2") name = &text;  // the last one is the table's
  }
  ASSERT_NE(name, nullptr);
  std::vector<double> row;
  for (const test::Text& text : page.texts) {
    if (&text != name && std::abs(text.y - name->y) < kPlace) row.push_back(text.x);
  }
  ASSERT_EQ(row.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(row[i], ticks[i][0].first, kPlace);
}

TEST(SurvivalPicture, ARowWithoutCountsHeadsThoseBelowIt) {
  Figure figure = test::survival(1);
  figure.riskTable->rows.insert(figure.riskTable->rows.end(),
                                {"Cumulative events", "treatment = arm 1"});
  figure.riskTable->counts.insert(figure.riskTable->counts.end(), {{}, {0, 4, 9, 15, 20, 22}});
  const Page page = pageOf(figure);
  ASSERT_NE(page.find("Cumulative events"), nullptr);
  ASSERT_NE(page.find("22"), nullptr);
  EXPECT_GT(page.find("22")->y, page.find("Cumulative events")->y);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
}

TEST(SurvivalPicture, NamesOfTheTableLeaveTheFirstOfSeveralPanelsItsFrame) {
  Figure figure = test::survival(2);
  figure.panels.push_back(figure.panels[0]);
  for (std::string& name : figure.riskTable->rows) {
    name = "a very long label of a treatment that all share, " + name;
  }
  const Page page = pageOf(figure);
  const std::vector<test::Corners> axes = page.paths("x axis");
  ASSERT_EQ(axes.size(), 2u);
  const auto width = [&axes](std::size_t i) {
    return axes[i].back().first - axes[i].front().first;
  };
  // The panels are alike but for the names, which may take three tenths of one.
  EXPECT_GT(width(0), 0.5 * width(1));
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
}

TEST(SurvivalPicture, CountsWithoutRoomAreLeftOutWithANote) {
  Figure figure = test::survival(1);
  figure.riskTable->breaks.clear();
  figure.riskTable->counts = {{}};
  for (int t = 0; t <= 100; ++t) {
    figure.riskTable->breaks.push_back(t);
    figure.riskTable->counts[0].push_back(1000000 + t);
  }
  const std::vector<std::string> notes = noteTexts(figure);
  ASSERT_EQ(notes.size(), 1u);
  // Columns are 5.23 points apart, seven digits 44.5 points wide and 6 between them: 9.7 columns.
  EXPECT_EQ(notes[0],
            "the figure's table shows one in 10 of its columns: there is no room for all");
  EXPECT_EQ(test::misplaced(pageOf(figure)), std::vector<std::string>{});
}

TEST(SurvivalPicture, TwelveGroupsDifferInColourOrDashAlsoInGrey) {
  for (const bool grey : {false, true}) {
    Style style;
    style.grey = grey;
    const Page page = pageOf(test::survival(12), style);
    std::set<std::pair<std::string, std::string>> looks;
    for (int g = 1; g <= 12; ++g) {
      const std::string name = "treatment = arm " + std::to_string(g);
      looks.emplace(page.stroke(name, "stroke"), page.stroke(name, "stroke-dasharray"));
    }
    EXPECT_EQ(looks.size(), 12u);
    if (!grey) continue;
    for (const auto& [colour, dash] : looks) {
      // "rgb( 64,  64,  64)": three equal parts.
      EXPECT_EQ(colour.substr(4, 3), colour.substr(9, 3));
      EXPECT_EQ(colour.substr(4, 3), colour.substr(14, 3));
    }
  }
}

TEST(SurvivalPicture, ManyBandsAreBarsAndMoreAreLeftOutWithANote) {
  EXPECT_EQ(noteTexts(test::survival(4)), std::vector<std::string>{});
  const std::vector<std::string> five = noteTexts(test::survival(5));
  ASSERT_EQ(five.size(), 1u);
  EXPECT_EQ(five[0],
            "the figure shows the limits of its 5 groups as bars at a few places, not as bands");
  const Page page = pageOf(test::survival(5));
  EXPECT_EQ(page.polygons("treatment = arm 5, limits").size(), 0u);
  EXPECT_EQ(page.paths("treatment = arm 5, limits").size(), 15u);  // 5 bars with two ends each
  const std::vector<std::string> more = noteTexts(test::survival(13));
  ASSERT_EQ(more.size(), 2u);
  EXPECT_EQ(more[0], "the figure has 13 groups; beyond 12 their colours repeat");
  EXPECT_EQ(more[1], "the figure shows no limits: those of 13 groups would hide the curves");
}

TEST(SurvivalPicture, NamesWithACommonBeginningAreShownWhole) {
  Figure figure = test::survival(2);
  const std::string common = "a long name that both groups of this trial have in common, ending ";
  for (report::Series& series : figure.panels[0].series) {
    series.name = common + series.name.back();
  }
  figure.riskTable->rows = {common + "1", common + "2"};
  const Page page = pageOf(figure);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  EXPECT_NE(page.find(common + "1"), nullptr);
  EXPECT_NE(page.find(common + "2"), nullptr);
}

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
