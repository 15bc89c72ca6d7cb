#include "frame/growing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "frame/place.h"
#include "text/numbers.h"
#include "text/utf8.h"
#include "text/words.h"

namespace survmeth::frame {

using text::brief;
using text::grouped;
using text::isTooLarge;
using text::isUtf8;
using text::parseNumber;
using text::quote;

namespace {

constexpr std::size_t kShown = 5;  // odd cells in a message
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

// 0,5 or 1.234,5 or 1,234: nothing but digits, signs and points beside a comma before a digit.
bool hasDecimalComma(std::string_view text) {
  const std::size_t after = text.find(',') + 1;  // npos + 1 is 0
  return after > 0 && after < text.size() && text[after] >= '0' && text[after] <= '9' &&
         text.find_first_not_of("+-.,0123456789") == std::string_view::npos;
}

std::string listed(const OddCells& cells) {
  std::string text;
  for (const OddCells::Cell& cell : cells.first) {
    if (!text.empty()) text += ", ";
    text += quote(cell.text) + " (line " + std::to_string(cell.line) + ")";
  }
  if (cells.count > cells.first.size()) {
    text += " and " + grouped(cells.count - cells.first.size()) + " more";
  }
  return text;
}

constexpr const char* kNoComma = "written with a decimal point and no comma";

std::string commaHint(const OddCells& cells) {
  return std::any_of(cells.first.begin(), cells.first.end(),
                     [](const OddCells::Cell& cell) { return hasDecimalComma(cell.text); })
             ? std::string(", ") + kNoComma
             : "";
}

// `one` and `many` end "X is ..." and "3 cells are ...".
[[noreturn]] void refuse(const Place& column, const OddCells& cells, const std::string& one,
                         const std::string& many, const std::string& limit) {
  if (cells.count == 1) {
    throw Unreadable({column.source, cells.first[0].line, column.column},
                     quote(cells.first[0].text) + " is " + one, "a number" + limit);
  }
  throw Unreadable(column, grouped(cells.count) + " cells are " + many + ": " + listed(cells),
                   "numbers" + limit);
}

}  // namespace

void OddCells::add(std::string_view cell, std::size_t line) {
  if (++count <= kShown) first.push_back({line, std::string(cell)});
}

Growing::Growing(const Wanted& wanted, const Missing& missing)
    : wanted_(wanted),
      missing_(missing),
      isText_(wanted.cells == Cells::kText),
      decided_(wanted.cells != Cells::kEither) {}

bool Growing::take(std::string_view cell, std::size_t line, const std::string& source) {
  const bool isNamed = !cell.empty() && std::find(wanted_.named.begin(), wanted_.named.end(),
                                                  cell) != wanted_.named.end();
  if (!isNamed && missing_(cell)) {
    number_ = kNoNumber;
    code_ = Column::kMissing;
    if (wanted_.mayBeMissing) return true;
    ++missingCells_;
    return false;
  }
  if (wanted_.cells == Cells::kText) {
    takeLabel(cell, line, source);
    return true;
  }
  const std::optional<double> number = parseNumber(cell);
  const bool isNumber = number || isTooLarge(cell);
  if (!decided_) {
    decided_ = true;
    isText_ = !isNumber;
    keepUndecided();
  }
  (isNumber ? numbers_ : others_).add(cell, line);
  if (isText_) {
    takeLabel(cell, line, source);
  } else if (isNumber) {
    takeNumber(cell, number, line);
  }
  return true;
}

void Growing::takeNumber(std::string_view cell, std::optional<double> number, std::size_t line) {
  if (!number) {
    tooLarge_.add(cell, line);
  } else if (*number < wanted_.least) {
    tooSmall_.add(cell, line);
  } else {
    number_ = *number;
  }
}

void Growing::takeLabel(std::string_view cell, std::size_t line, const std::string& source) {
  const auto [code, isNew] = intern_(cell);
  if (isNew) {
    if (!isUtf8(cell)) {
      throw Unreadable({source, line, wanted_.name}, "the cell is not UTF-8",
                       "text in UTF-8 encoding");
    }
    labels_.emplace_back(cell);
    labelLine_.push_back(line);
  }
  code_ = code;
}

void Growing::keep() {
  if (!decided_) {
    ++undecided_;
  } else if (isText_) {
    codesKept_.push_back(code_);
  } else {
    numbersKept_.push_back(number_);
  }
}

// The kept rows so far, in which the cell is missing.
void Growing::keepUndecided() {
  if (isText_) {
    codesKept_.assign(undecided_, Column::kMissing);
  } else {
    numbersKept_.assign(undecided_, kNoNumber);
  }
}

Column Growing::taken() {
  if (!decided_) keepUndecided();
  Column column = isText_ ? labelColumn(std::move(wanted_.name), Type::kText, std::move(codesKept_),
                                        std::move(labels_))
                          : numberColumn(std::move(wanted_.name), std::move(numbersKept_));
  column.levelLine = std::move(labelLine_);
  column.missing = missingCells_;
  return column;
}

void Growing::check(const std::string& source) const {
  if (wanted_.cells == Cells::kEither) checkMixture(source);
  if (!isText_) checkNumbers(source);
}

void Growing::checkNumbers(const std::string& source) const {
  const Place place{source, 0, wanted_.name};
  const std::string limit =
      std::isfinite(wanted_.least) ? " not below " + brief(wanted_.least) : "";
  if (others_.count > 1 && numbers_.count == 0) {
    const OddCells::Cell& first = others_.first[0];
    throw Unreadable(place,
                     "no cell is a number; the first is " + quote(first.text) + " in line " +
                         std::to_string(first.line),
                     "numbers" + limit + commaHint(others_));
  }
  if (others_.count > 0) {
    refuse(place, others_, "not a number", "not numbers", limit + commaHint(others_));
  }
  if (tooSmall_.count > 0) refuse(place, tooSmall_, "out of range", "out of range", limit);
  if (tooLarge_.count > 0) {
    refuse(place, tooLarge_, "out of range", "out of range", " of size 1.8e308 at most");
  }
}

// Numbers among words are as likely a slip of the pen as words among numbers.
void Growing::checkMixture(const std::string& source) const {
  std::string orLabels;
  if (!wanted_.labelsOption.empty()) {
    orLabels =
        ", or " + wanted_.labelsOption + " " + quote(wanted_.name) + " to take them as labels";
  }
  if (numbers_.count == 0 && !labels_.empty() &&
      std::all_of(labels_.begin(), labels_.end(), hasDecimalComma)) {
    throw Unreadable({source, labelLine_[0], wanted_.name},
                     quote(labels_[0]) + " and all other cells hold a comma",
                     std::string("numbers ") + kNoComma + orLabels);
  }
  if (numbers_.count == 0 || others_.count == 0) return;
  const bool fewerNumbers = numbers_.count < others_.count;
  const OddCells& fewer = fewerNumbers ? numbers_ : others_;
  const OddCells& more = fewerNumbers ? others_ : numbers_;
  std::string what = grouped(more.count);
  if (fewerNumbers) {
    what += " cells are not numbers and ";
  } else {
    what += more.count == 1 ? " cell is a number and " : " cells are numbers and ";
  }
  what += grouped(fewer.count) + (fewer.count == 1 ? " is" : " are") + (fewerNumbers ? "" : " not");
  throw Unreadable({source, 0, wanted_.name}, what + ": " + listed(fewer),
                   "numbers in every row" + commaHint(others_) + orLabels);
}

}  // namespace survmeth::frame
