// Rows chosen by a condition: as R's subset() chooses them, then complete ones only.
#include "frame/choose.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/frame/reading.h"

namespace survmeth::frame {
namespace {

constexpr const char* kTable =
    "t,e,age,sex,arm\n"
    "1,1,30,f,a\n"
    "2,0,50,f,b\n"
    "3,1,60,m,a\n"
    "4,1,NA,f,b\n"
    "5,,70,f,c\n"
    "-6,1,20,m,b\n";

Frame chosen(const std::string& where) {
  return read(kTable, {{.name = "t", .least = 0}, number("e"), label("arm")}, {.where = where});
}

std::string wrong(const std::string& where) {
  try {
    chosen(where);
  } catch (const ExpressionError& error) {
    return error.shown();
  }
  return "it is read";
}

TEST(ChosenRows, AreThoseThatMeetTheConditionAndAreComplete) {
  const Frame data = chosen("age > 40 & sex == \"f\"");
  ASSERT_EQ(data.columns.size(), 3U);
  EXPECT_EQ(numbersOf(data, "t"), (Numbers{2}));
  EXPECT_EQ(labelsOf(data, "arm"), (Strings{"b"}));
  EXPECT_EQ(data.rowsRead, 6U);
  EXPECT_EQ(data.rowsUnchosen, 4U);
  EXPECT_EQ(data.lines.line(0), 3U);
  // Missing cells count in the chosen rows, and so do labels.
  EXPECT_EQ(data.find("e")->missing, 1U);
  EXPECT_EQ(data.find("arm")->levels, (Strings{"b", "c"}));
  EXPECT_EQ(data.find("arm")->levelLine, (std::vector<std::size_t>{3, 6}));
  EXPECT_EQ(remarksOf(data),
            (Strings{"rowsChosen: 2 of 6 rows meet the condition age > 40 & sex == "
                     "\"f\" (in 1 row it is missing)"}));
  EXPECT_EQ(data.remarks[0].names, (Strings{"age", "sex"}));
}

TEST(ChosenRows, AreRefusedForTheirOwnCellsOnly) {
  EXPECT_EQ(numbersOf(chosen("t > 0"), "t"), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(refusal(kTable, {{.name = "t", .least = 0}}, {.where = "sex == \"m\""}),
            "x, line 7, column \"t\": \"-6\" is out of range; expected a number not below 0");
}

TEST(ChosenRows, MayBeChosenByColumnsOfAnyKind) {
  const char* table = "t,ward,d\n1,3,2020-01-01\n2,3a,2021-06-01\n3,7,2022-01-01\n";
  const auto times = [&](const std::string& where) {
    return numbersOf(read(table, {number("t")}, {.where = where}), "t");
  };
  EXPECT_EQ(times("ward == 3"), (Numbers{1}));
  EXPECT_EQ(times("ward %in% c(\"3a\", \"7\")"), (Numbers{2, 3}));
  EXPECT_EQ(times("d >= \"2021-06-01\""), (Numbers{2, 3}));
  EXPECT_EQ(times("d %in% c(\"2020-01-01\", \"2022-01-01\")"), (Numbers{1, 3}));
  EXPECT_EQ(times("\"2021-01-01\" > d | t == 3"), (Numbers{1, 3}));
  // A group is labels to the analysis, but its numbers are numbers here.
  EXPECT_EQ(labelsOf(read("g\n1\n5\n10\n", {label("g")}, {.where = "g > 4"}), "g"),
            (Strings{"5", "10"}));
}

TEST(ChosenRows, AreSaidToBeNoneWhereNoneMeetsTheCondition) {
  EXPECT_EQ(refusal(kTable, {number("t")}, {.where = "age > 400"}),
            "x: no row of 6 meets the condition age > 400 (in 1 row it is missing); expected a "
            "condition that some rows meet");
  EXPECT_EQ(read("t,age\n", {number("t")}, {.where = "age > 400"}).rows, 0U);
}

TEST(ChosenRows, AreRefusedWithThePlaceInTheCondition) {
  EXPECT_EQ(wrong("age > 40 & agee < 3"),
            "age > 40 & agee < 3\n           ^\nthere is no column \"agee\"; expected one of "
            "\"age\", \"e\", \"sex\", \"arm\", \"t\"");
  EXPECT_EQ(wrong("age > "),
            "age > \n      ^\nthe end of the text does not fit here; expected a name, a number "
            "or a parenthesis");
  EXPECT_EQ(wrong("sex == \"F\""),
            "sex == \"F\"\n       ^\nno row of \"sex\" holds \"F\"; expected one of \"f\", \"m\"");
  EXPECT_EQ(wrong("age"), "age\n^\nthis is no condition; expected a comparison such as age > 40");
  EXPECT_EQ(refusal(kTable, {number("tt")}, {.where = "age > 4"}),
            "x, line 1: there is no column \"tt\"; expected one of \"t\", \"e\", \"age\", \"sex\", "
            "\"arm\"");
}

TEST(ChosenRows, AreComparedWithDatesOnlyAsDates) {
  const auto wrongDate = [](const std::string& where) {
    try {
      read("d\n2020-01-01\n", {number("d")}, {.where = where});
    } catch (const ExpressionError& error) {
      return std::string(error.what());
    }
    return std::string("it is read");
  };
  EXPECT_EQ(wrongDate("d > \"2020-13-01\""),
            "\"2020-13-01\" is no date; expected one such as \"2024-03-01\"");
  EXPECT_EQ(wrongDate("d %in% \"x\""), "\"x\" is no date; expected one such as \"2024-03-01\"");
}

}  // namespace
}  // namespace survmeth::frame
