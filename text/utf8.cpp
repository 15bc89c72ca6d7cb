// UTF-8 decoding (RFC 3629: no overlong forms, no surrogates), character widths and line breaks.
#include "text/utf8.h"

#include <algorithm>
#include <iterator>

namespace survmeth::text {
namespace {

struct Range {
  std::uint32_t first, last;
};
// Unicode 15, the blocks that occur in labels: combining marks, wide characters, and what isControl
// says.
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},  {0x064B, 0x065F},
                           {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},  {0x20D0, 0x20FF},
                           {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
    {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD}};
constexpr Range kControls[] = {{0x00, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

template <std::size_t N>
bool within(const Range (&ranges)[N], std::uint32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

std::size_t widthOf(std::uint32_t character) {
  if (character < kZero[0].first) return 1;
  if (within(kZero, character)) return 0;
  return within(kWide, character) ? 2 : 1;
}

}  // namespace

std::uint32_t takeCharacter(std::string_view& text) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  std::size_t length = 1;
  std::uint32_t value = lead, least = 0;
  if (lead >= 0xF0 && lead < 0xF8) {
    length = 4, value = lead & 0x07u, least = 0x10000;
  } else if (lead >= 0xE0 && lead < 0xF0) {
    length = 3, value = lead & 0x0Fu, least = 0x800;
  } else if (lead >= 0xC0 && lead < 0xE0) {
    length = 2, value = lead & 0x1Fu, least = 0x80;
  } else if (lead >= 0x80) {
    value = kNoCharacter;
  }
  if (text.size() < length) value = kNoCharacter;
  for (std::size_t i = 1; i < length && value != kNoCharacter; ++i) {
    value = (byte(i) & 0xC0) == 0x80 ? (value << 6) | (byte(i) & 0x3Fu) : kNoCharacter;
  }
  if (value != kNoCharacter && (value < least || value > 0x10FFFF || (value >> 11) == 0x1B)) {
    value = kNoCharacter;
  }
  text.remove_prefix(value == kNoCharacter ? 1 : length);
  return value;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    if (takeCharacter(text) == kNoCharacter) return false;
  }
  return true;
}

bool isControl(std::uint32_t character) {
  if (character >= ' ' && character < 0x7F) return false;
  return within(kControls, character);
}

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    const std::uint32_t character = takeCharacter(text);
    if (character == kNoCharacter || isControl(character)) {
      result += '?';
    } else {
      result += before.substr(0, before.size() - text.size());
    }
  }
  return result;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) width += widthOf(takeCharacter(text));
  return width;
}

std::string shortened(const std::string& text, std::size_t width) {
  std::string_view rest = text;
  for (std::size_t used = 0; !rest.empty();) {
    const std::size_t at = text.size() - rest.size();
    used += widthOf(takeCharacter(rest));
    if (used > width) return text.substr(0, at) + "...";
  }
  return text;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines(1);
  std::size_t used = 0;  // cells of the last line
  while (!text.empty()) {
    if (text.front() == ' ') {
      text.remove_prefix(1);
      continue;
    }
    std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    const std::size_t cells = displayWidth(word);
    if (used > 0 && used + 1 + cells <= width) {
      lines.back() += ' ';
      ++used;
    } else if (used > 0) {
      lines.emplace_back();
      used = 0;
    }
    while (!word.empty()) {
      const std::string_view before = word;
      const std::size_t cell = widthOf(takeCharacter(word));
      if (used > 0 && used + cell > width) {
        lines.emplace_back();
        used = 0;
      }
      lines.back() += before.substr(0, before.size() - word.size());
      used += cell;
    }
  }
  return lines;
}

}  // namespace survmeth::text
