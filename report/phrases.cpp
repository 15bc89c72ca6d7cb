// The phrases of the renderers for people.
#include "report/phrases.h"

#include <algorithm>

#include "text/words.h"

namespace survmeth::report {

using text::counted;
using text::grouped;

std::string dataText(const Data& data) {
  std::string rows = counted(data.rowsRead, "row", "rows");
  if (data.rowsUsed != data.rowsRead) rows = grouped(data.rowsUsed) + " of " + rows;
  return data.name.empty() ? rows : data.name + ", " + rows;
}

std::string settingText(const Setting& setting) {
  if (const std::string* word = std::get_if<std::string>(&setting)) return *word;
  if (const double* number = std::get_if<double>(&setting)) return exact(*number);
  if (const bool* flag = std::get_if<bool>(&setting)) return *flag ? "yes" : "no";
  std::string list;
  if (const auto* numbers = std::get_if<std::vector<double>>(&setting)) {
    for (const double each : *numbers) list += (list.empty() ? "" : ", ") + exact(each);
  }
  if (const auto* words = std::get_if<std::vector<std::string>>(&setting)) {
    for (const std::string& each : *words) list += (list.empty() ? "" : ", ") + each;
  }
  return list;
}

std::string factText(const Fact& fact, int digits) {
  if (const bool* flag = std::get_if<bool>(&fact.value)) return *flag ? "yes" : "no";
  if (const std::string* text = std::get_if<std::string>(&fact.value)) return *text;
  if (const double* number = std::get_if<double>(&fact.value)) {
    return shown(*number, formatOf(fact.kind, {number, 1}, digits));
  }
  return "-";
}

std::string Shown::cell(std::size_t row) const {
  return column->isLabels() ? column->labels()[row] : shown(column->numbers()[row], format);
}

namespace {

// Labels that say nothing in any row, as reasons that no number lacks.
bool isBlank(const Column& column) {
  return column.isLabels() && !column.labels().empty() &&
         std::all_of(column.labels().begin(), column.labels().end(),
                     [](const std::string& label) { return label.empty(); });
}

}  // namespace

std::vector<Shown> shownColumns(const Table& table, int digits) {
  std::vector<Shown> columns;
  for (const Column& column : table.columns) {
    if (column.key == table.partedBy || (&column != &table.columns.front() && isBlank(column))) {
      continue;
    }
    columns.push_back(
        {&column, column.isLabels() ? Format{} : formatOf(column.kind, column.numbers(), digits)});
  }
  return columns;
}

std::vector<Part> partsOf(const Table& table) {
  const Column* parting = table.partedBy.empty() ? nullptr : table.find(table.partedBy);
  if (parting == nullptr || table.rows() == 0) return {{"", 0, table.rows()}};
  const std::vector<std::string>& labels = parting->labels();
  const std::string name = parting->heading.empty() ? "" : parting->heading + " = ";
  std::vector<Part> parts;
  for (std::size_t row = 0; row < labels.size(); ++row) {
    if (row == 0 || labels[row] != labels[row - 1]) parts.push_back({name + labels[row], row, row});
    parts.back().last = row + 1;
  }
  return parts;
}

}  // namespace survmeth::report
