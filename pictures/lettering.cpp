// Widths of characters and breaking of lines.
#include "pictures/lettering.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "text/utf8.h"

namespace survmeth::pictures {
namespace {

// Advance widths of the characters 32 to 126 of DejaVu Sans, in thousandths of the font's size.
constexpr int kAdvance[] = {
    318, 401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361,  318, 337, 636, 636, 636,
    636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531, 1000, 684, 686, 698, 770, 632,
    575, 775, 752, 295, 295, 656, 557, 863, 748, 787, 603, 787, 695, 635,  611, 732, 684, 989, 685,
    611, 685, 390, 337, 390, 838, 500, 500, 613, 635, 550, 635, 615, 352,  635, 634, 278, 278, 579,
    278, 974, 634, 612, 635, 635, 411, 521, 392, 634, 592, 818, 592, 592,  525, 636, 337, 636, 838};
// Of the others: letters with a mean of 610 to 710 in the European alphabets; wide characters and
// emoji come from other fonts, which draw them at up to 1.25 of the size.
constexpr double kOther = 0.72, kWide = 1.25;

double advanceOf(std::uint32_t character, std::string_view bytes) {
  if (character >= 32 && character < 127) return kAdvance[character - 32] / 1000.0;
  const std::size_t cells = text::displayWidth(bytes);
  return cells == 0 ? 0 : cells == 1 ? kOther : kWide;
}

// Calls back with each character's bytes and width.
template <class Each>
void eachCharacter(std::string_view text, double size, Each each) {
  while (!text.empty()) {
    const std::string_view before = text;
    const std::uint32_t character = text::takeCharacter(text);
    const std::string_view bytes = before.substr(0, before.size() - text.size());
    each(bytes, size * advanceOf(character, bytes));
  }
}

}  // namespace

std::string cleaned(std::string_view text) {
  std::string spaced(text);
  for (char& c : spaced) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  std::string result;
  const std::string shown = text::printable(spaced);
  for (std::string_view rest = shown; !rest.empty();) {
    const std::string_view before = rest;
    const std::uint32_t character = text::takeCharacter(rest);
    // Two of Unicode's non-characters are the only ones left that XML forbids.
    const bool allowed = character != 0xFFFE && character != 0xFFFF;
    if (allowed) {
      result += before.substr(0, before.size() - rest.size());
    } else {
      result += '?';
    }
  }
  return result;
}

double textWidth(std::string_view text, double size) {
  double width = 0;
  eachCharacter(text, size, [&width](std::string_view, double advance) { width += advance; });
  return width;
}

std::vector<std::string> linesOf(std::string_view text, double size, double width) {
  const std::string clean = cleaned(text);
  std::vector<std::string> lines;
  std::string line;
  double used = 0;
  const auto end = [&] {
    if (!line.empty()) lines.push_back(line);
    line.clear();
    used = 0;
  };
  for (std::size_t at = 0; at < clean.size();) {
    const std::size_t word = clean.find_first_not_of(' ', at);
    if (word == std::string::npos) break;
    at = std::min(clean.find(' ', word), clean.size());
    const std::string_view letters = std::string_view(clean).substr(word, at - word);
    const double wide = textWidth(letters, size), space = textWidth(" ", size);
    if (!line.empty() && used + space + wide <= width) {
      line.append(" ").append(letters);
      used += space + wide;
      continue;
    }
    end();
    eachCharacter(letters, size, [&](std::string_view bytes, double advance) {
      if (!line.empty() && used + advance > width) end();
      line += bytes;
      used += advance;
    });
  }
  end();
  return lines;
}

double widestOf(const std::vector<std::string>& lines, double size) {
  double widest = 0;
  for (const std::string& line : lines) widest = std::max(widest, textWidth(line, size));
  return widest;
}

double heightOf(std::size_t lines, double size) {
  return static_cast<double>(lines) * size * kLeading;
}

}  // namespace survmeth::pictures
