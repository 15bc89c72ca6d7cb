// Labels and numbers that no figure expects, and wishes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "pictures/gnuplot.h"
#include "pictures/lettering.h"
#include "pictures/pictures.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::Page, test::pageOf;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<std::string> hostile() {
  return {"a \"quoted\" 'label'",
          "back\\slash \\n \\007 \\\\",
          "$HOME ${x} %s %d%% @macro `date` #comment",
          "{/Symbol a}_{b}^{c} ~ & &amp;",
          "two\nlines\r\nand\ta tab",
          "<script>alert(1)</script>",
          "]]> --> <!-- id='x' title=\"y\"",
          "bell \x07 escape \x1b[31m delete \x7f broken \xff\xc3",
          "emoji 😀👩‍🔬 漢字",
          "ערבית عربي مثال",
          "system('true') . '1' END",
          std::string(700, 'w'),
          "many words " + std::string(30, 'x') +
              " and more of them, again and again, until the "
              "line is certainly longer than the picture is wide, which no label should ever be"};
}

std::string withoutSpaces(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c != ' ') result += c;
  }
  return result;
}

// All text of the page, as if nothing were broken into lines.
std::string lettersOf(const Page& page) {
  std::string all;
  for (const test::Text& text : page.texts) all += withoutSpaces(text.text);
  return all;
}

TEST(Labels, HostileOnesAreShownWholeWhereverTheyStand) {
  for (const std::string& label : hostile()) {
    const std::string shown = withoutSpaces(cleaned(label));
    Figure curves = test::survival(2);
    curves.title = curves.panels[0].title = label;
    curves.panels[0].x.label = curves.panels[0].y.label = label;
    for (report::Series& series : curves.panels[0].series) {
      if (series.name.back() == '1') series.name = label;
    }
    curves.riskTable->title = curves.riskTable->rows[0] = label;
    curves.panels[0].references = {{false, 0.5, label}, {true, 50, label}};
    const Page page = pageOf(curves);
    EXPECT_EQ(test::misplaced(page), std::vector<std::string>{}) << label;
    const std::string letters = lettersOf(page);
    std::size_t count = 0;
    for (std::size_t at = letters.find(shown); at != std::string::npos;
         at = letters.find(shown, at + shown.size())) {
      ++count;
    }
    // Title, panel's title, both axes, legend, table's title and row, both references.
    EXPECT_EQ(count, 9u) << label;
    // The curve has it as its name, escaped.
    EXPECT_EQ(page.plots(cleaned(label)), 1u) << label;

    Figure forest = test::forest();
    forest.panels[0].y.categories[1] = forest.panels[0].y.categoryGroups[0] = label;
    forest.panels[0].series[0].labels[4] = label;
    forest.panels[0].series[0].labelsHeading = label;
    EXPECT_EQ(test::misplaced(pageOf(forest)), std::vector<std::string>{}) << label;
  }
}

TEST(Labels, AreBrokenAtSpacesAndNeverCut) {
  EXPECT_EQ(linesOf("one two three", 10, 45), (std::vector<std::string>{"one two", "three"}));
  EXPECT_EQ(linesOf("  one   two ", 10, 500), (std::vector<std::string>{"one two"}));
  EXPECT_EQ(linesOf("", 10, 500), std::vector<std::string>{});
  EXPECT_EQ(linesOf(" ", 10, 500), std::vector<std::string>{});
  for (const std::string& label : hostile()) {
    std::string joined;
    for (const std::string& line : linesOf(label, 10, 60)) {
      EXPECT_LE(textWidth(line, 10), 60);
      joined += withoutSpaces(line);
    }
    EXPECT_EQ(joined, withoutSpaces(cleaned(label)));
  }
}

TEST(Labels, GnuplotInterpretsNothingOfThem) {
  EXPECT_EQ(gnuplotText("a1 b"), "\"a1 b\"");
  EXPECT_EQ(gnuplotText("`$@\"'\\"), "\"\\0140\\0044\\0100\\0042\\0047\\0134\"");
  EXPECT_EQ(gnuplotText("µ"), "\"µ\"");
}

TEST(Numbers, PanelsWithoutAnyAreEmptyFrames) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const Figure& figure : {test::scatter({}, {}), test::scatter({none, none}, {none, 1}),
                               test::scatter({1}, {none})}) {
    const Page page = pageOf(figure);
    EXPECT_EQ(page.plots("points"), 0u);
    EXPECT_GE(page.paths("x ticks").size(), 2u);
    EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  }
  Figure empty;
  empty.title = "nothing";
  EXPECT_NE(pageOf(empty).find("nothing"), nullptr);
  empty.panels.resize(2);
  EXPECT_EQ(pageOf(empty).plots("x axis"), 2u);
}

