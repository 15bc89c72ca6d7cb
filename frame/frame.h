// Data in memory: named columns of numbers, factors or text, each with its missing cells apart,
// owned or borrowed, and the map from kept rows back to the lines of their source.
#ifndef FRAME_FRAME_H_
#define FRAME_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace survmeth::frame {

// What a column holds.
enum class Type {
  kNumber,  // doubles
  kFactor,  // codes into levels, in the levels' order
  kText,    // codes into labels in the order of first use: becomes a factor where one is wanted
};

// One column of n cells. The cells may belong to somebody else (an Arrow array, a numpy array):
// `keep` then holds on to the owner.
struct Column {
  std::string name;
  Type type = Type::kNumber;
  std::span<const double> numbers;       // kNumber: n; NaN where missing
  std::span<const std::uint32_t> codes;  // else: n; kMissing where missing
  std::vector<std::string> levels;       // of a factor in its order, of text by first use
  std::vector<std::size_t> levelLine;    // line where each level first stood; may be empty
  bool isDate = false;                   // numbers are days since 1970-01-01
  std::size_t missing = 0;               // how many cells are
  std::shared_ptr<const void> keep;

  static constexpr std::uint32_t kMissing = static_cast<std::uint32_t>(-1);
  std::size_t rows() const { return type == Type::kNumber ? numbers.size() : codes.size(); }
  bool isMissing(std::size_t row) const {
    return type == Type::kNumber ? numbers[row] != numbers[row] : codes[row] == kMissing;
  }
};

// Columns that own what they are made of; missing cells are NaN and Column::kMissing.
Column numberColumn(std::string name, std::vector<double> numbers);
Column labelColumn(std::string name, Type type, std::vector<std::uint32_t> codes,
                   std::vector<std::string> levels);

// From rows of a frame to lines of the file they came from: (row, line) wherever the line is not
// that of the row before plus one.
struct LineMap {
  std::vector<std::pair<std::size_t, std::size_t>> steps;
  // The line of row `row`; row + 1 where there are no lines (data from memory).
  std::size_t line(std::size_t row) const;
};

// What reading made of the data that a person should know: a code for programs, a sentence, and the
// columns that it is about.
struct Remark {
  std::string code, text;
  std::vector<std::string> names;
};

struct Frame {
  std::string source;           // the file's name, "standard input", or what the caller calls it
  bool fromFile = false;        // rows have lines; else messages speak of rows, counted from 1
  std::vector<Column> columns;  // all of `rows` cells
  std::size_t rows = 0;
  std::size_t rowsRead = 0;      // in the source, before any were left out
  std::size_t rowsUnchosen = 0;  // of these, those that a condition left out
  LineMap lines;
  std::vector<Remark> remarks;
  // Before incomplete rows were left out; nullptr: none were, or it does not matter. Must outlive
  // this.
  const Frame* whole = nullptr;

  // The column, or nullptr. One that is wanted both as numbers and as labels stands there twice.
  // Cost O(columns).
  const Column* find(std::string_view name) const;
  const Column* numbers(std::string_view name) const;
  const Column* labels(std::string_view name) const;
};

// The names of its columns, each once.
std::vector<std::string> columnNames(const Frame& data);

}  // namespace survmeth::frame

#endif  // FRAME_FRAME_H_
