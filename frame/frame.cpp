// Columns that own their cells, and looking rows and columns up.
#include "frame/frame.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace survmeth::frame {

Column numberColumn(std::string name, std::vector<double> numbers) {
  auto cells = std::make_shared<const std::vector<double>>(std::move(numbers));
  Column column;
  column.name = std::move(name);
  column.numbers = *cells;
  column.missing = static_cast<std::size_t>(
      std::count_if(cells->begin(), cells->end(), [](double value) { return std::isnan(value); }));
  column.keep = std::move(cells);
  return column;
}

Column labelColumn(std::string name, Type type, std::vector<std::uint32_t> codes,
                   std::vector<std::string> levels) {
  auto cells = std::make_shared<const std::vector<std::uint32_t>>(std::move(codes));
  Column column;
  column.name = std::move(name);
  column.type = type;
  column.codes = *cells;
  column.levels = std::move(levels);
  column.missing =
      static_cast<std::size_t>(std::count(cells->begin(), cells->end(), Column::kMissing));
  column.keep = std::move(cells);
  return column;
}

std::size_t LineMap::line(std::size_t row) const {
  const auto after =
      std::upper_bound(steps.begin(), steps.end(), row,
                       [](std::size_t wanted, const auto& step) { return wanted < step.first; });
  if (after == steps.begin()) return row + 1;
  const auto& step = *std::prev(after);
  return step.second + (row - step.first);
}

const Column* Frame::find(std::string_view name) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [name](const Column& column) { return column.name == name; });
  return found == columns.end() ? nullptr : &*found;
}

const Column* Frame::numbers(std::string_view name) const {
  for (const Column& column : columns) {
    if (column.name == name && column.type == Type::kNumber) return &column;
  }
  return nullptr;
}

const Column* Frame::labels(std::string_view name) const {
  for (const Column& column : columns) {
    if (column.name == name && column.type != Type::kNumber) return &column;
  }
  return nullptr;
}

std::vector<std::string> columnNames(const Frame& data) {
  std::vector<std::string> names;
  for (const Column& column : data.columns) {
    if (std::find(names.begin(), names.end(), column.name) == names.end()) {
      names.push_back(column.name);
    }
  }
  return names;
}

}  // namespace survmeth::frame
