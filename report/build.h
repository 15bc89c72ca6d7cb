// Short ways to describe columns.
#ifndef REPORT_BUILD_H_
#define REPORT_BUILD_H_

#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "report/report.h"
#include "text/numbers.h"

namespace survmeth::report {

// The level of limits: "95%" for alpha 0.05, "99.9%" for 0.001.
inline std::string confidence(double alpha) { return text::brief(100 * (1 - alpha), 4) + "%"; }

inline Column labelColumn(std::string key, std::string heading, std::vector<std::string> values) {
  return {std::move(key), std::move(heading), Kind::kLabel, std::move(values)};
}

// Of any numbers: counts become doubles.
template <class Numbers>
Column numberColumn(std::string key, std::string heading, Kind kind, const Numbers& values) {
  return {std::move(key), std::move(heading), kind,
          std::vector<double>(std::begin(values), std::end(values))};
}

// One cell for each of `items`: what `cell` says of it, a text or a number.
template <class Items, class Cell>
Column columnOf(std::string key, std::string heading, Kind kind, const Items& items, Cell cell) {
  using Made =
      std::conditional_t<std::is_convertible_v<decltype(cell(*std::begin(items))), std::string>,
                         std::string, double>;
  std::vector<Made> values;
  values.reserve(std::size(items));
  for (const auto& item : items) values.push_back(static_cast<Made>(cell(item)));
  return {std::move(key), std::move(heading), kind, std::move(values)};
}

// A table of these columns, for people and programs.
inline Table tableOf(std::string id, std::string caption, std::vector<Column> columns) {
  Table table;
  table.id = std::move(id);
  table.caption = std::move(caption);
  table.columns = std::move(columns);
  return table;
}

}  // namespace survmeth::report

#endif  // REPORT_BUILD_H_
