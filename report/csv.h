// Tables for programs, one CSV file each: RFC 4180 with LF line ends, a header line of the
// columns' keys, every digit of every number, an empty cell for a value that does not exist, inf
// and -inf for infinite ones. A row of one empty cell is "", because readers pass over empty lines.
#ifndef REPORT_CSV_H_
#define REPORT_CSV_H_

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "report/report.h"

namespace survmeth::report {

// Cell by cell:
//     CsvWriter csv({"group", "time"}); csv.cell("a"); csv.cell(1.5); csv.endRow(); csv.text()
class CsvWriter {
 public:
  CsvWriter() = default;
  explicit CsvWriter(std::initializer_list<std::string_view> header);

  void cell(std::string_view text);
  void cell(double value);
  void endRow();

  std::string& text() { return text_; }

 private:
  void separate();

  std::string text_;
  std::size_t rowStart_ = 0;
  bool rowBegun_ = false;
};

// Cost O(cells), no memory beside the text's.
std::string toCsv(const Table& table);

// Every table of the report with the name of its file: the table's id and ".csv".
std::vector<std::pair<std::string, std::string>> toCsvFiles(const Report& report);

}  // namespace survmeth::report

#endif  // REPORT_CSV_H_
