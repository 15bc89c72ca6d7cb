// Numbers as people and spreadsheets write them: with a decimal point or comma, and with marks
// between groups of three digits.
#ifndef FRAME_NUMERAL_H_
#define FRAME_NUMERAL_H_

#include <string_view>

namespace survmeth::frame {

// How the numbers of a file are written.
struct NumberStyle {
  char decimal = '.';
  // Whether a person or the cells themselves say so. Without that 1,234 beside a decimal point and
  // 1.234 beside a decimal comma may be either of two numbers.
  bool proven = false;
};

struct Numeral {
  enum class Kind { kNone, kNumber, kTooLarge, kAmbiguous };
  Kind kind = Kind::kNone;
  double value = 0;
  bool grouped = false;  // marks stand between groups of digits
};

// What the whole of `cell` spells: sign, digits, decimals and exponent as text::parseNumber has
// them, with the style's decimal mark. Groups of three digits may be parted by the other mark, by
// apostrophes or blanks (also those that do not break), the same one throughout, not beside an
// exponent and not after a zero.
Numeral readNumeral(std::string_view cell, const NumberStyle& style);

// What a cell says about the decimal mark of its file: the mark, if it is a number with that mark
// only; the number of readings, if it is one with either (1.234, 1,234).
enum class MarkEvidence { kNone, kPoint, kComma, kEitherPoint, kEitherComma };
MarkEvidence evidenceOf(std::string_view cell);

}  // namespace survmeth::frame

#endif  // FRAME_NUMERAL_H_
