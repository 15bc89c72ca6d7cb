// What every picture keeps to as a document, read from its SVG.
#include <gtest/gtest.h>

#include "pictures/pictures.h"
#include "report/svg.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::Page, test::pageOf;

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

}  // namespace
}  // namespace survmeth::pictures
