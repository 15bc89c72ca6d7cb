#include "frame/choose.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "frame/date.h"
#include "frame/evaluate.h"
#include "frame/oddCells.h"
#include "frame/select.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

using text::counted;
using text::grouped;
using text::quote;
using Rows = std::vector<std::uint32_t>;

// The columns that the condition speaks of: behind the wanted ones, or their numbers.
Frame evaluated(const Frame& data, const Condition& condition, std::size_t wanted) {
  Frame view;
  view.rows = data.rows;
  for (const std::string& name : namesIn(condition.expression)) {
    const auto own =
        std::find_if(data.columns.begin() + static_cast<std::ptrdiff_t>(wanted), data.columns.end(),
                     [&](const Column& column) { return column.name == name; });
    if (own != data.columns.end()) {
      view.columns.push_back(*own);
    } else if (const Column* numbers = data.numbers(name)) {
      view.columns.push_back(*numbers);
    }
  }
  return view;
}

void requireRange(const Frame& data, const Column& column, const Wanted& want, const Rows& rows) {
  OddCells tooSmall;
  for (const std::uint32_t row : rows) {
    const double number = column.numbers[row];
    if (!(number < want.least)) continue;
    tooSmall.add(cellText(number, column.isDate), data.lines.line(row));
  }
  if (tooSmall.count == 0) return;
  refuseCells({data.source, 0, column.name}, tooSmall, "out of range", "out of range",
              limitText(want.least));
}

// Only the labels that some chosen row holds, complete or not.
void dropOtherLabels(const Frame& data, const Rows& rows, Column& column) {
  if (column.type == Type::kNumber) return;
  std::vector<std::size_t> line(column.levels.size(), 0);
  for (const std::uint32_t row : rows) {
    const std::uint32_t code = column.codes[row];
    if (code != Column::kMissing && line[code] == 0) line[code] = data.lines.line(row);
  }
  std::vector<std::uint32_t> place(column.levels.size(), Column::kMissing);
  std::vector<std::string> levels;
  std::vector<std::size_t> levelLine;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == 0) continue;
    place[i] = static_cast<std::uint32_t>(levels.size());
    levels.push_back(column.levels[i]);
    levelLine.push_back(line[i]);
  }
  std::vector<std::uint32_t> codes(column.codes.begin(), column.codes.end());
  for (std::uint32_t& code : codes) code = code == Column::kMissing ? code : place[code];
  column = labelColumn(column.name, column.type, std::move(codes), std::move(levels));
  column.levelLine = std::move(levelLine);
}

}  // namespace

Condition parseCondition(const std::string& text) { return {text, parseExpression(text)}; }

std::vector<Wanted> wantedFor(const Condition& condition, const std::vector<Wanted>& wanted) {
  std::vector<Wanted> all = wanted;
  for (Wanted& each : all) {
    each.mayBeMissing = true;
    each.least = -std::numeric_limits<double>::infinity();
  }
  for (const std::string& name : namesIn(condition.expression)) {
    const bool isRead = std::any_of(wanted.begin(), wanted.end(), [&](const Wanted& each) {
      return each.name == name && each.cells == Cells::kNumbers;
    });
    if (!isRead) all.push_back({.name = name, .cells = Cells::kAny, .mayBeMissing = true});
  }
  return all;
}

Frame chosenRows(const Frame& data, const Condition& condition, const std::vector<Wanted>& wanted) {
  RowsWhere where;
  if (data.rows > 0) {
    where =
        rowsWhere(condition.expression, evaluated(data, condition, wanted.size()), condition.text);
  }
  const std::string missing =
      where.missing == 0 ? "" : " (in " + counted(where.missing, "row", "rows") + " it is missing)";
  if (where.rows.empty() && data.rowsRead > 0) {
    throw Unreadable(
        {data.source, 0, {}},
        "no row of " + grouped(data.rowsRead) + " meets the condition " + condition.text + missing,
        "a condition that some rows meet");
  }
  Frame kept = data;
  kept.columns.resize(wanted.size());
  Rows complete = where.rows;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    Column& column = kept.columns[i];
    if (column.type == Type::kNumber) requireRange(data, column, wanted[i], where.rows);
    dropOtherLabels(data, where.rows, column);
    column.missing = 0;
    if (wanted[i].mayBeMissing) continue;
    const auto isMissing = [&](std::uint32_t row) { return data.columns[i].isMissing(row); };
    column.missing =
        static_cast<std::size_t>(std::count_if(where.rows.begin(), where.rows.end(), isMissing));
    std::erase_if(complete, isMissing);
  }
  Frame chosen = selectRows(kept, complete);
  chosen.rowsUnchosen = data.rowsRead - where.rows.size();
  chosen.remarks.push_back({"rowsChosen",
                            grouped(where.rows.size()) + " of " +
                                counted(data.rowsRead, "row", "rows") + " meet the condition " +
                                condition.text + missing,
                            namesIn(condition.expression)});
  return chosen;
}

}  // namespace survmeth::frame
