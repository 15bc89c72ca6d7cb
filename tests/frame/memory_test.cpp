// Columns from memory: what becomes of them is what a file of the same cells gives, and what cannot
// be taken is refused with column, row, cell and what was expected.
#include "frame/memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace survmeth::frame {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
using Strings = std::vector<std::string>;
using Codes = std::vector<std::uint32_t>;

Codes codesOf(const Column& column) { return {column.codes.begin(), column.codes.end()}; }
std::vector<double> numbersIn(const Column& column) {
  return {column.numbers.begin(), column.numbers.end()};
}

// Four rows: x with a missing cell, a text, a factor with a level that no row holds.
Given fourRows() {
  return {"trial",
          {"x", "arm", "stage"},
          {numberColumn("x", {3, 1, kNaN, 2}),
           labelColumn("arm", Type::kText, {1, 0, 1, 1}, {"placebo", "drug"}),
           labelColumn("stage", Type::kFactor, {2, 0, 2, 2}, {"late", "middle", "early"})},
          4};
}

Unsuitable refusalOf(const Given& given, const Wanted& wanted, const Strings& missing = {}) {
  try {
    frameOf(given, {wanted}, missing);
  } catch (const Unsuitable& refused) {
    return refused;
  }
  ADD_FAILURE() << "not refused";
  return {"", "", 0, "", ""};
}

TEST(Memory, RowsWithAMissingWantedCellAreLeftOutAndKnowWhereTheyStood) {
  const Frame data = frameOf(fourRows(), {{.name = "x"}, {.name = "arm", .cells = Cells::kText}});
  EXPECT_EQ(data.source, "trial");
  EXPECT_FALSE(data.fromFile);
  EXPECT_EQ(data.rowsRead, 4u);
  EXPECT_EQ(data.rows, 3u);
  EXPECT_EQ(numbersIn(data.columns[0]), (std::vector<double>{3, 1, 2}));
  EXPECT_EQ(data.columns[0].missing, 1u);
  EXPECT_EQ(data.columns[1].levels, (Strings{"drug", "placebo"}));
  EXPECT_EQ(codesOf(data.columns[1]), (Codes{0, 1, 0}));
  EXPECT_EQ(data.lines.line(1), 2u);
  EXPECT_EQ(data.lines.line(2), 4u);
}

TEST(Memory, NumbersAreBorrowedWhereNoRowIsLeftOut) {
  const Given given{"d", {"x"}, {numberColumn("x", {1, 2})}, 2};
  const Frame data = frameOf(given, {{.name = "x"}});
  EXPECT_EQ(data.columns[0].numbers.data(), given.columns[0].numbers.data());
}

TEST(Memory, AMissingCellThatMayBeMissingKeepsItsRow) {
  const Frame data = frameOf(fourRows(), {{.name = "x", .mayBeMissing = true}});
  EXPECT_EQ(data.rows, 4u);
  EXPECT_EQ(data.columns[0].missing, 0u);
}

TEST(Memory, AFactorKeepsTheOrderOfTheLevelsThatRowsHold) {
  const Frame data = frameOf(fourRows(), {{.name = "stage", .cells = Cells::kText}});
  EXPECT_EQ(data.columns[0].type, Type::kFactor);
  EXPECT_EQ(data.columns[0].levels, (Strings{"late", "early"}));
  EXPECT_EQ(codesOf(data.columns[0]), (Codes{1, 0, 1, 1}));
}

TEST(Memory, NumbersBecomeLabelsWhereLabelsAreWanted) {
  const Given given{"d", {"x"}, {numberColumn("x", {1, 0, kNaN, 1, -0.0, 0.1})}, 6};
  const Column column = frameOf(given, {{.name = "x", .cells = Cells::kText}}).columns[0];
  EXPECT_EQ(column.type, Type::kText);
  EXPECT_EQ(column.levels, (Strings{"1", "0", "0.1"}));
  EXPECT_EQ(codesOf(column), (Codes{0, 1, 0, 1, 2}));
}

TEST(Memory, EitherTakesTextAsLabelsAlsoWhereItSpellsNumbers) {
  const Given given{"d", {"x"}, {labelColumn("x", Type::kText, {0, 1}, {"1", "2"})}, 2};
  EXPECT_EQ(frameOf(given, {{.name = "x", .cells = Cells::kEither}}).columns[0].type, Type::kText);
}

TEST(Memory, TextThatSpellsNumbersIsReadWhereNumbersAreWanted) {
  const Given given{
      "d", {"x"}, {labelColumn("x", Type::kText, {0, 1, 0, 2}, {"1.5", "-2", ""})}, 4};
  EXPECT_EQ(numbersIn(frameOf(given, {{.name = "x"}}).columns[0]),
            (std::vector<double>{1.5, -2, 1.5}));
}

TEST(Memory, WordsForMissingAreLabelsAndNumbers) {
  Given given{
      "d",
      {"x", "y"},
      {numberColumn("x", {-9, 1, 2}), labelColumn("y", Type::kText, {0, 1, 0}, {"a", "unknown"})},
      3};
  const Frame data =
      frameOf(given, {{.name = "x"}, {.name = "y", .cells = Cells::kText}}, {"Unknown", "-9.0"});
  EXPECT_EQ(data.rows, 1u);
  EXPECT_EQ(data.lines.line(0), 3u);
}

