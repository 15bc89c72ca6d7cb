// Columns of text, folded where the terminal is narrow.
#include "report/textTable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "text/utf8.h"

namespace survmeth::report {
namespace {

using text::displayWidth;

TextTable wide() {
  TextTable table({{"group"}, {"events", kRight}, {"median", kRight}, {"survival", kRight}});
  table.row({"placebo", "21", "8", "0.1000"});
  table.row({"6-MP", "9", "23", "0.4482"});
  return table;
}

TEST(TextTable, AlignsTextLeftAndNumbersRight) {
  EXPECT_EQ(wide().text(),
            "group    events  median  survival\n"
            "placebo      21       8    0.1000\n"
            "6-MP          9      23    0.4482\n");
}

TEST(TextTable, ThatFitsStaysWhole) {
  EXPECT_EQ(wide().text(33), wide().text());
  EXPECT_NE(wide().text(32), wide().text());
}

TEST(TextTable, ThatIsWiderFoldsAndRepeatsItsLabels) {
  EXPECT_EQ(wide().text(24),
            "group    events  median\n"
            "placebo      21       8\n"
            "6-MP          9      23\n"
            "\n"
            "group    survival\n"
            "placebo    0.1000\n"
            "6-MP       0.4482\n");
}

TEST(TextTable, RepeatsTheLabelColumnsThatFitInHalfTheWidth) {
  TextTable table({{"a"}, {"b"}, {"first", kRight}, {"second", kRight}});
  table.row({"x", "y", "1", "2"});
  EXPECT_EQ(table.text(13, 2),
            "a  b  first\n"
            "x  y      1\n"
            "\n"
            "a  b  second\n"
            "x  y       2\n");
  EXPECT_EQ(table.text(8, 2),
            "a  b\n"
            "x  y\n"
            "\n"
            "a  first\n"
            "x      1\n"
            "\n"
            "a  second\n"
            "x       2\n");
}

TEST(TextTable, WithoutHeadingsBeginsWithItsRows) {
  TextTable table({{""}, {""}});
  table.row({"n", "21"});
  EXPECT_EQ(table.text(), "n  21\n");
}

TEST(TextTable, LongTextsGoOnInFurtherLines) {
  TextTable table({{"name of the covariate"}, {"coef", kRight}});
  table.row({"cell type = small cell", "1.5"});
  table.row({"age", "0.1"});
  EXPECT_EQ(table.text(24),
            "name of the\n"
            "covariate    coef\n"
            "cell type =   1.5\n"
            "small cell\n"
            "age           0.1\n");
}

TEST(TextTable, NoLineIsWiderThanTheTerminalAndNothingIsLost) {
  TextTable table({{"name"}, {"a heading of many words", kRight}, {"b", kRight}, {"c", kRight}});
  const std::string name(300, 'x');
  table.row({name, "123456.789", "2345678901", "3456789012"});
  std::istringstream lines(table.text(40));
  std::size_t letters = 0;
  bool first = true;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(displayWidth(line), 40u) << line;
    if (line.empty()) first = false;
    if (first) letters += static_cast<std::size_t>(std::count(line.begin(), line.end(), 'x'));
  }
  EXPECT_EQ(letters, 300u);
}

TEST(TextTable, WideCharactersKeepTheColumnsStraight) {
  TextTable table({{"g"}, {"n", kRight}});
  table.row({"\xE5\xAF\xBE\xE7\x85\xA7", "2"});
  table.row({"\xC3\xA9", "12"});
  EXPECT_EQ(table.text(),
            "g      n\n"
            "\xE5\xAF\xBE\xE7\x85\xA7   2\n"
            "\xC3\xA9     12\n");
}

TEST(Underlined, IsAsWideAsTheTitle) {
  EXPECT_EQ(underlined("a\nb"), "a?b\n---\n");
  EXPECT_EQ(underlined("\xE5\xAF\xBE"), "\xE5\xAF\xBE\n--\n");
}

}  // namespace
}  // namespace survmeth::report
