// What figures of survival show, read from their SVG.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "pictures/pictures.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::kPlace, test::noteTexts, test::Page, test::pageOf;

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

TEST(SurvivalPicture, APanelsOwnNumbersStandUnderItsTicks) {
  for (const std::size_t panels : {1u, 2u, 3u, 6u}) {
    Figure figure = test::survival(1);
    const report::Panel panel = figure.panels[0];
    report::RiskTable& table = *figure.riskTable;
    figure.panels.clear();
    table.rows.clear();
    table.counts.clear();
    table.eachPanel = true;
    for (std::size_t g = 0; g < panels; ++g) {
      table.rows.push_back("arm <" + std::to_string(g) + "> & 'others'");
      table.counts.emplace_back();
      for (std::size_t b = 0; b < table.breaks.size(); ++b) {
        table.counts[g].push_back(static_cast<double>(901 + 10 * g + b));
      }
      figure.panels.push_back(panel);
      figure.panels.back().title = table.rows.back();
    }
    const Page page = pageOf(figure);
    EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
    EXPECT_EQ(noteTexts(figure), std::vector<std::string>{});
    const std::vector<test::Corners> ticks = page.paths("x ticks"), axes = page.paths("x axis");
    ASSERT_EQ(ticks.size(), panels * table.breaks.size());
    ASSERT_EQ(axes.size(), panels);
    for (std::size_t g = 0; g < panels; ++g) {
      const double frame = axes[g].front().second;
      const test::Text* title = page.find(table.rows[g]);
      ASSERT_NE(title, nullptr);
      EXPECT_LT(title->y, frame);
      for (std::size_t b = 0; b < table.breaks.size(); ++b) {
        const test::Text* count = page.find(std::to_string(901 + 10 * g + b));
        ASSERT_NE(count, nullptr);
        EXPECT_NEAR(count->x, ticks[g * table.breaks.size() + b][0].first, kPlace);
        EXPECT_GT(count->y, frame);
        // A row of panels below is farther than a frame's height.
        EXPECT_LT(count->y, frame + 100);
      }
    }
  }
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

}  // namespace
}  // namespace survmeth::pictures
