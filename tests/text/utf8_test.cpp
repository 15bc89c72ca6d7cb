// What of UTF-8 is shown, how wide, and where it is broken.
#include "text/utf8.h"

#include <gtest/gtest.h>

namespace survmeth::text {
namespace {

using Lines = std::vector<std::string>;

TEST(IsUtf8, KnowsOverlongFormsAndSurrogates) {
  EXPECT_TRUE(isUtf8("\xC3\xA9 \xE5\xAF\xBE \xF0\x9F\x9A\x91"));
  EXPECT_FALSE(isUtf8("\xC0\xAF"));
  EXPECT_FALSE(isUtf8("\xED\xA0\x80"));
  EXPECT_FALSE(isUtf8("\xF4\x90\x80\x80"));
  EXPECT_FALSE(isUtf8("cut \xE5\xAF"));
}

TEST(Printable, ControlsOfEveryKindAreQuestionMarks) {
  EXPECT_EQ(printable("a\nb\tc\x1b[1m\x7f"), "a?b?c?[1m?");
  EXPECT_EQ(printable("\xC2\x9B"
                      "1m"),
            "?1m");
  EXPECT_EQ(printable("\xE2\x80\xAE"
                      "abc\xE2\x81\xA9"),
            "?abc?");
  EXPECT_EQ(printable("\xE2\x80\xA8"), "?");
}

TEST(Printable, MarksOfDirectionStay) { EXPECT_EQ(printable("a\xE2\x80\x8F"), "a\xE2\x80\x8F"); }

TEST(Printable, BytesThatAreNoUtf8AreQuestionMarks) { EXPECT_EQ(printable("\xFF\xC3"), "??"); }

TEST(Printable, LettersOfEveryScriptStay) {
  const std::string text = "\xC3\xA9 \xD7\xA9 \xE5\xAF\xBE \xF0\x9F\x9A\x91";
  EXPECT_EQ(printable(text), text);
}

TEST(DisplayWidth, CountsCells) {
  EXPECT_EQ(displayWidth("abc"), 3u);
  EXPECT_EQ(displayWidth("\xE5\xAF\xBE\xE7\x85\xA7"), 4u);
  EXPECT_EQ(displayWidth("\xF0\x9F\x9A\x91"), 2u);
  EXPECT_EQ(displayWidth("e\xCC\x81"), 1u);
}

TEST(Wrapped, BreaksAtSpaces) {
  EXPECT_EQ(wrapped("one two three", 7), (Lines{"one two", "three"}));
  EXPECT_EQ(wrapped("one two three", 13), (Lines{"one two three"}));
  EXPECT_EQ(wrapped("  one   two ", 10), (Lines{"one two"}));
}

TEST(Wrapped, BreaksWordsThatAreLonger) {
  EXPECT_EQ(wrapped("ab cdefghijk", 4), (Lines{"ab", "cdef", "ghij", "k"}));
  EXPECT_EQ(wrapped("\xE5\xAF\xBE\xE7\x85\xA7", 3), (Lines{"\xE5\xAF\xBE", "\xE7\x85\xA7"}));
}

TEST(Wrapped, ACharacterStaysWithItsMarks) {
  EXPECT_EQ(wrapped("abe\xCC\x81"
                    "d",
                    3),
            (Lines{"abe\xCC\x81", "d"}));
}

TEST(Wrapped, NothingIsOneEmptyLine) { EXPECT_EQ(wrapped("", 5), (Lines{""})); }

TEST(Shortened, SaysThatSomethingIsMissing) {
  EXPECT_EQ(shortened("abcdef", 6), "abcdef");
  EXPECT_EQ(shortened("abcdef", 4), "abcd...");
  EXPECT_EQ(shortened("\xE5\xAF\xBE\xE7\x85\xA7", 3), "\xE5\xAF\xBE...");
}

}  // namespace
}  // namespace survmeth::text
