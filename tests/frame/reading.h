// Reading from memory, for tests.
#ifndef TESTS_FRAME_READING_H_
#define TESTS_FRAME_READING_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/place.h"
#include "frame/reader.h"

namespace survmeth::frame {

using Numbers = std::vector<double>;
using Strings = std::vector<std::string>;

inline Frame read(std::string_view bytes, const std::vector<Wanted>& wanted,
                  const Reading& reading = {}) {
  return readText(
      bytes, "x", [&wanted](const std::vector<std::string>&) { return wanted; }, reading);
}

inline Wanted number(std::string name) { return {.name = std::move(name)}; }
inline Wanted label(std::string name) { return {.name = std::move(name), .cells = Cells::kText}; }
inline Wanted either(std::string name) {
  return {.name = std::move(name), .cells = Cells::kEither};
}

inline Numbers numbersOf(const Frame& data, std::string_view name) {
  const Column* column = data.numbers(name);
  if (column == nullptr) return {};
  return {column->numbers.begin(), column->numbers.end()};
}

inline Strings labelsOf(const Frame& data, std::string_view name) {
  const Column* column = data.labels(name);
  Strings cells;
  for (std::size_t i = 0; column != nullptr && i < column->rows(); ++i) {
    cells.push_back(column->isMissing(i) ? "missing" : column->levels[column->codes[i]]);
  }
  return cells;
}

inline std::string refusal(std::string_view bytes, const std::vector<Wanted>& wanted,
                           const Reading& reading = {}) {
  try {
    read(bytes, wanted, reading);
  } catch (const Unreadable& unreadable) {
    return unreadable.what();
  }
  return "it is read";
}

// "code: text" of each.
inline Strings remarksOf(const Frame& data) {
  Strings remarks;
  for (const Remark& remark : data.remarks) remarks.push_back(remark.code + ": " + remark.text);
  return remarks;
}

}  // namespace survmeth::frame

#endif  // TESTS_FRAME_READING_H_
