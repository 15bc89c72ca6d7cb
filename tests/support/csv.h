// The tests' data sets and reference tables: comma-separated, a header line, no quotes.
#ifndef TESTS_SUPPORT_CSV_H_
#define TESTS_SUPPORT_CSV_H_

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace survmeth::test {

class Csv {
 public:
  explicit Csv(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) throw std::runtime_error("cannot read " + path);
    names_ = cells(line);
    columns_.resize(names_.size());
    while (std::getline(file, line)) {
      const std::vector<std::string> row = cells(line);
      if (row.size() != names_.size()) throw std::runtime_error("ragged row in " + path);
      for (std::size_t i = 0; i < row.size(); ++i) columns_[i].push_back(row[i]);
    }
  }

  std::size_t rows() const { return columns_.front().size(); }
  const std::vector<std::string>& names() const { return names_; }

  const std::vector<std::string>& texts(const std::string& column) const {
    const auto found = std::find(names_.begin(), names_.end(), column);
    if (found == names_.end()) throw std::out_of_range("no column " + column);
    return columns_[static_cast<std::size_t>(found - names_.begin())];
  }
  const std::string& text(const std::string& column, std::size_t row) const {
    return texts(column).at(row);
  }

  // NaN for an empty cell, NA and NaN.
  double number(const std::string& column, std::size_t row) const {
    return numberOf(text(column, row));
  }
  std::vector<double> numbers(const std::string& column) const {
    std::vector<double> values;
    for (const std::string& cell : texts(column)) values.push_back(numberOf(cell));
    return values;
  }

 private:
  static double numberOf(const std::string& cell) {
    if (cell.empty() || cell == "NA" || cell == "NaN") {
      return std::numeric_limits<double>::quiet_NaN();
    }
    char* end = nullptr;
    const double value = std::strtod(cell.c_str(), &end);
    if (*end != '\0') throw std::runtime_error("not a number: " + cell);
    return value;
  }

  static std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> result;
    std::istringstream stream(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    for (std::string cell; std::getline(stream, cell, ',');) result.push_back(cell);
    if (line.ends_with(',')) result.emplace_back();
    return result;
  }

  std::vector<std::string> names_;
  std::vector<std::vector<std::string>> columns_;
};

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_CSV_H_
