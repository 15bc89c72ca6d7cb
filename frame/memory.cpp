#include "frame/memory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "frame/choose.h"
#include "frame/date.h"
#include "frame/labels.h"
#include "frame/missing.h"
#include "frame/select.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

using text::quote;

constexpr std::size_t kNone = Unsuitable::kNone;

std::string sentence(const std::string& source, const std::string& column, std::size_t row,
                     const std::string& text, const std::string& expected) {
  std::string place = source;
  if (row != kNone) place += ", row " + text::grouped(row + 1);
  return placed({place, 0, column}, text, expected);
}

std::string expectedNumbers(const Wanted& want) {
  return std::isfinite(want.least) ? "numbers not below " + text::brief(want.least) : "numbers";
}

// What the caller calls missing.
struct Absent {
  explicit Absent(const std::vector<std::string>& missing) : words(missing) {
    for (const std::string& word : missing) {
      if (const std::optional<double> number = text::parseNumber(word)) numbers.push_back(*number);
    }
  }
  Missing words;
  std::vector<double> numbers;
};

// How many cells are not as wanted, and the first of them.
struct Odd {
  std::size_t count = 0, row = 0;
  std::string cell;

  void add(std::size_t at, const std::string& text) {
    if (count++ > 0) return;
    row = at;
    cell = text;
  }
  // `one` and `many` end "X is ..." and "3 cells are ...".
  void refuse(const Given& given, const Wanted& want, const std::string& one,
              const std::string& many) const {
    if (count == 0) return;
    throw Unsuitable(
        given.source, want.name, row,
        count == 1 ? quote(cell) + " is " + one
                   : text::grouped(count) + " cells are " + many + ", the first is " + quote(cell),
        expectedNumbers(want));
  }
};

// Takes what the caller calls missing out of a column of numbers; borrows where nothing is.
Column withoutValues(const Column& column, const std::vector<double>& values) {
  if (values.empty()) return column;
  const auto isOne = [&values](double cell) {
    return std::find(values.begin(), values.end(), cell) != values.end();
  };
  if (std::none_of(column.numbers.begin(), column.numbers.end(), isOne)) return column;
  std::vector<double> numbers(column.numbers.begin(), column.numbers.end());
  std::replace_if(numbers.begin(), numbers.end(), isOne, std::numeric_limits<double>::quiet_NaN());
  Column made = numberColumn(column.name, std::move(numbers));
  made.isDate = column.isDate;
  return made;
}

// The numbers that text spells.
Column numbersFromText(const Given& given, const Column& column, const Wanted& want,
                       const Missing& missing) {
  if (column.type == Type::kFactor) {
    throw Unsuitable(given.source, want.name, kNone, "the column holds categories",
                     expectedNumbers(want));
  }
  std::vector<std::optional<double>> spelled;
  std::vector<bool> absent;
  for (const std::string& level : column.levels) {
    spelled.push_back(text::parseNumber(level));
    absent.push_back(missing(level));
  }
  std::vector<double> numbers(column.codes.size(), std::numeric_limits<double>::quiet_NaN());
  Odd odd;
  for (std::size_t row = 0; row < numbers.size(); ++row) {
    const std::uint32_t code = column.codes[row];
    if (code == Column::kMissing || absent[code]) continue;
    if (spelled[code]) {
      numbers[row] = *spelled[code];
    } else {
      odd.add(row, column.levels[code]);
    }
  }
  odd.refuse(given, want, "not a number", "not numbers");
  return numberColumn(column.name, std::move(numbers));
}

// Whether all are finite, none missing, and none is below `least`. Four at a time and without a
// branch, since most columns are: x - x is 0 of finite numbers only.
bool arePlain(std::span<const double> numbers, double least) {
  constexpr std::size_t kLanes = 4;
  std::array<double, kLanes> differences{}, smallest;
  smallest.fill(std::numeric_limits<double>::infinity());
  const auto take = [&](std::size_t lane, double value) {
    differences[lane] += value - value;
    smallest[lane] = value < smallest[lane] ? value : smallest[lane];
  };
  std::size_t row = 0;
  for (; row + kLanes <= numbers.size(); row += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) take(lane, numbers[row + lane]);
  }
  for (; row < numbers.size(); ++row) take(0, numbers[row]);
  bool plain = true;
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    plain = plain && differences[lane] == 0 && smallest[lane] >= least;
  }
  return plain;
}

Column numbersOf(const Given& given, const Column& column, const Wanted& want,
                 const Absent& absent) {
  Column made = column.type == Type::kNumber ? withoutValues(column, absent.numbers)
                                             : numbersFromText(given, column, want, absent.words);
  made.missing = 0;
  if (arePlain(made.numbers, want.least)) return made;
  Odd odd;
  for (std::size_t row = 0; row < made.numbers.size(); ++row) {
    const double value = made.numbers[row];
    if (std::isnan(value)) ++made.missing;
    if (value < want.least || std::isinf(value)) odd.add(row, cellText(value, made.isDate));
  }
  odd.refuse(given, want, "out of range", "out of range");
  return made;
}

