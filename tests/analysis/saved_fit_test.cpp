// The file of a fit: what is refused of it.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "analysis/jsonTree.h"
#include "analysis/savedFit.h"
#include "tests/analysis/coxFits.h"

namespace survmeth::analysis {
namespace {

std::string refusalOf(const std::string& text) {
  try {
    readSavedFit(text);
  } catch (const NoSavedFit& none) {
    return none.what();
  }
  return "none";
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

TEST(SavedFit, EveryChangedDigitIsFound) {
  const std::string text = lung().text;
  EXPECT_EQ(refusalOf(text), "none");
  const std::size_t from = text.find("\"fit\": ");
  std::size_t changed = 0;
  for (std::size_t i = from; i < text.size(); i += 41) {
    // The last digits of two numbers may name one double.
    if (!isDigit(text[i]) || !isDigit(text[i + 1])) continue;
    std::string other = text;
    other[i] = text[i] == '7' ? '8' : '7';
    EXPECT_NE(refusalOf(other), "none") << i;
    ++changed;
  }
  EXPECT_GT(changed, 100u);
}

TEST(SavedFit, EveryShorterTextIsRefused) {
  const std::string text = lung().text;
  for (std::size_t size = 0; size + 2 < text.size(); size += 97) {
    EXPECT_EQ(
        refusalOf(text.substr(0, size)).rfind("the file is cut off or no saved fit: line ", 0), 0u)
        << size;
  }
}

TEST(SavedFit, SpacesBetweenValuesAreNoDamage) {
  std::string text = lung().text;
  for (std::size_t at = 0; (at = text.find(",\n", at)) != std::string::npos; at += 2) {
    text.replace(at, 2, ", ");
  }
  EXPECT_EQ(refusalOf(text), "none");
}

TEST(SavedFit, OtherLayoutsAndOtherAnalysesAreNamed) {
  std::string text = lung().text;
  text.replace(text.find("survmeth-fit/1"), 14, "survmeth-fit/2");
  EXPECT_EQ(refusalOf(text),
            "the fit has the layout \"survmeth-fit/2\"; this program reads \"survmeth-fit/1\"");
  EXPECT_EQ(refusalOf("{\"schema\": \"survmeth-report/1\"}"),
            "the file is no saved fit; expected one that --save wrote");
  EXPECT_EQ(refusalOf("[1]"), "the file is no saved fit; expected one that --save wrote");
  EXPECT_EQ(refusalOf(sealed("{\"analysis\": \"life\", \"model\": {}}")),
            "the fit is of the analysis \"life\", of which this program keeps none");
}

TEST(SavedFit, AContentThatDoesNotFitTogetherIsRefused) {
  const JsonNode root = parseJson(lung().text);
  const std::string text = lung().text;
  const std::size_t from = text.find("\"fit\": ") + 7;
  const std::string fit = text.substr(from, text.rfind('}') - from);
  const auto spoilt = [&](const std::string& what, const std::string& by) {
    std::string other = fit;
    const std::size_t at = other.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return refusalOf(sealed(other.replace(at, what.size(), by)));
  };
  EXPECT_NE(
      spoilt("\"names\": [\"age\",", "\"names\": [\"rage\",").find("the model contradicts itself"),
      std::string::npos);
  EXPECT_NE(spoilt("\"variables\": [2]", "\"variables\": [3]")
                .find("a variable's number is out of range"),
            std::string::npos);
  EXPECT_NE(
      spoilt("\"firstTime\": [0,", "\"firstTime\": [5000,").find("a time's number is out of range"),
      std::string::npos);
  EXPECT_NE(spoilt("\"shift\": [", "\"shift\": [0,").find("the shifts has 2 elements; expected 1"),
            std::string::npos);
}

}  // namespace
}  // namespace survmeth::analysis
