// Tables: any bytes, packed and encoded in whatever way, are read or refused in words; what is read
// holds what the frame promises, and reading again gives the same.
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/expression.h"
#include "frame/place.h"
#include "frame/reader.h"
#include "tests/fuzz/require.h"
#include "text/utf8.h"

using survmeth::frame::Cells;
using survmeth::frame::Column;
using survmeth::frame::Frame;
using survmeth::frame::Reading;
using survmeth::frame::Type;
using survmeth::frame::Wanted;
using survmeth::fuzz::require;

namespace {

// The first byte says how; the columns are wanted in turn as whatever columns can be.
Reading readingOf(unsigned how) {
  Reading reading;
  reading.delimiter = std::string_view("\0\0\0\0,;\t|", 8)[how % 8];
  reading.decimal = std::string_view("\0\0.,", 4)[how / 8 % 4];
  const char* const conditions[] = {"", "", "a > 1 & b != 'x'", "!(a %in% c(1, 2)) | TRUE"};
  reading.where = conditions[how / 32 % 4];
  return reading;
}

std::vector<Wanted> wantedOf(const std::vector<std::string>& header, bool anything) {
  std::vector<Wanted> wanted;
  for (const std::string& name : header) {
    if (name.empty() || wanted.size() == 6) continue;
    constexpr Cells kKinds[] = {Cells::kEither, Cells::kText, Cells::kAny, Cells::kNumbers};
    const Cells cells = kKinds[anything ? 1 + wanted.size() % 2 : wanted.size() % 4];
    wanted.push_back({.name = name, .cells = cells, .mayBeMissing = wanted.size() % 3 == 1});
  }
  return wanted;
}

void requireWhole(const Frame& data) {
  require(data.rows + data.rowsUnchosen <= data.rowsRead, "no more rows than were read");
  for (const Column& column : data.columns) {
    require(column.rows() == data.rows, "a cell for every row");
    for (const double number : column.numbers) require(!std::isinf(number), "no infinite number");
    for (const std::uint32_t code : column.codes) {
      require(code == Column::kMissing || code < column.levels.size(), "a label for every code");
    }
    require(column.type == Type::kNumber || column.levelLine.size() == column.levels.size(),
            "a line for every label");
    for (const std::string& level : column.levels) {
      require(survmeth::text::isUtf8(level), "labels in UTF-8");
    }
  }
  for (std::size_t row = 1; row < data.rows; ++row) {
    require(data.lines.line(row) > data.lines.line(row - 1), "rows in the order of lines");
  }
  for (const auto& remark : data.remarks) require(!remark.text.empty(), "a remark says something");
}

// What is refused, or nothing.
std::string refusal(std::string_view bytes, const Reading& reading, bool anything, Frame& data) {
  try {
    data = survmeth::frame::readText(
        bytes, "table",
        [anything](const std::vector<std::string>& header) { return wantedOf(header, anything); },
        reading);
    return {};
  } catch (const survmeth::frame::Unreadable& unreadable) {
    return unreadable.what();
  } catch (const survmeth::frame::ExpressionError& error) {
    return error.shown();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Reading reading = readingOf(data[0]);
  const bool anything = data[0] >= 128;
  Frame first, second;
  const std::string refused = refusal(bytes, reading, anything, first);
  require(refusal(bytes, reading, anything, second) == refused, "the same refusal each time");
  if (!refused.empty()) return 0;
  requireWhole(first);
  require(first.rows == second.rows && first.columns.size() == second.columns.size(),
          "the same frame each time");
  return 0;
}
