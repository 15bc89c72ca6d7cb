// Phrases that text and HTML share: the data, an option's value, a fact's value, the parts of
// a table. Unescaped.
#ifndef REPORT_PHRASES_H_
#define REPORT_PHRASES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "report/numbers.h"
#include "report/report.h"

namespace survmeth::report {

// "data/lung.csv, 227 of 228 rows".
std::string dataText(const Data& data);

// Lists joined by ", "; every digit of numbers; "" for what is on or off.
std::string settingText(const Setting& setting);

// "yes", "no", "-" for what does not exist, a number by its kind, else the text.
std::string factText(const Fact& fact, int digits);

// What a table shows to people, and how: every column but the one that parts it, and those of
// labels after the first that are empty in every row.
struct Shown {
  const Column* column;
  Format format;  // of numbers
  std::string cell(std::size_t row) const;
};
std::vector<Shown> shownColumns(const Table& table, int digits);

// Rows first .. last - 1 of a table, headed "treatment = 6-MP".
struct Part {
  std::string heading;
  std::size_t first, last;
};

// The runs of equal labels in the column that parts the table; all rows, without heading, where
// none does.
std::vector<Part> partsOf(const Table& table);

}  // namespace survmeth::report

#endif  // REPORT_PHRASES_H_
