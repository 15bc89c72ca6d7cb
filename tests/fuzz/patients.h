// The frame that fuzzed expressions and formulas are about: numbers with a missing cell, labels and
// a factor, names that need backticks.
#ifndef TESTS_FUZZ_PATIENTS_H_
#define TESTS_FUZZ_PATIENTS_H_

#include <cmath>
#include <string>
#include <vector>

#include "frame/frame.h"

namespace survmeth::fuzz {

inline frame::Frame patients() {
  constexpr std::size_t kRows = 12;
  const auto numbers = [](const char* name, double first, double factor, double step) {
    std::vector<double> cells;
    for (std::size_t i = 0; i < kRows; ++i) {
      cells.push_back(first + step * static_cast<double>(i) * std::pow(factor, i % 3));
    }
    return frame::numberColumn(name, std::move(cells));
  };
  const auto labels = [](const char* name, frame::Type type, std::vector<std::string> levels) {
    std::vector<std::uint32_t> codes;
    for (std::size_t i = 0; i < kRows; ++i) {
      codes.push_back(static_cast<std::uint32_t>((i * i + i / 2) % levels.size()));
    }
    return frame::labelColumn(name, type, std::move(codes), std::move(levels));
  };
  frame::Frame data;
  data.source = "patients";
  data.rows = data.rowsRead = kRows;
  data.columns = {numbers("time", 1, 1.5, 1),
                  numbers("entry", 0, 1, 0.05),
                  numbers("age", 40, 0.5, 2),
                  numbers("x", -3, -1.25, 0.75),
                  labels("status", frame::Type::kText, {"alive", "dead"}),
                  labels("sex", frame::Type::kText, {"f", "m"}),
                  labels("trt", frame::Type::kFactor, {"placebo", "low", "high"}),
                  labels("the site", frame::Type::kText, {"A", "B", "C"})};
  std::vector<double> holed(data.columns[3].numbers.begin(), data.columns[3].numbers.end());
  holed[4] = std::nan("");
  data.columns.push_back(frame::numberColumn("bili", std::move(holed)));
  return data;
}

}  // namespace survmeth::fuzz

#endif  // TESTS_FUZZ_PATIENTS_H_
