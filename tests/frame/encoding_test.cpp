// Packed files and encodings. The bytes are Python's: gzip.compress, str.encode.
#include "frame/encoding.h"

#include <gtest/gtest.h>

#include <string>

#include "frame/bytes.h"
#include "frame/inflate.h"
#include "frame/textSource.h"
#include "tests/frame/reading.h"

namespace survmeth::frame {
namespace {

using namespace std::string_literals;

// gzip.compress(b"t,e\n1,1\n2,0\n", mtime=0)
const std::string kPacked =
    "\x1F\x8B\x08\x00\x00\x00\x00\x00\x02\x03\x2B\xD1\x49\xE5\x32\xD4\x31\xE4\x32\xD2\x31\xE0\x02"
    "\x00"
    "\xBF\xB8\xF5\xE2\x0C\x00\x00\x00"s;

std::string utf16(const std::string& ascii, bool isBig) {
  std::string bytes;
  for (const char c : ascii) bytes += isBig ? "\0"s + c : c + "\0"s;
  return bytes;
}

TEST(Gzip, IsFoundByItsContent) {
  const Frame data = read(kPacked, {number("t"), number("e")});
  EXPECT_EQ(numbersOf(data, "t"), (Numbers{1, 2}));
  EXPECT_EQ(numbersOf(data, "e"), (Numbers{1, 0}));
  EXPECT_TRUE(data.remarks.empty());
}

TEST(Gzip, MayHaveSeveralMembersAndZerosBehindThem) {
  const std::string again = kPacked + kPacked + std::string(512, '\0');
  EXPECT_EQ(refusal(again, {number("t")}),
            "x, line 4, column \"t\": \"t\" is not a number; expected a number");
}

TEST(Gzip, IsRefusedWhereItBreaksOff) {
  const std::string broken = ": the gzip data break off; expected a whole gzip file";
  for (std::size_t size = 2; size < kPacked.size(); ++size) {
    const std::string said = refusal(kPacked.substr(0, size), {number("t")});
    EXPECT_TRUE(said.ends_with(broken)) << size << ": " << said;
  }
  EXPECT_EQ(refusal(kPacked.substr(0, 12), {number("t")}), "x" + broken);
  EXPECT_EQ(refusal(kPacked.substr(0, 30), {number("t")}),
            "x, line 4: the gzip data break off; expected a whole gzip file");
}

TEST(Gzip, IsRefusedWhereItIsDamaged) {
  std::string header = kPacked, sum = kPacked;
  header[2] = 7;  // no method of compression
  sum[24] = static_cast<char>(sum[24] ^ 1);
  EXPECT_EQ(refusal(header, {number("t")}),
            "x: the gzip data are damaged; expected a whole gzip file");
  EXPECT_EQ(refusal(sum, {number("t")}),
            "x, line 4: the gzip data are damaged; expected a whole gzip file");
  EXPECT_EQ(refusal(kPacked + "more", {number("t")}),
            "x, line 4: the gzip data are followed by something else; expected a whole gzip file");
}

TEST(Utf16, IsReadWithAndWithoutAMark) {
  for (const bool isBig : {false, true}) {
    const std::string bytes = utf16("t,e\n1,x\n", isBig);
    const Frame marked = read((isBig ? "\xFE\xFF" : "\xFF\xFE") + bytes, {number("t"), label("e")});
    EXPECT_EQ(numbersOf(marked, "t"), (Numbers{1}));
    EXPECT_EQ(labelsOf(marked, "e"), (Strings{"x"}));
    EXPECT_EQ(remarksOf(marked), (Strings{"encoding: the file is read as UTF-16"}));
    EXPECT_EQ(remarksOf(read(bytes, {number("t")})),
              (Strings{"encoding: the file is read as UTF-16, though it has no byte-order mark"}));
  }
}

// "t,ä\n1,€\n" and U+1D11E, which takes two units.
TEST(Utf16, BecomesUtf8) {
  const std::string bytes = "\xFF\xFEt\0,\0\xE4\0\n\0001\0,\0\xAC\x20\n\0"s;
  EXPECT_EQ(labelsOf(read(bytes, {label("\xC3\xA4")}), "\xC3\xA4"), (Strings{"\xE2\x82\xAC"}));
  std::string text;
  Utf16Decoder decoder(true);
  for (const char c : "\xD8\x34\xDD\x1E"s) decoder.decode(std::string(1, c), text);
  decoder.finish();
  EXPECT_EQ(text, "\xF0\x9D\x84\x9E");
}

TEST(Utf16, IsRefusedWhereACharacterIsBroken) {
  const std::string broken =
      ": a character of the UTF-16 text is broken; expected whole UTF-16, or text in UTF-8";
  EXPECT_EQ(refusal("\xFF\xFEt\0\n\0\x34\xD8x\0"s, {number("t")}), "x, line 2" + broken);
  EXPECT_EQ(refusal("\xFF\xFEt\0\n\0001\0\n\0\x1E\xDD"s, {number("t")}), "x, line 3" + broken);
  EXPECT_EQ(refusal("\xFF\xFE\x1E\xDD"s, {number("t")}), "x" + broken);
  EXPECT_EQ(refusal("\xFF\xFEt\0\n\0001\0\n"s, {number("t")}),
            "x, line 2: the UTF-16 text ends within a character; expected whole UTF-16, or text in "
            "UTF-8");
  EXPECT_EQ(refusal("\xFF\xFEt\0\n\0\x34\xD8"s, {number("t")}),
            "x, line 2: the UTF-16 text ends within a character; expected whole UTF-16, or text in "
            "UTF-8");
}

TEST(Utf16, IsNotSeenInOtherBytes) {
  EXPECT_EQ(startOf("t,e\n1,\0\n"s).encoding, Encoding::kUnmarked);
  EXPECT_EQ(startOf("t\0\0e"s).encoding, Encoding::kUnmarked);
  EXPECT_EQ(startOf("abcdefgh\0"s).encoding, Encoding::kUnmarked);
  EXPECT_EQ(startOf("").encoding, Encoding::kUnmarked);
}

TEST(Containers, AreRefusedByTheirNames) {
  const std::string expected = "; expected comma- or tab-separated text, plain or packed by gzip";
  EXPECT_EQ(refusal("PK\x03\x04..", {number("t")}),
            "x: the file is a zip archive, as .xlsx and .ods workbooks are" + expected);
  EXPECT_EQ(refusal("\xD0\xCF\x11\xE0..", {number("t")}),
            "x: the file is an .xls workbook or another compound file" + expected);
  EXPECT_EQ(refusal("BZh9..", {number("t")}), "x: the file is packed by bzip2" + expected);
  EXPECT_EQ(refusal("\xFD\x37zXZ..", {number("t")}), "x: the file is packed by xz" + expected);
  EXPECT_EQ(refusal("\x28\xB5\x2F\xFD..", {number("t")}),
            "x: the file is packed by zstd" + expected);
  EXPECT_EQ(refusal("%PDF-1.4", {number("t")}), "x: the file is a PDF" + expected);
  EXPECT_EQ(refusal("PAR1\x15\x04", {number("t")}), "x: the file is a Parquet file" + expected);
  EXPECT_EQ(refusal("$FL2@(#)", {number("t")}), "x: the file is a data file of SPSS" + expected);
  EXPECT_EQ(refusal("<stata_dta><header>", {number("t")}),
            "x: the file is a data file of Stata" + expected);
  EXPECT_EQ(refusal("\xFF\xFE\0\0t\0\0\0"s, {number("t")}),
            "x: the file is UTF-32; expected text in UTF-8 encoding");
}

// "Grüße" and "€" of Windows-1252.
TEST(Windows1252, IsReadWhereTextIsNotUtf8) {
  const Frame data = read(
      "gr\xF6\xDF,e\n1,Gr\xFC\xDF"
      "e\n2,\x80\n3,x\n",
      {number("gr\xC3\xB6\xC3\x9F"), label("e")});
  EXPECT_EQ(labelsOf(data, "e"), (Strings{"Gr\xC3\xBC\xC3\x9F"
                                          "e",
                                          "\xE2\x82\xAC", "x"}));
  EXPECT_EQ(remarksOf(data),
            (Strings{"encoding: text that is not UTF-8 is read as Windows-1252 (Latin-1), such as "
                     "\"gr\xC3\xB6\xC3\x9F\" in line 1"}));
}

TEST(Windows1252, IsRefusedBesideUtf8) {
  EXPECT_EQ(refusal("e\n\xC3\xBC\n\xFC\n", {label("e")}),
            "x, line 3, column \"e\": the cell \"\xC3\xBC\" is not UTF-8, unlike \"\xC3\xBC\" in "
            "line 2; expected text in UTF-8 encoding");
  EXPECT_EQ(
      refusal("e\n\xFC\n\xC3\xBC\n", {label("e")}),
      "x, line 3, column \"e\": the cell \"\xC3\xBC\" is UTF-8, unlike \"\xC3\xBC\" in line 2; "
      "expected text in UTF-8 encoding");
}

TEST(Windows1252, IsRefusedWhereAByteHasNoCharacterOrTheFileIsMarked) {
  EXPECT_EQ(refusal("e\n\x81\n", {label("e")}),
            "x, line 2, column \"e\": the cell is neither UTF-8 nor Windows-1252; expected text in "
            "UTF-8 encoding");
  EXPECT_EQ(refusal("\xEF\xBB\xBF"
                    "e\n\xFC\n",
                    {label("e")}),
            "x, line 2, column \"e\": the cell is not UTF-8; expected text in UTF-8 encoding");
  EXPECT_EQ(refusal("\xEF\xBB\xBF\xFC\n1\n", {label("e")}),
            "x, line 1: the column name is not UTF-8; expected text in UTF-8 encoding");
}

TEST(TextSource, GivesTheSameTextWhateverTheBlocks) {
  const std::string bytes = "\xFF\xFE" + utf16(std::string(1000, 'x') + ",\n", false);
  for (const std::size_t block : {5U, 64U, 100000U}) {
    TextSource source(std::make_unique<MemoryBytes>(bytes, block));
    std::string text;
    for (auto part = source.next(); !part.empty(); part = source.next()) text += part;
    EXPECT_EQ(text, std::string(1000, 'x') + ",\n") << block;
  }
  TextSource marked(std::make_unique<MemoryBytes>("\xEF\xBB\xBFt,e", 3));
  EXPECT_EQ(marked.next(), "t,e");
}

}  // namespace
}  // namespace survmeth::frame
