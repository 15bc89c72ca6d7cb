// Columns of a comma-separated file, by the names in its first line.
#ifndef TESTS_SUPPORT_COLUMNS_H_
#define TESTS_SUPPORT_COLUMNS_H_

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace survmeth::test {

class Columns {
 public:
  explicit Columns(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) throw std::runtime_error("cannot read " + path);
    const std::vector<std::string> names = cells(line);
    while (std::getline(file, line)) {
      const std::vector<std::string> values = cells(line);
      for (std::size_t j = 0; j < names.size(); ++j) {
        columns_[names[j]].push_back(j < values.size() ? values[j] : std::string());
      }
    }
  }

  const std::vector<std::string>& texts(const std::string& name) const { return columns_.at(name); }

  // Empty cells read as 0.
  std::vector<double> numbers(const std::string& name) const {
    std::vector<double> values;
    for (const std::string& text : texts(name))
      values.push_back(std::strtod(text.c_str(), nullptr));
    return values;
  }

 private:
  static std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> values;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');) {
      if (!cell.empty() && cell.back() == '\r') cell.pop_back();
      values.push_back(cell);
    }
    return values;
  }

  std::map<std::string, std::vector<std::string>> columns_;
};

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_COLUMNS_H_
