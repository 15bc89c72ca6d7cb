// The report as HTML, piece by piece; check_html.py reads whole pages by another parser.
#include "report/html.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "report/escape.h"
#include "report/svg.h"
#include "tests/report/sample.h"

namespace survmeth::report {
namespace {

using test::labels;
using test::numbers;
using test::reportOf;
using test::tableOf;

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Escaped, LeavesNoMarkup) {
  EXPECT_EQ(escaped("<a href=\"x\">&'"), "&lt;a href=&quot;x&quot;&gt;&amp;&#39;");
}

TEST(Escaped, LineEndsAreSpacesAndControlsAreReplaced) {
  EXPECT_EQ(escaped("a\nb\tc"), "a b c");
  EXPECT_EQ(escaped("\x1b[1m"), "\xEF\xBF\xBD[1m");
  EXPECT_EQ(escaped("\xE2\x80\xAE\xFF"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Html, NumbersHaveTypographicSigns) {
  const double infinite = std::numeric_limits<double>::infinity();
  const std::string page = toHtml(
      reportOf(tableOf({labels("name", "name", {"a"}), numbers("x", "x", Kind::kEstimate, {-1.5}),
                        numbers("lower", "lower", Kind::kEstimate, {-infinite}),
                        numbers("upper", "upper", Kind::kEstimate, {infinite}),
                        numbers("z", "z", Kind::kStatistic, {std::nan("")}),
                        numbers("p", "p", Kind::kPValue, {1e-5})})),
      {});
  EXPECT_TRUE(holds(page,
                    "<tr><th class=\"label\" scope=\"row\">a</th><td>\xE2\x88\x92"
                    "1.5</td>"
                    "<td>\xE2\x88\x92\xE2\x88\x9E</td><td>\xE2\x88\x9E</td>"
                    "<td class=\"none\">\xE2\x80\x93</td><td>&lt;0.0001</td></tr>"))
      << page;
}

TEST(Html, ALabelThatLooksLikeANumberStaysAsItIs) {
  const std::string page = toHtml(reportOf(tableOf({labels("name", "name", {"-1", "-"})})), {});
  EXPECT_TRUE(holds(page, ">-1</th>"));
  EXPECT_TRUE(holds(page, ">-</th>"));
}

TEST(Html, PartsOfATableAreHeaded) {
  EXPECT_TRUE(holds(toHtml(test::sample(), {}),
                    "<tbody>\n<tr><th class=\"label part\" scope=\"rowgroup\" colspan=\"2\">"
                    "treatment = placebo</th></tr>\n<tr><td>1</td><td>0.9048</td></tr>\n"
                    "</tbody>"));
}

TEST(Html, ATableWithoutRowsSaysSo) {
  Table table = tableOf({labels("group", "group", {})});
  table.caption = "Groups";
  EXPECT_TRUE(holds(toHtml(reportOf(table), {}),
                    "<p class=\"caption\">Groups</p>\n<p class=\"empty\">(no rows)</p>"));
}

TEST(Html, OnlyLongTablesScroll) {
  const auto page = [](std::size_t rows) {
    return toHtml(reportOf(tableOf({labels("g", "g", std::vector<std::string>(rows, "a"))})), {});
  };
  EXPECT_FALSE(holds(page(25), "class=\"scroll long\""));
  EXPECT_TRUE(holds(page(26), "class=\"scroll long\""));
}

TEST(Html, FactsForProgramsAreLeftOut) {
  const std::string page = toHtml(test::sample(), {});
  EXPECT_TRUE(holds(page,
                    "<dt>Log-likelihood</dt><dd>\xE2\x88\x92"
                    "729.489</dd>"));
  EXPECT_TRUE(holds(page, "<dt>Weighted</dt><dd>no</dd>"));
  EXPECT_FALSE(holds(page, "log-log<"));
}

TEST(Html, FiguresWithoutAPictureAreLeftOut) {
  EXPECT_FALSE(holds(toHtml(test::sample(), {}), "<figure"));
  EXPECT_FALSE(
      holds(toHtml(test::sample(), {.picture = [](const Figure&) { return ""; }}), "<figure"));
  EXPECT_TRUE(
      holds(toHtml(test::sample(), {.picture = [](const Figure&) { return "<svg><path/></svg>"; }}),
            "<svg role=\"img\" aria-label=\"Survival\"><path/></svg>"));
}

TEST(Html, OneReportHasNoContents) {
  const std::string page = toHtml(test::sample(), {});
  EXPECT_FALSE(holds(page, "<nav"));
  EXPECT_TRUE(holds(page, "<h1>Survival by treatment</h1>"));
  EXPECT_TRUE(holds(page, "<title>Survival by treatment</title>"));
}

TEST(Html, SeveralReportsHaveContentsAndIdsOfTheirOwn) {
  const Report reports[] = {test::sample(), test::sample()};
  const std::string page = toHtml(reports, {.title = "Both"});
  EXPECT_TRUE(holds(page, "<h1>Both</h1>"));
  EXPECT_TRUE(holds(page, "<li><a href=\"#report-2\">Survival by treatment</a></li>"));
  EXPECT_TRUE(holds(page, "<div class=\"table\" id=\"report-1-groups\">"));
  EXPECT_TRUE(holds(page, "<div class=\"table\" id=\"report-2-groups\">"));
}

TEST(Html, TheCallIsShown) {
  EXPECT_TRUE(holds(toHtml(test::sample(), {.call = "survmeth life 'a&b.csv'"}),
                    "<pre><code>survmeth life &#39;a&amp;b.csv&#39;</code></pre>"));
}

TEST(Embedded, LosesWhatIsOfAFileAndItsOwnTitle) {
  EXPECT_EQ(embedded("<?xml version=\"1.0\"?>\n<!DOCTYPE svg>\n<svg width='9'>\n"
                     "<title>Program</title><desc>By it</desc><g><title>6-MP</title></g>\n</svg>\n",
                     "a-", "Curves & <limits>"),
            "<svg role=\"img\" aria-label=\"Curves &amp; &lt;limits&gt;\" width='9'>"
            "<g><title>6-MP</title></g>\n</svg>");
}

TEST(Embedded, IdsAndWhatRefersToThemBeginWithThePrefix) {
  EXPECT_EQ(
      embedded("<svg><path id='p' fill=\"#ff0000\"/><use xlink:href = '#p'/><use href=\"#p\"/>"
               "<g clip-path=\"url(#p)\" style='fill:url(#p);stroke:#00f' data-id=\"p\"/></svg>",
               "a-", ""),
      "<svg role=\"img\" aria-label=\"\"><path id='a-p' fill=\"#ff0000\"/>"
      "<use xlink:href = '#a-p'/><use href=\"#a-p\"/>"
      "<g clip-path=\"url(#a-p)\" style='fill:url(#a-p);stroke:#00f' data-id=\"p\"/></svg>");
}

TEST(Embedded, TextsPassAsTheyAre) {
  EXPECT_EQ(embedded("<svg><text title='1 > 0'>id=\"p\" url(#p) &lt;</text></svg>", "a-", ""),
            "<svg role=\"img\" aria-label=\"\"><text title='1 > 0'>id=\"p\" url(#p) &lt;</text>"
            "</svg>");
}

std::string refusalOf(const std::string& svg) {
  try {
    embedded(svg, "a-", "");
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

TEST(Embedded, RefusesWhatIsNoPicture) {
  EXPECT_EQ(refusalOf("gnuplot: no such terminal"), "picture: no <svg> element");
  EXPECT_EQ(refusalOf("<svg>"), "picture: no <svg> element");
  EXPECT_EQ(refusalOf("<svgs></svgs></svg>"), "picture: no <svg> element");
  EXPECT_EQ(refusalOf("<svg><g a=\"</svg>"), "picture: a tag does not end");
}

}  // namespace
}  // namespace survmeth::report
