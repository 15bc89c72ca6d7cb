// Reports for the renderers' tests: one of every kind of thing, and texts that try to be something
// else than a label.
#ifndef TESTS_REPORT_SAMPLE_H_
#define TESTS_REPORT_SAMPLE_H_

#include <string>
#include <utility>
#include <vector>

#include "report/report.h"

namespace survmeth::report::test {

inline Column labels(std::string key, std::string heading, std::vector<std::string> values) {
  return {std::move(key), std::move(heading), Kind::kLabel, std::move(values)};
}

inline Column numbers(std::string key, std::string heading, Kind kind, std::vector<double> values) {
  return {std::move(key), std::move(heading), kind, std::move(values)};
}

inline Table tableOf(std::vector<Column> columns) {
  Table table;
  table.id = "table";
  table.columns = std::move(columns);
  return table;
}

inline Report reportOf(Table table) {
  Report report;
  report.tables.push_back(std::move(table));
  return report;
}

// Two groups, as an analysis of survival describes them.
Report sample();

// Quotes, markup, line ends, terminal commands, turned text, wide characters, separators, bytes
// that are no UTF-8.
std::vector<std::string> hostileLabels();

// A report that has every one of them wherever a text can stand.
Report hostile();

}  // namespace survmeth::report::test

#endif  // TESTS_REPORT_SAMPLE_H_
