// The data of tests/reference/model and the tables that R makes of them.
#ifndef TESTS_MODEL_DATA_H_
#define TESTS_MODEL_DATA_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "frame/frame.h"
#include "frame/select.h"
#include "tests/support/csv.h"

namespace survmeth::model {

inline std::string reference(const std::string& file) {
  return std::string(SURVMETH_REFERENCE) + "/model/" + file;
}

// The lines of a text file, each taken apart at its tabs.
inline std::vector<std::vector<std::string>> tabbed(const std::string& file) {
  std::ifstream lines(reference(file));
  std::vector<std::vector<std::string>> all;
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> parts;
    std::stringstream cells(line);
    for (std::string part; std::getline(cells, part, '\t');) parts.push_back(part);
    all.push_back(std::move(parts));
  }
  return all;
}

// A column of labels by their order of first use; `levels` of a factor come first. "NA" is missing.
inline frame::Column labelled(const std::string& name, const std::vector<std::string>& cells,
                              std::vector<std::string> levels = {}) {
  const frame::Type type = levels.empty() ? frame::Type::kText : frame::Type::kFactor;
  std::vector<std::uint32_t> codes;
  for (const std::string& cell : cells) {
    if (cell == "NA") {
      codes.push_back(frame::Column::kMissing);
      continue;
    }
    auto found = std::find(levels.begin(), levels.end(), cell);
    if (found == levels.end()) found = levels.insert(levels.end(), cell);
    codes.push_back(static_cast<std::uint32_t>(found - levels.begin()));
  }
  return frame::labelColumn(name, type, std::move(codes), std::move(levels));
}

inline frame::Frame frameOf(std::vector<frame::Column> columns) {
  frame::Frame data;
  data.rows = data.rowsRead = columns.front().rows();
  data.columns = std::move(columns);
  return data;
}

// data.csv, trt as a factor in its order.
inline frame::Frame patients() {
  const test::Csv table(reference("data.csv"));
  std::vector<frame::Column> columns;
  for (const std::string& name : table.names()) {
    if (name == "trt") {
      columns.push_back(labelled(name, table.texts(name), {"placebo", "low", "high"}));
    } else if (name == "sex" || name == "site" || name == "smokes" || name == "mark") {
      columns.push_back(labelled(name, table.texts(name)));
    } else {
      columns.push_back(frame::numberColumn(name, table.numbers(name)));
    }
  }
  return frameOf(std::move(columns));
}

inline frame::Frame firstRows(const frame::Frame& data, std::size_t count) {
  std::vector<std::uint32_t> rows(count);
  std::iota(rows.begin(), rows.end(), 0U);
  return frame::selectRows(data, rows);
}

}  // namespace survmeth::model

#endif  // TESTS_MODEL_DATA_H_
