#include "cli/shell/table.h"

#include <optional>
#include <utility>

#include "cli/shell/progress.h"

namespace cli {

std::size_t Table::line(std::size_t row) const {
  return survmeth::frame::LineMap{lineSteps}.line(row);
}

Table readTable(const std::string& file, const std::vector<Wanted>& wanted,
                const Missing& missing) {
  std::optional<Progress> progress;
  const std::string source = file == "-" ? "standard input" : file;
  survmeth::frame::Frame data = survmeth::frame::readFrame(
      file, wanted, missing, [&](std::uint64_t done, std::uint64_t total) {
        if (!progress) progress.emplace("reading " + source, total);
        progress->at(done);
      });
  Table table;
  table.source = source;
  table.rows = data.rows;
  table.rowsRead = data.rowsRead;
  table.lineSteps = std::move(data.lines.steps);
  for (survmeth::frame::Column& column : data.columns) {
    Column made;
    made.name = std::move(column.name);
    made.isText = column.type != survmeth::frame::Type::kNumber;
    made.numbers.assign(column.numbers.begin(), column.numbers.end());
    made.codes.assign(column.codes.begin(), column.codes.end());
    made.labels = std::move(column.levels);
    made.labelLine = std::move(column.levelLine);
    made.missing = column.missing;
    column.keep.reset();
    table.columns.push_back(std::move(made));
  }
  return table;
}

}  // namespace cli