TEST(Numbers, ThoseThatAreNoneAreCountedInNotes) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const Drawing drawing =
      compose(test::scatter({1, 2, none, 4, kInfinity}, {1, none, 3, 4, 5}), Style{}, Format::kSvg);
  ASSERT_EQ(drawing.notes.size(), 2u);
  EXPECT_EQ(drawing.notes[0].code, "beyondFrame");
  EXPECT_EQ(drawing.notes[0].text,
            "1 infinite value lies beyond the figure's frame and is an arrow");
  EXPECT_EQ(drawing.notes[1].code, "valuesLeftOut");
  EXPECT_EQ(drawing.notes[1].text, "2 values of a series have no place in the figure");
  EXPECT_EQ(Page(draw(drawing)).markers("points").size(), 2u);
}

TEST(Numbers, RangesOfAnySizeHaveTicksThatDiffer) {
  const std::vector<std::vector<double>> ranges = {{1e9, 1e9 + 1e-3},
                                                   {1e-300, 3e-300},
                                                   {-1.7e308, 1.7e308},
                                                   {5e-324, 1e-323},
                                                   {0, 1e-310},
                                                   {3, 3},
                                                   {0, 0},
                                                   {1e300, 1e300},
                                                   {2000, 2005},
                                                   {1e6, 1e7},
                                                   {-1e9 - 1, -1e9},
                                                   {1, 1 + 1e-15}};
  for (const std::vector<double>& range : ranges) {
    for (const auto scale : {report::Scale::kLinear, report::Scale::kLog}) {
      Figure figure = test::scatter(range, range);
      figure.panels[0].x.scale = scale;
      const Page page = pageOf(figure);
      EXPECT_EQ(test::misplaced(page), std::vector<std::string>{}) << range[0] << ' ' << range[1];
      EXPECT_GE(page.paths("x ticks").size(), 1u) << range[0] << ' ' << range[1];
      EXPECT_GE(page.paths("y ticks").size(), 2u) << range[0] << ' ' << range[1];
      std::set<std::string> texts;
      std::size_t count = 0;
      const double left = page.paths("y axis")[0][0].first;
      for (const test::Text& text : page.texts) {
        if (text.upright || std::abs(text.right - (left - 9)) > 0.02) continue;
        texts.insert(text.text);
        ++count;
      }
      EXPECT_EQ(texts.size(), count);
      EXPECT_EQ(count, page.paths("y ticks").size());
    }
  }
}

TEST(Wishes, TitleLabelsLimitsBreaksSizeAndPercentAreGranted) {
  Style style;
  style.title = "Another title";
  style.xLabel = "months";
  style.yLabel = "alive";
  style.xLimits = {0, 60};
  style.yLimits = {0.5, 1};
  style.breaks = {0, 12, 24, 36, 48, 60};
  style.size = {600, 500};
  style.percent = true;
  const Page page = pageOf(test::survival(2), style);
  EXPECT_EQ(page.width, 600);
  EXPECT_EQ(page.height, 500);
  EXPECT_EQ(test::misplaced(page), std::vector<std::string>{});
  for (const char* text : {"Another title", "months", "alive", "48", "50%", "100%"}) {
    EXPECT_NE(page.find(text), nullptr) << text;
  }
  EXPECT_EQ(page.find("0%"), nullptr);
  EXPECT_EQ(page.paths("x ticks").size(), 6u);
  // The frame takes all the height that the labels leave.
  double lowest = 0;
  for (const test::Text& text : page.texts) lowest = std::max(lowest, text.bottom);
  EXPECT_NEAR(lowest, 500 - 14, 6);
}

std::string refusalOf(const Figure& figure, const Style& style) {
  try {
    compose(figure, style, Format::kSvg);
  } catch (const Refusal& refusal) {
    return refusal.option + ": " + refusal.what();
  }
  return "granted";
}

TEST(Wishes, ThoseThatCannotBeGrantedAreRefused) {
  Style style;
  style.xLimits = {5, 5};
  EXPECT_EQ(refusalOf(test::survival(1), style), "xlim: the first limit is not below the second");
  style.xLimits = {0, 5};
  EXPECT_EQ(refusalOf(test::forest(), style),
            "xlim: the axis is logarithmic: its limits are above 0");
  style.xLimits = {0, kInfinity};
  EXPECT_EQ(refusalOf(test::survival(1), style), "xlim: the limits are finite numbers");
  style = {};
  style.yLimits = {0, 1};
  Figure probit = test::scales();
  probit.panels.erase(probit.panels.begin(), probit.panels.begin() + 3);
  EXPECT_EQ(refusalOf(probit, style),
            "ylim: the axis shows probabilities: its limits lie between 0 and 1");
  style = {};
  style.size = {100, 500};
  EXPECT_EQ(refusalOf(test::survival(1), style),
            "size: width and height lie between 120 and 10000 points");
  style.size = {600, 200};
  EXPECT_EQ(refusalOf(test::survival(12), style),
            "size: the figure's labels leave no room for its frame");
  style = {};
  style.breaks = {1, NAN};
  EXPECT_EQ(refusalOf(test::survival(1), style), "breaks: a break is not a finite number");
}

}  // namespace
}  // namespace survmeth::pictures
