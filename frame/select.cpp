#include "frame/select.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace survmeth::frame {
namespace {

LineMap linesOf(const Frame& data, std::span<const std::uint32_t> rows) {
  LineMap lines;
  std::size_t next = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::size_t line = data.lines.line(rows[i]);
    if (i == 0 || line != next) lines.steps.emplace_back(i, line);
    next = line + 1;
  }
  return lines;
}

}  // namespace

Frame selectRows(const Frame& data, std::span<const std::uint32_t> rows) {
  Frame selected;
  selected.source = data.source;
  selected.fromFile = data.fromFile;
  selected.rows = rows.size();
  selected.rowsRead = data.rowsRead;
  selected.rowsUnchosen = data.rowsUnchosen;
  selected.remarks = data.remarks;
  if (data.fromFile && std::is_sorted(rows.begin(), rows.end())) {
    selected.lines = linesOf(data, rows);
  }
  for (const Column& column : data.columns) {
    Column made;
    if (column.type == Type::kNumber) {
      std::vector<double> cells(rows.size());
      std::transform(rows.begin(), rows.end(), cells.begin(),
                     [&column](std::uint32_t row) { return column.numbers[row]; });
      made = numberColumn(column.name, std::move(cells));
    } else {
      std::vector<std::uint32_t> cells(rows.size());
      std::transform(rows.begin(), rows.end(), cells.begin(),
                     [&column](std::uint32_t row) { return column.codes[row]; });
      made = labelColumn(column.name, column.type, std::move(cells), column.levels);
      made.levelLine = column.levelLine;
    }
    made.isDate = column.isDate;
    made.missing = column.missing;  // of the source: what was left out is said by its columns
    selected.columns.push_back(std::move(made));
  }
  return selected;
}

}  // namespace survmeth::frame
