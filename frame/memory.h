// Columns that a caller holds in memory, as the frame that an analysis asks for: the rows and cells
// that a file of the same content would give.
#ifndef FRAME_MEMORY_H_
#define FRAME_MEMORY_H_

#include <cstddef>
#include <string>
#include <vector>

#include "frame/frame.h"
#include "frame/place.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// What the caller has. Cells are numbers, or codes into levels; NaN and Column::kMissing are missing,
// and need not be counted.
struct Given {
  std::string source;              // what the caller calls the data
  std::vector<std::string> names;  // of all columns there are, for messages
  std::vector<Column> columns;     // at least the wanted ones, all of `rows` cells
  std::size_t rows = 0;
};

// Data that are not what was wanted, by column and row. what() is the whole sentence.
class Unsuitable : public Unreadable {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  Unsuitable(const std::string& source, std::string column, std::size_t row, std::string text,
             std::string expected);
  const std::string& column() const { return column_; }
  std::size_t row() const { return row_; }  // from 0, or kNone
  const std::string& text() const { return text_; }
  const std::string& expected() const { return expected_; }  // may be empty

 private:
  std::string column_;
  std::size_t row_;
  std::string text_, expected_;
};

// The wanted columns, in their order, without the rows in which one of them is missing. Types are
// the caller's: text that looks like a number is a label where either is wanted; numbers become
// labels by their shortest text. Levels that no row holds are dropped.
//
// In     missing   what is missing beside empty labels and cells that are: labels, numbers
//        where     the condition that rows have to meet; empty: all rows
// Throws Unsuitable: no such column, cells of another kind, numbers out of range (in chosen rows);
//        of the condition ExpressionError, and Unreadable where no row meets it
// Cost   O(rows x columns); numbers are borrowed where no row is left out
Frame frameOf(const Given& given, const std::vector<Wanted>& wanted,
              const std::vector<std::string>& missing = {}, const std::string& where = {});

}  // namespace survmeth::frame

#endif  // FRAME_MEMORY_H_
