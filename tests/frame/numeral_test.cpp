// Numbers with decimal points and commas and with marks between thousands.
#include "frame/numeral.h"

#include <gtest/gtest.h>

#include <string>

namespace survmeth::frame {
namespace {

constexpr NumberStyle kPoint{'.', false}, kComma{',', false}, kProvenPoint{'.', true},
    kProvenComma{',', true};

void expectNumber(const std::string& cell, const NumberStyle& style, double value, bool grouped) {
  const Numeral numeral = readNumeral(cell, style);
  EXPECT_EQ(numeral.kind, Numeral::Kind::kNumber) << cell;
  EXPECT_EQ(numeral.value, value) << cell;
  EXPECT_EQ(numeral.grouped, grouped) << cell;
}

TEST(ReadNumeral, TakesTheStylesDecimalMark) {
  expectNumber("1.5", kPoint, 1.5, false);
  expectNumber("-0.25e-3", kPoint, -0.00025, false);
  expectNumber("1,5", kComma, 1.5, false);
  expectNumber("-,25", kComma, -0.25, false);
  expectNumber("+6,02e23", kComma, 6.02e23, false);
  expectNumber("5,", kComma, 5, false);
  expectNumber("12", kComma, 12, false);
  expectNumber("1,234", kComma, 1.234, false);
  expectNumber("0,123", kComma, 0.123, false);
}

TEST(ReadNumeral, LeavesOutMarksOfThousands) {
  expectNumber("1,234.5", kPoint, 1234.5, true);
  expectNumber("-12,345,678", kPoint, -12345678, true);
  expectNumber("1.234,5", kComma, 1234.5, true);
  expectNumber("1.234.567", kComma, 1234567, true);
  expectNumber("1 234", kPoint, 1234, true);
  expectNumber("1 234 567,25", kComma, 1234567.25, true);
  expectNumber("1'234.5", kPoint, 1234.5, true);
  expectNumber(
      "1\xC2\xA0"
      "234",
      kPoint, 1234, true);
  expectNumber(
      "1\xE2\x80\xAF"
      "234,5",
      kComma, 1234.5, true);
  expectNumber(
      "1\xE2\x80\x99"
      "234",
      kPoint, 1234, true);
}

TEST(ReadNumeral, LeavesOpenWhatHasTwoReadings) {
  EXPECT_EQ(readNumeral("1,234", kPoint).kind, Numeral::Kind::kAmbiguous);
  EXPECT_EQ(readNumeral("1.234", kComma).kind, Numeral::Kind::kAmbiguous);
  expectNumber("1,234", kProvenPoint, 1234, true);
  expectNumber("1.234", kProvenComma, 1234, true);
}

TEST(ReadNumeral, RefusesOtherGroupsAndWords) {
  for (const char* cell :
       {"1,23",      "1,2345", "12345,678", "0,123", "1,234,56", "1 23",  "1 234,567",
        "1,234e5",   "1.2.3",  ",5",        "",      "-",        "x",     "1x",
        "1,234.5.6", "1  234", "--5",       "inf",   "nan",      "0x1p3", "1.5,2"}) {
    EXPECT_EQ(readNumeral(cell, kProvenPoint).kind, Numeral::Kind::kNone) << cell;
  }
  EXPECT_EQ(readNumeral("1.5", kProvenComma).kind, Numeral::Kind::kNone);
  EXPECT_EQ(readNumeral("1,5,5", kProvenComma).kind, Numeral::Kind::kNone);
}

TEST(ReadNumeral, TellsWhatIsTooLarge) {
  EXPECT_EQ(readNumeral("1,5e400", kComma).kind, Numeral::Kind::kTooLarge);
}

TEST(EvidenceOf, IsTheMarkWithWhichACellIsANumber) {
  for (const char* cell : {"1,5", "0,123", "1234,567", "1.234,5", "1.234.567", ",5", "-2,25"}) {
    EXPECT_EQ(evidenceOf(cell), MarkEvidence::kComma) << cell;
  }
  for (const char* cell : {"1.5", "0.123", "1234.567", "1,234.5", "1,234,567", "5.", "1.234e2"}) {
    EXPECT_EQ(evidenceOf(cell), MarkEvidence::kPoint) << cell;
  }
  EXPECT_EQ(evidenceOf("1,234"), MarkEvidence::kEitherComma);
  EXPECT_EQ(evidenceOf("1.234"), MarkEvidence::kEitherPoint);
  for (const char* cell : {"1234", "1 234", "a,b", "1.2.2024", "1,5,5", "", "x.y"}) {
    EXPECT_EQ(evidenceOf(cell), MarkEvidence::kNone) << cell;
  }
}

}  // namespace
}  // namespace survmeth::frame
