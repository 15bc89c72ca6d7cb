// CSV, cell by cell.
#include "report/csv.h"

#include <cmath>

#include "text/charconv.h"

namespace survmeth::report {

CsvWriter::CsvWriter(std::initializer_list<std::string_view> header) {
  for (const std::string_view name : header) cell(name);
  endRow();
}

void CsvWriter::separate() {
  if (rowBegun_) text_ += ',';
  rowBegun_ = true;
}

void CsvWriter::cell(std::string_view text) {
  separate();
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    text_ += text;
    return;
  }
  text_ += '"';
  for (const char c : text) {
    if (c == '"') text_ += '"';
    text_ += c;
  }
  text_ += '"';
}

void CsvWriter::cell(double value) {
  separate();
  if (std::isnan(value)) return;
  char buffer[32];  // the shortest form of a double takes at most 24 characters
  const auto end = text::to_chars(buffer, buffer + sizeof buffer, value);
  text_.append(buffer, end.ptr);
}

void CsvWriter::endRow() {
  if (rowBegun_ && text_.size() == rowStart_) text_ += "\"\"";
  text_ += '\n';
  rowStart_ = text_.size();
  rowBegun_ = false;
}

std::string toCsv(const Table& table) {
  CsvWriter csv;
  for (const Column& column : table.columns) csv.cell(column.key);
  csv.endRow();
  for (std::size_t row = 0; row < table.rows(); ++row) {
    for (const Column& column : table.columns) {
      std::visit([&csv, row](const auto& values) { csv.cell(values[row]); }, column.values);
    }
    csv.endRow();
  }
  return std::move(csv.text());
}

std::vector<std::pair<std::string, std::string>> toCsvFiles(const Report& report) {
  requireWellFormed(report);
  std::vector<std::pair<std::string, std::string>> files;
  for (const Table& table : report.tables) files.emplace_back(table.id + ".csv", toCsv(table));
  return files;
}

}  // namespace survmeth::report
