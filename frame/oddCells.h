// Cells that a column should not hold, and the refusals that list them.
#ifndef FRAME_ODDCELLS_H_
#define FRAME_ODDCELLS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "frame/place.h"

namespace survmeth::frame {

// Cells of one kind: how many, and the first of them.
struct OddCells {
  struct Cell {
    std::size_t line;
    std::string text;
  };
  std::size_t count = 0;
  std::vector<Cell> first;

  void add(std::string_view cell, std::size_t line);
};

// `"6O" (line 5), "x" (line 9) and 3 more`.
std::string listed(const OddCells& cells);

// 0,5 or 1.234,5 or 1,234: nothing but digits, signs and points beside a comma before a digit.
bool hasDecimalComma(std::string_view text);

inline constexpr const char* kNoComma = "written with a decimal point and no comma";

// The same as the end of what is expected, where one of the cells has one.
std::string commaHint(const OddCells& cells);

// `one` and `many` end "X is ..." and "3 cells are ...".
[[noreturn]] void refuseCells(const Place& column, const OddCells& cells, const std::string& one,
                              const std::string& many, const std::string& limit);

// " not below 0"; empty without a limit.
std::string limitText(double least);

// Refuses a column of some dates and other cells. `orLabels` ends what is expected.
[[noreturn]] void refuseDates(const Place& column, const OddCells& dates, const OddCells& numbers,
                              const OddCells& others, const std::string& orLabels);

// Refuses a column of some numbers and some words.
[[noreturn]] void refuseMixture(const Place& column, const OddCells& numbers,
                                const OddCells& others, const std::string& orLabels);

}  // namespace survmeth::frame

#endif  // FRAME_ODDCELLS_H_
