// Padding by display width, so that accents and wide characters keep the columns straight.
#include "cli/shell/textTable.h"

#include <algorithm>
#include <utility>

#include "cli/shell/utf8.h"

namespace cli {

std::string printable(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return text;
}

TextTable::TextTable(std::vector<Heading> headings) : headings_(std::move(headings)) {
  for (Heading& heading : headings_) heading.text = printable(heading.text);
}

void TextTable::row(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows_.push_back(std::move(cells));
}

std::string TextTable::text() const {
  std::vector<std::size_t> widths;
  for (const Heading& heading : headings_) widths.push_back(displayWidth(heading.text));
  for (const auto& cells : rows_) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(cells[i]));
    }
  }
  std::string result;
  const auto add = [&](std::size_t i, const std::string& cell) {
    const std::string padding(widths[i] - displayWidth(cell), ' ');
    if (i > 0) result += "  ";
    result += headings_[i].align == kRight ? padding + cell : cell + padding;
  };
  const auto endLine = [&result]() {
    result.erase(result.find_last_not_of(' ') + 1);
    result += '\n';
  };
  for (std::size_t i = 0; i < headings_.size(); ++i) add(i, headings_[i].text);
  endLine();
  for (const auto& cells : rows_) {
    for (std::size_t i = 0; i < cells.size(); ++i) add(i, cells[i]);
    endLine();
  }
  return result;
}

std::string underlined(const std::string& title) {
  const std::string text = printable(title);
  return text + '\n' + std::string(displayWidth(text), '-') + '\n';
}

}  // namespace cli
