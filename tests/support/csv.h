// Reference tables: comma-separated, a header line, no quotes.
#ifndef TESTS_SUPPORT_CSV_H_
#define TESTS_SUPPORT_CSV_H_

#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace survmeth::test {

class Csv {
 public:
  explicit Csv(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot open " + path);
    std::string line;
    std::getline(file, line);
    const std::vector<std::string> names = cells(line);
    while (std::getline(file, line)) {
      const std::vector<std::string> row = cells(line);
      if (row.size() != names.size()) throw std::runtime_error("ragged row in " + path);
      for (std::size_t i = 0; i < row.size(); ++i) columns_[names[i]].push_back(row[i]);
      ++rows_;
    }
  }

  std::size_t rows() const { return rows_; }
  const std::string& text(const std::string& column, std::size_t row) const {
    return columns_.at(column).at(row);
  }
  // NaN for an empty cell, NA and NaN.
  double number(const std::string& column, std::size_t row) const {
    const std::string& cell = text(column, row);
    if (cell.empty() || cell == "NA" || cell == "NaN") {
      return std::numeric_limits<double>::quiet_NaN();
    }
    char* end = nullptr;
    const double value = std::strtod(cell.c_str(), &end);
    if (*end != '\0') throw std::runtime_error("not a number: " + cell);
    return value;
  }
  std::vector<double> numbers(const std::string& column) const {
    std::vector<double> values;
    for (std::size_t i = 0; i < rows_; ++i) values.push_back(number(column, i));
    return values;
  }

 private:
  static std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> result;
    std::stringstream stream(line.back() == '\r' ? line.substr(0, line.size() - 1) : line);
    std::string cell;
    while (std::getline(stream, cell, ',')) result.push_back(cell);
    if (!line.empty() && line.back() == ',') result.emplace_back();
    return result;
  }

  std::map<std::string, std::vector<std::string>> columns_;
  std::size_t rows_ = 0;
};

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_CSV_H_
