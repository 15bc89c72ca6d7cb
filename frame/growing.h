// A wanted column while its file is read.
#ifndef FRAME_GROWING_H_
#define FRAME_GROWING_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"
#include "frame/intern.h"
#include "frame/missing.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// Cells of one kind that a column should not hold: how many, and the first of them.
struct OddCells {
  struct Cell {
    std::size_t line;
    std::string text;
  };
  std::size_t count = 0;
  std::vector<Cell> first;

  void add(std::string_view cell, std::size_t line);
};

// The cell of the current row waits until the row is known to be complete. Odd cells are gathered
// and refused at the end, so that a person sees them together.
class Growing {
 public:
  Growing(const Wanted& wanted, const Missing& missing);

  // Takes the current row's cell; false when it is missing.
  bool take(std::string_view cell, std::size_t line, const std::string& source);

  // The current row is complete.
  void keep();

  // Refuses the odd cells of the file.
  void check(const std::string& source) const;

  // The column of the kept rows; the object is empty then.
  Column taken();

 private:
  void takeNumber(std::string_view cell, std::optional<double> number, std::size_t line);
  void keepUndecided();
  void takeLabel(std::string_view cell, std::size_t line, const std::string& source);
  void checkNumbers(const std::string& source) const;
  void checkMixture(const std::string& source) const;

  Wanted wanted_;
  const Missing& missing_;
  bool isText_;
  std::vector<double> numbersKept_;
  std::vector<std::uint32_t> codesKept_;
  std::vector<std::string> labels_;     // in the order in which they first stood
  std::vector<std::size_t> labelLine_;  // the line where each label first stood
  std::size_t missingCells_ = 0;        // whose lack left out their row
  double number_ = 0;                   // of the current row
  std::uint32_t code_ = 0;
  bool decided_ = false;  // which of Cells::kEither it is: by the first cell that is not missing
  std::size_t undecided_ = 0;  // kept rows before that
  OddCells numbers_, others_, tooLarge_, tooSmall_;
  Interner intern_;
};

}  // namespace survmeth::frame

#endif  // FRAME_GROWING_H_
