// UTF-8 decoding (RFC 3629: no overlong forms, no surrogates) and character widths.
#include "cli/shell/utf8.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace cli {
namespace {

constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

// Takes one character off the front of `text`; kInvalid takes one byte.
std::uint32_t next(std::string_view& text) {
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
    value = kInvalid;
  }
  if (text.size() < length) value = kInvalid;
  for (std::size_t i = 1; i < length && value != kInvalid; ++i) {
    value = (byte(i) & 0xC0) == 0x80 ? (value << 6) | (byte(i) & 0x3Fu) : kInvalid;
  }
  if (value != kInvalid && (value < least || value > 0x10FFFF || (value >> 11) == 0x1B)) {
    value = kInvalid;
  }
  text.remove_prefix(value == kInvalid ? 1 : length);
  return value;
}

struct Range {
  std::uint32_t first, last;
};
// Unicode 15, the blocks that occur in labels: combining marks, then wide characters.
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
                           {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
                           {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},  {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE4F},  {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <std::size_t N>
bool within(const Range (&ranges)[N], std::uint32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

}  // namespace

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    if (next(text) == kInvalid) return false;
  }
  return true;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const std::uint32_t character = next(text);
    if (within(kZero, character)) continue;
    width += within(kWide, character) ? 2 : 1;
  }
  return width;
}

std::string shortened(const std::string& text, std::size_t width) {
  std::string cut = text;
  while (displayWidth(cut) > width) {
    do {
      cut.pop_back();
    } while (!cut.empty() && (static_cast<unsigned char>(cut.back()) & 0xC0) == 0x80);
  }
  return cut == text ? cut : cut + "...";
}

}  // namespace cli
