// Values of expressions in the rows of a frame.
#include "frame/evaluate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "frame/select.h"

namespace survmeth::frame {
namespace {

constexpr double kNa = std::numeric_limits<double>::quiet_NaN();
constexpr auto kNone = Column::kMissing;
using Numbers = std::vector<double>;
using Rows = std::vector<std::uint32_t>;

Frame sample() {
  Frame data;
  data.columns.push_back(numberColumn("x", {1, -1, 0, kNa}));
  data.columns.push_back(numberColumn("yes", {1, 0, kNa, kNa}));
  data.columns.push_back(labelColumn("sex", Type::kText, {0, 1, 0, kNone}, {"f", "m"}));
  data.columns.push_back(labelColumn("stage", Type::kText, {0, 1, 2, 1}, {"1.0", "2", "x"}));
  data.rows = data.rowsRead = 4;
  return data;
}

Rows chosen(const std::string& condition, const Frame& data) {
  return rowsWhere(parseExpression(condition), data, condition).rows;
}

Numbers valuesOf(const std::string& text) {
  const Frame data = sample();
  const Values values = evaluate(parseExpression(text), data, text);
  return {values.numbers.begin(), values.numbers.end()};
}

void expectValues(const std::string& text, const Numbers& want) {
  const Numbers have = valuesOf(text);
  ASSERT_EQ(have.size(), want.size());
  for (std::size_t i = 0; i < want.size(); ++i) {
    if (std::isnan(want[i])) {
      EXPECT_TRUE(std::isnan(have[i])) << text << ", row " << i << " is " << have[i];
    } else {
      EXPECT_EQ(have[i], want[i]) << text << ", row " << i;
    }
  }
}

void expectRefused(const std::string& text, std::size_t at, const std::string& sentence) {
  try {
    valuesOf(text);
    ADD_FAILURE() << text << " is evaluated";
  } catch (const ExpressionError& error) {
    EXPECT_EQ(error.at(), at) << text;
    EXPECT_STREQ(error.what(), sentence.c_str()) << text;
  }
}

TEST(Evaluate, MissingCellsMakeMissingValues) {
  expectValues("x + 1", {2, 0, 1, kNa});
  expectValues("x > 0", {1, 0, 0, kNa});
  expectValues("x != 0", {1, 1, 0, kNa});
  expectValues("!(x > 0)", {0, 1, 1, kNa});
  expectValues("-x", {-1, 1, -0.0, kNa});
  expectValues("sex == \"f\"", {1, 0, 1, kNa});
}

// yes is TRUE, FALSE, NA, NA.
TEST(Evaluate, TheOtherSideMayDecideWhatIsMissing) {
  expectValues("(yes == 1) & FALSE", {0, 0, 0, 0});
  expectValues("FALSE & (yes == 1)", {0, 0, 0, 0});
  expectValues("(yes == 1) & TRUE", {1, 0, kNa, kNa});
  expectValues("(yes == 1) | TRUE", {1, 1, 1, 1});
  expectValues("TRUE | (yes == 1)", {1, 1, 1, 1});
  expectValues("(yes == 1) | FALSE", {1, 0, kNa, kNa});
}

TEST(Evaluate, PowersOfMissingAreAsInR) {
  expectValues("x^0", {1, 1, 1, 1});
  expectValues("1^x", {1, 1, 1, 1});
  expectValues("x^2", {1, 1, 0, kNa});
}

TEST(Evaluate, FunctionsOutsideTheirDomainAreMissing) {
  const double infinite = std::numeric_limits<double>::infinity();
  expectValues("log(x)", {0, kNa, -infinite, kNa});
  expectValues("sqrt(x)", {1, kNa, 0, kNa});
  expectValues("abs(x)", {1, 1, 0, kNa});
  expectValues("exp(x - x)", {1, 1, 1, kNa});
  expectValues("I(x * 2)", {2, -2, 0, kNa});
  expectValues("log1p(x - x) + expm1(x - x)", {0, 0, 0, kNa});
}

TEST(Evaluate, LogarithmsOfWholePowersAreExact) {
  expectValues("log10(1000 + x - x)", {3, 3, 3, kNa});
  expectValues("log2(x - x + 0.125)", {-3, -3, -3, kNa});
  expectValues("log10(x)", {0, kNa, -std::numeric_limits<double>::infinity(), kNa});
}

TEST(Evaluate, LabelsAreFoundByTheirTextOrAsNumbers) {
  expectValues("sex != \"f\"", {0, 1, 0, kNa});
  expectValues("\"m\" == sex", {0, 1, 0, kNa});
  expectValues("stage == \"1.0\"", {1, 0, 0, 0});
  expectValues("stage == 1", {1, 0, 0, 0});
  expectValues("stage == \"1\"", {1, 0, 0, 0});
  expectValues("stage %in% c(\"x\", 2)", {0, 1, 1, 1});
  expectValues("(sex) %in% \"f\"", {1, 0, 1, kNa});
  expectValues("x %in% c(1, 0)", {1, 0, 1, kNa});
}

TEST(Evaluate, AColumnByItselfIsBorrowed) {
  const Frame data = sample();
  EXPECT_EQ(evaluate(parseExpression("x"), data, "x").numbers.data(),
            data.columns[0].numbers.data());
}

TEST(Evaluate, RefusalsSayWhatWasExpected) {
  expectRefused("y + 1", 0,
                "there is no column \"y\"; expected one of \"x\", \"yes\", \"sex\", "
                "\"stage\"");
  expectRefused(
      "x + tan(x)", 4,
      "there is no function \"tan\" here; expected one of \"I\", \"log\", \"exp\", \"abs\", "
      "\"log2\", \"sqrt\", \"log10\", \"log1p\", \"expm1\"");
  expectRefused("log(x, 2)", 0, "log() has 2 arguments; expected one, without a name");
  expectRefused("log(base = 2)", 0, "log() has 1 argument; expected one, without a name");
  expectRefused("log()", 0, "log() has 0 arguments; expected one, without a name");
  expectRefused("log(sex)", 4,
                "the column \"sex\" holds labels; expected numbers, or a comparison with a label "
                "in quotes");
  expectRefused("sex + 1", 0,
                "the column \"sex\" holds labels; expected numbers, or a comparison with a label "
                "in quotes");
  expectRefused("x > 0 & sex", 8,
                "the column \"sex\" holds labels; expected numbers, or a comparison with a label "
                "in quotes");
  expectRefused("sex == \"F\"", 7, "no row of \"sex\" holds \"F\"; expected one of \"f\", \"m\"");
  expectRefused("sex %in% c(\"f\", \"w\")", 16,
                "no row of \"sex\" holds \"w\"; expected one of \"f\", \"m\"");
  expectRefused("sex == f", 7, "the column \"sex\" holds labels; expected a label in quotes");
  expectRefused("sex < \"m\"", 0, "the labels of \"sex\" have no order; expected == or != or %in%");
  expectRefused("x == \"1\"", 5, "\"1\" is a text; expected numbers");
  expectRefused("x %in% c(\"a\")", 9,
                "\"a\" is a text, the left side holds numbers; expected numbers");
  expectRefused("x %in% c(x)", 7,
                "the right side of %in% is \"c(x)\"; expected c(...) of labels in quotes or "
                "numbers");
  expectRefused("x %in% c()", 7,
                "the right side of %in% is \"c()\"; expected c(...) of labels in quotes or "
                "numbers");
  expectRefused("x:yes", 0, "\":\" does not fit here; expected arithmetic, a comparison, & or |");
  expectRefused("1 + (~x)", 5, "\"~\" does not fit here; expected an expression of columns");
}

TEST(Evaluate, ALabelThatIsNotThereIsFalseWhereThatIsSaid) {
  const Frame data = sample();
  const Values values = evaluate(parseExpression("sex == \"w\""), data, "", AbsentLabel::kFalse);
  EXPECT_EQ(values.numbers[0], 0);
  EXPECT_EQ(values.numbers[1], 0);
  EXPECT_TRUE(std::isnan(values.numbers[3]));
}

TEST(RowsWhere, AreThoseInWhichTheConditionIsTrue) {
  const Frame data = sample();
  EXPECT_EQ(chosen("x >= 0", data), (Rows{0, 2}));
  EXPECT_EQ(chosen("sex == 'f' & x == 0", data), (Rows{2}));
  EXPECT_EQ(chosen("TRUE", data), (Rows{0, 1, 2, 3}));
  EXPECT_EQ(chosen("(x > 5)", data), Rows());
}

TEST(RowsWhere, RefusesWhatIsNoCondition) {
  for (const char* text : {"x", "x + 1", "-(x > 0)", "2"}) {
    try {
      chosen(text, sample());
      ADD_FAILURE() << text;
    } catch (const ExpressionError& error) {
      EXPECT_STREQ(error.what(), "this is no condition; expected a comparison such as age > 40");
      EXPECT_EQ(error.at(), 0U);
    }
  }
}

// Rows 0 .. 3 stood in lines 2, 3, 7 and 8 of the file.
Frame fromFile() {
  Frame data = sample();
  data.fromFile = true;
  data.source = "a.csv";
  data.rowsRead = 9;
  data.lines.steps = {{0, 2}, {2, 7}};
  return data;
}

TEST(SelectRows, KeepsTheLinesOfTheFile) {
  const Frame data = fromFile();
  const Frame some = selectRows(data, chosen("x != 0", data));
  ASSERT_EQ(some.rows, 2U);
  EXPECT_EQ(some.lines.line(0), 2U);
  EXPECT_EQ(some.lines.line(1), 3U);
  const Frame others = selectRows(data, Rows{1, 3});
  EXPECT_EQ(others.lines.line(0), 3U);
  EXPECT_EQ(others.lines.line(1), 8U);
  const Frame again = selectRows(others, Rows{1});
  EXPECT_EQ(again.lines.line(0), 8U);
  EXPECT_EQ(again.source, "a.csv");
  EXPECT_EQ(again.rowsRead, 9U);
}

TEST(SelectRows, HasNoLinesWhereRowsAreDrawnInAnyOrder) {
  const Frame drawn = selectRows(fromFile(), Rows{3, 0, 0});
  EXPECT_TRUE(drawn.lines.steps.empty());
  EXPECT_EQ(Numbers(drawn.columns[1].numbers.begin() + 1, drawn.columns[1].numbers.end()),
            (Numbers{1, 1}));
  EXPECT_TRUE(drawn.columns[1].isMissing(0));
}

TEST(SelectRows, KeepsLevelsThatNoRowHoldsAnyMore) {
  const Frame some = selectRows(sample(), Rows{0, 2});
  EXPECT_EQ(some.find("sex")->levels, (std::vector<std::string>{"f", "m"}));
  EXPECT_EQ(chosen("sex == \"m\"", some), Rows());
}

TEST(SelectRows, MayTakeNone) {
  const Frame none = selectRows(fromFile(), Rows());
  EXPECT_EQ(none.rows, 0U);
  EXPECT_EQ(none.columns.size(), 4U);
}

}  // namespace
}  // namespace survmeth::frame