TEST(Memory, ALabelThatIsNamedIsNotMissing) {
  const Given given{"d", {"x"}, {labelColumn("x", Type::kText, {0, 1}, {"NA", "a"})}, 2};
  const Wanted named{.name = "x", .cells = Cells::kText, .named = {"NA"}};
  EXPECT_EQ(frameOf(given, {named}, {"NA"}).rows, 2u);
}

TEST(Memory, NoSuchColumnIsRefusedWithTheNearest) {
  const Unsuitable refused = refusalOf(fourRows(), {.name = "arms"});
  EXPECT_STREQ(refused.what(),
               "trial, column \"arms\": there is no such column; expected one of \"arm\", \"x\", "
               "\"stage\"");
  EXPECT_EQ(refused.row(), Unsuitable::kNone);
}

TEST(Memory, CellsThatAreNoNumbersAreRefusedWithTheFirst) {
  const Unsuitable refused = refusalOf(fourRows(), {.name = "arm", .least = 0});
  EXPECT_STREQ(refused.what(),
               "trial, row 1, column \"arm\": 4 cells are not numbers, the first is \"drug\"; "
               "expected numbers not below 0");
  EXPECT_EQ(refused.column(), "arm");
  EXPECT_EQ(refused.row(), 0u);
}

TEST(Memory, CategoriesAreNoNumbers) {
  EXPECT_STREQ(refusalOf(fourRows(), {.name = "stage"}).what(),
               "trial, column \"stage\": the column holds categories; expected numbers");
}

TEST(Memory, NumbersOutOfRangeAreRefused) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Given given{"d", {"x"}, {numberColumn("x", {1, -2, kNaN, infinity})}, 4};
  EXPECT_STREQ(refusalOf(given, {.name = "x", .least = 0}).what(),
               "d, row 2, column \"x\": 2 cells are out of range, the first is \"-2\"; expected "
               "numbers not below 0");
  EXPECT_STREQ(refusalOf(given, {.name = "x"}).what(),
               "d, row 4, column \"x\": \"inf\" is out of range; expected numbers");
}

TEST(Memory, DatesOutOfRangeAreNamedAsDates) {
  Column dates = numberColumn("x", {1, -1});
  dates.isDate = true;
  const Given given{"d", {"x", "y"}, {dates, numberColumn("y", {1, 1})}, 2};
  const char* words =
      "d, row 2, column \"x\": \"1969-12-31\" is out of range; expected numbers not below 0";
  EXPECT_STREQ(refusalOf(given, {.name = "x", .least = 0}).what(), words);
  try {
    frameOf(given, {{.name = "x", .least = 0}}, {}, "y == 1");
    ADD_FAILURE() << "not refused";
  } catch (const Unsuitable& refused) {
    EXPECT_STREQ(refused.what(), words);
  }
}

TEST(Memory, AConditionChoosesRowsAsItDoesInAFile) {
  const Frame data = frameOf(fourRows(), {{.name = "x"}, {.name = "arm", .cells = Cells::kText}},
                             {}, "stage == 'early'");
  EXPECT_FALSE(data.fromFile);
  EXPECT_EQ(data.rowsRead, 4u);
  EXPECT_EQ(data.rowsUnchosen, 1u);
  EXPECT_EQ(numbersIn(data.columns[0]), (std::vector<double>{3, 2}));
  EXPECT_EQ(data.columns[0].missing, 1u);
  EXPECT_EQ(data.columns[1].levels, (Strings{"drug"}));
  EXPECT_EQ(data.lines.line(0), 1u);
  EXPECT_EQ(data.lines.line(1), 4u);
  ASSERT_EQ(data.remarks.size(), 1u);
  EXPECT_EQ(data.remarks[0].text, "3 of 4 rows meet the condition stage == 'early'");
}

TEST(Memory, RowsThatTheConditionLeavesOutMayHoldAnyNumber) {
  const Given given{
      "d", {"x", "y"}, {numberColumn("x", {-1, -2, 3}), numberColumn("y", {0, 1, 1})}, 3};
  const std::vector<Wanted> wanted = {{.name = "x", .least = 0}};
  EXPECT_EQ(numbersIn(frameOf(given, wanted, {}, "x > 0").columns[0]), (std::vector<double>{3}));
  try {
    frameOf(given, wanted, {}, "y == 1");
    ADD_FAILURE() << "not refused";
  } catch (const Unsuitable& refused) {
    EXPECT_STREQ(refused.what(),
                 "d, row 2, column \"x\": \"-2\" is out of range; expected numbers not below 0");
    EXPECT_EQ(refused.row(), 1u);
  }
}

TEST(Memory, AConditionThatNoRowMeetsIsRefused) {
  try {
    frameOf(fourRows(), {{.name = "x"}}, {}, "x > 5");
    ADD_FAILURE() << "not refused";
  } catch (const Unreadable& refused) {
    EXPECT_STREQ(
        refused.what(),
        "trial: no row of 4 meets the condition x > 5 (in 1 row it is missing); expected a "
        "condition that some rows meet");
  }
}

}  // namespace
}  // namespace survmeth::frame
