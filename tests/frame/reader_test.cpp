// Tables as people write and paste them: separators, decimal marks, dates, blank rows and columns.
#include "frame/reader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/frame/reading.h"

namespace survmeth::frame {
namespace {

TEST(Reader, FindsTabsCommasAndSemicolons) {
  for (const char* text : {"t,e\n1,x\n2,y\n", "t;e\n1;x\n2;y\n", "t\te\n1\tx\n2\ty\n"}) {
    const Frame data = read(text, {number("t"), label("e")});
    EXPECT_EQ(numbersOf(data, "t"), (Numbers{1, 2})) << text;
    EXPECT_EQ(labelsOf(data, "e"), (Strings{"x", "y"})) << text;
    EXPECT_TRUE(data.remarks.empty()) << text;
  }
}

TEST(Reader, TakesTheSeparatorThatPartsTheRowsAsTheHeader) {
  // As many commas as tabs in the header, and more: the rows tell.
  const Frame data = read("t, days\tx\n1\t2\n3\t4\n", {number("t, days"), number("x")});
  EXPECT_EQ(numbersOf(data, "x"), (Numbers{2, 4}));
  EXPECT_EQ(
      remarksOf(data),
      (Strings{"delimiter: cells are separated by tabs, though the header holds commas too"}));
  EXPECT_EQ(numbersOf(read("a;b;c,t\n1,2\n", {number("t")}), "t"), (Numbers{2}));
}

TEST(Reader, DoesNotCountSeparatorsInQuotes) {
  const Frame data = read("\"a;b;c\",\"d;e\"\n1,\"x;y;z\"\n", {number("a;b;c"), label("d;e")});
  EXPECT_EQ(labelsOf(data, "d;e"), (Strings{"x;y;z"}));
  EXPECT_TRUE(data.remarks.empty());
}

TEST(Reader, TakesTheSeparatorThatIsNamed) {
  EXPECT_EQ(numbersOf(read("a,b|c\n1,2|3\n", {number("c")}, {.delimiter = '|'}), "c"),
            (Numbers{3}));
  EXPECT_EQ(numbersOf(read("t;x\n12\n", {number("t;x")}, {.delimiter = ','}), "t;x"),
            (Numbers{12}));
}

// As R's read.csv2 has it: 1.5 2.5 and 1.234 5.678.
TEST(Reader, FindsADecimalCommaBetweenSemicolons) {
  const Frame data = read("a;b\n1,5;2,5\n3;4\n", {number("a"), number("b")});
  EXPECT_EQ(numbersOf(data, "a"), (Numbers{1.5, 3}));
  EXPECT_EQ(numbersOf(data, "b"), (Numbers{2.5, 4}));
  EXPECT_EQ(remarksOf(data), (Strings{"decimalComma: cells are separated by semicolons and numbers "
                                      "have a decimal comma, such as \"1,5\" in line 2"}));
  EXPECT_EQ(data.remarks[0].names, (Strings{"a", "b"}));
  const Frame either = read("a;b\n1,234;5,678\n", {number("a"), number("b")});
  EXPECT_EQ(numbersOf(either, "a"), (Numbers{1.234}));
  EXPECT_EQ(numbersOf(either, "b"), (Numbers{5.678}));
}

TEST(Reader, FindsADecimalCommaBetweenTabsAndInQuotes) {
  EXPECT_EQ(numbersOf(read("a\tb\n1,5\t2\n", {number("a")}), "a"), (Numbers{1.5}));
  EXPECT_EQ(numbersOf(read("a,b\n\"1,5\",2\n", {number("a")}), "a"), (Numbers{1.5}));
}

TEST(Reader, LooksForTheDecimalMarkInColumnsOfNumbersOnly) {
  const Frame data = read("a;b;c\n1.5;2,5;3,5\n", {number("a"), label("b")});
  EXPECT_EQ(numbersOf(data, "a"), (Numbers{1.5}));
  EXPECT_EQ(labelsOf(data, "b"), (Strings{"2,5"}));
  EXPECT_TRUE(data.remarks.empty());
}

TEST(Reader, LeavesOutMarksOfThousandsAndSaysSo) {
  const Frame point = read("a;b\n1,234.5;1,234\n", {number("a"), number("b")});
  EXPECT_EQ(numbersOf(point, "a"), (Numbers{1234.5}));
  EXPECT_EQ(numbersOf(point, "b"), (Numbers{1234}));
  EXPECT_EQ(remarksOf(point),
            (Strings{"thousandsMarks: marks of thousands are left out of numbers: \"1,234.5\" in "
                     "line 2 is 1234.5, \"1,234\" in line 2 is 1234"}));
  EXPECT_EQ(point.remarks[0].names, (Strings{"a", "b"}));
  const Frame comma = read("a;b\n1.234,5;1.234\n", {number("a"), number("b")});
  EXPECT_EQ(numbersOf(comma, "a"), (Numbers{1234.5}));
  EXPECT_EQ(numbersOf(comma, "b"), (Numbers{1234}));
  EXPECT_EQ(numbersOf(read("a,b\n1 234,5\n", {number("a")}), "a"), (Numbers{1234}));
}

TEST(Reader, RefusesWhatMayBeAFractionOrThousands) {
  const std::string comma =
      "\"1,234\" may have a decimal comma or a mark of thousands; expected numbers with one "
      "reading, or --decimal to say which mark is the decimal one";
  EXPECT_EQ(refusal("a\tb\n1\t2\n1,234\t2\n", {number("a")}), "x, line 3, column \"a\": " + comma);
  EXPECT_EQ(refusal("a,b\n\"1,234\",2\n", {number("a")}), "x, line 2, column \"a\": " + comma);
  EXPECT_EQ(refusal("a;b\n1,234;5.678\n", {number("a"), number("b")}),
            "x, line 2, column \"a\": " + comma);
  EXPECT_EQ(refusal("a;b\n1,234;2\n1,234;5\n1.234;3\n", {number("a")}, {.decimal = 0}),
            "x, line 2, column \"a\": " + comma);
  EXPECT_EQ(numbersOf(read("a\tb\n1,234\t2\n", {number("a")}, {.decimal = '.'}), "a"),
            (Numbers{1234}));
  EXPECT_EQ(numbersOf(read("a\tb\n1,234\t2\n", {number("a")}, {.decimal = ','}), "a"),
            (Numbers{1.234}));
}

TEST(Reader, RefusesBothDecimalMarks) {
  EXPECT_EQ(refusal("a;b\n1,5;1\n2.5;1\n", {number("a")}),
            "x, line 2, column \"a\": \"1,5\" is not a number; expected a number, written with a "
            "decimal point and no comma");
}

TEST(Reader, DoesNotReadAPointBesideADecimalCommaAsAFraction) {
  // The first rows say comma; later there is a point.
  std::string text = "a;b\n";
  for (int i = 0; i < 100000; ++i) text += "1,5;2\n";
  EXPECT_EQ(refusal(text + "2.5;1\n", {number("a")}),
            "x, line 100002, column \"a\": \"2.5\" is not a number; expected a number");
}

TEST(Reader, TakesMissingWordsThatAreNumbersInAnySpelling) {
  const Frame data =
      read("a;b\n1,5;1\n-9,0;2\n-9;3\n", {number("a")}, {.missing = Missing({"-9"})});
  EXPECT_EQ(numbersOf(data, "a"), (Numbers{1.5}));
  EXPECT_EQ(data.columns[0].missing, 2U);
}

TEST(Reader, ReadsIsoDatesAsDays) {
  const Frame data =
      read("d,e\n1970-01-02,x\nNA,x\n2024-03-01,y\n", {number("d"), label("e"), label("d")});
  EXPECT_EQ(numbersOf(data, "d"), (Numbers{1, 19783}));
  EXPECT_TRUE(data.columns[0].isDate);
  EXPECT_FALSE(data.columns[1].isDate);
  EXPECT_EQ(labelsOf(data, "d"), (Strings{"1970-01-02", "2024-03-01"}));
  EXPECT_EQ(remarksOf(data),
            (Strings{"dates: the dates of \"d\" are read as days since 1970-01-01"}));
}

TEST(Reader, RefusesDatesBesideOtherCells) {
  EXPECT_EQ(refusal("d\n2024-03-01\n5\n2024-03-02\n", {number("d")}),
            "x, column \"d\": 2 cells are dates and 1 is not: \"5\" (line 3); expected dates such "
            "as 2024-03-01 in every row or in none");
  EXPECT_EQ(refusal("d\n1\n2\n2024-03-01\n3\n", {number("d")}),
            "x, column \"d\": 3 cells are no dates and 1 is: \"2024-03-01\" (line 4); expected "
            "dates such as 2024-03-01 in every row or in none");
  EXPECT_EQ(refusal("d\n2024-03-01\n2023-02-29\n", {either("d")}),
            "x, column \"d\": 1 cell is a date and 1 is not: \"2023-02-29\" (line 3); expected "
            "dates such as 2024-03-01 in every row or in none");
}

TEST(Reader, DropsBlankRowsAndColumnsOfASpreadsheet) {
  const Frame data = read(",,,\nt,e,,\n1,x,,\n,,,\n2,y,\n3,z\n4,w,,,,\n,,,\n , \n\n,,,\n",
                          {number("t"), label("e")});
  EXPECT_EQ(numbersOf(data, "t"), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(labelsOf(data, "e"), (Strings{"x", "y", "z", "w"}));
  // The blank row between rows of data counts, those at the end do not.
  EXPECT_EQ(data.rowsRead, 5U);
  EXPECT_EQ(data.columns[0].missing, 1U);
  EXPECT_EQ(data.lines.line(0), 3U);
  EXPECT_EQ(data.lines.line(1), 5U);
}

TEST(Reader, KeepsBlankRowsBetweenRowsWhereTheyMayBeMissing) {
  const Frame data = read("t,u\n1,1\n,\n,\n2,2\n,\n", {{.name = "t", .mayBeMissing = true}});
  ASSERT_EQ(data.rows, 4U);
  EXPECT_TRUE(data.columns[0].isMissing(1));
  EXPECT_EQ(data.lines.line(2), 4U);
  EXPECT_EQ(data.columns[0].numbers[3], 2);
}

TEST(Reader, RefusesRowsOfOtherLengths) {
  EXPECT_EQ(refusal("t,e\n1,1\n2,0,5\n", {number("t")}),
            "x, line 3: the row has 3 cells; expected 2 cells, as in the header");
  EXPECT_EQ(refusal("t,e,,\n1\n", {number("t")}),
            "x, line 2: the row has 1 cell; expected 4 cells, as in the header");
}

TEST(Reader, KeepsRowsOfLabelsWhoseFirstCellsAreMissing) {
  const Frame data = read("a,b\n,1\nNA,1\nx,1\n,1\ny,1\n",
                          {{.name = "a", .cells = Cells::kEither, .mayBeMissing = true}});
  EXPECT_EQ(labelsOf(data, "a"), (Strings{"missing", "missing", "x", "missing", "y"}));
}

TEST(Reader, TakesAnythingAsNumbersOrLabelsWhereThatIsAsked) {
  const auto any = [](const char* text) {
    return read(text, {{.name = "a", .cells = Cells::kAny, .mayBeMissing = true}});
  };
  EXPECT_EQ(numbersOf(any("a\n1\n2.5\n"), "a"), (Numbers{1, 2.5}));
  EXPECT_EQ(labelsOf(any("a,b\n1.50,1\n,1\n3a,1\n7,1\n"), "a"),
            (Strings{"1.5", "missing", "3a", "7"}));
  EXPECT_EQ(labelsOf(any("a\n2024-03-01\n5\n"), "a"), (Strings{"2024-03-01", "5"}));
}

TEST(Reader, ReadsTheSmallestTables) {
  EXPECT_EQ(numbersOf(read("t\n1\n2", {number("t")}), "t"), (Numbers{1, 2}));
  EXPECT_EQ(numbersOf(read("t\r\n1\r\n\r\n2\r\n", {number("t")}), "t"), (Numbers{1, 2}));
  EXPECT_EQ(numbersOf(read("t\r1\r2\r", {number("t")}), "t"), (Numbers{1, 2}));
  EXPECT_EQ(read("t,e\n", {number("t")}).rows, 0U);
  EXPECT_EQ(read("t,e", {number("t")}).rowsRead, 0U);
  for (const char* text : {"", "\n\n", ",,\n,,\n", "\xEF\xBB\xBF"}) {
    EXPECT_EQ(refusal(text, {number("t")}),
              "x: the file is empty; expected a header line and rows of data");
  }
}

TEST(Reader, ReadsTenThousandColumnsAndALongCell) {
  std::string header, row;
  for (int i = 0; i < 10000; ++i) {
    header += (i > 0 ? ",c" : "c") + std::to_string(i);
    row += (i > 0 ? "," : "") + std::to_string(i);
  }
  const std::string text = header + ",long\n" + row + "," + std::string(2000000, 'x') + "\n";
  const Frame data = read(text, {number("c9999"), number("c0"), label("long")});
  EXPECT_EQ(numbersOf(data, "c9999"), (Numbers{9999}));
  EXPECT_EQ(labelsOf(data, "long")[0].size(), 2000000U);
}

TEST(Reader, RefusesZerosWithTheirLine) {
  using namespace std::string_view_literals;
  using namespace std::string_literals;
  const std::string expected =
      ": the file is not text: a byte of 0 stands here; expected comma- or tab-separated text";
  EXPECT_EQ(refusal("t,e\n1,1\n2,\0\n"sv, {number("t")}), "x, line 3" + expected);
  std::string text = "t,e\n";
  for (int i = 0; i < 100000; ++i) text += "1,1\n";
  EXPECT_EQ(refusal(text + "\0,1\n"s, {number("t")}), "x, line 100002" + expected);
}

}  // namespace
}  // namespace survmeth::frame
