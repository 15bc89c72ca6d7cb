// Reading of tables: CSV, TSV and semicolon-separated text with a header line, quoted cells (also
// with line ends inside), LF or CRLF, with or without a byte-order mark, UTF-8. "-" is standard
// input. The separator is the commonest of tab, comma and semicolon in the header line.
//
// A command says which columns it wants and gets those only, without the rows in which one of
// them is missing (missing.h):
//
//     Table table = readTable(file, {{.name = "weeks", .cells = Cells::kNumbers, .least = 0},
//                                    {.name = "arm", .cells = Cells::kText}});
//     std::span<const double> weeks = table.columns[0].numbers;   // table.rows of them
//     const Column& arm = table.columns[1];                       // arm.codes, arm.labels
//
// Whatever is wrong with the file becomes a Problem that names file, line, column and what was
// expected. For checks of its own a command finds the line of a kept row with table.line(row), and
// the line where a label first stood in column.labelLine.
//
// Cost: one pass, no string per cell; labels of a text column are held once each.
#ifndef CLI_SHELL_TABLE_H_
#define CLI_SHELL_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "cli/shell/problem.h"
#include "frame/reader.h"

namespace cli {

using survmeth::frame::Cells;
using survmeth::frame::Missing;
using survmeth::frame::Wanted;

// One column of the kept rows: numbers, or codes into labels.
struct Column {
  std::string name;
  bool isText = false;
  std::vector<double> numbers;
  std::vector<std::uint32_t> codes;
  std::vector<std::string> labels;     // in the order in which they first stood
  std::vector<std::size_t> labelLine;  // the line where each label first stood
  std::size_t missing = 0;             // cells of the file whose lack left out their row
};

struct Table {
  std::string source;           // the file's name, or "standard input"
  std::vector<Column> columns;  // as wanted, in that order
  std::size_t rows = 0;         // kept: no wanted cell missing
  std::size_t rowsRead = 0;     // in the file, the header not counted

  std::size_t leftOut() const { return rowsRead - rows; }

  // The line of the file on which kept row `row` (from 0) begins.
  std::size_t line(std::size_t row) const;

  Place place(std::size_t row, const Column& column) const {
    return {source, line(row), column.name};
  }

  // (row, line) wherever the line is not that of the row before plus one.
  std::vector<std::pair<std::size_t, std::size_t>> lineSteps;
};

// Reads the wanted columns of `file`. The same column may be wanted more than once. A file with a
// header and no rows, or with no complete row, gives a table of 0 rows for the command to refuse
// (requireRows).
Table readTable(const std::string& file, const std::vector<Wanted>& wanted,
                const Missing& missing = Missing());

// Refuses a table without complete rows, or with fewer than `least`.
void requireRows(const Table& table, std::size_t least = 1);

// What was left out, as a note: `5 of 228 rows left out: missing in "age" (3), "sex" (2)`; empty
// when nothing was.
std::string leftOutNote(const Table& table);

// The rows of a text column by group. Labels that are all numbers are ordered and told apart as
// numbers (1 and 1.0 are one group), others as text. A label that stands only in rows left out
// has count 0.
struct Groups {
  std::vector<std::string> labels;
  std::vector<std::uint32_t> codes;  // of each kept row, into labels
  std::vector<std::size_t> counts;   // kept rows
};
Groups groupsOf(const Column& column);

}  // namespace cli

#endif  // CLI_SHELL_TABLE_H_
