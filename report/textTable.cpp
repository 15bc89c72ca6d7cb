// Padding by display width, so that accents and wide characters keep the columns straight.
#include "report/textTable.h"

#include <algorithm>
#include <utility>

#include "text/utf8.h"

namespace survmeth::report {
namespace {

using text::displayWidth;
using text::printable;
using text::wrapped;

constexpr std::size_t kGap = 2;        // spaces between columns
constexpr std::size_t kLeastCell = 8;  // texts are not broken into narrower pieces

}  // namespace

// Texts wider than `widest` are broken; `widths` are what the columns then take.
struct TextTable::Layout {
  std::size_t widest;
  std::vector<std::size_t> widths;

  std::vector<std::string> lines(const std::string& cell) const {
    if (cell.size() <= widest || displayWidth(cell) <= widest) return {cell};
    return wrapped(cell, widest);
  }
  std::size_t widthOf(const std::string& cell) const {
    std::size_t width = 0;
    for (const std::string& line : lines(cell)) width = std::max(width, displayWidth(line));
    return width;
  }
};

TextTable::TextTable(std::vector<Heading> headings) : headings_(std::move(headings)) {
  for (Heading& heading : headings_) heading.text = printable(heading.text);
}

void TextTable::row(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows_.push_back(std::move(cells));
}

void TextTable::addBlock(const Layout& layout, const std::vector<std::size_t>& columns,
                         std::string& out) const {
  const auto padded = [&](std::size_t column, const std::string& cell) {
    std::string padding(layout.widths[column] - displayWidth(cell), ' ');
    return headings_[column].align == kRight ? padding + cell : cell + padding;
  };
  // The cells of one row, which may take several lines; those with fewer stand at the bottom of
  // the headings and at the top of the others.
  const auto add = [&](const auto& cellOf, bool atBottom) {
    std::vector<std::vector<std::string>> cells;
    std::size_t height = 1;
    for (const std::size_t column : columns) {
      cells.push_back(layout.lines(cellOf(column)));
      height = std::max(height, cells.back().size());
    }
    for (std::size_t line = 0; line < height; ++line) {
      for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t above = atBottom ? height - cells[i].size() : 0;
        const bool has = line >= above && line - above < cells[i].size();
        if (i > 0) out.append(kGap, ' ');
        out += padded(columns[i], has ? cells[i][line - above] : std::string());
      }
      out.erase(out.find_last_not_of(' ') + 1);
      out += '\n';
    }
  };
  if (std::any_of(headings_.begin(), headings_.end(),
                  [](const Heading& heading) { return !heading.text.empty(); })) {
    add([&](std::size_t column) -> const std::string& { return headings_[column].text; }, true);
  }
  for (const std::vector<std::string>& cells : rows_) {
    add([&](std::size_t column) -> const std::string& { return cells[column]; }, false);
  }
}

std::string TextTable::text(std::size_t width, std::size_t repeated) const {
  const std::size_t unlimited = static_cast<std::size_t>(-1);
  Layout layout{width == 0 ? unlimited : std::max(kLeastCell, (width - std::min(width, kGap)) / 2),
                {}};
  for (std::size_t i = 0; i < headings_.size(); ++i) {
    layout.widths.push_back(layout.widthOf(headings_[i].text));
    for (const auto& cells : rows_) {
      layout.widths[i] = std::max(layout.widths[i], layout.widthOf(cells[i]));
    }
  }
  std::size_t whole = 0;
  for (const std::size_t each : layout.widths) whole += each + kGap;
  const bool folds = width > 0 && whole > width + kGap;

  std::size_t leading = 0, leadingWidth = 0;  // the columns that every block begins with
  for (; folds && leading < std::min(repeated, headings_.size()); ++leading) {
    const std::size_t wider = leadingWidth + layout.widths[leading] + kGap;
    if (leading > 0 && wider > width / 2) break;
    leadingWidth = wider;
  }

  std::string result;
  std::size_t next = leading;
  do {
    std::vector<std::size_t> columns;
    for (std::size_t i = 0; i < leading; ++i) columns.push_back(i);
    std::size_t used = leadingWidth;
    while (next < headings_.size() &&
           (!folds || columns.size() == leading || used + layout.widths[next] <= width)) {
      used += layout.widths[next] + kGap;
      columns.push_back(next++);
    }
    if (!result.empty()) result += '\n';
    addBlock(layout, columns, result);
  } while (next < headings_.size());
  return result;
}

std::string underlined(const std::string& title) {
  const std::string text = printable(title);
  return text + '\n' + std::string(displayWidth(text), '-') + '\n';
}

}  // namespace survmeth::report
