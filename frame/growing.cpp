#include "frame/growing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "frame/date.h"
#include "frame/place.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {

using text::quote;

Growing::Growing(const Wanted& wanted, Manner& manner)
    : wanted_(wanted),
      manner_(manner),
      holds_(wanted.cells == Cells::kText ? Holds::kText : Holds::kUndecided) {}

bool Growing::take(std::string_view cell, std::size_t line) {
  const bool isNamed = !cell.empty() && std::find(wanted_.named.begin(), wanted_.named.end(),
                                                  cell) != wanted_.named.end();
  if (!isNamed && manner_.missing(cell)) return takeMissing();
  if (wanted_.cells == Cells::kText) {
    takeLabel(cell, line);
    return true;
  }
  // With a decimal point most cells end here.
  if (manner_.numbers.decimal == '.') {
    if (const std::optional<double> number = text::parseNumber(cell)) {
      takeNumber(cell, *number, line);
      return true;
    }
  }
  return takeOther(cell, line);
}

bool Growing::takeMissing() {
  number_ = std::numeric_limits<double>::quiet_NaN();
  code_ = Column::kMissing;
  if (wanted_.mayBeMissing) return true;
  ++missingCells_;
  return false;
}

// Dates, numbers in other spellings than the program's own, and what is none of them.
bool Growing::takeOther(std::string_view cell, std::size_t line) {
  if (const std::optional<double> days = parseDate(cell)) {
    takeDate(cell, *days, line);
    return true;
  }
  const Numeral numeral = readNumeral(cell, manner_.numbers);
  switch (numeral.kind) {
    case Numeral::Kind::kNumber:
      if (manner_.missing.holds(numeral.value)) return takeMissing();
      if (numeral.grouped) grouped_.add(cell, line);
      if (manner_.numbers.decimal == ',' && cell.find(',') != std::string_view::npos) {
        marked_.add(cell, line);
      }
      takeNumber(cell, numeral.value, line);
      return true;
    case Numeral::Kind::kTooLarge:
      numbers_.add(cell, line);
      if (decide(Holds::kNumbers)) {
        tooLarge_.add(cell, line);
      } else if (holds_ == Holds::kText) {
        takeLabel(cell, line);
      }
      return true;
    case Numeral::Kind::kAmbiguous:
      ambiguous_.add(cell, line);
      break;
    case Numeral::Kind::kNone:
      break;
  }
  others_.add(cell, line);
  if (wanted_.cells == Cells::kAny && holds_ != Holds::kText) becomeText();
  if (wanted_.cells != Cells::kNumbers) decide(Holds::kText);
  if (holds_ == Holds::kText) takeLabel(cell, line);
  return true;
}

// What the first cell that is not missing holds, the others are to hold. False where they hold
// something else already.
bool Growing::decide(Holds holds) {
  if (holds_ == Holds::kUndecided) {
    if (holds == Holds::kText) becomeText();
    holds_ = holds;
  }
  if (holds_ != holds && wanted_.cells == Cells::kAny && holds_ != Holds::kText) becomeText();
  return holds_ == holds;
}

// The rows so far as labels: missing ones, and of a column that may hold anything its numbers.
void Growing::becomeText() {
  const bool wereDates = isDate();
  holds_ = Holds::kText;
  codesKept_.reserve(numbersKept_.size());
  for (const double number : numbersKept_) {
    if (std::isnan(number)) {
      codesKept_.push_back(Column::kMissing);
    } else {
      takeLabel(wereDates ? dateText(number) : text::exact(number), 0);
      codesKept_.push_back(code_);
    }
  }
  numbersKept_ = {};
}

void Growing::takeNumber(std::string_view cell, double number, std::size_t line) {
  numbers_.add(cell, line);
  if (holds_ != Holds::kNumbers && !decide(Holds::kNumbers)) {
    if (holds_ == Holds::kText) takeLabel(cell, line);
  } else if (number < wanted_.least) {
    tooSmall_.add(cell, line);
  } else {
    number_ = number;
  }
}

void Growing::takeDate(std::string_view cell, double days, std::size_t line) {
  dates_.add(cell, line);
  if (!decide(Holds::kDates)) {
    if (holds_ == Holds::kText) takeLabel(cell, line);
  } else if (days < wanted_.least) {
    tooSmall_.add(cell, line);
  } else {
    number_ = days;
  }
}

void Growing::takeLabel(std::string_view cell, std::size_t line) {
  const auto [code, isNew] = intern_(cell);
  if (isNew) {
    labels_.push_back(manner_.encoding.utf8(cell, {manner_.source, line, wanted_.name}, "cell"));
    labelLine_.push_back(line);
  }
  code_ = code;
}

void Growing::keep() {
  if (holds_ == Holds::kText) {
    codesKept_.push_back(code_);
  } else {
    numbersKept_.push_back(number_);
  }
}

Column Growing::taken() {
  Column column = holds_ == Holds::kText
                      ? labelColumn(std::move(wanted_.name), Type::kText, std::move(codesKept_),
                                    std::move(labels_))
                      : numberColumn(std::move(wanted_.name), std::move(numbersKept_));
  column.levelLine = std::move(labelLine_);
  column.missing = missingCells_;
  column.isDate = isDate();
  return column;
}

std::string Growing::orLabels() const {
  if (wanted_.labelsOption.empty()) return {};
  return ", or " + wanted_.labelsOption + " " + quote(wanted_.name) + " to take them as labels";
}

void Growing::check() const {
  const Place place{manner_.source, 0, wanted_.name};
  if (wanted_.cells == Cells::kText) return;
  if (ambiguous_.count > 0) {
    const OddCells::Cell& first = ambiguous_.first[0];
    const bool isComma = first.text.find(',') != std::string::npos;
    throw Unreadable(
        {manner_.source, first.line, wanted_.name},
        quote(first.text) + " may have a decimal " + (isComma ? "comma" : "point") +
            " or a mark of thousands",
        "numbers with one reading, or --decimal to say which mark is the decimal one" + orLabels());
  }
  if (wanted_.cells != Cells::kAny) {
    if (dates_.count > 0 && numbers_.count + others_.count > 0) {
      refuseDates(place, dates_, numbers_, others_, orLabels());
    }
    if (wanted_.cells == Cells::kEither) {
      if (numbers_.count == 0 && !labels_.empty() &&
          std::all_of(labels_.begin(), labels_.end(), hasDecimalComma)) {
        throw Unreadable({manner_.source, labelLine_[0], wanted_.name},
                         quote(labels_[0]) + " and all other cells hold a comma",
                         std::string("numbers ") + kNoComma + orLabels());
      }
      if (numbers_.count > 0 && others_.count > 0) {
        refuseMixture(place, numbers_, others_, orLabels());
      }
    }
  }
  if (holds_ == Holds::kText) return;
  const std::string limit = limitText(wanted_.least);
  if (others_.count > 1 && numbers_.count == 0) {
    const OddCells::Cell& first = others_.first[0];
    throw Unreadable(place,
                     "no cell is a number; the first is " + quote(first.text) + " in line " +
                         std::to_string(first.line),
                     "numbers" + limit + commaHint(others_));
  }
  if (others_.count > 0) {
    refuseCells(place, others_, "not a number", "not numbers", limit + commaHint(others_));
  }
  if (tooSmall_.count > 0) refuseCells(place, tooSmall_, "out of range", "out of range", limit);
  if (tooLarge_.count > 0) {
    refuseCells(place, tooLarge_, "out of range", "out of range", " of size 1.8e308 at most");
  }
}

}  // namespace survmeth::frame