// Labels in order of first use, or of a factor in its order, and only those that rows hold.
Column labelsFrom(const Column& column, const Wanted& want, const Missing& missing) {
  std::vector<std::string> levels = column.levels;
  std::vector<std::uint32_t> codes(column.codes.begin(), column.codes.end());
  if (column.type == Type::kNumber) {
    Labels spelled = labelsByFirstUse(column);
    levels = std::move(spelled.labels);
    codes = std::move(spelled.codes);
  }
  std::vector<std::size_t> firstRow(levels.size(), kNone);
  std::vector<std::uint32_t> order;
  for (std::size_t row = 0; row < codes.size() && order.size() < levels.size(); ++row) {
    const std::uint32_t code = codes[row];
    if (code == Column::kMissing || firstRow[code] != kNone) continue;
    firstRow[code] = row;
    order.push_back(code);
  }
  if (column.type == Type::kFactor) std::sort(order.begin(), order.end());
  std::vector<std::uint32_t> place(levels.size(), Column::kMissing);
  std::vector<std::string> kept;
  std::vector<std::size_t> lines;
  for (const std::uint32_t code : order) {
    const std::string& label = levels[code];
    const bool isNamed = std::find(want.named.begin(), want.named.end(), label) != want.named.end();
    if (!isNamed && missing(label)) continue;
    place[code] = static_cast<std::uint32_t>(kept.size());
    kept.push_back(label);
    lines.push_back(firstRow[code] + 1);
  }
  bool same = true;
  for (std::uint32_t code = 0; code < place.size(); ++code) same = same && place[code] == code;
  for (std::size_t row = 0; !same && row < codes.size(); ++row) {
    if (codes[row] != Column::kMissing) codes[row] = place[codes[row]];
  }
  Column made = labelColumn(column.name, column.type == Type::kFactor ? Type::kFactor : Type::kText,
                            std::move(codes), std::move(kept));
  made.levelLine = std::move(lines);
  return made;
}

Column madeFor(const Given& given, const Wanted& want, const Absent& absent) {
  const auto found = std::find_if(given.columns.begin(), given.columns.end(),
                                  [&](const Column& each) { return each.name == want.name; });
  if (want.name.empty() || found == given.columns.end()) {
    throw Unsuitable(given.source, want.name, kNone, "there is no such column",
                     "one of " + text::nearestFirst(want.name, given.names));
  }
  const bool asNumbers =
      want.cells == Cells::kNumbers || (want.cells != Cells::kText && found->type == Type::kNumber);
  return asNumbers ? numbersOf(given, *found, want, absent)
                   : labelsFrom(*found, want, absent.words);
}

// Refuses numbers below the limits of the wanted columns.
void requireRanges(const Given& given, const Frame& frame, const std::vector<Wanted>& wanted) {
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const std::span<const double> numbers = frame.columns[i].numbers;
    Odd odd;
    for (std::size_t row = 0; row < numbers.size(); ++row) {
      if (numbers[row] < wanted[i].least) {
        odd.add(frame.lines.line(row) - 1, cellText(numbers[row], frame.columns[i].isDate));
      }
    }
    odd.refuse(given, wanted[i], "out of range", "out of range");
  }
}

// Of the rows that meet the condition. Their numbers in the caller's data take the place of lines.
Frame chosenOf(const Given& given, const std::vector<Wanted>& wanted,
               const std::vector<std::string>& missing, const std::string& where) {
  const Condition condition = parseCondition(where);
  Frame all = frameOf(given, wantedFor(condition, wanted), missing);
  all.fromFile = true;
  all.lines.steps = {{0, 1}};
  std::vector<Wanted> unlimited = wanted;
  for (Wanted& want : unlimited) want.least = -std::numeric_limits<double>::infinity();
  std::vector<Wanted> incomplete = unlimited;
  for (Wanted& want : incomplete) want.mayBeMissing = true;
  requireRanges(given, chosenRows(all, condition, incomplete), wanted);
  Frame chosen = chosenRows(all, condition, unlimited);
  chosen.fromFile = false;
  return chosen;
}

}  // namespace

Unsuitable::Unsuitable(const std::string& source, std::string column, std::size_t row,
                       std::string text, std::string expected)
    : Unreadable(sentence(source, column, row, text, expected)),
      column_(std::move(column)),
      row_(row),
      text_(std::move(text)),
      expected_(std::move(expected)) {}

Frame frameOf(const Given& given, const std::vector<Wanted>& wanted,
              const std::vector<std::string>& missing, const std::string& where) {
  if (!where.empty()) return chosenOf(given, wanted, missing, where);
  const Absent absent(missing);
  Frame frame;
  frame.source = given.source;
  frame.rows = frame.rowsRead = given.rows;
  std::vector<bool> complete;  // none: all are
  for (const Wanted& want : wanted) {
    Column made = madeFor(given, want, absent);
    if (!want.mayBeMissing && made.missing > 0) {
      complete.resize(given.rows, true);
      for (std::size_t row = 0; row < given.rows; ++row) {
        if (made.isMissing(row)) complete[row] = false;
      }
    }
    if (want.mayBeMissing) made.missing = 0;  // its lack leaves out no row
    frame.columns.push_back(std::move(made));
  }
  if (complete.empty()) return frame;
  std::vector<std::uint32_t> rows;
  LineMap lines;
  for (std::size_t row = 0; row < given.rows; ++row) {
    if (!complete[row]) continue;
    if (rows.empty() || rows.back() + 1 != row) lines.steps.emplace_back(rows.size(), row + 1);
    rows.push_back(static_cast<std::uint32_t>(row));
  }
  frame = selectRows(frame, rows);
  frame.lines = std::move(lines);
  return frame;
}

}  // namespace survmeth::frame
