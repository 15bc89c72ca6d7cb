#include "frame/oddCells.h"

#include <algorithm>
#include <cmath>

#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {

using text::grouped;
using text::quote;

namespace {

constexpr std::size_t kShown = 5;  // odd cells in a message

// Both kinds, by their lines.
OddCells merged(const OddCells& a, const OddCells& b) {
  OddCells both = a;
  both.count += b.count;
  both.first.insert(both.first.end(), b.first.begin(), b.first.end());
  std::stable_sort(
      both.first.begin(), both.first.end(),
      [](const OddCells::Cell& x, const OddCells::Cell& y) { return x.line < y.line; });
  if (both.first.size() > kShown) both.first.resize(kShown);
  return both;
}

}  // namespace

void OddCells::add(std::string_view cell, std::size_t line) {
  if (++count <= kShown) first.push_back({line, std::string(cell)});
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

bool hasDecimalComma(std::string_view text) {
  const std::size_t after = text.find(',') + 1;  // npos + 1 is 0
  return after > 0 && after < text.size() && text[after] >= '0' && text[after] <= '9' &&
         text.find_first_not_of("+-.,0123456789") == std::string_view::npos;
}

std::string commaHint(const OddCells& cells) {
  return std::any_of(cells.first.begin(), cells.first.end(),
                     [](const OddCells::Cell& cell) { return hasDecimalComma(cell.text); })
             ? std::string(", ") + kNoComma
             : "";
}

void refuseCells(const Place& column, const OddCells& cells, const std::string& one,
                 const std::string& many, const std::string& limit) {
  if (cells.count == 1) {
    throw Unreadable({column.source, cells.first[0].line, column.column},
                     quote(cells.first[0].text) + " is " + one, "a number" + limit);
  }
  throw Unreadable(column, grouped(cells.count) + " cells are " + many + ": " + listed(cells),
                   "numbers" + limit);
}

std::string limitText(double least) {
  return std::isfinite(least) ? " not below " + text::brief(least) : "";
}

void refuseDates(const Place& column, const OddCells& dates, const OddCells& numbers,
                 const OddCells& others, const std::string& orLabels) {
  const OddCells rest = merged(numbers, others);
  const bool fewerDates = dates.count < rest.count;
  const OddCells& fewer = fewerDates ? dates : rest;
  const OddCells& more = fewerDates ? rest : dates;
  const std::string what = grouped(more.count) + (more.count == 1 ? " cell is " : " cells are ") +
                           (fewerDates ? "no " : "") +
                           (more.count == 1 ? (fewerDates ? "date" : "a date") : "dates") +
                           " and " + grouped(fewer.count) + (fewer.count == 1 ? " is" : " are") +
                           (fewerDates ? "" : " not") + ": " + listed(fewer);
  throw Unreadable(column, what, "dates such as 2024-03-01 in every row or in none" + orLabels);
}

// Numbers among words are as likely a slip of the pen as words among numbers.
void refuseMixture(const Place& column, const OddCells& numbers, const OddCells& others,
                   const std::string& orLabels) {
  const bool fewerNumbers = numbers.count < others.count;
  const OddCells& fewer = fewerNumbers ? numbers : others;
  const OddCells& more = fewerNumbers ? others : numbers;
  std::string what = grouped(more.count);
  if (fewerNumbers) {
    what += " cells are not numbers and ";
  } else {
    what += more.count == 1 ? " cell is a number and " : " cells are numbers and ";
  }
  what += grouped(fewer.count) + (fewer.count == 1 ? " is" : " are") + (fewerNumbers ? "" : " not");
  throw Unreadable(column, what + ": " + listed(fewer),
                   "numbers in every row" + commaHint(others) + orLabels);
}

}  // namespace survmeth::frame
