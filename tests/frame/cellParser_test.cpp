// The cells of texts, whole and in blocks.
#include "frame/cellParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "frame/trimmed.h"

namespace survmeth::frame {
namespace {

// Writes down what it takes: cells in brackets without the blanks behind them, LF as n, CR as r, the
// end of the text as e.
class Written : public CellTaker {
 public:
  std::string text;

  void takeCell(std::string_view cell) override { text += "[" + std::string(trimmed(cell)) + "]"; }
  void takeLineEnd(int end) override { text += end == '\n' ? "n" : end == '\r' ? "r" : "e"; }
};

// What is taken in blocks of so many characters; behind it what is refused.
std::string taken(std::string_view text, char delimiter = ',', std::size_t block = 1000) {
  Written written;
  CellParser parser(written);
  parser.setDelimiter(delimiter);
  const auto refusal = [&] { return written.text + (parser.isQuoted() ? " in quotes" : " plain"); };
  while (!text.empty()) {
    // Of its own memory, so that a view into an earlier block is seen by the sanitizer.
    const std::string piece(text.substr(0, block));
    text.remove_prefix(piece.size());
    if (!parser.parse(piece)) return refusal();
  }
  return parser.finish() ? written.text : refusal();
}

TEST(CellParser, PartsCellsByTheDelimiter) {
  EXPECT_EQ(taken("a,b\n1,2\n"), "[a][b]n[1][2]n");
  EXPECT_EQ(taken("a;b,c\n", ';'), "[a][b,c]n");
  EXPECT_EQ(taken("a\t b\n", '\t'), "[a][b]n");
}

TEST(CellParser, EndsTheLastLineWithTheText) {
  EXPECT_EQ(taken("a,b"), "[a][b]e");
  EXPECT_EQ(taken("a,"), "[a][]e");
  EXPECT_EQ(taken("\"a\""), "[a]e");
  EXPECT_EQ(taken("a\n"), "[a]n");
  EXPECT_EQ(taken(""), "");
}

TEST(CellParser, GivesEmptyCellsBetweenDelimiters) { EXPECT_EQ(taken(",,\n"), "[][][]n"); }

TEST(CellParser, EndsLinesWithEachOfLfCrAndBoth) {
  EXPECT_EQ(taken("a\rb\nc\r\n"), "[a]r[b]n[c]rn");
}

TEST(CellParser, GivesNoCellOfALineOfBlanks) { EXPECT_EQ(taken("a\n \t\n\nb\n"), "[a]nnn[b]n"); }

TEST(CellParser, LeavesOutBlanksAroundCellsAndQuotes) {
  EXPECT_EQ(taken("  a b , \"c\"\t,\td\n"), "[a b][c][d]n");
}

TEST(CellParser, TakesDelimitersLineEndsAndDoubledQuotesWithinQuotes) {
  EXPECT_EQ(taken("\"a,b\",\"c\nd\",\"e\"\"f\",\"\",\"\"\"\"\n"), "[a,b][c\nd][e\"f][][\"]n");
}

TEST(CellParser, RefusesAQuoteInAPlainCell) { EXPECT_EQ(taken("a,b\"c\n"), "[a] plain"); }

TEST(CellParser, RefusesTextBehindAClosingQuote) {
  EXPECT_EQ(taken("a,\"b\"c\n"), "[a] in quotes");
  EXPECT_EQ(taken("\"b\" \"c\"\n"), " in quotes");
}

TEST(CellParser, RefusesQuotesThatStayOpen) {
  EXPECT_EQ(taken("a,\"b\n"), "[a] in quotes");
  EXPECT_EQ(taken("\"b\"\""), " in quotes");
}

TEST(CellParser, TakesTheSameFromBlocksOfAnyLength) {
  for (const std::string_view text :
       {"a, bc ,\"d \"\"e\"\"\" ,f\r\n\r\n \"g\n\" , h\t\n,", "ab,\"c\"d", "ab\"", "\"abc"}) {
    const std::string whole = taken(text);
    for (std::size_t block = 1; block < text.size(); ++block) {
      EXPECT_EQ(taken(text, ',', block), whole) << text << " by " << block;
    }
  }
}

TEST(CellParser, PassesOnWhatTheTakerThrows) {
  class Throws : public Written {
    void takeLineEnd(int) override { throw std::runtime_error("enough"); }
  };
  Throws throws;
  CellParser parser(throws);
  EXPECT_THROW(static_cast<void>(parser.parse("a\n")), std::runtime_error);
}

}  // namespace
}  // namespace survmeth::frame
