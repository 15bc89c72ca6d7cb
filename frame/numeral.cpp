#include "frame/numeral.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "text/numbers.h"

namespace survmeth::frame {
namespace {

// Beside the other decimal mark: blank, no-break space, thin space, narrow no-break space,
// apostrophe, typographic apostrophe.
constexpr std::array<std::string_view, 6> kGroupMarks = {
    " ", "\xC2\xA0", "\xE2\x80\x89", "\xE2\x80\xAF", "'", "\xE2\x80\x99"};
constexpr std::size_t kGroup = 3;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t digitsAtFront(std::string_view text) {
  std::size_t count = 0;
  while (count < text.size() && isDigit(text[count])) ++count;
  return count;
}

// The mark between groups at the front of `text`, or an empty one.
std::string_view groupMark(std::string_view text, char other) {
  if (text.starts_with(other)) return text.substr(0, 1);
  for (const std::string_view mark : kGroupMarks) {
    if (text.starts_with(mark)) return mark;
  }
  return {};
}

// A number in the form that text::parseNumber reads; `groups` counts its group marks.
struct Plain {
  std::string text;
  std::size_t groups = 0;
  bool byOtherMark = false;  // the group mark is the other decimal mark
  bool hasDecimals = false;
};

std::optional<Plain> plainOf(std::string_view cell, char decimal) {
  const char other = decimal == '.' ? ',' : '.';
  Plain plain;
  if (cell.starts_with('+') || cell.starts_with('-')) {
    plain.text = cell.front();
    cell.remove_prefix(1);
  }
  const auto take = [&](std::size_t count) {
    plain.text += cell.substr(0, count);
    cell.remove_prefix(count);
  };
  const std::size_t leading = digitsAtFront(cell);
  const bool mayGroup = leading >= 1 && leading <= kGroup && cell.front() != '0';
  take(leading);
  const std::string_view mark = groupMark(cell, other);
  while (mayGroup && !mark.empty() && cell.starts_with(mark)) {
    if (digitsAtFront(cell.substr(mark.size())) != kGroup) return std::nullopt;
    cell.remove_prefix(mark.size());
    take(kGroup);
    ++plain.groups;
  }
  plain.byOtherMark = plain.groups > 0 && mark.front() == other;
  if (cell.starts_with(decimal)) {
    plain.hasDecimals = true;
    cell.remove_prefix(1);
    plain.text += '.';
    take(digitsAtFront(cell));
  }
  if (!cell.empty() && (plain.groups > 0 || (cell.front() != 'e' && cell.front() != 'E'))) {
    return std::nullopt;
  }
  if (cell.find_first_of(".,") != std::string_view::npos) return std::nullopt;
  plain.text += cell;
  return plain;
}

}  // namespace

Numeral readNumeral(std::string_view cell, const NumberStyle& style) {
  const std::optional<Plain> plain = plainOf(cell, style.decimal);
  if (!plain) return {};
  Numeral numeral;
  numeral.grouped = plain->groups > 0;
  if (const std::optional<double> number = text::parseNumber(plain->text)) {
    const bool either = plain->groups == 1 && plain->byOtherMark && !plain->hasDecimals;
    numeral.kind = either && !style.proven ? Numeral::Kind::kAmbiguous : Numeral::Kind::kNumber;
    numeral.value = *number;
  } else if (text::isTooLarge(plain->text)) {
    numeral.kind = Numeral::Kind::kTooLarge;
  }
  return numeral;
}

MarkEvidence evidenceOf(std::string_view cell) {
  const std::size_t mark = cell.find_first_of(".,");
  if (mark == std::string_view::npos) return MarkEvidence::kNone;
  const bool asPoint = readNumeral(cell, {'.', true}).kind != Numeral::Kind::kNone;
  const bool asComma = readNumeral(cell, {',', true}).kind != Numeral::Kind::kNone;
  if (asPoint && asComma) {
    return cell[mark] == '.' ? MarkEvidence::kEitherPoint : MarkEvidence::kEitherComma;
  }
  if (asPoint) return MarkEvidence::kPoint;
  return asComma ? MarkEvidence::kComma : MarkEvidence::kNone;
}

}  // namespace survmeth::frame
