// The report for a terminal or a plain text file: title, what was used, summary, facts, tables with
// captions and remarks, notes and methods. Tables for files only and figures are left out.
#ifndef REPORT_TEXT_H_
#define REPORT_TEXT_H_

#include <cstddef>
#include <string>

#include "report/numbers.h"
#include "report/report.h"

namespace survmeth::report {

struct TextOptions {
  std::size_t width = 80;        // cells of a line; 0: as wide as the tables are
  int digits = kEstimateDigits;  // significant digits of estimates
  bool notes = true;             // false where they go to standard error
};

// UTF-8, every line ended by a line end. Nothing from the data reaches the terminal as a command.
// Cost O(cells).
std::string toText(const Report& report, const TextOptions& options = {});

}  // namespace survmeth::report

#endif  // REPORT_TEXT_H_
